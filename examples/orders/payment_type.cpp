#include "examples/orders/payment_type.h"

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

std::atomic<bool> CPaymentType::m_hasMetaData{false};
CParentElementInfo* CPaymentType::m_classInfo = nullptr;
CElementInfo** CPaymentType::m_elementInfo = nullptr;
CAttributeInfo** CPaymentType::m_attributeInfo = nullptr;
CElementInfo* CPaymentType::m_elementRecords[4] = {};
CAttributeInfo* CPaymentType::m_attributeRecords[1] = {};

CPaymentType::CPaymentType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CPaymentType::~CPaymentType() = default;

std::string CPaymentType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CPaymentType::GetNamespace() const {
    return kNamespace;
}

void CPaymentType::Init() {
    m_card.Reset();
    m_isValidIban = false;
    m_cash.Reset();
}

void CPaymentType::SetCard(const CSmartPtr<CCardType>& value) {
    // May be held by this object alone.
    const CSmartPtr<CCardType> chosen(value);  // NOLINT(performance-unnecessary-copy-initialization)
    Init();
    if (chosen != nullptr) SetElementName(chosen.Get(), "card");
    m_card = chosen;
}

void CPaymentType::SetIban(std::string value) {
    Init();
    m_iban = std::move(value);
    m_isValidIban = true;
}

void CPaymentType::SetCash(const CSmartPtr<CCashType>& value) {
    // May be held by this object alone.
    const CSmartPtr<CCashType> chosen(value);  // NOLINT(performance-unnecessary-copy-initialization)
    Init();
    if (chosen != nullptr) SetElementName(chosen.Get(), "cash");
    m_cash = chosen;
}

void CPaymentType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_card:
            if (read) {
                if (m_card != nullptr) value.SetXmlObjectReference(m_card.Get());
            } else {
                SetCard(static_cast<CCardType*>(value.PeekXmlObject()));
            }
            break;
        case Property_iban:
            if (read) {
                if (m_isValidIban) value.SetStringReference(m_iban);
            } else {
                SetIban(value.TakeString());
            }
            break;
        case Property_cash:
            if (read) {
                if (m_cash != nullptr) value.SetXmlObjectReference(m_cash.Get());
            } else {
                SetCash(static_cast<CCashType*>(value.PeekXmlObject()));
            }
            break;
        default:
            break;
    }
}

std::uint64_t CPaymentType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_card, m_card != nullptr) | bit(Property_iban, m_isValidIban) |
           bit(Property_cash, m_cash != nullptr);
}

CParentElementInfo* CPaymentType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CPaymentType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CPaymentType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CPaymentType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    try {
        m_classInfo =
            new CParentElementInfo(XmlElementGroupType_Choice, XmlElementType_Element, "PaymentType",
                                   kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_elementInfo = m_elementRecords;
        m_elementRecords[0] =
            new CElementInfoChoiceClsOpt("card", kNamespace, Property_card, XmlElementType_Element,
                                         &CClassFactory::Create, CClassFactory::ClassId_CardType);
        m_elementRecords[1] = new CElementInfoChoicePrimOpt(
            "iban", kNamespace, Property_iban, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[2] =
            new CElementInfoChoiceClsOpt("cash", kNamespace, Property_cash, XmlElementType_Element,
                                         &CClassFactory::Create, CClassFactory::ClassId_CashType);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CPaymentType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Orders
