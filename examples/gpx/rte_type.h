/// GPX 1.1 type rteType: a route: points that lead to a destination.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "examples/gpx/extensions_type.h"
#include "examples/gpx/link_type.h"
#include "examples/gpx/wpt_type.h"
#include "kvxml/base/optional_value.h"
#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/xml_collection.h"
#include "kvxml/objects/xml_generated_class.h"
#include "kvxml/types/big_integer.h"

namespace Gpx {

class CRteType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CRteType() : CRteType(nullptr) {}
    explicit CRteType(const char* elementName);
    CRteType(const CRteType&) = delete;
    CRteType& operator=(const CRteType&) = delete;
    ~CRteType() override;

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

    // element `cmt`: optional
    std::string GetCmt() const { return m_cmt.Get(); }
    void SetCmt(std::string value) { m_cmt.Set(std::move(value)); }
    bool IsValidCmt() const { return m_cmt.IsSet(); }
    void UnsetCmt() { m_cmt.Reset(); }

    // element `desc`: optional
    std::string GetDesc() const { return m_desc.Get(); }
    void SetDesc(std::string value) { m_desc.Set(std::move(value)); }
    bool IsValidDesc() const { return m_desc.IsSet(); }
    void UnsetDesc() { m_desc.Reset(); }

    // element `src`: optional
    std::string GetSrc() const { return m_src.Get(); }
    void SetSrc(std::string value) { m_src.Set(std::move(value)); }
    bool IsValidSrc() const { return m_src.IsSet(); }
    void UnsetSrc() { m_src.Reset(); }

    // element `link`: any number, related resources
    KvXmlLib16::CSmartPtr<CLinkTypeCol> GetLink();

    // element `number`: optional
    KvXmlLib16::CBigInteger GetNumber() const { return m_number.Get(); }
    void SetNumber(KvXmlLib16::CBigInteger value) { m_number.Set(std::move(value)); }
    bool IsValidNumber() const { return m_number.IsSet(); }
    void UnsetNumber() { m_number.Reset(); }

    // element `type`: optional
    std::string GetType() const { return m_type.Get(); }
    void SetType(std::string value) { m_type.Set(std::move(value)); }
    bool IsValidType() const { return m_type.IsSet(); }
    void UnsetType() { m_type.Reset(); }

    // element `extensions`: optional, content of other schemas
    KvXmlLib16::CSmartPtr<CExtensionsType> GetExtensions() const { return m_extensions; }
    void SetExtensions(const KvXmlLib16::CSmartPtr<CExtensionsType>& value);
    bool IsValidExtensions() const { return m_extensions != nullptr; }
    void UnsetExtensions() { m_extensions.Reset(); }

    // element `rtept`: any number, points of the route
    KvXmlLib16::CSmartPtr<CWptTypeCol> GetRtept();

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
        Property_cmt,
        Property_desc,
        Property_src,
        Property_link,
        Property_number,
        Property_type,
        Property_extensions,
        Property_rtept,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[10];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[1];

    KvXmlLib16::COptionalValue<std::string> m_name;
    KvXmlLib16::COptionalValue<std::string> m_cmt;
    KvXmlLib16::COptionalValue<std::string> m_desc;
    KvXmlLib16::COptionalValue<std::string> m_src;
    KvXmlLib16::CSmartPtr<CLinkTypeCol> m_link;
    KvXmlLib16::COptionalValue<KvXmlLib16::CBigInteger> m_number;
    KvXmlLib16::COptionalValue<std::string> m_type;
    KvXmlLib16::CSmartPtr<CExtensionsType> m_extensions;
    KvXmlLib16::CSmartPtr<CWptTypeCol> m_rtept;
};

class CRteTypeCol : public KvXmlLib16::CXmlTypedCollection<CRteType> {
public:
    using CXmlTypedCollection::CXmlTypedCollection;
};

}  // namespace Gpx
