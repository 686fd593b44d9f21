/// Orders type PaymentType: how an order is paid: by card, by bank transfer or in cash.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "examples/orders/card_type.h"
#include "examples/orders/cash_type.h"
#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/xml_generated_class.h"

namespace Orders {

class CPaymentType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CPaymentType() : CPaymentType(nullptr) {}
    explicit CPaymentType(const char* elementName);
    CPaymentType(const CPaymentType&) = delete;
    CPaymentType& operator=(const CPaymentType&) = delete;
    ~CPaymentType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

    // element `card`: one of the choice
    KvXmlLib16::CSmartPtr<CCardType> GetCard() const { return m_card; }
    void SetCard(const KvXmlLib16::CSmartPtr<CCardType>& value);
    bool IsValidCard() const { return m_card != nullptr; }
    void UnsetCard() { m_card.Reset(); }

    // element `iban`: one of the choice, account that pays
    std::string GetIban() const { return m_isValidIban ? m_iban : std::string(); }
    void SetIban(std::string value);
    bool IsValidIban() const { return m_isValidIban; }
    void UnsetIban() { m_isValidIban = false; }

    // element `cash`: one of the choice
    KvXmlLib16::CSmartPtr<CCashType> GetCash() const { return m_cash; }
    void SetCash(const KvXmlLib16::CSmartPtr<CCashType>& value);
    bool IsValidCash() const { return m_cash != nullptr; }
    void UnsetCash() { m_cash.Reset(); }

protected:
    void AccessProperty(int propertyIndex, bool read, KvXmlLib16::KvVariant& value) override;
    KvXmlLib16::CParentElementInfo* GetClassInfo() const override;
    KvXmlLib16::CElementInfo** GetClassElementInfo() const override;
    KvXmlLib16::CAttributeInfo** GetClassAttributeInfo() const override;
    void Init() override;
    std::uint64_t GetUsedProperties() const override;

private:
    enum Property {
        Property_card,
        Property_iban,
        Property_cash,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[4];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[1];

    bool m_isValidIban : 1;
    KvXmlLib16::CSmartPtr<CCardType> m_card;
    std::string m_iban;
    KvXmlLib16::CSmartPtr<CCashType> m_cash;
};

}  // namespace Orders
