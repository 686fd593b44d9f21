/// GPX 1.1 type wptType: a waypoint, or a point of a route or of a track.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "examples/gpx/extensions_type.h"
#include "examples/gpx/fix_type.h"
#include "examples/gpx/link_type.h"
#include "kvxml/base/optional_value.h"
#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/xml_collection.h"
#include "kvxml/objects/xml_generated_class.h"
#include "kvxml/types/big_integer.h"
#include "kvxml/types/date_time.h"
#include "kvxml/types/decimal.h"

namespace Gpx {

class CWptType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CWptType() : CWptType(nullptr) {}
    explicit CWptType(const char* elementName);
    CWptType(const CWptType&) = delete;
    CWptType& operator=(const CWptType&) = delete;
    ~CWptType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

    // attribute `lat`: required, degrees, WGS 84
    KvXmlLib16::CDecimal GetLat() const { return m_lat; }
    void SetLat(KvXmlLib16::CDecimal value) { m_lat = std::move(value); }

    // attribute `lon`: required, degrees, WGS 84
    KvXmlLib16::CDecimal GetLon() const { return m_lon; }
    void SetLon(KvXmlLib16::CDecimal value) { m_lon = std::move(value); }

    // element `ele`: optional, metres
    KvXmlLib16::CDecimal GetEle() const { return m_isValidEle ? m_ele : KvXmlLib16::CDecimal(); }
    void SetEle(KvXmlLib16::CDecimal value) {
        m_ele = std::move(value);
        m_isValidEle = true;
    }
    bool IsValidEle() const { return m_isValidEle; }
    void UnsetEle() { m_isValidEle = false; }

    // element `time`: optional
    KvXmlLib16::CDateTime GetTime() const { return m_isValidTime ? m_time : KvXmlLib16::CDateTime(); }
    void SetTime(const KvXmlLib16::CDateTime& value);
    bool IsValidTime() const { return m_isValidTime; }
    void UnsetTime() { m_isValidTime = false; }

    // element `magvar`: optional, magnetic variation in degrees
    KvXmlLib16::CDecimal GetMagvar() const { return m_magvar.Get(); }
    void SetMagvar(KvXmlLib16::CDecimal value) { m_magvar.Set(std::move(value)); }
    bool IsValidMagvar() const { return m_magvar.IsSet(); }
    void UnsetMagvar() { m_magvar.Reset(); }

    // element `geoidheight`: optional, metres above the ellipsoid
    KvXmlLib16::CDecimal GetGeoidheight() const { return m_geoidheight.Get(); }
    void SetGeoidheight(KvXmlLib16::CDecimal value) { m_geoidheight.Set(std::move(value)); }
    bool IsValidGeoidheight() const { return m_geoidheight.IsSet(); }
    void UnsetGeoidheight() { m_geoidheight.Reset(); }

    // element `name`: optional
    std::string GetName() const { return m_name.Get(); }
    void SetName(std::string value) { m_name.Set(std::move(value)); }
    bool IsValidName() const { return m_name.IsSet(); }
    void UnsetName() { m_name.Reset(); }

    // element `cmt`: optional
    std::string GetCmt() const { return m_cmt.Get(); }
    void SetCmt(std::string value) { m_cmt.Set(std::move(value)); }
    bool IsValidCmt() const { return m_cmt.IsSet(); }
    void UnsetCmt() { m_cmt.Reset(); }

    // element `desc`: optional
    std::string GetDesc() const { return m_desc.Get(); }
    void SetDesc(std::string value) { m_desc.Set(std::move(value)); }
    bool IsValidDesc() const { return m_desc.IsSet(); }
    void UnsetDesc() { m_desc.Reset(); }

    // element `src`: optional
    std::string GetSrc() const { return m_src.Get(); }
    void SetSrc(std::string value) { m_src.Set(std::move(value)); }
    bool IsValidSrc() const { return m_src.IsSet(); }
    void UnsetSrc() { m_src.Reset(); }

    // element `link`: any number, related resources
    KvXmlLib16::CSmartPtr<CLinkTypeCol> GetLink();

    // element `sym`: optional
    std::string GetSym() const { return m_sym.Get(); }
    void SetSym(std::string value) { m_sym.Set(std::move(value)); }
    bool IsValidSym() const { return m_sym.IsSet(); }
    void UnsetSym() { m_sym.Reset(); }

    // element `type`: optional
    std::string GetType() const { return m_type.Get(); }
    void SetType(std::string value) { m_type.Set(std::move(value)); }
    bool IsValidType() const { return m_type.IsSet(); }
    void UnsetType() { m_type.Reset(); }

    // element `fix`: optional, how the position was found
    EFixType GetFix() const { return m_isValidFix ? m_fix : EFixType_none; }
    void SetFix(EFixType value) {
        m_fix = value;
        m_isValidFix = true;
    }
    bool IsValidFix() const { return m_isValidFix; }
    void UnsetFix() { m_isValidFix = false; }

