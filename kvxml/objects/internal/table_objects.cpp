#include "kvxml/objects/internal/table_objects.h"

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/attribute_col.h"
#include "kvxml/objects/element.h"
#include "kvxml/objects/internal/table_access.h"
#include "kvxml/objects/table_members.h"
#include "kvxml/types/format_string.h"

namespace KvXmlLib16::internal {

namespace {

int MaxOf(const CMember& member) {
    return member.maxOccurs > 0x7FFFFFFF ? -1 : static_cast<int>(member.maxOccurs);
}

}  // namespace

bool IsMemberUsed(const CTableClass& object, const CTableMember& record) noexcept {
    const CMember& member = *record.member;
    if (member.bit != CMember::kNoBit) {
        return CTableAccess::IsSet(object, member.bit) ||
               (member.nilBit != CMember::kNoBit && CTableAccess::IsSet(object, member.nilBit));
    }
    switch (member.place.GetKind()) {
        case CMemberPlace::Kind::Object:
            return member.place.Object(object) != nullptr;
        case CMemberPlace::Kind::Collection: {
            const CXmlCollectionBase* const list = member.place.Collection(object).Get();
            return list != nullptr && (record.IsList() || list->GetCount() > 0);
        }
        case CMemberPlace::Kind::Attributes:
            return member.place.Attributes(object) != nullptr;
        case CMemberPlace::Kind::Untyped:
            return member.place.Untyped(object) != nullptr;
        default:
            return true;
    }
}

void GetMember(const CTableClass& object, const CTableMember& record, KvVariant& value) {
    const CMember& member = *record.member;
    switch (member.place.GetKind()) {
        case CMemberPlace::Kind::Object:
            return value.SetXmlObjectReference(member.place.Object(object).Get());
        case CMemberPlace::Kind::Untyped:
            return value.SetXmlObjectReference(member.place.Untyped(object).Get());
        case CMemberPlace::Kind::Collection:
            return value.SetXmlCollectionReference(member.place.Collection(object).Get());
        case CMemberPlace::Kind::Attributes:
            return value.SetXmlCollectionReference(member.place.Attributes(object).Get());
        case CMemberPlace::Kind::String:
            value.SetStringReference(member.place.String(object));
            break;
        default:
            VisitHeldType(record.value->Item(), [&](auto* tag) {
                using T = std::remove_pointer_t<decltype(tag)>;
                CTableAccess::SetVariant(value, record.value->Item(), PlaceIn<T>(member.place, object));
            });
            break;
    }
    if (member.nilBit != CMember::kNoBit && CTableAccess::IsSet(object, member.nilBit)) value.SetNil();
}

bool HaveSameLists(const CTableClass& a, const CTableClass& b) {
    for (const CTableMember& member : CTableRecords::Of(a.GetClassTable()).members) {
        if (member.IsList() && IsMemberUsed(a, member) != IsMemberUsed(b, member)) return false;
    }
    return true;
}

void SetMember(CTableClass& object, const CTableMember& record, KvVariant& value) {
    const CMember& member = *record.member;
    switch (member.place.GetKind()) {
        case CMemberPlace::Kind::Object:
            member.place.Object(object) = value.PeekXmlObject();
            return;
        case CMemberPlace::Kind::Untyped:
            member.place.Untyped(object) = dynamic_cast<CElement*>(value.PeekXmlObject());
            return;
        case CMemberPlace::Kind::Collection:
            if (member.place.Collection(object) == nullptr)
                member.place.Collection(object) = CTableObjectRules::NewList(object, record);
            return;
        case CMemberPlace::Kind::Attributes:
            if (member.place.Attributes(object) == nullptr)
                member.place.Attributes(object) = new CAttributeCol();
            return;
        default:
            break;
    }
    if (!value.IsValid()) return;
    if (member.bit != CMember::kNoBit) CTableAccess::Mark(object, member.bit, true);
    if (member.nilBit != CMember::kNoBit) CTableAccess::Mark(object, member.nilBit, value.IsNil());
    if (value.IsNil()) return;
    VisitHeldType(record.value->Item(), [&](auto* tag) {
        using T = std::remove_pointer_t<decltype(tag)>;
        if constexpr (std::is_same_v<T, std::string>) {
            PlaceIn<T>(member.place, object) = value.StringValue();
        } else {
            PlaceIn<T>(member.place, object) = CTableAccess::ValueOf<T>(value);
        }
    });
}

CSmartPtr<CXmlObjectBase> CTableObjectRules::New(const CTableMember& member) {
    const CClassTable& table = *member.member->classTable;
    if (table.create == nullptr) {
        throw CKvInvalidStateException(
            FormatString("The class [%s] of the member [%s] is abstract.", table.name, member.Label()));
    }
    CSmartPtr<CXmlObjectBase> object(table.create());
    CTableAccess::SetName(*object, member.own.shared);
    return object;
}

void CTableObjectRules::Admit(const CTableMember& member, CXmlObjectBase& object) {
    const auto* const generated = dynamic_cast<const CTableClass*>(&object);
    if (generated == nullptr ||
        !CTableRecords::IsDerived(generated->GetClassTable(), *member.member->classTable)) {
        throw CKvInvalidParamException(FormatString("The member [%s] holds objects of the class [%s] only.",
                                                    member.Label(), member.member->classTable->name));
    }
    const CTableName* const name = NameFor(member, *generated);
    CTableAccess::SetName(object, name == nullptr ? member.own.shared : name->shared);
}

const CTableName* CTableObjectRules::NameFor(const CTableMember& member, const CTableClass& object) {
    if (member.substitutes.empty()) return &member.own;
    const std::string_view name = CTableAccess::NameOf(object);
    if (name == member.own.name.localName && !member.member->isAbstract) return &member.own;
    for (const CTableName& substitute : member.substitutes) {
        if (substitute.name.localName == name) return &substitute;
    }
    const CClassTable& table = object.GetClassTable();
    if (&table == member.own.classTable && !member.member->isAbstract) return &member.own;
    for (const CTableName& substitute : member.substitutes) {
        if (substitute.classTable == &table) return &substitute;
    }
    if (!member.member->isAbstract) return &member.own;
    const CClassTable& type = CTableRecords::TypeOf(table);
    for (const CTableName& substitute : member.substitutes) {
        if (substitute.classTable != nullptr && &CTableRecords::TypeOf(*substitute.classTable) == &type)
            return &substitute;
    }
    return nullptr;
}

CSmartPtr<CXmlCollectionBase> CTableObjectRules::NewList(const CTableClass& owner,
                                                         const CTableMember& record) {
    const CMember& member = *record.member;
    const auto min = static_cast<int>(member.minOccurs);
    switch (member.kind) {
        case CMember::Kind::Objects:
        case CMember::Kind::Groups:
            return CSmartPtr<CXmlCollectionBase>(new CTableObjects(owner, member));
        case CMember::Kind::Anys: {
            // Namespaces are checked when the elements are written.
            const char* const ns = record.IsWildcard() ? record.namespaces.Preferred() : member.namespaceUri;
            return CSmartPtr<CXmlCollectionBase>(new CElementCol(member.name, ns, min, MaxOf(member)));
        }
        default:
            return MakeValues(record.IsList() ? *record.value->Items() : *record.value, member.name,
                              member.namespaceUri, min, MaxOf(member));
    }
}

}  // namespace KvXmlLib16::internal
