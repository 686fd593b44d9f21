/// Orders type ItemsType: what was ordered.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "examples/orders/item_type.h"
#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/xml_generated_class.h"

namespace Orders {

class CItemsType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CItemsType() : CItemsType(nullptr) {}
    explicit CItemsType(const char* elementName);
    CItemsType(const CItemsType&) = delete;
    CItemsType& operator=(const CItemsType&) = delete;
    ~CItemsType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

    // element `item`: one or more
    KvXmlLib16::CSmartPtr<CItemTypeCol> GetItem() const { return m_item; }

protected:
    void AccessProperty(int propertyIndex, bool read, KvXmlLib16::KvVariant& value) override;
    KvXmlLib16::CParentElementInfo* GetClassInfo() const override;
    KvXmlLib16::CElementInfo** GetClassElementInfo() const override;
    KvXmlLib16::CAttributeInfo** GetClassAttributeInfo() const override;
    void Init() override;
    std::uint64_t GetUsedProperties() const override;

private:
    enum Property {
        Property_item,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[2];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[1];

    KvXmlLib16::CSmartPtr<CItemTypeCol> m_item;
};

}  // namespace Orders
