/// Orders type OrdersType: the document: orders in any number. Root element `orders`.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "examples/orders/order_type.h"
#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/xml_generated_class.h"

namespace Orders {

class COrdersType : public KvXmlLib16::CXmlGeneratedClass {
public:
    COrdersType() : COrdersType("orders") {}
    explicit COrdersType(const char* elementName);
    COrdersType(const COrdersType&) = delete;
    COrdersType& operator=(const COrdersType&) = delete;
    ~COrdersType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

    // element `order`: any number
    KvXmlLib16::CSmartPtr<COrderTypeCol> GetOrder();

protected:
    void AccessProperty(int propertyIndex, bool read, KvXmlLib16::KvVariant& value) override;
    KvXmlLib16::CParentElementInfo* GetClassInfo() const override;
    KvXmlLib16::CElementInfo** GetClassElementInfo() const override;
    KvXmlLib16::CAttributeInfo** GetClassAttributeInfo() const override;
    void Init() override;
    std::uint64_t GetUsedProperties() const override;

private:
    enum Property {
        Property_order,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[2];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[1];

    KvXmlLib16::CSmartPtr<COrderTypeCol> m_order;
};

}  // namespace Orders
