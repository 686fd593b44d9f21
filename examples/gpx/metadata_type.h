/// GPX 1.1 type metadataType: what a document says about itself.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "examples/gpx/bounds_type.h"
#include "examples/gpx/copyright_type.h"
#include "examples/gpx/extensions_type.h"
#include "examples/gpx/link_type.h"
#include "examples/gpx/person_type.h"
#include "kvxml/base/optional_value.h"
#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/xml_generated_class.h"
#include "kvxml/types/date_time.h"

namespace Gpx {

class CMetadataType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CMetadataType() : CMetadataType(nullptr) {}
    explicit CMetadataType(const char* elementName);
    CMetadataType(const CMetadataType&) = delete;
    CMetadataType& operator=(const CMetadataType&) = delete;
    ~CMetadataType() override;

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

    // element `desc`: optional
    std::string GetDesc() const { return m_desc.Get(); }
    void SetDesc(std::string value) { m_desc.Set(std::move(value)); }
    bool IsValidDesc() const { return m_desc.IsSet(); }
    void UnsetDesc() { m_desc.Reset(); }

    // element `author`: optional
    KvXmlLib16::CSmartPtr<CPersonType> GetAuthor() const { return m_author; }
    void SetAuthor(const KvXmlLib16::CSmartPtr<CPersonType>& value);
    bool IsValidAuthor() const { return m_author != nullptr; }
    void UnsetAuthor() { m_author.Reset(); }

    // element `copyright`: optional
    KvXmlLib16::CSmartPtr<CCopyrightType> GetCopyright() const { return m_copyright; }
    void SetCopyright(const KvXmlLib16::CSmartPtr<CCopyrightType>& value);
    bool IsValidCopyright() const { return m_copyright != nullptr; }
    void UnsetCopyright() { m_copyright.Reset(); }

    // element `link`: any number, related resources
    KvXmlLib16::CSmartPtr<CLinkTypeCol> GetLink();

    // element `time`: optional, time of creation
    KvXmlLib16::CDateTime GetTime() const { return m_isValidTime ? m_time : KvXmlLib16::CDateTime(); }
    void SetTime(const KvXmlLib16::CDateTime& value);
    bool IsValidTime() const { return m_isValidTime; }
    void UnsetTime() { m_isValidTime = false; }

    // element `keywords`: optional
    std::string GetKeywords() const { return m_keywords.Get(); }
    void SetKeywords(std::string value) { m_keywords.Set(std::move(value)); }
    bool IsValidKeywords() const { return m_keywords.IsSet(); }
    void UnsetKeywords() { m_keywords.Reset(); }

    // element `bounds`: optional, extent of all coordinates
    KvXmlLib16::CSmartPtr<CBoundsType> GetBounds() const { return m_bounds; }
    void SetBounds(const KvXmlLib16::CSmartPtr<CBoundsType>& value);
    bool IsValidBounds() const { return m_bounds != nullptr; }
    void UnsetBounds() { m_bounds.Reset(); }

    // element `extensions`: optional, content of other schemas
    KvXmlLib16::CSmartPtr<CExtensionsType> GetExtensions() const { return m_extensions; }
    void SetExtensions(const KvXmlLib16::CSmartPtr<CExtensionsType>& value);
    bool IsValidExtensions() const { return m_extensions != nullptr; }
    void UnsetExtensions() { m_extensions.Reset(); }

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
        Property_desc,
        Property_author,
        Property_copyright,
        Property_link,
        Property_time,
        Property_keywords,
        Property_bounds,
        Property_extensions,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[10];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[1];

    bool m_isValidTime : 1;
    KvXmlLib16::COptionalValue<std::string> m_name;
    KvXmlLib16::COptionalValue<std::string> m_desc;
    KvXmlLib16::CSmartPtr<CPersonType> m_author;
    KvXmlLib16::CSmartPtr<CCopyrightType> m_copyright;
    KvXmlLib16::CSmartPtr<CLinkTypeCol> m_link;
    KvXmlLib16::CDateTime m_time;
    KvXmlLib16::COptionalValue<std::string> m_keywords;
    KvXmlLib16::CSmartPtr<CBoundsType> m_bounds;
    KvXmlLib16::CSmartPtr<CExtensionsType> m_extensions;
};

}  // namespace Gpx
