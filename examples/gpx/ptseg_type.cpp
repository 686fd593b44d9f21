#include "examples/gpx/ptseg_type.h"

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

std::atomic<bool> CPtsegType::m_hasMetaData{false};
CParentElementInfo* CPtsegType::m_classInfo = nullptr;
CElementInfo** CPtsegType::m_elementInfo = nullptr;
CAttributeInfo** CPtsegType::m_attributeInfo = nullptr;
CElementInfo* CPtsegType::m_elementRecords[2] = {};
CAttributeInfo* CPtsegType::m_attributeRecords[1] = {};

CPtsegType::CPtsegType(const char* elementName) {
    Init();
    SetElementName(elementName);
}

CPtsegType::~CPtsegType() = default;

std::string CPtsegType::GetTargetNamespace() const {
    return kNamespace;
}

std::string CPtsegType::GetNamespace() const {
    return kNamespace;
}

void CPtsegType::Init() {
    m_pt.Reset();
}

CSmartPtr<CPtTypeCol> CPtsegType::GetPt() {
    if (m_pt == nullptr) m_pt = new CPtTypeCol("pt", kNamespace, 0, -1);
    return m_pt;
}

void CPtsegType::AccessProperty(int propertyIndex, bool read, KvVariant& value) {
    switch (propertyIndex) {
        case Property_pt:
            if (read) {
                if (m_pt != nullptr) value.SetXmlCollectionReference(m_pt.Get());
            } else {
                GetPt();
            }
            break;
        default:
            break;
    }
}

std::uint64_t CPtsegType::GetUsedProperties() const {
    const auto bit = [](Property property, bool isUsed) { return std::uint64_t{isUsed} << property; };
    return bit(Property_pt, m_pt != nullptr);
}

CParentElementInfo* CPtsegType::GetClassInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_classInfo;
}

CElementInfo** CPtsegType::GetClassElementInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_elementInfo;
}

CAttributeInfo** CPtsegType::GetClassAttributeInfo() const {
    if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
    return m_attributeInfo;
}

void CPtsegType::BuildMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    if (m_hasMetaData.load(std::memory_order_relaxed)) return;
    try {
        m_classInfo =
            new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "ptsegType",
                                   kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
        m_classInfo->DeclareNewIsAsInit();
        m_attributeInfo = m_attributeRecords;
        m_elementInfo = m_elementRecords;
        m_elementRecords[0] =
            new CElementInfoSeqClsCol("pt", kNamespace, Property_pt, XmlElementType_Element);
    } catch (...) {
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
        throw;
    }
    m_hasMetaData.store(true, std::memory_order_release);
}

void CPtsegType::FreeMetaData() {
    const std::lock_guard<CKVCriticalSection> lock(m_csInit);
    m_hasMetaData.store(false, std::memory_order_relaxed);
    CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
}

}  // namespace Gpx
