/// Tells the writer where writing failed. Called by whoever an exception passes through, so that writing
/// itself does nothing for it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kvxml/xml/internal/failed_path.h"

namespace KvXmlLib16 {

class CXmlGeneratedClass;
class CXmlObjectBase;
class CXmlTypeCollection;
class CXmlWriter;

namespace internal {

class CWriteFailure {
public:
    /// The failure came from the member `name` of `owner`. Adds a step for an element or ('@' in front) an
    /// attribute that is there and has a simple value; others add their own, and what is missing has none.
    static void NoteMember(const CXmlGeneratedClass& owner, int propertyIndex, const std::string& name,
                           CXmlWriter& writer);
    /// The same for an item of a collection of values.
    static void NoteItem(const CXmlTypeCollection& collection, std::int32_t index, CXmlWriter& writer);
    /// The failure came from the object or from what is in it. Adds a step for an object with a tag.
    static void NoteObject(const CXmlGeneratedClass& object, CXmlWriter& writer);

private:
    using Place = CFailedPath::Place;

    /// What the object writes as children of the element it stands in. Returns whether there are any.
    static bool VisitChildren(const CXmlGeneratedClass& owner, Place& place);
    static bool VisitObject(const CXmlObjectBase& object, Place& place);
};

}  // namespace internal
}  // namespace KvXmlLib16
