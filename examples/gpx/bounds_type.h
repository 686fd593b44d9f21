/// GPX 1.1 type boundsType: a rectangle of positions.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <string>
#include <utility>

#include "kvxml/objects/xml_generated_class.h"
#include "kvxml/types/decimal.h"

namespace Gpx {

class CBoundsType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CBoundsType() : CBoundsType(nullptr) {}
    explicit CBoundsType(const char* elementName);
    CBoundsType(const CBoundsType&) = delete;
    CBoundsType& operator=(const CBoundsType&) = delete;
    ~CBoundsType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

    // attribute `minlat`: required
    KvXmlLib16::CDecimal GetMinlat() const { return m_minlat; }
    void SetMinlat(KvXmlLib16::CDecimal value) { m_minlat = std::move(value); }

    // attribute `minlon`: required
    KvXmlLib16::CDecimal GetMinlon() const { return m_minlon; }
    void SetMinlon(KvXmlLib16::CDecimal value) { m_minlon = std::move(value); }

    // attribute `maxlat`: required
    KvXmlLib16::CDecimal GetMaxlat() const { return m_maxlat; }
    void SetMaxlat(KvXmlLib16::CDecimal value) { m_maxlat = std::move(value); }

    // attribute `maxlon`: required
    KvXmlLib16::CDecimal GetMaxlon() const { return m_maxlon; }
    void SetMaxlon(KvXmlLib16::CDecimal value) { m_maxlon = std::move(value); }

protected:
    void AccessProperty(int propertyIndex, bool read, KvXmlLib16::KvVariant& value) override;
    KvXmlLib16::CParentElementInfo* GetClassInfo() const override;
    KvXmlLib16::CElementInfo** GetClassElementInfo() const override;
    KvXmlLib16::CAttributeInfo** GetClassAttributeInfo() const override;
    void Init() override;

private:
    enum Property {
        Property_minlat,
        Property_minlon,
        Property_maxlat,
        Property_maxlon,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[1];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[5];

    KvXmlLib16::CDecimal m_minlat;
    KvXmlLib16::CDecimal m_minlon;
    KvXmlLib16::CDecimal m_maxlat;
    KvXmlLib16::CDecimal m_maxlon;
};

}  // namespace Gpx
