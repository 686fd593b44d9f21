#include "examples/orders/orders_type.h"

#include <mutex>

#include "examples/orders/class_factory.h"
#include "kvxml/objects/attribute_info.h"
#include "kvxml/objects/element_info_family.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/variant.h"
#include "kvxml/platform/critical_section.h"

namespace Orders {

using namespace KvXmlLib16;
using namespace KvXmlLib16Data;

std::atomic<bool> COrdersType::m_hasMetaData{false};
CParentElementInfo* COrdersType::m_classInfo = nullptr;
CElementInfo** COrdersType::m_elementInfo = nullptr;
CAttributeInfo** COrdersType::m_attributeInfo = nullptr;
CElementInfo* COrdersType::m_elementRecords[2] = {};
CAttributeInfo* COrdersType::m_attributeRecords[1] = {};

COrdersType::COrdersType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

COrdersType::~COrdersType() = default;

std::string COrdersType::GetTargetNamespace() const {
    return kNamespace;
}

std::string COrdersType::GetNamespace() const {
    return kNamespace;
}

void COrdersType::Init() {
    m_order.Reset();
}

CSmartPtr<COrderTypeCol> COrdersType::GetOrder() {
    if (m_order == nullptr) m_order = new COrderTypeCol("order", kNamespace, 0, -1);
    return m_order;
}

void COrdersType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_order:
            if (read) {
                if (m_order != nullptr) value.SetXmlCollectionReference(m_order.Get());
            } else {
                GetOrder();
            }
            break;
        default:
            break;
    }
}

std::uint64_t COrdersType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_order, m_order != nullptr);
}

CParentElementInfo* COrdersType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** COrdersType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** COrdersType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void COrdersType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    try {
        m_classInfo = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "orders",
                                             kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_elementInfo = m_elementRecords;
        m_elementRecords[0] =
            new CElementInfoSeqClsCol("order", kNamespace, Property_order, XmlElementType_Element);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void COrdersType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Orders
