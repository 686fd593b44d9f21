#include "examples/gpx/copyright_type.h"

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

std::atomic<bool> CCopyrightType::m_hasMetaData{false};
CParentElementInfo* CCopyrightType::m_classInfo = nullptr;
CElementInfo** CCopyrightType::m_elementInfo = nullptr;
CAttributeInfo** CCopyrightType::m_attributeInfo = nullptr;
CElementInfo* CCopyrightType::m_elementRecords[3] = {};
CAttributeInfo* CCopyrightType::m_attributeRecords[2] = {};

CCopyrightType::CCopyrightType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CCopyrightType::~CCopyrightType() = default;

std::string CCopyrightType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CCopyrightType::GetNamespace() const {
    return kNamespace;
}

void CCopyrightType::Init() {
    m_author.clear();
    m_isValidYear = false;
    m_license.Reset();
}

void CCopyrightType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_author:
            if (read) {
                value.SetStringReference(m_author);
            } else {
                SetAuthor(value.TakeString());
            }
            break;
        case Property_year:
            if (read) {
                if (m_isValidYear) value.SetYear(m_year);
            } else {
                SetYear(value.GetYear());
            }
            break;
        case Property_license:
            if (read) {
                if (m_license.IsSet()) value.SetStringReference(*m_license);
            } else {
                SetLicense(value.TakeString());
            }
            break;
        default:
            break;
    }
}

std::uint64_t CCopyrightType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_author, true) | bit(Property_year, m_isValidYear) |
           bit(Property_license, m_license.IsSet());
}

CParentElementInfo* CCopyrightType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CCopyrightType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CCopyrightType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CCopyrightType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    try {
        m_classInfo =
            new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "copyrightType",
                                   kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_attributeRecords[0] = new CAttributeInfoPrimitive(
            "author", "", Property_author, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementInfo = m_elementRecords;
        m_elementRecords[0] = new CElementInfoSeqPrimOpt(
            "year", kNamespace, Property_year, false, ItemType_year, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[1] = new CElementInfoSeqPrimOpt(
            "license", kNamespace, Property_license, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CCopyrightType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Gpx
