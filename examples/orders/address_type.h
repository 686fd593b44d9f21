/// Orders type AddressType: where the order goes.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "kvxml/objects/xml_generated_class.h"

namespace Orders {

class CAddressType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CAddressType() : CAddressType(nullptr) {}
    explicit CAddressType(const char* elementName);
    CAddressType(const CAddressType&) = delete;
    CAddressType& operator=(const CAddressType&) = delete;
    ~CAddressType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

    // element `street`: required
    std::string GetStreet() const { return m_street; }
    void SetStreet(std::string value) { m_street = std::move(value); }

    // element `city`: required
    std::string GetCity() const { return m_city; }
    void SetCity(std::string value) { m_city = std::move(value); }

    // element `zip`: required
    std::string GetZip() const { return m_zip; }
    void SetZip(std::string value) { m_zip = std::move(value); }

    // element `country`: required
    std::string GetCountry() const { return m_country; }
    void SetCountry(std::string value) { m_country = std::move(value); }

protected:
    void AccessProperty(int propertyIndex, bool read, KvXmlLib16::KvVariant& value) override;
    KvXmlLib16::CParentElementInfo* GetClassInfo() const override;
    KvXmlLib16::CElementInfo** GetClassElementInfo() const override;
    KvXmlLib16::CAttributeInfo** GetClassAttributeInfo() const override;
    void Init() override;
    std::uint64_t GetUsedProperties() const override;

private:
    enum Property {
        Property_street,
        Property_city,
        Property_zip,
        Property_country,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[5];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[1];

    std::string m_street;
    std::string m_city;
    std::string m_zip;
    std::string m_country;
};

}  // namespace Orders
