#include "examples/gpx/person_type.h"

#include <mutex>

#include "examples/gpx/class_factory.h"
#include "kvxml/objects/attribute_info.h"
#include "kvxml/objects/element_info_family.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/variant.h"
#include "kvxml/platform/critical_section.h"

namespace Gpx {

using namespace KvXmlLib16;
using namespace KvXmlLib16Data;

std::atomic<bool> CPersonType::m_hasMetaData{false};
CParentElementInfo* CPersonType::m_classInfo = nullptr;
CElementInfo** CPersonType::m_elementInfo = nullptr;
CAttributeInfo** CPersonType::m_attributeInfo = nullptr;
CElementInfo* CPersonType::m_elementRecords[4] = {};
CAttributeInfo* CPersonType::m_attributeRecords[1] = {};

CPersonType::CPersonType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CPersonType::~CPersonType() = default;

std::string CPersonType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CPersonType::GetNamespace() const {
    return kNamespace;
}

void CPersonType::Init() {
    m_name.Reset();
    m_email.Reset();
    m_link.Reset();
}

void CPersonType::SetEmail(const CSmartPtr<CEmailType>& value) {
    if (value != nullptr) SetElementName(value.Get(), "email");
    m_email = value;
}

void CPersonType::SetLink(const CSmartPtr<CLinkType>& value) {
    if (value != nullptr) SetElementName(value.Get(), "link");
    m_link = value;
}

void CPersonType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_name:
            if (read) {
                if (m_name.IsSet()) value.SetStringReference(*m_name);
            } else {
                SetName(value.TakeString());
            }
            break;
        case Property_email:
            if (read) {
                if (m_email != nullptr) value.SetXmlObjectReference(m_email.Get());
            } else {
                SetEmail(static_cast<CEmailType*>(value.PeekXmlObject()));
            }
            break;
        case Property_link:
            if (read) {
                if (m_link != nullptr) value.SetXmlObjectReference(m_link.Get());
            } else {
                SetLink(static_cast<CLinkType*>(value.PeekXmlObject()));
            }
            break;
        default:
            break;
    }
}

std::uint64_t CPersonType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_name, m_name.IsSet()) | bit(Property_email, m_email != nullptr) |
           bit(Property_link, m_link != nullptr);
}

CParentElementInfo* CPersonType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CPersonType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CPersonType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CPersonType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    try {
        m_classInfo =
            new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "personType",
                                   kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_elementInfo = m_elementRecords;
        m_elementRecords[0] = new CElementInfoSeqPrimOpt(
            "name", kNamespace, Property_name, false, ItemType_string, nullptr,
            CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
        m_elementRecords[1] =
            new CElementInfoSeqClsOpt("email", kNamespace, Property_email, XmlElementType_Element,
                                      &CClassFactory::Create, CClassFactory::ClassId_EmailType);
        m_elementRecords[2] =
            new CElementInfoSeqClsOpt("link", kNamespace, Property_link, XmlElementType_Element,
                                      &CClassFactory::Create, CClassFactory::ClassId_LinkType);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CPersonType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Gpx
