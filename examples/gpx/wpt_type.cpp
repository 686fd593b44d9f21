#include "examples/gpx/wpt_type.h"

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

std::atomic<bool> CWptType::m_hasMetaData{false};
CParentElementInfo* CWptType::m_classInfo = nullptr;
CElementInfo** CWptType::m_elementInfo = nullptr;
CAttributeInfo** CWptType::m_attributeInfo = nullptr;
CElementInfo* CWptType::m_elementRecords[20] = {};
CAttributeInfo* CWptType::m_attributeRecords[3] = {};

CWptType::CWptType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CWptType::~CWptType() = default;

std::string CWptType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CWptType::GetNamespace() const {
    return kNamespace;
}

void CWptType::Init() {
    m_lat = CDecimal();
    m_lon = CDecimal();
    m_isValidEle = false;
    m_isValidTime = false;
    m_magvar.Reset();
    m_geoidheight.Reset();
    m_name.Reset();
    m_cmt.Reset();
    m_desc.Reset();
    m_src.Reset();
    m_link.Reset();
    m_sym.Reset();
    m_type.Reset();
    m_isValidFix = false;
    m_sat.Reset();
    m_hdop.Reset();
    m_vdop.Reset();
    m_pdop.Reset();
    m_ageofdgpsdata.Reset();
    m_dgpsid.Reset();
    m_extensions.Reset();
}

void CWptType::SetTime(const CDateTime& value) {
    CDateTime dateTime;
    dateTime.SetDateTime(value, CDateTime::dt_dateTime);
    m_time = dateTime;
    m_isValidTime = true;
}

CSmartPtr<CLinkTypeCol> CWptType::GetLink() {
    if (m_link == nullptr) m_link = new CLinkTypeCol("link", kNamespace, 0, -1);
    return m_link;
}

void CWptType::SetExtensions(const CSmartPtr<CExtensionsType>& value) {
    if (value != nullptr) SetElementName(value.Get(), "extensions");
    m_extensions = value;
}

void CWptType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
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
        case Property_magvar:
            if (read) {
                if (m_magvar.IsSet()) value.SetDecimal(*m_magvar);
            } else {
                SetMagvar(value.TakeDecimal());
            }
            break;
        case Property_geoidheight:
            if (read) {
                if (m_geoidheight.IsSet()) value.SetDecimal(*m_geoidheight);
            } else {
                SetGeoidheight(value.TakeDecimal());
            }
            break;
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
        case Property_sym:
            if (read) {
                if (m_sym.IsSet()) value.SetStringReference(*m_sym);
            } else {
                SetSym(value.TakeString());
            }
            break;
        case Property_type:
            if (read) {
                if (m_type.IsSet()) value.SetStringReference(*m_type);
            } else {
                SetType(value.TakeString());
            }
            break;
        case Property_fix:
            if (read) {
                if (m_isValidFix) value.SetI4(m_fix);
            } else {
                SetFix(static_cast<EFixType>(value.GetI4()));
            }
            break;
        case Property_sat:
            if (read) {
                if (m_sat.IsSet()) value.SetInteger(*m_sat);
            } else {
                SetSat(value.TakeInteger());
            }
            break;
        case Property_hdop:
            if (read) {
                if (m_hdop.IsSet()) value.SetDecimal(*m_hdop);
            } else {
                SetHdop(value.TakeDecimal());
            }
            break;
        case Property_vdop:
            if (read) {
                if (m_vdop.IsSet()) value.SetDecimal(*m_vdop);
            } else {
                SetVdop(value.TakeDecimal());
            }
            break;
        case Property_pdop:
            if (read) {
                if (m_pdop.IsSet()) value.SetDecimal(*m_pdop);
            } else {
                SetPdop(value.TakeDecimal());
            }
            break;
        case Property_ageofdgpsdata:
            if (read) {
                if (m_ageofdgpsdata.IsSet()) value.SetDecimal(*m_ageofdgpsdata);
            } else {
                SetAgeofdgpsdata(value.TakeDecimal());
            }
            break;
        case Property_dgpsid:
            if (read) {
                if (m_dgpsid.IsSet()) value.SetInteger(*m_dgpsid);
            } else {
                SetDgpsid(value.TakeInteger());
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

std::uint64_t CWptType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_lat, true) | bit(Property_lon, true) | bit(Property_ele, m_isValidEle) |
           bit(Property_time, m_isValidTime) | bit(Property_magvar, m_magvar.IsSet()) |
           bit(Property_geoidheight, m_geoidheight.IsSet()) | bit(Property_name, m_name.IsSet()) |
           bit(Property_cmt, m_cmt.IsSet()) | bit(Property_desc, m_desc.IsSet()) |
           bit(Property_src, m_src.IsSet()) | bit(Property_link, m_link != nullptr) |
           bit(Property_sym, m_sym.IsSet()) | bit(Property_type, m_type.IsSet()) |
           bit(Property_fix, m_isValidFix) | bit(Property_sat, m_sat.IsSet()) |
           bit(Property_hdop, m_hdop.IsSet()) | bit(Property_vdop, m_vdop.IsSet()) |
           bit(Property_pdop, m_pdop.IsSet()) | bit(Property_ageofdgpsdata, m_ageofdgpsdata.IsSet()) |
           bit(Property_dgpsid, m_dgpsid.IsSet()) | bit(Property_extensions, m_extensions != nullptr);
}

