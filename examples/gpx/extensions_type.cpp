#include "examples/gpx/extensions_type.h"

#include <mutex>

#include "examples/gpx/class_factory.h"
#include "kvxml/types/whitespace_utils.h"
#include "kvxml/xml/xml_attribute.h"
#include "kvxml/xml/xml_element.h"

namespace Gpx {

using namespace KvXmlLib16;
using namespace KvXmlLib16Data;

std::atomic<bool> CExtensionsType::m_hasMetaData{false};
CParentElementInfo* CExtensionsType::m_classInfo = nullptr;
CElementInfo** CExtensionsType::m_elementInfo = nullptr;
CAttributeInfo** CExtensionsType::m_attributeInfo = nullptr;
CElementInfo* CExtensionsType::m_elementRecords[1] = {};
CAttributeInfo* CExtensionsType::m_attributeRecords[1] = {};

CExtensionsType::CExtensionsType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CExtensionsType::~CExtensionsType() = default;

std::string CExtensionsType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CExtensionsType::GetNamespace() const {
    return kNamespace;
}

void CExtensionsType::Init() {
    m_hasDroppedContent = false;
}

CXmlElement* CExtensionsType::FromXml_Int(CXmlElement* element, CXmlElement* cursor,
                                          const CSerializationContext&, bool) {
    Init();
    SetElementName(element->GetLocalName());
    m_hasDroppedContent = cursor != nullptr;
    for (const char c : element->GetTextView()) {
        m_hasDroppedContent = m_hasDroppedContent || !CWhitespaceUtils::IsWhiteSpace(c);
    }
    for (const auto* attribute : element->GetAttributes()) {
        m_hasDroppedContent = m_hasDroppedContent || !attribute->IsNamespaceAttribute();
    }
    return nullptr;
}

void CExtensionsType::AccessProperty(int, bool, KvVariant&) {}

CParentElementInfo* CExtensionsType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CExtensionsType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CExtensionsType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CExtensionsType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    m_classInfo =
        new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "extensionsType",
                               kNamespace, false, false, -1, ItemType_Unknown, nullptr, false);
    m_attributeInfo = m_attributeRecords;
    m_elementInfo = m_elementRecords;
    m_hasMetaData.store(true, std::memory_order_release);
}

void CExtensionsType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Gpx
