/// GPX 1.1 type ptType: a point with position, elevation and time, for use by other schemas.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "kvxml/objects/xml_collection.h"
#include "kvxml/objects/xml_generated_class.h"
#include "kvxml/types/date_time.h"
#include "kvxml/types/decimal.h"

namespace Gpx {

class CPtType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CPtType() : CPtType(nullptr) {}
    explicit CPtType(const char* elementName);
    CPtType(const CPtType&) = delete;
    CPtType& operator=(const CPtType&) = delete;
    ~CPtType() override;

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
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[3];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[3];

    bool m_isValidEle : 1;
    bool m_isValidTime : 1;
    KvXmlLib16::CDecimal m_lat;
    KvXmlLib16::CDecimal m_lon;
    KvXmlLib16::CDecimal m_ele;
    KvXmlLib16::CDateTime m_time;
};

class CPtTypeCol : public KvXmlLib16::CXmlTypedCollection<CPtType> {
public:
    using CXmlTypedCollection::CXmlTypedCollection;
};

}  // namespace Gpx
