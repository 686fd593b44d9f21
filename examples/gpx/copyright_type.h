/// GPX 1.1 type copyrightType: who holds the rights in a document.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "kvxml/base/optional_value.h"
#include "kvxml/objects/xml_generated_class.h"

namespace Gpx {

class CCopyrightType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CCopyrightType() : CCopyrightType(nullptr) {}
    explicit CCopyrightType(const char* elementName);
    CCopyrightType(const CCopyrightType&) = delete;
    CCopyrightType& operator=(const CCopyrightType&) = delete;
    ~CCopyrightType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

    // attribute `author`: required
    std::string GetAuthor() const { return m_author; }
    void SetAuthor(std::string value) { m_author = std::move(value); }

    // element `year`: optional
    std::uint16_t GetYear() const { return m_isValidYear ? m_year : std::uint16_t{0}; }
    void SetYear(std::uint16_t value) {
        m_year = value;
        m_isValidYear = true;
    }
    bool IsValidYear() const { return m_isValidYear; }
    void UnsetYear() { m_isValidYear = false; }

    // element `license`: optional
    std::string GetLicense() const { return m_license.Get(); }
    void SetLicense(std::string value) { m_license.Set(std::move(value)); }
    bool IsValidLicense() const { return m_license.IsSet(); }
    void UnsetLicense() { m_license.Reset(); }

protected:
    void AccessProperty(int propertyIndex, bool read, KvXmlLib16::KvVariant& value) override;
    KvXmlLib16::CParentElementInfo* GetClassInfo() const override;
    KvXmlLib16::CElementInfo** GetClassElementInfo() const override;
    KvXmlLib16::CAttributeInfo** GetClassAttributeInfo() const override;
    void Init() override;
    std::uint64_t GetUsedProperties() const override;

private:
    enum Property {
        Property_author,
        Property_year,
        Property_license,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[3];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[2];

    bool m_isValidYear : 1;
    std::string m_author;
    std::uint16_t m_year = 0;
    KvXmlLib16::COptionalValue<std::string> m_license;
};

}  // namespace Gpx
