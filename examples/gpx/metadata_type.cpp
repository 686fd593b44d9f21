#include "examples/gpx/metadata_type.h"

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

std::atomic<bool> CMetadataType::m_hasMetaData{false};
CParentElementInfo* CMetadataType::m_classInfo = nullptr;
CElementInfo** CMetadataType::m_elementInfo = nullptr;
CAttributeInfo** CMetadataType::m_attributeInfo = nullptr;
CElementInfo* CMetadataType::m_elementRecords[10] = {};
CAttributeInfo* CMetadataType::m_attributeRecords[1] = {};

CMetadataType::CMetadataType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CMetadataType::~CMetadataType() = default;

std::string CMetadataType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CMetadataType::GetNamespace() const {
    return kNamespace;
}

void CMetadataType::Init() {
    m_name.Reset();
    m_desc.Reset();
    m_author.Reset();
    m_copyright.Reset();
    m_link.Reset();
    m_isValidTime = false;
    m_keywords.Reset();
    m_bounds.Reset();
    m_extensions.Reset();
}

void CMetadataType::SetAuthor(const CSmartPtr<CPersonType>& value) {
    if (value != nullptr) SetElementName(value.Get(), "author");
    m_author = value;
}

void CMetadataType::SetCopyright(const CSmartPtr<CCopyrightType>& value) {
    if (value != nullptr) SetElementName(value.Get(), "copyright");
    m_copyright = value;
}

CSmartPtr<CLinkTypeCol> CMetadataType::GetLink() {
    if (m_link == nullptr) m_link = new CLinkTypeCol("link", kNamespace, 0, -1);
    return m_link;
}

void CMetadataType::SetTime(const CDateTime& value) {
    CDateTime dateTime;
    dateTime.SetDateTime(value, CDateTime::dt_dateTime);
    m_time = dateTime;
    m_isValidTime = true;
}

void CMetadataType::SetBounds(const CSmartPtr<CBoundsType>& value) {
    if (value != nullptr) SetElementName(value.Get(), "bounds");
    m_bounds = value;
}

void CMetadataType::SetExtensions(const CSmartPtr<CExtensionsType>& value) {
    if (value != nullptr) SetElementName(value.Get(), "extensions");
    m_extensions = value;
}

void CMetadataType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_name:
            if (read) {
                if (m_name.IsSet()) value.SetStringReference(*m_name);
            } else {
                SetName(value.TakeString());
            }
            break;
        case Property_desc:
            if (read) {
                if (m_desc.IsSet()) value.SetStringReference(*m_desc);
            } else {
                SetDesc(value.TakeString());
            }
            break;
        case Property_author:
            if (read) {
                if (m_author != nullptr) value.SetXmlObjectReference(m_author.Get());
            } else {
                SetAuthor(static_cast<CPersonType*>(value.PeekXmlObject()));
            }
            break;
        case Property_copyright:
            if (read) {
                if (m_copyright != nullptr) value.SetXmlObjectReference(m_copyright.Get());
            } else {
                SetCopyright(static_cast<CCopyrightType*>(value.PeekXmlObject()));
            }
            break;
        case Property_link:
            if (read) {
                if (m_link != nullptr) value.SetXmlCollectionReference(m_link.Get());
            } else {
                GetLink();
            }
            break;
        case Property_time:
            if (read) {
                if (m_isValidTime) value.SetDateTime(m_time);
            } else {
                m_time = value.DateTimeValue();
                m_isValidTime = true;
            }
            break;
        case Property_keywords:
            if (read) {
                if (m_keywords.IsSet()) value.SetStringReference(*m_keywords);
            } else {
                SetKeywords(value.TakeString());
            }
            break;
        case Property_bounds:
            if (read) {
                if (m_bounds != nullptr) value.SetXmlObjectReference(m_bounds.Get());
            } else {
                SetBounds(static_cast<CBoundsType*>(value.PeekXmlObject()));
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

std::uint64_t CMetadataType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_name, m_name.IsSet()) | bit(Property_desc, m_desc.IsSet()) |
           bit(Property_author, m_author != nullptr) | bit(Property_copyright, m_copyright != nullptr) |
           bit(Property_link, m_link != nullptr) | bit(Property_time, m_isValidTime) |
           bit(Property_keywords, m_keywords.IsSet()) | bit(Property_bounds, m_bounds != nullptr) |
           bit(Property_extensions, m_extensions != nullptr);
}

CParentElementInfo* CMetadataType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CMetadataType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CMetadataType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CMetadataType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    try {
        m_classInfo =
            new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "metadataType",
                                   kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_elementInfo = m_elementRecords;
        m_elementRecords[0] = new CElementInfoSeqPrimOpt(
            "name", kNamespace, Property_name, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[1] = new CElementInfoSeqPrimOpt(
            "desc", kNamespace, Property_desc, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[2] =
            new CElementInfoSeqClsOpt("author", kNamespace, Property_author, XmlElementType_Element,
                                      &CClassFactory::Create, CClassFactory::ClassId_PersonType);
        m_elementRecords[3] =
            new CElementInfoSeqClsOpt("copyright", kNamespace, Property_copyright, XmlElementType_Element,
                                      &CClassFactory::Create, CClassFactory::ClassId_CopyrightType);
        m_elementRecords[4] =
            new CElementInfoSeqClsCol("link", kNamespace, Property_link, XmlElementType_Element);
        m_elementRecords[5] = new CElementInfoSeqPrimOpt(
            "time", kNamespace, Property_time, false, ItemType_datetime, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[6] = new CElementInfoSeqPrimOpt(
            "keywords", kNamespace, Property_keywords, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[7] =
            new CElementInfoSeqClsOpt("bounds", kNamespace, Property_bounds, XmlElementType_Element,
                                      &CClassFactory::Create, CClassFactory::ClassId_BoundsType);
        m_elementRecords[8] =
            new CElementInfoSeqClsOpt("extensions", kNamespace, Property_extensions, XmlElementType_Element,
                                      &CClassFactory::Create, CClassFactory::ClassId_ExtensionsType);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CMetadataType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Gpx
