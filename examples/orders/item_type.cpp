#include "examples/orders/item_type.h"

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

std::atomic<bool> CItemType::m_hasMetaData{false};
CParentElementInfo* CItemType::m_classInfo = nullptr;
CElementInfo** CItemType::m_elementInfo = nullptr;
CAttributeInfo** CItemType::m_attributeInfo = nullptr;
CElementInfo* CItemType::m_elementRecords[7] = {};
CAttributeInfo* CItemType::m_attributeRecords[1] = {};

CItemType::CItemType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CItemType::~CItemType() = default;

std::string CItemType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CItemType::GetNamespace() const {
    return kNamespace;
}

void CItemType::Init() {
    m_sku.clear();
    m_quantity = 0;
    m_unitPrice = CDecimal();
    m_weight = 0;
    m_gift = false;
    m_tags.Reset();
}

CSmartPtr<CstringCol> CItemType::GetTags() {
    if (m_tags == nullptr) m_tags = new CstringCol("tags", kNamespace, 0, 5);
    return m_tags;
}

void CItemType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_sku:
            if (read) {
                value.SetStringReference(m_sku);
            } else {
                SetSku(value.TakeString());
            }
            break;
        case Property_quantity:
            if (read) {
                value.SetI4(m_quantity);
            } else {
                SetQuantity(value.GetI4());
            }
            break;
        case Property_unitPrice:
            if (read) {
                value.SetDecimal(m_unitPrice);
            } else {
                SetUnitPrice(value.TakeDecimal());
            }
            break;
        case Property_weight:
            if (read) {
                value.SetR8(m_weight);
            } else {
                SetWeight(value.GetR8());
            }
            break;
        case Property_gift:
            if (read) {
                value.SetBoolean(m_gift);
            } else {
                SetGift(value.GetBoolean());
            }
            break;
        case Property_tags:
            if (read) {
                if (m_tags != nullptr) value.SetXmlCollectionReference(m_tags.Get());
            } else {
                GetTags();
            }
            break;
        default:
            break;
    }
}

std::uint64_t CItemType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_sku, true) | bit(Property_quantity, true) | bit(Property_unitPrice, true) |
           bit(Property_weight, true) | bit(Property_gift, true) | bit(Property_tags, m_tags != nullptr);
}

CParentElementInfo* CItemType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CItemType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CItemType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CItemType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    const CPrimitiveRestrictions skuType("[A-Z]{3}-[0-9]{4,6}(-[A-Z0-9]{2})?", -1, -1, nullptr, nullptr,
                                         nullptr, nullptr, -1, -1, -1,
                                         CWhitespaceUtils::WhitespaceRule_Preserve, nullptr);
    try {
        m_classInfo = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "ItemType",
                                             kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_elementInfo = m_elementRecords;
        m_elementRecords[0] =
            new CElementInfoSeqPrimMnd("sku", kNamespace, Property_sku, false, ItemType_string, nullptr,
                                       CWhitespaceUtils::WhitespaceRule_Preserve, skuType, nullptr);
        m_elementRecords[1] = new CElementInfoSeqPrimMnd(
            "quantity", kNamespace, Property_quantity, false, ItemType_i4, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[2] = new CElementInfoSeqPrimMnd(
            "unitPrice", kNamespace, Property_unitPrice, false, ItemType_decimal, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[3] = new CElementInfoSeqPrimMnd(
            "weight", kNamespace, Property_weight, false, ItemType_r8, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[4] = new CElementInfoSeqPrimMnd(
            "gift", kNamespace, Property_gift, false, ItemType_boolean, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[5] = new CElementInfoSeqPrimCol("tags", kNamespace, Property_tags);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CItemType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Orders
