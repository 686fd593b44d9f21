#include "examples/gpx/email_type.h"

#include <mutex>

#include "examples/gpx/class_factory.h"
#include "kvxml/objects/attribute_info.h"
#include "kvxml/objects/element_info.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/variant.h"
#include "kvxml/platform/critical_section.h"

namespace Gpx {

using namespace KvXmlLib16;
using namespace KvXmlLib16Data;

std::atomic<bool> CEmailType::m_hasMetaData{false};
CParentElementInfo* CEmailType::m_classInfo = nullptr;
CElementInfo** CEmailType::m_elementInfo = nullptr;
CAttributeInfo** CEmailType::m_attributeInfo = nullptr;
CElementInfo* CEmailType::m_elementRecords[1] = {};
CAttributeInfo* CEmailType::m_attributeRecords[3] = {};

CEmailType::CEmailType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CEmailType::~CEmailType() = default;

std::string CEmailType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CEmailType::GetNamespace() const {
    return kNamespace;
}

void CEmailType::Init() {
    m_id.clear();
    m_domain.clear();
}

void CEmailType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_id:
            if (read) {
                value.SetStringReference(m_id);
            } else {
                SetId(value.TakeString());
            }
            break;
        case Property_domain:
            if (read) {
                value.SetStringReference(m_domain);
            } else {
                SetDomain(value.TakeString());
            }
            break;
        default:
            break;
    }
}

CParentElementInfo* CEmailType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CEmailType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CEmailType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CEmailType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    try {
        m_classInfo =
            new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "emailType",
                                   kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_attributeRecords[0] = new CAttributeInfoPrimitive(
            "id", "", Property_id, false, ItemType_string, nullptr, CWhitespaceUtils::WhitespaceRule_Preserve,
            CPrimitiveRestrictions(), nullptr);
        m_attributeRecords[1] = new CAttributeInfoPrimitive(
            "domain", "", Property_domain, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementInfo = m_elementRecords;
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CEmailType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Gpx
