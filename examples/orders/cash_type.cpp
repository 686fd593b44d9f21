#include "examples/orders/cash_type.h"

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

std::atomic<bool> CCashType::m_hasMetaData{false};
CParentElementInfo* CCashType::m_classInfo = nullptr;
CElementInfo** CCashType::m_elementInfo = nullptr;
CAttributeInfo** CCashType::m_attributeInfo = nullptr;
CElementInfo* CCashType::m_elementRecords[1] = {};
CAttributeInfo* CCashType::m_attributeRecords[1] = {};

CCashType::CCashType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CCashType::~CCashType() = default;

std::string CCashType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CCashType::GetNamespace() const {
    return kNamespace;
}

void CCashType::Init() {}

void CCashType::AccessProperty(int, bool, KvVariant&) {}

CParentElementInfo* CCashType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CCashType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CCashType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CCashType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    try {
        m_classInfo = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "CashType",
                                             kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_elementInfo = m_elementRecords;
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CCashType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Orders
