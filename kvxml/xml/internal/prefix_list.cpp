#include "kvxml/xml/internal/prefix_list.h"

#include <algorithm>

#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/xml/internal/xml_name_check.h"
#include "kvxml/xml/internal/xml_tree.h"
#include "kvxml/xml/xml_attribute.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16::internal {

CPrefixList::CPrefixList(const CXmlElement& element) {
    for (const auto& [prefix, uri] : element.GetName()->tree->Prefixes()) {
        if (m_items.size() == kMaxCount) break;
        m_items.push_back(Item{CSharedName(prefix), CSharedName(uri)});
    }
}

std::string_view CPrefixList::DefaultNamespace() const noexcept {
    return m_items.empty() || !m_items.front().prefix.IsEmpty() ? std::string_view()
                                                                : m_items.front().uri.View();
}

void ResolveNameSlowly(const CXmlName& name) {
    if (name.shared.IsEmpty()) name.shared = CSharedName(name.local);
    if (!name.uri.empty()) {
        const CXmlNamespace& space = name.space;
        if (!space.isResolved) {
            space.shared = CSharedName(space.uri);
            space.prefix = CSharedName(name.tree->FindPrefix(space.uri));
            space.isResolved = true;
        }
        name.sharedUri = space.shared;
        name.sharedPrefix = space.prefix;
    }
    name.isSpaceAttribute = name.local == "space" && name.uri == internal::kXmlNamespace;
    name.isResolved = true;
}

CTypeName::CTypeName(std::string_view value) noexcept {
    constexpr std::string_view kBlanks = " \t\n\r";
    value.remove_prefix(std::min(value.find_first_not_of(kBlanks), value.size()));
    value = value.substr(0, value.find_last_not_of(kBlanks) + 1);
    const std::size_t colon = value.find(':');
    hasPrefix = colon != std::string_view::npos;
    prefix = hasPrefix ? value.substr(0, colon) : std::string_view();
    local = hasPrefix ? value.substr(colon + 1) : value;
}

const std::string* FindTypeNamespace(const CTypeName& type, const CXmlElement& element) {
    return element.GetName()->tree->FindNamespace(element, type.prefix);
}

bool IsTypeValue(const CXmlAttribute& attribute, std::string_view& typeNamespace) {
    const CXmlName& name = *attribute.GetName();
    if (!name.isNamespaceAttribute || name.local != "type") return false;
    const CTypeName type(attribute.GetValueView());
    if (!IsXmlName(type.local, false) || (type.hasPrefix && type.prefix.empty())) return false;
    const std::string* const found = FindTypeNamespace(type, *attribute.GetElement());
    if (found == nullptr) return false;
    typeNamespace = *found;
    return true;
}

bool IsSpacePreserved(const CXmlAttribute& attribute) noexcept {
    return attribute.GetValueView() == "preserve";
}

}  // namespace KvXmlLib16::internal
