/// Orders type CashType: payment in cash, of which there is nothing to say.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <string>

#include "kvxml/objects/xml_generated_class.h"

namespace Orders {

class CCashType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CCashType() : CCashType(nullptr) {}
    explicit CCashType(const char* elementName);
    CCashType(const CCashType&) = delete;
    CCashType& operator=(const CCashType&) = delete;
    ~CCashType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

protected:
    void AccessProperty(int propertyIndex, bool read, KvXmlLib16::KvVariant& value) override;
    KvXmlLib16::CParentElementInfo* GetClassInfo() const override;
    KvXmlLib16::CElementInfo** GetClassElementInfo() const override;
    KvXmlLib16::CAttributeInfo** GetClassAttributeInfo() const override;
    void Init() override;

private:
    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[1];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[1];
};

}  // namespace Orders
