#include "kvxml/xml/internal/prefix_list.h"

#include "kvxml/base/internal/namespace_uris.h"
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
        name.sharedUri = CSharedName(name.uri);
        name.sharedPrefix = CSharedName(name.tree->FindPrefix(name.uri));
    }
    name.isSpaceAttribute = name.local == "space" && name.uri == internal::kXmlNamespace;
    name.isResolved = true;
}

bool IsTypeValue(const CXmlAttribute& attribute, std::string_view& typeNamespace) {
    const CXmlName& name = *attribute.GetName();
    if (!name.isNamespaceAttribute || name.local != "type") return false;
    const std::string_view value = attribute.GetValueView();
    const std::size_t start = value.find_first_not_of(" \t\n\r");
    if (start == std::string_view::npos) return false;
    const std::size_t colon = value.find(':');
    const CXmlTree::PrefixTable& prefixes = name.tree->Prefixes();
    if (colon == std::string_view::npos) {
        // The table has the last default namespace of the document; that of an element without a prefix of
        // its own is its namespace.
        const CXmlName& element = *attribute.GetElement()->GetName();
        ResolveName(element);
        const auto last = prefixes.find(std::string_view());
        typeNamespace = element.sharedPrefix.IsEmpty() ? std::string_view(element.uri)
                        : last == prefixes.end()       ? std::string_view()
                                                       : std::string_view(last->second);
        return true;
    }
    const auto found = prefixes.find(value.substr(start, colon - start));
    if (colon == start || found == prefixes.end()) return false;
    typeNamespace = found->second;
    return true;
}

bool IsSpacePreserved(const CXmlAttribute& attribute) noexcept {
    return attribute.GetValueView() == "preserve";
}

}  // namespace KvXmlLib16::internal
