#include "kvxml/schema/reader/internal/xml_catalog.h"

#include <algorithm>
#include <filesystem>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/xml/xml_reader.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::string_view kCatalogNamespace = "urn:oasis:names:tc:entity:xmlns:xml:catalog";
constexpr std::size_t kMaxCatalogs = 1000;

bool HasScheme(std::string_view uri) noexcept {
    const std::size_t colon = uri.find(':');
    return colon != std::string_view::npos && colon > 1 && colon < uri.find_first_of("/?#");
}

/// `uri` seen from `base`, which ends with the folder's slash or with a file's name.
std::string Join(const std::string& base, std::string_view uri) {
    if (HasScheme(uri) || (!uri.empty() && uri.front() == '/')) return std::string(uri);
    return base.substr(0, base.rfind('/') + 1).append(uri);
}

bool StartsWith(std::string_view text, std::string_view start) noexcept {
    return text.substr(0, start.size()) == start;
}

bool EndsWith(std::string_view text, std::string_view end) noexcept {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

std::string PathOf(std::string_view uri) {
    if (StartsWith(uri, "file://")) {
        uri.remove_prefix(7);
        uri.remove_prefix(std::min(uri.find('/'), uri.size()));
    } else if (StartsWith(uri, "file:")) {
        uri.remove_prefix(5);
    }
    return std::string(uri);
}

}  // namespace

void CXmlCatalog::Add(const std::string& file) {
    std::vector<std::string> waiting{file};
    bool isRequired = true;
    for (std::size_t i = 0; i < waiting.size(); ++i, isRequired = false) {
        if (HasScheme(waiting[i]) || m_read.size() >= kMaxCatalogs) continue;
        std::error_code error;
        const std::string name = std::filesystem::absolute(waiting[i], error).lexically_normal().string();
        if (std::find(m_read.begin(), m_read.end(), name) != m_read.end()) continue;
        m_read.push_back(name);
        try {
            Read(name, waiting);
        } catch (const CKvException&) {
            if (isRequired) throw;
        }
    }
}

void CXmlCatalog::Read(const std::string& file, std::vector<std::string>& next) {
    CXmlReader reader;
    reader.OpenFile(file.c_str());
    std::vector<std::string> bases{file};  // by depth
    while (reader.Read()) {
        if (reader.GetEvent() != XmlEvent::StartElement) continue;
        bases.resize(reader.GetDepth());
        const CXmlReaderAttribute* const base = reader.FindAttribute(kXmlNamespace, "base");
        bases.push_back(base == nullptr ? bases.back() : Join(bases.back(), base->value));
        if (reader.GetNamespaceUri() != kCatalogNamespace) continue;
        const std::string_view kind = reader.GetLocalName();
        const auto add = [&](Match match, const char* key, const char* value) {
            if (reader.FindAttribute({}, key) == nullptr || reader.FindAttribute({}, value) == nullptr)
                return;
            m_entries.push_back({match, std::string(reader.GetAttribute(key)),
                                 Join(bases.back(), reader.GetAttribute(value))});
        };
        if (kind == "uri") add(Match::Exact, "name", "uri");
        if (kind == "system") add(Match::Exact, "systemId", "uri");
        if (kind == "public") add(Match::Exact, "publicId", "uri");
        if (kind == "rewriteURI") add(Match::Prefix, "uriStartString", "rewritePrefix");
        if (kind == "rewriteSystem") add(Match::Prefix, "systemIdStartString", "rewritePrefix");
        if (kind == "uriSuffix") add(Match::Suffix, "uriSuffix", "uri");
        if (kind == "systemSuffix") add(Match::Suffix, "systemIdSuffix", "uri");
        if (kind == "nextCatalog" || kind == "delegateURI" || kind == "delegateSystem" ||
            kind == "delegatePublic")
            next.push_back(PathOf(Join(bases.back(), reader.GetAttribute("catalog"))));
    }
}

std::string CXmlCatalog::Find(std::string_view uri) const {
    if (uri.empty()) return {};
    const Entry* prefix = nullptr;
    const Entry* suffix = nullptr;
    for (const Entry& entry : m_entries) {
        if (entry.match == Match::Exact && entry.key == uri) return entry.value;
        // The longest fitting piece wins, the first of equal ones.
        if (entry.match == Match::Prefix && StartsWith(uri, entry.key) &&
            (prefix == nullptr || entry.key.size() > prefix->key.size()))
            prefix = &entry;
        if (entry.match == Match::Suffix && EndsWith(uri, entry.key) &&
            (suffix == nullptr || entry.key.size() > suffix->key.size()))
            suffix = &entry;
    }
    if (prefix != nullptr) return prefix->value + std::string(uri.substr(prefix->key.size()));
    return suffix != nullptr ? suffix->value : std::string();
}

}  // namespace KvXmlLib16::internal
