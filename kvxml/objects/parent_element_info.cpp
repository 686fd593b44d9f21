#include "kvxml/objects/parent_element_info.h"

#include "kvxml/base/internal/c_text.h"
#include "kvxml/types/internal/format_override.h"

namespace KvXmlLib16Data {

using KvXmlLib16::internal::OrEmpty;

namespace {

std::uint64_t NextId() noexcept {
    static std::atomic<std::uint64_t> next{1};
    return next.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace

CParentElementInfo::CParentElementInfo(XmlElementGroupType groupType, XmlElementType elementType,
                                       const char* elementName, const char* elementNamespace,
                                       bool fromXmlFailIfAttributeUnknown, bool hasBaseClasses,
                                       int primitiveValuePropertyIndex,
                                       KvXmlLib16::ItemType primitiveDataType,
                                       const char* primitiveFormatOverride,
                                       bool outputPrimitiveClassAsTextProperty)
    : m_groupType(groupType),
      m_elementType(elementType),
      m_elementName(OrEmpty(elementName)),
      m_elementNamespace(OrEmpty(elementNamespace)),
      m_failIfAttributeUnknown(fromXmlFailIfAttributeUnknown),
      m_hasBaseClasses(hasBaseClasses),
      m_primitiveValuePropertyIndex(primitiveValuePropertyIndex),
      m_primitiveDataType(primitiveDataType),
      m_primitiveFormatOverride(OrEmpty(primitiveFormatOverride)),
      m_outputPrimitiveClassAsTextProperty(outputPrimitiveClassAsTextProperty),
      m_id(NextId()) {
    KvXmlLib16::internal::CheckFormat(primitiveDataType, m_primitiveFormatOverride);
}

CParentElementInfo::CParentElementInfo(const CParentElementInfo& other)
    : m_groupType(other.m_groupType),
      m_elementType(other.m_elementType),
      m_elementName(other.m_elementName),
      m_elementNamespace(other.m_elementNamespace),
      m_failIfAttributeUnknown(other.m_failIfAttributeUnknown),
      m_hasBaseClasses(other.m_hasBaseClasses),
      m_primitiveValuePropertyIndex(other.m_primitiveValuePropertyIndex),
      m_primitiveDataType(other.m_primitiveDataType),
      m_primitiveFormatOverride(other.m_primitiveFormatOverride),
      m_outputPrimitiveClassAsTextProperty(other.m_outputPrimitiveClassAsTextProperty),
      m_newIsAsInit(other.m_newIsAsInit),
      m_id(NextId()) {}

CParentElementInfo& CParentElementInfo::operator=(const CParentElementInfo& other) {
    m_groupType = other.m_groupType;
    m_elementType = other.m_elementType;
    m_elementName = other.m_elementName;
    m_elementNamespace = other.m_elementNamespace;
    m_failIfAttributeUnknown = other.m_failIfAttributeUnknown;
    m_hasBaseClasses = other.m_hasBaseClasses;
    m_primitiveValuePropertyIndex = other.m_primitiveValuePropertyIndex;
    m_primitiveDataType = other.m_primitiveDataType;
    m_primitiveFormatOverride = other.m_primitiveFormatOverride;
    m_outputPrimitiveClassAsTextProperty = other.m_outputPrimitiveClassAsTextProperty;
    m_newIsAsInit = other.m_newIsAsInit;
    m_facts.elementCount = -1;
    m_facts.attributeCount = -1;
    m_facts.isNillable = -1;
    m_facts.hasPseudoElements = -1;
    return *this;
}

CParentElementInfo::~CParentElementInfo() = default;

}  // namespace KvXmlLib16Data
