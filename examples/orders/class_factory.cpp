#include "examples/orders/class_factory.h"

#include "examples/orders/address_type.h"
#include "examples/orders/card_type.h"
#include "examples/orders/cash_type.h"
#include "examples/orders/customer_type.h"
#include "examples/orders/item_type.h"
#include "examples/orders/items_type.h"
#include "examples/orders/order_type.h"
#include "examples/orders/orders_type.h"
#include "examples/orders/payment_type.h"

namespace Orders {

KvXmlLib16::CSmartPtr<KvXmlLib16::CXmlObjectBase> CClassFactory::Create(int classId,
                                                                        const char* elementName) {
    switch (classId) {
        case ClassId_OrdersType:
            return new COrdersType(elementName);
        case ClassId_OrderType:
            return new COrderType(elementName);
        case ClassId_CustomerType:
            return new CCustomerType(elementName);
        case ClassId_AddressType:
            return new CAddressType(elementName);
        case ClassId_PaymentType:
            return new CPaymentType(elementName);
        case ClassId_CardType:
            return new CCardType(elementName);
        case ClassId_CashType:
            return new CCashType(elementName);
        case ClassId_ItemsType:
            return new CItemsType(elementName);
        case ClassId_ItemType:
            return new CItemType(elementName);
        default:
            return nullptr;
    }
}

void CClassFactory::FreeMetaData() {
    COrdersType::FreeMetaData();
    COrderType::FreeMetaData();
    CCustomerType::FreeMetaData();
    CAddressType::FreeMetaData();
    CPaymentType::FreeMetaData();
    CCardType::FreeMetaData();
    CCashType::FreeMetaData();
    CItemsType::FreeMetaData();
    CItemType::FreeMetaData();
}

}  // namespace Orders