    // element `sat`: optional, number of satellites
    KvXmlLib16::CBigInteger GetSat() const { return m_sat.Get(); }
    void SetSat(KvXmlLib16::CBigInteger value) { m_sat.Set(std::move(value)); }
    bool IsValidSat() const { return m_sat.IsSet(); }
    void UnsetSat() { m_sat.Reset(); }

    // element `hdop`: optional
    KvXmlLib16::CDecimal GetHdop() const { return m_hdop.Get(); }
    void SetHdop(KvXmlLib16::CDecimal value) { m_hdop.Set(std::move(value)); }
    bool IsValidHdop() const { return m_hdop.IsSet(); }
    void UnsetHdop() { m_hdop.Reset(); }

    // element `vdop`: optional
    KvXmlLib16::CDecimal GetVdop() const { return m_vdop.Get(); }
    void SetVdop(KvXmlLib16::CDecimal value) { m_vdop.Set(std::move(value)); }
    bool IsValidVdop() const { return m_vdop.IsSet(); }
    void UnsetVdop() { m_vdop.Reset(); }

    // element `pdop`: optional
    KvXmlLib16::CDecimal GetPdop() const { return m_pdop.Get(); }
    void SetPdop(KvXmlLib16::CDecimal value) { m_pdop.Set(std::move(value)); }
    bool IsValidPdop() const { return m_pdop.IsSet(); }
    void UnsetPdop() { m_pdop.Reset(); }

    // element `ageofdgpsdata`: optional, seconds
    KvXmlLib16::CDecimal GetAgeofdgpsdata() const { return m_ageofdgpsdata.Get(); }
    void SetAgeofdgpsdata(KvXmlLib16::CDecimal value) { m_ageofdgpsdata.Set(std::move(value)); }
    bool IsValidAgeofdgpsdata() const { return m_ageofdgpsdata.IsSet(); }
    void UnsetAgeofdgpsdata() { m_ageofdgpsdata.Reset(); }

    // element `dgpsid`: optional, 0 to 1023
    KvXmlLib16::CBigInteger GetDgpsid() const { return m_dgpsid.Get(); }
    void SetDgpsid(KvXmlLib16::CBigInteger value) { m_dgpsid.Set(std::move(value)); }
    bool IsValidDgpsid() const { return m_dgpsid.IsSet(); }
    void UnsetDgpsid() { m_dgpsid.Reset(); }

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
        Property_lat,
        Property_lon,
        Property_ele,
        Property_time,
        Property_magvar,
        Property_geoidheight,
        Property_name,
        Property_cmt,
        Property_desc,
        Property_src,
        Property_link,
        Property_sym,
        Property_type,
        Property_fix,
        Property_sat,
        Property_hdop,
        Property_vdop,
        Property_pdop,
        Property_ageofdgpsdata,
        Property_dgpsid,
        Property_extensions,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[20];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[3];

    bool m_isValidEle : 1;
    bool m_isValidTime : 1;
    bool m_isValidFix : 1;
    KvXmlLib16::CDecimal m_lat;
    KvXmlLib16::CDecimal m_lon;
    KvXmlLib16::CDecimal m_ele;
    KvXmlLib16::CDateTime m_time;
    KvXmlLib16::COptionalValue<KvXmlLib16::CDecimal> m_magvar;
    KvXmlLib16::COptionalValue<KvXmlLib16::CDecimal> m_geoidheight;
    KvXmlLib16::COptionalValue<std::string> m_name;
    KvXmlLib16::COptionalValue<std::string> m_cmt;
    KvXmlLib16::COptionalValue<std::string> m_desc;
    KvXmlLib16::COptionalValue<std::string> m_src;
    KvXmlLib16::CSmartPtr<CLinkTypeCol> m_link;
    KvXmlLib16::COptionalValue<std::string> m_sym;
    KvXmlLib16::COptionalValue<std::string> m_type;
    EFixType m_fix = EFixType_none;
    KvXmlLib16::COptionalValue<KvXmlLib16::CBigInteger> m_sat;
    KvXmlLib16::COptionalValue<KvXmlLib16::CDecimal> m_hdop;
    KvXmlLib16::COptionalValue<KvXmlLib16::CDecimal> m_vdop;
    KvXmlLib16::COptionalValue<KvXmlLib16::CDecimal> m_pdop;
    KvXmlLib16::COptionalValue<KvXmlLib16::CDecimal> m_ageofdgpsdata;
    KvXmlLib16::COptionalValue<KvXmlLib16::CBigInteger> m_dgpsid;
    KvXmlLib16::CSmartPtr<CExtensionsType> m_extensions;
};

static_assert(sizeof(CWptType) <= 232 || sizeof(void*) != 8, "a track has a million of them");

class CWptTypeCol : public KvXmlLib16::CXmlTypedCollection<CWptType> {
public:
    using CXmlTypedCollection::CXmlTypedCollection;
};

}  // namespace Gpx
