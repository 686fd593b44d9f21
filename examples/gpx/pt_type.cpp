#include "examples/gpx/pt_type.h"

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

std::atomic<bool> CPtType::m_hasMetaData{false};
CParentElementInfo* CPtType::m_classInfo = nullptr;
CElementInfo** CPtType::m_elementInfo = nullptr;
CAttributeInfo** CPtType::m_attributeInfo = nullptr;
CElementInfo* CPtType::m_elementRecords[3] = {};
CAttributeInfo* CPtType::m_attributeRecords[3] = {};

CPtType::CPtType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CPtType::~CPtType() = default;

std::string CPtType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CPtType::GetNamespace() const {
    return kNamespace;
}

void CPtType::Init() {
    m_lat = CDecimal();
    m_lon = CDecimal();
    m_isValidEle = false;
    m_isValidTime = false;
}

void CPtType::SetTime(const CDateTime& value) {
    CDateTime dateTime;
    dateTime.SetDateTime(value, CDateTime::dt_dateTime);
    m_time = dateTime;
    m_isValidTime = true;
}

void CPtType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_lat:
            if (read) {
                value.SetDecimal(m_lat);
            } else {
                SetLat(value.TakeDecimal());
            }
            break;
        case Property_lon:
            if (read) {
                value.SetDecimal(m_lon);
            } else {
                SetLon(value.TakeDecimal());
            }
            break;
        case Property_ele:
            if (read) {
                if (m_isValidEle) value.SetDecimal(m_ele);
            } else {
                SetEle(value.TakeDecimal());
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
        default:
            break;
    }
}

std::uint64_t CPtType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_lat, true) | bit(Property_lon, true) | bit(Property_ele, m_isValidEle) |
           bit(Property_time, m_isValidTime);
}

CParentElementInfo* CPtType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CPtType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CPtType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CPtType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    const CPrimitiveRestrictions latitudeType(nullptr, -1, -1, "-90.0", "90.0", nullptr, nullptr, -1, -1, -1,
                                              CWhitespaceUtils::WhitespaceRule_Collapse, nullptr);
    const CPrimitiveRestrictions longitudeType(nullptr, -1, -1, "-180.0", nullptr, nullptr, "180.0", -1, -1,
                                               -1, CWhitespaceUtils::WhitespaceRule_Collapse, nullptr);
    try {
        m_classInfo = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "ptType",
                                             kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_attributeRecords[0] =
            new CAttributeInfoPrimitive("lat", "", Property_lat, false, ItemType_decimal, nullptr,
                                        CWhitespaceUtils::WhitespaceRule_Collapse, latitudeType, nullptr);
        m_attributeRecords[1] =
            new CAttributeInfoPrimitive("lon", "", Property_lon, false, ItemType_decimal, nullptr,
                                        CWhitespaceUtils::WhitespaceRule_Collapse, longitudeType, nullptr);
        m_elementInfo = m_elementRecords;
        m_elementRecords[0] = new CElementInfoSeqPrimOpt(
            "ele", kNamespace, Property_ele, false, ItemType_decimal, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[1] = new CElementInfoSeqPrimOpt(
            "time", kNamespace, Property_time, false, ItemType_datetime, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CPtType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Gpx
