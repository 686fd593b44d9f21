/// GPX 1.1 type gpxType: the document: metadata, waypoints, routes and tracks. Root element `gpx`.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "examples/gpx/extensions_type.h"
#include "examples/gpx/metadata_type.h"
#include "examples/gpx/rte_type.h"
#include "examples/gpx/trk_type.h"
#include "examples/gpx/wpt_type.h"
#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/xml_generated_class.h"

namespace Gpx {

class CGpxType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CGpxType() : CGpxType("gpx") {}
    explicit CGpxType(const char* elementName);
    CGpxType(const CGpxType&) = delete;
    CGpxType& operator=(const CGpxType&) = delete;
    ~CGpxType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

    // attribute `version`: required, always "1.1"
    std::string GetVersion() const { return m_version; }
    void SetVersion(std::string value) { m_version = std::move(value); }

    // attribute `creator`: required, program that made the document
    std::string GetCreator() const { return m_creator; }
    void SetCreator(std::string value) { m_creator = std::move(value); }

    // element `metadata`: optional, about the document
    KvXmlLib16::CSmartPtr<CMetadataType> GetMetadata() const { return m_metadata; }
    void SetMetadata(const KvXmlLib16::CSmartPtr<CMetadataType>& value);
    bool IsValidMetadata() const { return m_metadata != nullptr; }
    void UnsetMetadata() { m_metadata.Reset(); }

    // element `wpt`: any number, waypoints
    KvXmlLib16::CSmartPtr<CWptTypeCol> GetWpt();

    // element `rte`: any number, routes
    KvXmlLib16::CSmartPtr<CRteTypeCol> GetRte();

    // element `trk`: any number, tracks
    KvXmlLib16::CSmartPtr<CTrkTypeCol> GetTrk();

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
        Property_version,
        Property_creator,
        Property_metadata,
        Property_wpt,
        Property_rte,
        Property_trk,
        Property_extensions,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[6];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[3];

    std::string m_version;
    std::string m_creator;
    KvXmlLib16::CSmartPtr<CMetadataType> m_metadata;
    KvXmlLib16::CSmartPtr<CWptTypeCol> m_wpt;
    KvXmlLib16::CSmartPtr<CRteTypeCol> m_rte;
    KvXmlLib16::CSmartPtr<CTrkTypeCol> m_trk;
    KvXmlLib16::CSmartPtr<CExtensionsType> m_extensions;
};

}  // namespace Gpx
