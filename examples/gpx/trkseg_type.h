/// GPX 1.1 type trksegType: a stretch of a track recorded without interruption.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "examples/gpx/extensions_type.h"
#include "examples/gpx/wpt_type.h"
#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/xml_collection.h"
#include "kvxml/objects/xml_generated_class.h"

namespace Gpx {

class CTrksegType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CTrksegType() : CTrksegType(nullptr) {}
    explicit CTrksegType(const char* elementName);
    CTrksegType(const CTrksegType&) = delete;
    CTrksegType& operator=(const CTrksegType&) = delete;
    ~CTrksegType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

    // element `trkpt`: any number, points of the segment
    KvXmlLib16::CSmartPtr<CWptTypeCol> GetTrkpt();

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
        Property_trkpt,
        Property_extensions,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[3];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[1];

    KvXmlLib16::CSmartPtr<CWptTypeCol> m_trkpt;
    KvXmlLib16::CSmartPtr<CExtensionsType> m_extensions;
};

class CTrksegTypeCol : public KvXmlLib16::CXmlTypedCollection<CTrksegType> {
public:
    using CXmlTypedCollection::CXmlTypedCollection;
};

}  // namespace Gpx
