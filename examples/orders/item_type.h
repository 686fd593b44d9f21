/// Orders type ItemType: one line of an order.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/primitive_collections.h"
#include "kvxml/objects/xml_collection.h"
#include "kvxml/objects/xml_generated_class.h"
#include "kvxml/types/decimal.h"

namespace Orders {

class CItemType : public KvXmlLib16::CXmlGeneratedClass {
public:
    CItemType() : CItemType(nullptr) {}
    explicit CItemType(const char* elementName);
    CItemType(const CItemType&) = delete;
    CItemType& operator=(const CItemType&) = delete;
    ~CItemType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

    // element `sku`: required, stock number: "ABC-1234", "ABC-123456-X9"
    std::string GetSku() const { return m_sku; }
    void SetSku(std::string value) { m_sku = std::move(value); }

    // element `quantity`: required
    std::int32_t GetQuantity() const { return m_quantity; }
    void SetQuantity(std::int32_t value) { m_quantity = value; }

    // element `unitPrice`: required
    KvXmlLib16::CDecimal GetUnitPrice() const { return m_unitPrice; }
    void SetUnitPrice(KvXmlLib16::CDecimal value) { m_unitPrice = std::move(value); }

    // element `weight`: required, kilograms of one piece
    double GetWeight() const { return m_weight; }
    void SetWeight(double value) { m_weight = value; }

    // element `gift`: required, is to be wrapped
    bool GetGift() const { return m_gift; }
    void SetGift(bool value) { m_gift = value; }

    // element `tags`: up to five, labels
    KvXmlLib16::CSmartPtr<KvXmlLib16::CstringCol> GetTags();

protected:
    void AccessProperty(int propertyIndex, bool read, KvXmlLib16::KvVariant& value) override;
    KvXmlLib16::CParentElementInfo* GetClassInfo() const override;
    KvXmlLib16::CElementInfo** GetClassElementInfo() const override;
    KvXmlLib16::CAttributeInfo** GetClassAttributeInfo() const override;
    void Init() override;
    std::uint64_t GetUsedProperties() const override;

private:
    enum Property {
        Property_sku,
        Property_quantity,
        Property_unitPrice,
        Property_weight,
        Property_gift,
        Property_tags,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[7];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[1];

    std::string m_sku;
    std::int32_t m_quantity = 0;
    KvXmlLib16::CDecimal m_unitPrice;
    double m_weight = 0;
    bool m_gift = false;
    KvXmlLib16::CSmartPtr<KvXmlLib16::CstringCol> m_tags;
};

class CItemTypeCol : public KvXmlLib16::CXmlTypedCollection<CItemType> {
public:
    using CXmlTypedCollection::CXmlTypedCollection;
};

}  // namespace Orders
