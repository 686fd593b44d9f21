#include "examples/gpx/bounds_type.h"

#include <mutex>

#include "examples/gpx/class_factory.h"
#include "kvxml/objects/attribute_info.h"
#include "kvxml/objects/element_info.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/variant.h"
#include "kvxml/platform/critical_section.h"

namespace Gpx {

using namespace KvXmlLib16;
using namespace KvXmlLib16Data;

std::atomic<bool> CBoundsType::m_hasMetaData{false};
CParentElementInfo* CBoundsType::m_classInfo = nullptr;
CElementInfo** CBoundsType::m_elementInfo = nullptr;
CAttributeInfo** CBoundsType::m_attributeInfo = nullptr;
CElementInfo* CBoundsType::m_elementRecords[1] = {};
CAttributeInfo* CBoundsType::m_attributeRecords[5] = {};

CBoundsType::CBoundsType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CBoundsType::~CBoundsType() = default;

std::string CBoundsType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CBoundsType::GetNamespace() const {
    return kNamespace;
}

void CBoundsType::Init() {
    m_minlat = CDecimal();
    m_minlon = CDecimal();
    m_maxlat = CDecimal();
    m_maxlon = CDecimal();
}

void CBoundsType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_minlat:
            if (read) {
                value.SetDecimal(m_minlat);
            } else {
                SetMinlat(value.TakeDecimal());
            }
            break;
        case Property_minlon:
            if (read) {
                value.SetDecimal(m_minlon);
            } else {
                SetMinlon(value.TakeDecimal());
            }
            break;
        case Property_maxlat:
            if (read) {
                value.SetDecimal(m_maxlat);
            } else {
                SetMaxlat(value.TakeDecimal());
            }
            break;
        case Property_maxlon:
            if (read) {
                value.SetDecimal(m_maxlon);
            } else {
                SetMaxlon(value.TakeDecimal());
            }
            break;
        default:
            break;
    }
}

CParentElementInfo* CBoundsType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CBoundsType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CBoundsType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CBoundsType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    const CPrimitiveRestrictions latitudeType(nullptr, -1, -1, "-90.0", "90.0", nullptr, nullptr, -1, -1, -1,
                                              CWhitespaceUtils::WhitespaceRule_Collapse, nullptr);
    const CPrimitiveRestrictions longitudeType(nullptr, -1, -1, "-180.0", nullptr, nullptr, "180.0", -1, -1,
                                               -1, CWhitespaceUtils::WhitespaceRule_Collapse, nullptr);
    try {
        m_classInfo =
            new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "boundsType",
                                   kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_attributeRecords[0] =
            new CAttributeInfoPrimitive("minlat", "", Property_minlat, false, ItemType_decimal, nullptr,
                                        CWhitespaceUtils::WhitespaceRule_Collapse, latitudeType, nullptr);
        m_attributeRecords[1] =
            new CAttributeInfoPrimitive("minlon", "", Property_minlon, false, ItemType_decimal, nullptr,
                                        CWhitespaceUtils::WhitespaceRule_Collapse, longitudeType, nullptr);
        m_attributeRecords[2] =
            new CAttributeInfoPrimitive("maxlat", "", Property_maxlat, false, ItemType_decimal, nullptr,
                                        CWhitespaceUtils::WhitespaceRule_Collapse, latitudeType, nullptr);
        m_attributeRecords[3] =
            new CAttributeInfoPrimitive("maxlon", "", Property_maxlon, false, ItemType_decimal, nullptr,
                                        CWhitespaceUtils::WhitespaceRule_Collapse, longitudeType, nullptr);
        m_elementInfo = m_elementRecords;
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CBoundsType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Gpx
