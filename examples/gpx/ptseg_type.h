/// GPX 1.1 type ptsegType: a sequence of points, for use by other schemas.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "examples/gpx/pt_type.h"
#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/xml_generated_class.h"

namespace Gpx {

class CPtsegType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CPtsegType() : CPtsegType(nullptr) {}
    explicit CPtsegType(const char* elementName);
    CPtsegType(const CPtsegType&) = delete;
    CPtsegType& operator=(const CPtsegType&) = delete;
    ~CPtsegType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

    // element `pt`: any number, points of the sequence
    KvXmlLib16::CSmartPtr<CPtTypeCol> GetPt();

protected:
    void AccessProperty(int propertyIndex, bool read, KvXmlLib16::KvVariant& value) override;
    KvXmlLib16::CParentElementInfo* GetClassInfo() const override;
    KvXmlLib16::CElementInfo** GetClassElementInfo() const override;
    KvXmlLib16::CAttributeInfo** GetClassAttributeInfo() const override;
    void Init() override;
    std::uint64_t GetUsedProperties() const override;

private:
    enum Property {
        Property_pt,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[2];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[1];

    KvXmlLib16::CSmartPtr<CPtTypeCol> m_pt;
};

}  // namespace Gpx
