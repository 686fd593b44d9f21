/// The record that describes a generated class as a whole.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "kvxml/export.h"
#include "kvxml/types/item_type.h"

namespace KvXmlLib16 {
class CXmlGeneratedClass;
namespace internal {
class CTableAccess;
}
}  // namespace KvXmlLib16

namespace KvXmlLib16Data {

/// How the child elements of a class are grouped.
enum XmlElementGroupType : std::int32_t {
    XmlElementGroupType_Sequence = 0,
    XmlElementGroupType_Choice = 1,
    XmlElementGroupType_All = 2,
};

/// 0: the class is bound to an element with a tag of its own. Otherwise its content is read from and written
/// into the element of its parent.
enum XmlElementType : std::int32_t {
    XmlElementType_Element = 0,
    XmlElementType_PseudoElement = 1,
};

/// Class record. Created once per generated class, shared by all its instances and by all threads.
class KVXML_EXPORT CParentElementInfo {
public:
    /// `primitiveValuePropertyIndex` is the property that holds the class's simple text content, -1 when it
    /// has none; null strings count as empty.
    CParentElementInfo(XmlElementGroupType groupType, XmlElementType elementType, const char* elementName,
                       const char* elementNamespace, bool fromXmlFailIfAttributeUnknown, bool hasBaseClasses,
                       int primitiveValuePropertyIndex, KvXmlLib16::ItemType primitiveDataType,
                       const char* primitiveFormatOverride, bool outputPrimitiveClassAsTextProperty);
    CParentElementInfo(const CParentElementInfo& other);
    CParentElementInfo& operator=(const CParentElementInfo& other);
    virtual ~CParentElementInfo();

    XmlElementGroupType GetElementGroupType() const noexcept { return m_groupType; }
    XmlElementType GetElementType() const noexcept { return m_elementType; }
    const std::string& GetElementName() const noexcept { return m_elementName; }
    const std::string& GetElementNamespace() const noexcept { return m_elementNamespace; }
    /// Unknown attributes are an error, unless the context ignores them.
    bool GetFromXmlFailIfAttributeUnknown() const noexcept { return m_failIfAttributeUnknown; }
    /// The class derives from another generated class, so xsi:type may have to be written.
    bool GetHasBaseClasses() const noexcept { return m_hasBaseClasses; }
    int GetPrimitiveValuePropertyIndex() const noexcept { return m_primitiveValuePropertyIndex; }
    KvXmlLib16::ItemType GetPrimitiveDataType() const noexcept { return m_primitiveDataType; }
    const std::string& GetPrimitiveFormatOverride() const noexcept { return m_primitiveFormatOverride; }
    /// The simple content is kept as text, without conversion.
    bool GetOutputPrimitiveClassAsTextProperty() const noexcept {
        return m_outputPrimitiveClassAsTextProperty;
    }
    /// An object that a factory or a collection has just made is as `Init` leaves it, so that reading into it
    /// need not call `Init`. Not unless it is declared.
    bool GetNewIsAsInit() const noexcept { return m_newIsAsInit; }
    /// Declares it; while the tables are built. Classes derived from the class inherit it with the record.
    void DeclareNewIsAsInit() noexcept { m_newIsAsInit = true; }

private:
    friend class KvXmlLib16::CXmlGeneratedClass;
    friend class KvXmlLib16::internal::CTableAccess;

    // What the driver has found out about the class; filled on first use, the same whoever fills it.
    struct Facts {
        std::atomic<std::int32_t> elementCount{-1};
        std::atomic<std::int32_t> attributeCount{-1};
        std::atomic<std::int8_t> isNillable{-1};
        std::atomic<std::int8_t> hasPseudoElements{-1};
    };

    XmlElementGroupType m_groupType;
    XmlElementType m_elementType;
    std::string m_elementName;
    std::string m_elementNamespace;
    bool m_failIfAttributeUnknown;
    bool m_hasBaseClasses;
    int m_primitiveValuePropertyIndex;
    KvXmlLib16::ItemType m_primitiveDataType;
    std::string m_primitiveFormatOverride;
    bool m_outputPrimitiveClassAsTextProperty;
    bool m_newIsAsInit = false;
    const std::uint64_t m_id;  // never 0, never reused in this process
    mutable Facts m_facts;
};

}  // namespace KvXmlLib16Data
