/// GPX 1.1 type personType: a person or an organisation.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "examples/gpx/email_type.h"
#include "examples/gpx/link_type.h"
#include "kvxml/base/optional_value.h"
#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/xml_generated_class.h"

namespace Gpx {

class CPersonType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CPersonType() : CPersonType(nullptr) {}
    explicit CPersonType(const char* elementName);
    CPersonType(const CPersonType&) = delete;
    CPersonType& operator=(const CPersonType&) = delete;
    ~CPersonType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

    // element `name`: optional
    std::string GetName() const { return m_name.Get(); }
    void SetName(std::string value) { m_name.Set(std::move(value)); }
    bool IsValidName() const { return m_name.IsSet(); }
    void UnsetName() { m_name.Reset(); }

    // element `email`: optional
    KvXmlLib16::CSmartPtr<CEmailType> GetEmail() const { return m_email; }
    void SetEmail(const KvXmlLib16::CSmartPtr<CEmailType>& value);
    bool IsValidEmail() const { return m_email != nullptr; }
    void UnsetEmail() { m_email.Reset(); }

    // element `link`: optional
    KvXmlLib16::CSmartPtr<CLinkType> GetLink() const { return m_link; }
    void SetLink(const KvXmlLib16::CSmartPtr<CLinkType>& value);
    bool IsValidLink() const { return m_link != nullptr; }
    void UnsetLink() { m_link.Reset(); }

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
        Property_link,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[4];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[1];

    KvXmlLib16::COptionalValue<std::string> m_name;
    KvXmlLib16::CSmartPtr<CEmailType> m_email;
    KvXmlLib16::CSmartPtr<CLinkType> m_link;
};

}  // namespace Gpx
