/// Orders type OrderType: one order: who, when, what, and how it is paid.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "examples/orders/customer_type.h"
#include "examples/orders/items_type.h"
#include "examples/orders/payment_type.h"
#include "examples/orders/priority_type.h"
#include "examples/orders/status_type.h"
#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/xml_collection.h"
#include "kvxml/objects/xml_generated_class.h"
#include "kvxml/types/date_time.h"
#include "kvxml/types/decimal.h"

namespace Orders {

class COrderType : public KvXmlLib16::CXmlGeneratedClass {
public:
    COrderType() : COrderType(nullptr) {}
    explicit COrderType(const char* elementName);
    COrderType(const COrderType&) = delete;
    COrderType& operator=(const COrderType&) = delete;
    ~COrderType() override;

    KvXmlLib16::CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override;
    std::string GetNamespace() const override;
    /// Frees the metadata tables; no object of the class may be in use by another thread.
    static void FreeMetaData();

    // attribute `id`: required
    std::uint32_t GetId() const { return m_id; }
    void SetId(std::uint32_t value) { m_id = value; }

    // attribute `status`: required, how far the order has got
    EStatusType GetStatus() const { return m_status; }
    void SetStatus(EStatusType value) { m_status = value; }

    // attribute `priority`: optional, EPriorityType_normal while it is not set
    EPriorityType GetPriority() const { return m_isValidPriority ? m_priority : EPriorityType_normal; }
    void SetPriority(EPriorityType value) {
        m_priority = value;
        m_isValidPriority = true;
    }
    bool IsValidPriority() const { return m_isValidPriority; }
    void UnsetPriority() { m_isValidPriority = false; }

    // element `customer`: required; null until it is set
    KvXmlLib16::CSmartPtr<CCustomerType> GetCustomer() const { return m_customer; }
    void SetCustomer(const KvXmlLib16::CSmartPtr<CCustomerType>& value);

    // element `orderDate`: required
    KvXmlLib16::CDateTime GetOrderDate() const { return m_orderDate; }
    void SetOrderDate(const KvXmlLib16::CDateTime& value);

    // element `requiredBy`: optional
    KvXmlLib16::CDateTime GetRequiredBy() const {
        return m_isValidRequiredBy ? m_requiredBy : KvXmlLib16::CDateTime();
    }
    void SetRequiredBy(const KvXmlLib16::CDateTime& value);
    bool IsValidRequiredBy() const { return m_isValidRequiredBy; }
    void UnsetRequiredBy() { m_isValidRequiredBy = false; }

    // element `note`: optional
    std::string GetNote() const { return m_isValidNote ? m_note : std::string(); }
    void SetNote(std::string value) {
        m_note = std::move(value);
        m_isValidNote = true;
    }
    bool IsValidNote() const { return m_isValidNote; }
    void UnsetNote() { m_isValidNote = false; }

    // element `payment`: required; null until it is set
    KvXmlLib16::CSmartPtr<CPaymentType> GetPayment() const { return m_payment; }
    void SetPayment(const KvXmlLib16::CSmartPtr<CPaymentType>& value);

    // element `items`: required; null until it is set
    KvXmlLib16::CSmartPtr<CItemsType> GetItems() const { return m_items; }
    void SetItems(const KvXmlLib16::CSmartPtr<CItemsType>& value);

    // element `total`: required
    KvXmlLib16::CDecimal GetTotal() const { return m_total; }
    void SetTotal(KvXmlLib16::CDecimal value) { m_total = std::move(value); }

protected:
    void AccessProperty(int propertyIndex, bool read, KvXmlLib16::KvVariant& value) override;
    KvXmlLib16::CParentElementInfo* GetClassInfo() const override;
    KvXmlLib16::CElementInfo** GetClassElementInfo() const override;
    KvXmlLib16::CAttributeInfo** GetClassAttributeInfo() const override;
    void Init() override;
    std::uint64_t GetUsedProperties() const override;

private:
    enum Property {
        Property_id,
        Property_status,
        Property_priority,
        Property_customer,
        Property_orderDate,
        Property_requiredBy,
        Property_note,
        Property_payment,
        Property_items,
        Property_total,
    };

    static void BuildMetaData();

    static std::atomic<bool> m_hasMetaData;
    static KvXmlLib16::CParentElementInfo* m_classInfo;
    static KvXmlLib16::CElementInfo** m_elementInfo;
    static KvXmlLib16::CAttributeInfo** m_attributeInfo;
    static KvXmlLib16::CElementInfo* m_elementRecords[8];
    static KvXmlLib16::CAttributeInfo* m_attributeRecords[4];

    bool m_isValidPriority : 1;
    bool m_isValidRequiredBy : 1;
    bool m_isValidNote : 1;
    std::uint32_t m_id = 0;
    EStatusType m_status = EStatusType_new;
    EPriorityType m_priority = EPriorityType_normal;
    KvXmlLib16::CSmartPtr<CCustomerType> m_customer;
    KvXmlLib16::CDateTime m_orderDate;
    KvXmlLib16::CDateTime m_requiredBy;
    std::string m_note;
    KvXmlLib16::CSmartPtr<CPaymentType> m_payment;
    KvXmlLib16::CSmartPtr<CItemsType> m_items;
    KvXmlLib16::CDecimal m_total;
};

class COrderTypeCol : public KvXmlLib16::CXmlTypedCollection<COrderType> {
public:
    using CXmlTypedCollection::CXmlTypedCollection;
};

}  // namespace Orders
