#include "examples/gpx/gpx_type.h"

#include <mutex>

#include "examples/gpx/class_factory.h"
#include "kvxml/objects/attribute_info.h"
#include "kvxml/objects/element_info_family.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/variant.h"
#include "kvxml/platform/critical_section.h"

namespace Gpx {

using namespace KvXmlLib16;
using namespace KvXmlLib16Data;

std::atomic<bool> CGpxType::m_hasMetaData{false};
CParentElementInfo* CGpxType::m_classInfo = nullptr;
CElementInfo** CGpxType::m_elementInfo = nullptr;
CAttributeInfo** CGpxType::m_attributeInfo = nullptr;
CElementInfo* CGpxType::m_elementRecords[6] = {};
CAttributeInfo* CGpxType::m_attributeRecords[3] = {};

CGpxType::CGpxType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CGpxType::~CGpxType() = default;

std::string CGpxType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CGpxType::GetNamespace() const {
    return kNamespace;
}

void CGpxType::Init() {
    m_version = "1.1";
    m_creator.clear();
    m_metadata.Reset();
    m_wpt.Reset();
    m_rte.Reset();
    m_trk.Reset();
    m_extensions.Reset();
}

void CGpxType::SetMetadata(const CSmartPtr<CMetadataType>& value) {
    if (value != nullptr) SetElementName(value.Get(), "metadata");
    m_metadata = value;
}

CSmartPtr<CWptTypeCol> CGpxType::GetWpt() {
    if (m_wpt == nullptr) m_wpt = new CWptTypeCol("wpt", kNamespace, 0, -1);
    return m_wpt;
}

CSmartPtr<CRteTypeCol> CGpxType::GetRte() {
    if (m_rte == nullptr) m_rte = new CRteTypeCol("rte", kNamespace, 0, -1);
    return m_rte;
}

CSmartPtr<CTrkTypeCol> CGpxType::GetTrk() {
    if (m_trk == nullptr) m_trk = new CTrkTypeCol("trk", kNamespace, 0, -1);
    return m_trk;
}

void CGpxType::SetExtensions(const CSmartPtr<CExtensionsType>& value) {
    if (value != nullptr) SetElementName(value.Get(), "extensions");
    m_extensions = value;
}

void CGpxType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_version:
            if (read) {
                value.SetStringReference(m_version);
            } else {
                SetVersion(value.TakeString());
            }
            break;
        case Property_creator:
            if (read) {
                value.SetStringReference(m_creator);
            } else {
                SetCreator(value.TakeString());
            }
            break;
        case Property_metadata:
            if (read) {
                if (m_metadata != nullptr) value.SetXmlObjectReference(m_metadata.Get());
            } else {
                SetMetadata(static_cast<CMetadataType*>(value.PeekXmlObject()));
            }
            break;
        case Property_wpt:
            if (read) {
                if (m_wpt != nullptr) value.SetXmlCollectionReference(m_wpt.Get());
            } else {
                GetWpt();
            }
            break;
        case Property_rte:
            if (read) {
                if (m_rte != nullptr) value.SetXmlCollectionReference(m_rte.Get());
            } else {
                GetRte();
            }
            break;
        case Property_trk:
            if (read) {
                if (m_trk != nullptr) value.SetXmlCollectionReference(m_trk.Get());
            } else {
                GetTrk();
            }
            break;
        case Property_extensions:
            if (read) {
                if (m_extensions != nullptr) value.SetXmlObjectReference(m_extensions.Get());
            } else {
                SetExtensions(static_cast<CExtensionsType*>(value.PeekXmlObject()));
            }
            break;
        default:
            break;
    }
}

std::uint64_t CGpxType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_version, true) | bit(Property_creator, true) |
           bit(Property_metadata, m_metadata != nullptr) | bit(Property_wpt, m_wpt != nullptr) |
           bit(Property_rte, m_rte != nullptr) | bit(Property_trk, m_trk != nullptr) |
           bit(Property_extensions, m_extensions != nullptr);
}

CParentElementInfo* CGpxType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CGpxType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CGpxType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CGpxType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    const CPrimitiveRestrictions versionType(nullptr, -1, -1, nullptr, nullptr, nullptr, nullptr, -1, -1, -1,
                                             CWhitespaceUtils::WhitespaceRule_Preserve, "1.1");
    try {
        m_classInfo = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "gpx",
                                             kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_attributeRecords[0] =
            new CAttributeInfoPrimitive("version", "", Property_version, false, ItemType_string, nullptr,
                                        CWhitespaceUtils::WhitespaceRule_Preserve, versionType, nullptr);
        m_attributeRecords[1] = new CAttributeInfoPrimitive(
            "creator", "", Property_creator, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementInfo = m_elementRecords;
        m_elementRecords[0] =
            new CElementInfoSeqClsOpt("metadata", kNamespace, Property_metadata, XmlElementType_Element,
                                      &CClassFactory::Create, CClassFactory::ClassId_MetadataType);
        m_elementRecords[1] =
            new CElementInfoSeqClsCol("wpt", kNamespace, Property_wpt, XmlElementType_Element);
        m_elementRecords[2] =
            new CElementInfoSeqClsCol("rte", kNamespace, Property_rte, XmlElementType_Element);
        m_elementRecords[3] =
            new CElementInfoSeqClsCol("trk", kNamespace, Property_trk, XmlElementType_Element);
        m_elementRecords[4] =
            new CElementInfoSeqClsOpt("extensions", kNamespace, Property_extensions, XmlElementType_Element,
                                      &CClassFactory::Create, CClassFactory::ClassId_ExtensionsType);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CGpxType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Gpx
