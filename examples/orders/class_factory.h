/// Class factory of the orders classes, and the namespace they all belong to.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/class_factory_base.h"
#include "kvxml/objects/xml_object_base.h"

namespace Orders {

constexpr const char* kNamespace = "urn:example:orders";

class CClassFactory : public KvXmlLib16::CClassfactoryBase {
public:
    enum ClassId {
        ClassId_OrdersType,
        ClassId_OrderType,
        ClassId_CustomerType,
        ClassId_AddressType,
        ClassId_PaymentType,
        ClassId_CardType,
        ClassId_CashType,
        ClassId_ItemsType,
        ClassId_ItemType,
    };

    /// A new object of the class with the given identifier, under the given element name; null for an unknown
    /// identifier.
    static KvXmlLib16::CSmartPtr<KvXmlLib16::CXmlObjectBase> Create(int classId, const char* elementName);
    /// Frees the metadata tables of all classes.
    static void FreeMetaData();
};

}  // namespace Orders
