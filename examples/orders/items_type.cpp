#include "examples/orders/items_type.h"

#include <mutex>

#include "examples/orders/class_factory.h"
#include "kvxml/objects/attribute_info.h"
#include "kvxml/objects/element_info_family.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/variant.h"
#include "kvxml/platform/critical_section.h"

namespace Orders {

using namespace KvXmlLib16;
using namespace KvXmlLib16Data;

std::atomic<bool> CItemsType::m_hasMetaData{false};
CParentElementInfo* CItemsType::m_classInfo = nullptr;
CElementInfo** CItemsType::m_elementInfo = nullptr;
CAttributeInfo** CItemsType::m_attributeInfo = nullptr;
CElementInfo* CItemsType::m_elementRecords[2] = {};
CAttributeInfo* CItemsType::m_attributeRecords[1] = {};

CItemsType::CItemsType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CItemsType::~CItemsType() = default;

std::string CItemsType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CItemsType::GetNamespace() const {
    return kNamespace;
}

void CItemsType::Init() {
    m_item = new CItemTypeCol("item", kNamespace, 1, -1);
}

void CItemsType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_item:
            if (read) value.SetXmlCollectionReference(m_item.Get());
            break;
        default:
            break;
    }
}

std::uint64_t CItemsType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_item, true);
}

CParentElementInfo* CItemsType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CItemsType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CItemsType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CItemsType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    try {
        m_classInfo =
            new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "ItemsType",
                                   kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_elementInfo = m_elementRecords;
        m_elementRecords[0] =
            new CElementInfoSeqClsCol("item", kNamespace, Property_item, XmlElementType_Element);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CItemsType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Orders
