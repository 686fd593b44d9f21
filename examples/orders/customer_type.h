/// Orders type CustomerType: who ordered.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "examples/orders/address_type.h"
#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/xml_generated_class.h"

namespace Orders {

class CCustomerType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CCustomerType() : CCustomerType(nullptr) {}
    explicit CCustomerType(const char* elementName);
    CCustomerType(const CCustomerType&) = delete;
    CCustomerType& operator=(const CCustomerType&) = delete;
    ~CCustomerType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

    // element `name`: required
    std::string GetName() const { return m_name; }
    void SetName(std::string value) { m_name = std::move(value); }

    // element `email`: required
    std::string GetEmail() const { return m_email; }
    void SetEmail(std::string value) { m_email = std::move(value); }

    // element `address`: required; null until it is set
    KvXmlLib16::CSmartPtr<CAddressType> GetAddress() const { return m_address; }
    void SetAddress(const KvXmlLib16::CSmartPtr<CAddressType>& value);

    // element `vatNumber`: optional
    std::string GetVatNumber() const { return m_isValidVatNumber ? m_vatNumber : std::string(); }
    void SetVatNumber(std::string value) {
        m_vatNumber = std::move(value);
        m_isValidVatNumber = true;
    }
    bool IsValidVatNumber() const { return m_isValidVatNumber; }
    void UnsetVatNumber() { m_isValidVatNumber = false; }

protected:
    void AccessProperty(int propertyIndex, bool read, KvXmlLib16::KvVariant& value) override;
    KvXmlLib16::CParentElementInfo* GetClassInfo() const override;
    KvXmlLib16::CElementInfo** GetClassElementInfo() const override;
    KvXmlLib16::CAttributeInfo** GetClassAttributeInfo() const override;
    void Init() override;
    std::uint64_t GetUsedProperties() const override;

private:
    enum Property {
        Property_name,
        Property_email,
        Property_address,
        Property_vatNumber,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[5];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[1];

    bool m_isValidVatNumber : 1;
    std::string m_name;
    std::string m_email;
    KvXmlLib16::CSmartPtr<CAddressType> m_address;
    std::string m_vatNumber;
};

}  // namespace Orders
