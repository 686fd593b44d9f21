#include "examples/gpx/trk_type.h"

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

std::atomic<bool> CTrkType::m_hasMetaData{false};
CParentElementInfo* CTrkType::m_classInfo = nullptr;
CElementInfo** CTrkType::m_elementInfo = nullptr;
CAttributeInfo** CTrkType::m_attributeInfo = nullptr;
CElementInfo* CTrkType::m_elementRecords[10] = {};
CAttributeInfo* CTrkType::m_attributeRecords[1] = {};

CTrkType::CTrkType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CTrkType::~CTrkType() = default;

std::string CTrkType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CTrkType::GetNamespace() const {
    return kNamespace;
}

void CTrkType::Init() {
    m_name.Reset();
    m_cmt.Reset();
    m_desc.Reset();
    m_src.Reset();
    m_link.Reset();
    m_number.Reset();
    m_type.Reset();
    m_extensions.Reset();
    m_trkseg.Reset();
}

CSmartPtr<CLinkTypeCol> CTrkType::GetLink() {
    if (m_link == nullptr) m_link = new CLinkTypeCol("link", kNamespace, 0, -1);
    return m_link;
}

void CTrkType::SetExtensions(const CSmartPtr<CExtensionsType>& value) {
    if (value != nullptr) SetElementName(value.Get(), "extensions");
    m_extensions = value;
}

CSmartPtr<CTrksegTypeCol> CTrkType::GetTrkseg() {
    if (m_trkseg == nullptr) m_trkseg = new CTrksegTypeCol("trkseg", kNamespace, 0, -1);
    return m_trkseg;
}

void CTrkType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_name:
            if (read) {
                if (m_name.IsSet()) value.SetStringReference(*m_name);
            } else {
                SetName(value.TakeString());
            }
            break;
        case Property_cmt:
            if (read) {
                if (m_cmt.IsSet()) value.SetStringReference(*m_cmt);
            } else {
                SetCmt(value.TakeString());
            }
            break;
        case Property_desc:
            if (read) {
                if (m_desc.IsSet()) value.SetStringReference(*m_desc);
            } else {
                SetDesc(value.TakeString());
            }
            break;
        case Property_src:
            if (read) {
                if (m_src.IsSet()) value.SetStringReference(*m_src);
            } else {
                SetSrc(value.TakeString());
            }
            break;
        case Property_link:
            if (read) {
                if (m_link != nullptr) value.SetXmlCollectionReference(m_link.Get());
            } else {
                GetLink();
            }
            break;
        case Property_number:
            if (read) {
                if (m_number.IsSet()) value.SetInteger(*m_number);
            } else {
                SetNumber(value.TakeInteger());
            }
            break;
        case Property_type:
            if (read) {
                if (m_type.IsSet()) value.SetStringReference(*m_type);
            } else {
                SetType(value.TakeString());
            }
            break;
        case Property_extensions:
            if (read) {
                if (m_extensions != nullptr) value.SetXmlObjectReference(m_extensions.Get());
            } else {
                SetExtensions(static_cast<CExtensionsType*>(value.PeekXmlObject()));
            }
            break;
        case Property_trkseg:
            if (read) {
                if (m_trkseg != nullptr) value.SetXmlCollectionReference(m_trkseg.Get());
            } else {
                GetTrkseg();
            }
            break;
        default:
            break;
    }
}

std::uint64_t CTrkType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_name, m_name.IsSet()) | bit(Property_cmt, m_cmt.IsSet()) |
           bit(Property_desc, m_desc.IsSet()) | bit(Property_src, m_src.IsSet()) |
           bit(Property_link, m_link != nullptr) | bit(Property_number, m_number.IsSet()) |
           bit(Property_type, m_type.IsSet()) | bit(Property_extensions, m_extensions != nullptr) |
           bit(Property_trkseg, m_trkseg != nullptr);
}

CParentElementInfo* CTrkType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CTrkType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CTrkType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CTrkType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    const CPrimitiveRestrictions nonNegativeInteger(nullptr, -1, -1, "0", nullptr, nullptr, nullptr, -1, -1,
                                                    -1, CWhitespaceUtils::WhitespaceRule_Collapse, nullptr);
    try {
        m_classInfo = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "trkType",
                                             kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_elementInfo = m_elementRecords;
        m_elementRecords[0] = new CElementInfoSeqPrimOpt(
            "name", kNamespace, Property_name, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[1] = new CElementInfoSeqPrimOpt(
            "cmt", kNamespace, Property_cmt, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[2] = new CElementInfoSeqPrimOpt(
            "desc", kNamespace, Property_desc, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[3] = new CElementInfoSeqPrimOpt(
            "src", kNamespace, Property_src, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[4] =
            new CElementInfoSeqClsCol("link", kNamespace, Property_link, XmlElementType_Element);
        m_elementRecords[5] = new CElementInfoSeqPrimOpt(
            "number", kNamespace, Property_number, false, ItemType_integer, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, nonNegativeInteger, nullptr);
        m_elementRecords[6] = new CElementInfoSeqPrimOpt(
            "type", kNamespace, Property_type, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[7] =
            new CElementInfoSeqClsOpt("extensions", kNamespace, Property_extensions, XmlElementType_Element,
                                      &CClassFactory::Create, CClassFactory::ClassId_ExtensionsType);
        m_elementRecords[8] =
            new CElementInfoSeqClsCol("trkseg", kNamespace, Property_trkseg, XmlElementType_Element);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CTrkType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Gpx
