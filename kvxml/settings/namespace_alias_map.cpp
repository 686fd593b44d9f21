#include "kvxml/settings/namespace_alias_map.h"

#include <algorithm>
#include <string_view>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/types/format_string.h"

namespace KvXmlLib16 {

using internal::kXmlNamespace;
using internal::OrEmpty;

namespace {

constexpr std::string_view kXmlAlias = "xml";

template <class Map>
auto FindAlias(const Map& aliases, std::string_view alias) {
    return std::find_if(aliases.begin(), aliases.end(),
                        [&](const auto& entry) { return entry.second == alias; });
}

}  // namespace

CNamespaceAliasMap::CNamespaceAliasMap() = default;
CNamespaceAliasMap::CNamespaceAliasMap(const CNamespaceAliasMap& other) = default;
CNamespaceAliasMap::CNamespaceAliasMap(CNamespaceAliasMap&& other) noexcept = default;
CNamespaceAliasMap& CNamespaceAliasMap::operator=(const CNamespaceAliasMap& other) = default;
CNamespaceAliasMap& CNamespaceAliasMap::operator=(CNamespaceAliasMap&& other) noexcept = default;
CNamespaceAliasMap::~CNamespaceAliasMap() = default;

void CNamespaceAliasMap::Add(const char* alias, const char* namespaceUri) {
    m_aliases.insert_or_assign(std::string(OrEmpty(namespaceUri)), std::string(OrEmpty(alias)));
}

void CNamespaceAliasMap::RemoveNamespace(const char* namespaceUri) {
    const auto found = m_aliases.find(OrEmpty(namespaceUri));
    if (found != m_aliases.end()) m_aliases.erase(found);
}

std::string CNamespaceAliasMap::GetAliasFromNamespace(const char* namespaceUri) {
    const std::string uri(OrEmpty(namespaceUri));
    return uri == kXmlNamespace ? std::string(kXmlAlias) : m_aliases[uri];
}

std::string CNamespaceAliasMap::GetNamespaceFromAlias(const char* alias) const {
    const std::string_view wanted = OrEmpty(alias);
    if (wanted == kXmlAlias) return std::string(kXmlNamespace);
    const auto found = FindAlias(m_aliases, wanted);
    if (found == m_aliases.end()) {
        throw CKvException(FormatString("Namespace alias [%s] not found", wanted.empty() ? "" : alias));
    }
    return found->first;
}

bool CNamespaceAliasMap::DoesNamespaceExist(const char* namespaceUri) const {
    const std::string_view uri = OrEmpty(namespaceUri);
    return uri == kXmlNamespace || m_aliases.find(uri) != m_aliases.end();
}

bool CNamespaceAliasMap::DoesAliasExist(const char* alias) const {
    const std::string_view wanted = OrEmpty(alias);
    return wanted == kXmlAlias || FindAlias(m_aliases, wanted) != m_aliases.end();
}

std::string CNamespaceAliasMap::GetNamespaceAt(int index) const {
    if (index >= GetNamespaceCount()) return std::string();
    auto position = m_aliases.begin();
    if (position == m_aliases.end()) return std::string();
    for (int i = 0; i < index; ++i)
        ++position;
    return position->first;
}

}  // namespace KvXmlLib16
