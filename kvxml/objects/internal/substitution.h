/// Members whose class depends on the element: substitution by name, and types named by xsi:type.
#pragma once

#include <string_view>

#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/xml_object_base.h"

namespace KvXmlLib16::internal {

/// Makes the object for an element of an abstract or substitutable class; null when none fits.
using SubstitutionFactory = CSmartPtr<CXmlObjectBase> (*)(CXmlElement* element);

class CSubstitution {
public:
    /// What the factory makes for the element; null when that is nothing for the member. `isNamed`: the
    /// element has the member's name. One of another name counts as a substitute only when the factory has
    /// gone by the name, not when it knows but its xsi:type.
    static CSmartPtr<CXmlObjectBase> Make(SubstitutionFactory factory, CXmlElement& element, bool isNamed);
    /// An empty object of the class of `object`, which is or could be in the member: what the factory makes
    /// for an element such as the object is written as. Null when it makes none of that class.
    static CSmartPtr<CXmlObjectBase> MakeLike(SubstitutionFactory factory, const CXmlObjectBase& object,
                                              std::string_view memberName, std::string_view memberNamespace);
    /// Throws for an element of the member's name for which nothing was made.
    [[noreturn]] static void ThrowNone(std::string_view memberName, const CXmlElement& element);
    /// Writes an object in the member's namespace, or when it goes by another name, in its own.
    static void Write(const CXmlObjectBase& object, std::string_view memberName, const char* memberNamespace,
                      CXmlWriter* writer, const CSerializationContext& context);
};

}  // namespace KvXmlLib16::internal
