#include "examples/gpx/extensions_type.h"

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

std::atomic<bool> CExtensionsType::m_hasMetaData{false};
CParentElementInfo* CExtensionsType::m_classInfo = nullptr;
CElementInfo** CExtensionsType::m_elementInfo = nullptr;
CAttributeInfo** CExtensionsType::m_attributeInfo = nullptr;
CElementInfo* CExtensionsType::m_elementRecords[2] = {};
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
    m_any.Reset();
}

CSmartPtr<CElementCol> CExtensionsType::GetAny() {
    if (m_any == nullptr) m_any = new CElementCol("", "", 0, -1, "##other", kNamespace);
    return m_any;
}

void CExtensionsType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_any:
            if (read) {
                if (m_any != nullptr) value.SetXmlCollectionReference(m_any.Get());
            } else {
                GetAny();
            }
            break;
        default:
            break;
    }
}

std::uint64_t CExtensionsType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_any, m_any != nullptr);
}

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
    try {
        m_classInfo =
            new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "extensionsType",
                                   kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_elementInfo = m_elementRecords;
        m_elementRecords[0] = new CElementInfoSeqUntpdCol("", "", Property_any);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CExtensionsType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Gpx
