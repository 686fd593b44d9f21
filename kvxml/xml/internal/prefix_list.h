/// What a document knows about prefixes, as objects and output take it over.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kvxml/base/shared_name.h"
#include "kvxml/xml/internal/xml_name.h"

namespace KvXmlLib16 {
class CXmlAttribute;
class CXmlElement;
}  // namespace KvXmlLib16

namespace KvXmlLib16::internal {

/// The prefixes of a document in ascending order; the default namespace has the empty one.
class CPrefixList {
public:
    /// More than output would declare are left out.
    static constexpr std::size_t kMaxCount = 100;

    struct Item {
        CSharedName prefix;
        CSharedName uri;
    };

    explicit CPrefixList(const CXmlElement& element);

    const std::vector<Item>& Items() const noexcept { return m_items; }
    /// The namespace that names without prefix are in; empty when there is none.
    std::string_view DefaultNamespace() const noexcept;

private:
    std::vector<Item> m_items;
};

/// Fills what the name keeps for objects: local name, namespace, prefix.
void ResolveNameSlowly(const CXmlName& name);
inline void ResolveName(const CXmlName& name) {
    if (!name.isResolved) ResolveNameSlowly(name);
}

/// The value of xsi:type: blanks around it do not count.
struct CTypeName {
    explicit CTypeName(std::string_view value) noexcept;

    bool hasPrefix;
    std::string_view prefix;
    std::string_view local;
};

/// The namespace that the type is in when the name stands in an attribute of `element`; null for a prefix
/// that is not declared there.
const std::string* FindTypeNamespace(const CTypeName& type, const CXmlElement& element);

/// Whether the attribute is xsi:type and its value names a type whose namespace the document tells, which is
/// then `typeNamespace`, empty for none. The view is good as long as the document is not loaded again.
bool IsTypeValue(const CXmlAttribute& attribute, std::string_view& typeNamespace);

/// The attribute xml:space asks for the blanks between elements (true) or withdraws that (false).
bool IsSpacePreserved(const CXmlAttribute& attribute) noexcept;

}  // namespace KvXmlLib16::internal
