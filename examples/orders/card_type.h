/// Orders type CardType: a payment card.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "kvxml/objects/xml_generated_class.h"
#include "kvxml/types/date_time.h"

namespace Orders {

class CCardType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CCardType() : CCardType(nullptr) {}
    explicit CCardType(const char* elementName);
    CCardType(const CCardType&) = delete;
    CCardType& operator=(const CCardType&) = delete;
    ~CCardType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

    // element `holder`: required
    std::string GetHolder() const { return m_holder; }
    void SetHolder(std::string value) { m_holder = std::move(value); }

    // element `number`: required
    std::string GetNumber() const { return m_number; }
    void SetNumber(std::string value) { m_number = std::move(value); }

    // element `expires`: required
    KvXmlLib16::CDateTime GetExpires() const { return m_expires; }
    void SetExpires(const KvXmlLib16::CDateTime& value);

protected:
    void AccessProperty(int propertyIndex, bool read, KvXmlLib16::KvVariant& value) override;
    KvXmlLib16::CParentElementInfo* GetClassInfo() const override;
    KvXmlLib16::CElementInfo** GetClassElementInfo() const override;
    KvXmlLib16::CAttributeInfo** GetClassAttributeInfo() const override;
    void Init() override;
    std::uint64_t GetUsedProperties() const override;

private:
    enum Property {
        Property_holder,
        Property_number,
        Property_expires,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[4];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[1];

    std::string m_holder;
    std::string m_number;
    KvXmlLib16::CDateTime m_expires;
};

}  // namespace Orders
