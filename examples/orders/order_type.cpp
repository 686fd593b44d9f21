#include "examples/orders/order_type.h"

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

std::atomic<bool> COrderType::m_hasMetaData{false};
CParentElementInfo* COrderType::m_classInfo = nullptr;
CElementInfo** COrderType::m_elementInfo = nullptr;
CAttributeInfo** COrderType::m_attributeInfo = nullptr;
CElementInfo* COrderType::m_elementRecords[8] = {};
CAttributeInfo* COrderType::m_attributeRecords[4] = {};

COrderType::COrderType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

COrderType::~COrderType() = default;

std::string COrderType::GetTargetNamespace() const {
    return kNamespace;
}

std::string COrderType::GetNamespace() const {
    return kNamespace;
}

void COrderType::Init() {
    m_id = 0;
    m_status = EStatusType_new;
    m_isValidPriority = false;
    m_customer.Reset();
    m_orderDate = CDateTime(CDateTime::dt_dateTime);
    m_isValidRequiredBy = false;
    m_isValidNote = false;
    m_payment.Reset();
    m_items.Reset();
    m_total = CDecimal();
}

void COrderType::SetCustomer(const CSmartPtr<CCustomerType>& value) {
    if (value != nullptr) SetElementName(value.Get(), "customer");
    m_customer = value;
}

void COrderType::SetOrderDate(const CDateTime& value) {
    CDateTime converted;
    converted.SetDateTime(value, CDateTime::dt_dateTime);
    m_orderDate = converted;
}

void COrderType::SetRequiredBy(const CDateTime& value) {
    CDateTime converted;
    converted.SetDateTime(value, CDateTime::dt_date);
    m_requiredBy = converted;
    m_isValidRequiredBy = true;
}

void COrderType::SetPayment(const CSmartPtr<CPaymentType>& value) {
    if (value != nullptr) SetElementName(value.Get(), "payment");
    m_payment = value;
}

void COrderType::SetItems(const CSmartPtr<CItemsType>& value) {
    if (value != nullptr) SetElementName(value.Get(), "items");
    m_items = value;
}

void COrderType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_id:
            if (read) {
                value.SetUI4(m_id);
            } else {
                SetId(value.GetUI4());
            }
            break;
        case Property_status:
            if (read) {
                value.SetI4(m_status);
            } else {
                SetStatus(static_cast<EStatusType>(value.GetI4()));
            }
            break;
        case Property_priority:
            if (read) {
                if (m_isValidPriority) value.SetI4(m_priority);
            } else {
                SetPriority(static_cast<EPriorityType>(value.GetI4()));
            }
            break;
        case Property_customer:
            if (read) {
                if (m_customer != nullptr) value.SetXmlObjectReference(m_customer.Get());
            } else {
                SetCustomer(static_cast<CCustomerType*>(value.PeekXmlObject()));
            }
            break;
        case Property_orderDate:
            if (read) {
                value.SetDateTime(m_orderDate);
            } else {
                m_orderDate = value.DateTimeValue();
            }
            break;
        case Property_requiredBy:
            if (read) {
                if (m_isValidRequiredBy) value.SetDate(m_requiredBy);
            } else {
                m_requiredBy = value.DateTimeValue();
                m_isValidRequiredBy = true;
            }
            break;
        case Property_note:
            if (read) {
                if (m_isValidNote) value.SetStringReference(m_note);
            } else {
                SetNote(value.TakeString());
            }
            break;
        case Property_payment:
            if (read) {
                if (m_payment != nullptr) value.SetXmlObjectReference(m_payment.Get());
            } else {
                SetPayment(static_cast<CPaymentType*>(value.PeekXmlObject()));
            }
            break;
        case Property_items:
            if (read) {
                if (m_items != nullptr) value.SetXmlObjectReference(m_items.Get());
            } else {
                SetItems(static_cast<CItemsType*>(value.PeekXmlObject()));
            }
            break;
        case Property_total:
            if (read) {
                value.SetDecimal(m_total);
            } else {
                SetTotal(value.TakeDecimal());
            }
            break;
        default:
            break;
    }
}

std::uint64_t COrderType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_id, true) | bit(Property_status, true) | bit(Property_priority, m_isValidPriority) |
           bit(Property_customer, m_customer != nullptr) | bit(Property_orderDate, true) |
           bit(Property_requiredBy, m_isValidRequiredBy) | bit(Property_note, m_isValidNote) |
           bit(Property_payment, m_payment != nullptr) | bit(Property_items, m_items != nullptr) |
           bit(Property_total, true);
}

CParentElementInfo* COrderType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** COrderType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** COrderType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void COrderType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    try {
        m_classInfo =
            new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "OrderType",
                                   kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_attributeRecords[0] = new CAttributeInfoPrimitive(
            "id", "", Property_id, false, ItemType_ui4, nullptr, CWhitespaceUtils::WhitespaceRule_Collapse,
            CPrimitiveRestrictions(), nullptr);
        m_attributeRecords[1] = new CAttributeInfoEnum("status", "", Property_status, false,
                                                       &EStatusTypeToString, &EStatusTypeFromString, nullptr);
        m_attributeRecords[2] =
            new CAttributeInfoEnum("priority", "", Property_priority, true, &EPriorityTypeToString,
                                   &EPriorityTypeFromString, "normal");
        m_elementInfo = m_elementRecords;
        m_elementRecords[0] =
            new CElementInfoSeqClsMnd("customer", kNamespace, Property_customer, XmlElementType_Element,
                                      &CClassFactory::Create, CClassFactory::ClassId_CustomerType);
        m_elementRecords[1] = new CElementInfoSeqPrimMnd(
            "orderDate", kNamespace, Property_orderDate, false, ItemType_datetime, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[2] = new CElementInfoSeqPrimOpt(
            "requiredBy", kNamespace, Property_requiredBy, false, ItemType_date, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[3] = new CElementInfoSeqPrimOpt(
            "note", kNamespace, Property_note, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[4] =
            new CElementInfoSeqClsMnd("payment", kNamespace, Property_payment, XmlElementType_Element,
                                      &CClassFactory::Create, CClassFactory::ClassId_PaymentType);
        m_elementRecords[5] =
            new CElementInfoSeqClsMnd("items", kNamespace, Property_items, XmlElementType_Element,
                                      &CClassFactory::Create, CClassFactory::ClassId_ItemsType);
        m_elementRecords[6] = new CElementInfoSeqPrimMnd(
            "total", kNamespace, Property_total, false, ItemType_decimal, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void COrderType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Orders
