/// Members of generated classes as the accessors, the properties and the driver see them.
#pragma once

#include <string>

#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/internal/table_records.h"
#include "kvxml/objects/table_class.h"

namespace KvXmlLib16::internal {

/// The member has something to write: a value, a nil mark, an object or a collection. An empty collection
/// counts when it is a list value.
bool IsMemberUsed(const CTableClass& object, const CTableMember& member) noexcept;
/// Reads the member, which is used, into a variant.
void GetMember(const CTableClass& object, const CTableMember& member, KvVariant& value);
/// Values of list types: whether they are there in both objects, which are of one class, or in none. An empty
/// list is a value.
bool HaveSameLists(const CTableClass& a, const CTableClass& b);
/// Assigns what a variant holds; nothing makes the collection of a member that has one.
void SetMember(CTableClass& object, const CTableMember& member, KvVariant& value);

/// Which objects a member may hold, and under which names.
class CTableObjectRules {
public:
    /// A new object of the member's class with its name. CKvInvalidStateException when the class is abstract.
    static CSmartPtr<CXmlObjectBase> New(const CTableMember& member);
    /// CKvInvalidParamException for an object of a class that the member does not admit. Gives the object the
    /// member's name unless it has one of a substitute.
    static void Admit(const CTableMember& member, CXmlObjectBase& object);
    /// An empty collection.
    static CSmartPtr<CXmlCollectionBase> NewList(const CTableClass& owner, const CTableMember& member);
    /// Under which name the member writes the object; null when that could only be the name of an abstract
    /// head.
    static const CTableName* NameFor(const CTableMember& member, const CTableClass& object);
};

}  // namespace KvXmlLib16::internal
