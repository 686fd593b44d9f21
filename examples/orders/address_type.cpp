#include "examples/orders/address_type.h"

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

std::atomic<bool> CAddressType::m_hasMetaData{false};
CParentElementInfo* CAddressType::m_classInfo = nullptr;
CElementInfo** CAddressType::m_elementInfo = nullptr;
CAttributeInfo** CAddressType::m_attributeInfo = nullptr;
CElementInfo* CAddressType::m_elementRecords[5] = {};
CAttributeInfo* CAddressType::m_attributeRecords[1] = {};

CAddressType::CAddressType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CAddressType::~CAddressType() = default;

std::string CAddressType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CAddressType::GetNamespace() const {
    return kNamespace;
}

void CAddressType::Init() {
    m_street.clear();
    m_city.clear();
    m_zip.clear();
    m_country.clear();
}

void CAddressType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_street:
            if (read) {
                value.SetStringReference(m_street);
            } else {
                SetStreet(value.TakeString());
            }
            break;
        case Property_city:
            if (read) {
                value.SetStringReference(m_city);
            } else {
                SetCity(value.TakeString());
            }
            break;
        case Property_zip:
            if (read) {
                value.SetStringReference(m_zip);
            } else {
                SetZip(value.TakeString());
            }
            break;
        case Property_country:
            if (read) {
                value.SetStringReference(m_country);
            } else {
                SetCountry(value.TakeString());
            }
            break;
        default:
            break;
    }
}

std::uint64_t CAddressType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_street, true) | bit(Property_city, true) | bit(Property_zip, true) |
           bit(Property_country, true);
}

CParentElementInfo* CAddressType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CAddressType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CAddressType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CAddressType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    try {
        m_classInfo =
            new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "AddressType",
                                   kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_elementInfo = m_elementRecords;
        m_elementRecords[0] = new CElementInfoSeqPrimMnd(
            "street", kNamespace, Property_street, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[1] = new CElementInfoSeqPrimMnd(
            "city", kNamespace, Property_city, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[2] = new CElementInfoSeqPrimMnd(
            "zip", kNamespace, Property_zip, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[3] = new CElementInfoSeqPrimMnd(
            "country", kNamespace, Property_country, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CAddressType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Orders