CParentElementInfo* CWptType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CWptType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CWptType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CWptType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    const CPrimitiveRestrictions latitudeType(nullptr, -1, -1, "-90.0", "90.0", nullptr, nullptr, -1, -1, -1,
                                              CWhitespaceUtils::WhitespaceRule_Collapse, nullptr);
    const CPrimitiveRestrictions longitudeType(nullptr, -1, -1, "-180.0", nullptr, nullptr, "180.0", -1, -1,
                                               -1, CWhitespaceUtils::WhitespaceRule_Collapse, nullptr);
    const CPrimitiveRestrictions degreesType(nullptr, -1, -1, "0.0", nullptr, nullptr, "360.0", -1, -1, -1,
                                             CWhitespaceUtils::WhitespaceRule_Collapse, nullptr);
    const CPrimitiveRestrictions nonNegativeInteger(nullptr, -1, -1, "0", nullptr, nullptr, nullptr, -1, -1,
                                                    -1, CWhitespaceUtils::WhitespaceRule_Collapse, nullptr);
    const CPrimitiveRestrictions dgpsStationType(nullptr, -1, -1, "0", "1023", nullptr, nullptr, -1, -1, -1,
                                                 CWhitespaceUtils::WhitespaceRule_Collapse, nullptr);
    try {
        m_classInfo = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "wptType",
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
        m_elementRecords[2] = new CElementInfoSeqPrimOpt(
            "magvar", kNamespace, Property_magvar, false, ItemType_decimal, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, degreesType, nullptr);
        m_elementRecords[3] = new CElementInfoSeqPrimOpt(
            "geoidheight", kNamespace, Property_geoidheight, false, ItemType_decimal, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[4] = new CElementInfoSeqPrimOpt(
            "name", kNamespace, Property_name, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[5] = new CElementInfoSeqPrimOpt(
            "cmt", kNamespace, Property_cmt, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[6] = new CElementInfoSeqPrimOpt(
            "desc", kNamespace, Property_desc, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[7] = new CElementInfoSeqPrimOpt(
            "src", kNamespace, Property_src, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[8] =
            new CElementInfoSeqClsCol("link", kNamespace, Property_link, XmlElementType_Element);
        m_elementRecords[9] = new CElementInfoSeqPrimOpt(
            "sym", kNamespace, Property_sym, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[10] = new CElementInfoSeqPrimOpt(
            "type", kNamespace, Property_type, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[11] = new CElementInfoSeqEnumOpt("fix", kNamespace, Property_fix, false,
                                                          &EFixTypeToString, &EFixTypeFromString, nullptr);
        m_elementRecords[12] = new CElementInfoSeqPrimOpt(
            "sat", kNamespace, Property_sat, false, ItemType_integer, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, nonNegativeInteger, nullptr);
        m_elementRecords[13] = new CElementInfoSeqPrimOpt(
            "hdop", kNamespace, Property_hdop, false, ItemType_decimal, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[14] = new CElementInfoSeqPrimOpt(
            "vdop", kNamespace, Property_vdop, false, ItemType_decimal, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[15] = new CElementInfoSeqPrimOpt(
            "pdop", kNamespace, Property_pdop, false, ItemType_decimal, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[16] = new CElementInfoSeqPrimOpt(
            "ageofdgpsdata", kNamespace, Property_ageofdgpsdata, false, ItemType_decimal, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[17] = new CElementInfoSeqPrimOpt(
            "dgpsid", kNamespace, Property_dgpsid, false, ItemType_integer, nullptr,
            CWhitespaceUtils::WhitespaceRule_Collapse, dgpsStationType, nullptr);
        m_elementRecords[18] =
            new CElementInfoSeqClsOpt("extensions", kNamespace, Property_extensions, XmlElementType_Element,
                                      &CClassFactory::Create, CClassFactory::ClassId_ExtensionsType);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CWptType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Gpx
