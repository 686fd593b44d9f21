#include "examples/gpx/trkseg_type.h"

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

std::atomic<bool> CTrksegType::m_hasMetaData{false};
CParentElementInfo* CTrksegType::m_classInfo = nullptr;
CElementInfo** CTrksegType::m_elementInfo = nullptr;
CAttributeInfo** CTrksegType::m_attributeInfo = nullptr;
CElementInfo* CTrksegType::m_elementRecords[3] = {};
CAttributeInfo* CTrksegType::m_attributeRecords[1] = {};

CTrksegType::CTrksegType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CTrksegType::~CTrksegType() = default;

std::string CTrksegType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CTrksegType::GetNamespace() const {
    return kNamespace;
}

void CTrksegType::Init() {
    m_trkpt.Reset();
    m_extensions.Reset();
}

CSmartPtr<CWptTypeCol> CTrksegType::GetTrkpt() {
    if (m_trkpt == nullptr) m_trkpt = new CWptTypeCol("trkpt", kNamespace, 0, -1);
    return m_trkpt;
}

void CTrksegType::SetExtensions(const CSmartPtr<CExtensionsType>& value) {
    if (value != nullptr) SetElementName(value.Get(), "extensions");
    m_extensions = value;
}

void CTrksegType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_trkpt:
            if (read) {
                if (m_trkpt != nullptr) value.SetXmlCollectionReference(m_trkpt.Get());
            } else {
                GetTrkpt();
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

std::uint64_t CTrksegType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_trkpt, m_trkpt != nullptr) | bit(Property_extensions, m_extensions != nullptr);
}

CParentElementInfo* CTrksegType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CTrksegType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CTrksegType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CTrksegType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    try {
        m_classInfo =
            new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "trksegType",
                                   kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_elementInfo = m_elementRecords;
        m_elementRecords[0] =
            new CElementInfoSeqClsCol("trkpt", kNamespace, Property_trkpt, XmlElementType_Element);
        m_elementRecords[1] =
            new CElementInfoSeqClsOpt("extensions", kNamespace, Property_extensions, XmlElementType_Element,
                                      &CClassFactory::Create, CClassFactory::ClassId_ExtensionsType);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CTrksegType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Gpx
