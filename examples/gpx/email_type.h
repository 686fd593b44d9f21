/// GPX 1.1 type emailType: an e-mail address in two halves.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <string>
#include <utility>

#include "kvxml/objects/xml_generated_class.h"

namespace Gpx {

class CEmailType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CEmailType() : CEmailType(nullptr) {}
    explicit CEmailType(const char* elementName);
    CEmailType(const CEmailType&) = delete;
    CEmailType& operator=(const CEmailType&) = delete;
    ~CEmailType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

    // attribute `id`: required, what stands before the @
    std::string GetId() const { return m_id; }
    void SetId(std::string value) { m_id = std::move(value); }

    // attribute `domain`: required, what stands behind the @
    std::string GetDomain() const { return m_domain; }
    void SetDomain(std::string value) { m_domain = std::move(value); }

protected:
    void AccessProperty(int propertyIndex, bool read, KvXmlLib16::KvVariant& value) override;
    KvXmlLib16::CParentElementInfo* GetClassInfo() const override;
    KvXmlLib16::CElementInfo** GetClassElementInfo() const override;
    KvXmlLib16::CAttributeInfo** GetClassAttributeInfo() const override;
    void Init() override;

private:
    enum Property {
        Property_id,
        Property_domain,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[1];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[3];

    std::string m_id;
    std::string m_domain;
};

}  // namespace Gpx
