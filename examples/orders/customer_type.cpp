#include "examples/orders/customer_type.h"

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

std::atomic<bool> CCustomerType::m_hasMetaData{false};
CParentElementInfo* CCustomerType::m_classInfo = nullptr;
CElementInfo** CCustomerType::m_elementInfo = nullptr;
CAttributeInfo** CCustomerType::m_attributeInfo = nullptr;
CElementInfo* CCustomerType::m_elementRecords[5] = {};
CAttributeInfo* CCustomerType::m_attributeRecords[1] = {};

CCustomerType::CCustomerType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CCustomerType::~CCustomerType() = default;

std::string CCustomerType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CCustomerType::GetNamespace() const {
    return kNamespace;
}

void CCustomerType::Init() {
    m_name.clear();
    m_email.clear();
    m_address.Reset();
    m_isValidVatNumber = false;
}

void CCustomerType::SetAddress(const CSmartPtr<CAddressType>& value) {
    if (value != nullptr) SetElementName(value.Get(), "address");
    m_address = value;
}

void CCustomerType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_name:
            if (read) {
                value.SetStringReference(m_name);
            } else {
                SetName(value.TakeString());
            }
            break;
        case Property_email:
            if (read) {
                value.SetStringReference(m_email);
            } else {
                SetEmail(value.TakeString());
            }
            break;
        case Property_address:
            if (read) {
                if (m_address != nullptr) value.SetXmlObjectReference(m_address.Get());
            } else {
                SetAddress(static_cast<CAddressType*>(value.PeekXmlObject()));
            }
            break;
        case Property_vatNumber:
            if (read) {
                if (m_isValidVatNumber) value.SetStringReference(m_vatNumber);
            } else {
                SetVatNumber(value.TakeString());
            }
            break;
        default:
            break;
    }
}

std::uint64_t CCustomerType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_name, true) | bit(Property_email, true) |
           bit(Property_address, m_address != nullptr) | bit(Property_vatNumber, m_isValidVatNumber);
}

CParentElementInfo* CCustomerType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CCustomerType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CCustomerType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CCustomerType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    try {
        m_classInfo =
            new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "CustomerType",
                                   kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_elementInfo = m_elementRecords;
        m_elementRecords[0] = new CElementInfoSeqPrimMnd(
            "name", kNamespace, Property_name, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[1] = new CElementInfoSeqPrimMnd(
            "email", kNamespace, Property_email, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[2] =
            new CElementInfoSeqClsMnd("address", kNamespace, Property_address, XmlElementType_Element,
                                      &CClassFactory::Create, CClassFactory::ClassId_AddressType);
        m_elementRecords[3] = new CElementInfoSeqPrimOpt(
            "vatNumber", kNamespace, Property_vatNumber, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CCustomerType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Orders
