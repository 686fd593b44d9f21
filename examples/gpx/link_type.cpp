#include "examples/gpx/link_type.h"

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

std::atomic<bool> CLinkType::m_hasMetaData{false};
CParentElementInfo* CLinkType::m_classInfo = nullptr;
CElementInfo** CLinkType::m_elementInfo = nullptr;
CAttributeInfo** CLinkType::m_attributeInfo = nullptr;
CElementInfo* CLinkType::m_elementRecords[3] = {};
CAttributeInfo* CLinkType::m_attributeRecords[2] = {};

CLinkType::CLinkType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CLinkType::~CLinkType() = default;

std::string CLinkType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CLinkType::GetNamespace() const {
    return kNamespace;
}

void CLinkType::Init() {
    m_href.clear();
    m_text.Reset();
    m_type.Reset();
}

void CLinkType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_href:
            if (read) {
                value.SetStringReference(m_href);
            } else {
                SetHref(value.TakeString());
            }
            break;
        case Property_text:
            if (read) {
                if (m_text.IsSet()) value.SetStringReference(*m_text);
            } else {
                SetText(value.TakeString());
            }
            break;
        case Property_type:
            if (read) {
                if (m_type.IsSet()) value.SetStringReference(*m_type);
            } else {
                SetType(value.TakeString());
            }
            break;
        default:
            break;
    }
}

std::uint64_t CLinkType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_href, true) | bit(Property_text, m_text.IsSet()) | bit(Property_type, m_type.IsSet());
}

CParentElementInfo* CLinkType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CLinkType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CLinkType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CLinkType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    try {
        m_classInfo = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "linkType",
                                             kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_attributeRecords[0] = new CAttributeInfoPrimitive(
            "href", "", Property_href, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
        m_elementInfo = m_elementRecords;
        m_elementRecords[0] = new CElementInfoSeqPrimOpt(
            "text", kNamespace, Property_text, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[1] = new CElementInfoSeqPrimOpt(
            "type", kNamespace, Property_type, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CLinkType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Gpx
