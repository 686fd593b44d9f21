#include "kvxml/objects/table_members.h"

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/internal/table_access.h"
#include "kvxml/objects/internal/table_objects.h"
#include "kvxml/objects/internal/table_records.h"

namespace KvXmlLib16 {

CTableObjects::CTableObjects(const CTableClass& owner, const CMember& member)
    : CXmlCollection(member.name, member.namespaceUri, static_cast<int>(member.minOccurs),
                     member.maxOccurs > 0x7FFFFFFF ? -1 : static_cast<int>(member.maxOccurs)),
      m_member(internal::CTableRecords::Of(owner.GetClassTable()).RecordOf(member)) {
    SetIsSubstitutable();
}

CTableObjects::~CTableObjects() = default;

CTableClass& CTableObjects::AddNew() {
    CSmartPtr<CXmlObjectBase> item = internal::CTableObjectRules::New(m_member);
    auto& object = static_cast<CTableClass&>(*item);
    internal::CTableAccess::Append(*this, std::move(item));
    return object;
}

void CTableObjects::Append(CXmlObjectBase* item) {
    if (item == nullptr) throw CKvInvalidParamException("An item of a collection may not be NULL");
    internal::CTableObjectRules::Admit(m_member, *item);
    internal::CTableAccess::Append(*this, CSmartPtr<CXmlObjectBase>(item));
}

CXmlObjectBase& CTableObjects::At(std::size_t index) const {
    return *GetNodeAtIndex(ToItemIndex(index))->item;
}

CXmlElement* CTableObjects::FromXml_Int(CXmlElement*, CXmlElement* cursor, const CSerializationContext&,
                                        bool) {
    return cursor;  // the reader of the owner appends the items
}

CSmartPtr<CXmlObjectBase> CTableObjects::NewItemLike(const CXmlObjectBase& item) const {
    const auto* const generated = dynamic_cast<const CTableClass*>(&item);
    if (generated == nullptr || generated->GetClassTable().create == nullptr) return nullptr;
    return CSmartPtr<CXmlObjectBase>(generated->GetClassTable().create());
}

}  // namespace KvXmlLib16
