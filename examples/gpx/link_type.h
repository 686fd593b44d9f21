/// GPX 1.1 type linkType: a reference to a resource outside the document.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "kvxml/base/optional_value.h"
#include "kvxml/objects/xml_collection.h"
#include "kvxml/objects/xml_generated_class.h"

namespace Gpx {

class CLinkType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CLinkType() : CLinkType(nullptr) {}
    explicit CLinkType(const char* elementName);
    CLinkType(const CLinkType&) = delete;
    CLinkType& operator=(const CLinkType&) = delete;
    ~CLinkType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

    // attribute `href`: required
    std::string GetHref() const { return m_href; }
    void SetHref(std::string value) { m_href = std::move(value); }

    // element `text`: optional
    std::string GetText() const { return m_text.Get(); }
    void SetText(std::string value) { m_text.Set(std::move(value)); }
    bool IsValidText() const { return m_text.IsSet(); }
    void UnsetText() { m_text.Reset(); }

    // element `type`: optional, media type
    std::string GetType() const { return m_type.Get(); }
    void SetType(std::string value) { m_type.Set(std::move(value)); }
    bool IsValidType() const { return m_type.IsSet(); }
    void UnsetType() { m_type.Reset(); }

protected:
    void AccessProperty(int propertyIndex, bool read, KvXmlLib16::KvVariant& value) override;
    KvXmlLib16::CParentElementInfo* GetClassInfo() const override;
    KvXmlLib16::CElementInfo** GetClassElementInfo() const override;
    KvXmlLib16::CAttributeInfo** GetClassAttributeInfo() const override;
    void Init() override;
    std::uint64_t GetUsedProperties() const override;

private:
    enum Property {
        Property_href,
        Property_text,
        Property_type,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[3];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[2];

    std::string m_href;
    KvXmlLib16::COptionalValue<std::string> m_text;
    KvXmlLib16::COptionalValue<std::string> m_type;
};

class CLinkTypeCol : public KvXmlLib16::CXmlTypedCollection<CLinkType> {
public:
    using CXmlTypedCollection::CXmlTypedCollection;
};

}  // namespace Gpx
