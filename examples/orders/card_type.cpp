#include "examples/orders/card_type.h"

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

std::atomic<bool> CCardType::m_hasMetaData{false};
CParentElementInfo* CCardType::m_classInfo = nullptr;
CElementInfo** CCardType::m_elementInfo = nullptr;
CAttributeInfo** CCardType::m_attributeInfo = nullptr;
CElementInfo* CCardType::m_elementRecords[4] = {};
CAttributeInfo* CCardType::m_attributeRecords[1] = {};

CCardType::CCardType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CCardType::~CCardType() = default;

std::string CCardType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CCardType::GetNamespace() const {
    return kNamespace;
}

void CCardType::Init() {
    m_holder.clear();
    m_number.clear();
    m_expires = CDateTime(CDateTime::dt_gYearMonth);
}

void CCardType::SetExpires(const CDateTime& value) {
    CDateTime converted;
    converted.SetDateTime(value, CDateTime::dt_gYearMonth);
    m_expires = converted;
}

void CCardType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_holder:
            if (read) {
                value.SetStringReference(m_holder);
            } else {
                SetHolder(value.TakeString());
            }
            break;
        case Property_number:
            if (read) {
                value.SetStringReference(m_number);
            } else {
                SetNumber(value.TakeString());
            }
            break;
        case Property_expires:
            if (read) {
                value.SetYearMonth(m_expires);
            } else {
                m_expires = value.DateTimeValue();
            }
            break;
        default:
            break;
    }
}

std::uint64_t CCardType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_holder, true) | bit(Property_number, true) | bit(Property_expires, true);
}

CParentElementInfo* CCardType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CCardType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CCardType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CCardType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    try {
        m_classInfo = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "CardType",
                                             kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_elementInfo = m_elementRecords;
        m_elementRecords[0] = new CElementInfoSeqPrimMnd(
            "holder", kNamespace, Property_holder, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[1] = new CElementInfoSeqPrimMnd(
            "number", kNamespace, Property_number, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[2] = new CElementInfoSeqPrimMnd(
            "expires", kNamespace, Property_expires, false, ItemType_yearMonth, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CCardType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Orders
