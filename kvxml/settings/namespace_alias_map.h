/// Table of the namespace prefixes that output should use.
///
///     context.GetNamespaceAliases().Add("gpx", "http://www.topografix.com/GPX/1/1");
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "kvxml/export.h"

namespace KvXmlLib16 {

/// Namespace URIs with their prefixes ("aliases"), in ascending byte order of the URIs.
///
/// A URI has one alias; an alias may serve several URIs. Texts are compared exactly, upper and lower case
/// being different. The alias "xml" and its namespace, which the standard binds, are known without an entry;
/// entries for either of them are never written.
class KVXML_EXPORT CNamespaceAliasMap {
    struct Order {
        using is_transparent = void;
        bool operator()(std::string_view left, std::string_view right) const noexcept { return left < right; }
    };
    using Map = std::map<std::string, std::string, Order>;

public:
    using const_iterator = Map::const_iterator;

    CNamespaceAliasMap();
    CNamespaceAliasMap(const CNamespaceAliasMap& other);
    CNamespaceAliasMap(CNamespaceAliasMap&& other) noexcept;
    CNamespaceAliasMap& operator=(const CNamespaceAliasMap& other);
    CNamespaceAliasMap& operator=(CNamespaceAliasMap&& other) noexcept;
    virtual ~CNamespaceAliasMap();

    /// Gives the URI this alias in place of an earlier one. Mind the order: alias first.
    void Add(const char* alias, const char* namespaceUri);
    /// Forgets the URI; nothing happens when it is unknown.
    void RemoveNamespace(const char* namespaceUri);
    void Clear() noexcept { m_aliases.clear(); }

    /// Alias of the URI. Asking for an unknown URI enters it with an empty alias, which is counted from then
    /// on and makes documents declare the URI with a prefix of their own choice; ask `DoesNamespaceExist`
    /// first where that is not wanted.
    std::string GetAliasFromNamespace(const char* namespaceUri);
    /// The first URI in order that has this alias; CKvException "Namespace alias [%s] not found" when none
    /// has.
    std::string GetNamespaceFromAlias(const char* alias) const;
    bool DoesNamespaceExist(const char* namespaceUri) const;
    bool DoesAliasExist(const char* alias) const;

    int GetNamespaceCount() const noexcept { return static_cast<int>(m_aliases.size()); }
    /// The URI at `index`, counted from 0 in order; the first one for a negative index. Empty beyond the
    /// last.
    std::string GetNamespaceAt(int index) const;

    /// Pairs of URI and alias, in order of the URIs.
    const_iterator begin() const noexcept { return m_aliases.begin(); }
    const_iterator end() const noexcept { return m_aliases.end(); }

private:
    Map m_aliases;
};

}  // namespace KvXmlLib16
