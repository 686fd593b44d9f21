#include "kvxml/schema/reader/internal/location_resolver.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/schema/reader/internal/built_in_schemas.h"
#include "kvxml/schema/reader/internal/xml_catalog.h"

namespace KvXmlLib16::internal {

namespace {

namespace fs = std::filesystem;

/// The path of a `file:` URI; false for other schemes. A single letter before the colon is a drive, not a
/// scheme.
bool ToPath(std::string_view location, std::string& path) {
    const std::size_t colon = location.find(':');
    const std::size_t other = location.find_first_of("/?#");
    const bool hasScheme = colon != std::string_view::npos && colon > 1 && colon < other;
    std::string_view rest = location;
    if (hasScheme) {
        if (location.substr(0, colon) != "file") return false;
        rest.remove_prefix(colon + 1);
        if (rest.substr(0, 2) == "//") {
            rest.remove_prefix(2);
            rest.remove_prefix(std::min(rest.find('/'), rest.size()));
        }
    }
    rest = rest.substr(0, rest.find('#'));
    path.clear();
    const auto hex = [](char c) {
        return c >= '0' && c <= '9'   ? c - '0'
               : c >= 'a' && c <= 'f' ? c - 'a' + 10
               : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                      : -1;
    };
    for (std::size_t i = 0; i < rest.size(); ++i) {
        if (rest[i] == '%' && i + 2 < rest.size() && hex(rest[i + 1]) >= 0 && hex(rest[i + 2]) >= 0) {
            path += static_cast<char>(hex(rest[i + 1]) * 16 + hex(rest[i + 2]));
            i += 2;
        } else {
            path += rest[i];
        }
    }
    return true;
}

bool Exists(const std::string& file) {
    std::error_code error;
    return fs::is_regular_file(fs::path(file), error) || fs::is_fifo(fs::path(file), error);
}

/// `path` seen from the folder of `base`.
std::string Beside(const std::string& base, const std::string& path) {
    const fs::path location(path);
    if (location.is_absolute() || base.empty()) return location.lexically_normal().string();
    return (fs::path(base).parent_path() / location).lexically_normal().string();
}

}  // namespace

struct CLocationResolver::Impl {
    const CSchemaLoadOptions& options;
    CXmlCatalog catalog;
};

CLocationResolver::CLocationResolver(const CSchemaLoadOptions& options)
    : m_impl(new Impl{options, CXmlCatalog()}) {
    for (const std::string& file : options.catalogs)
        m_impl->catalog.Add(file);
}

CLocationResolver::~CLocationResolver() = default;

std::string CLocationResolver::Identity(const std::string& file) {
    std::error_code error;
    const fs::path absolute = fs::absolute(fs::path(file), error);
    return error ? file : absolute.lexically_normal().string();
}

CResolvedLocation CLocationResolver::Resolve(std::string_view namespaceUri, std::string_view location,
                                             const std::string& baseFile) const {
    CResolvedLocation found;
    for (const auto& [key, file] : m_impl->options.mappings) {
        if ((!location.empty() && key == location) || (!namespaceUri.empty() && key == namespaceUri)) {
            found.file = file;
            return found;
        }
    }
    std::string mapped = m_impl->catalog.Find(location);
    if (mapped.empty()) mapped = m_impl->catalog.Find(namespaceUri);
    if (!mapped.empty() && ToPath(mapped, found.file)) return found;

    std::string path;
    const bool isLocal = !location.empty() && ToPath(location, path) && !path.empty();
    if (isLocal && m_impl->options.followLocations) {
        found.file = Beside(baseFile, path);
        if (Exists(found.file)) return found;
        for (const std::string& folder : m_impl->options.includePaths) {
            found.file = (fs::path(folder) / path).lexically_normal().string();
            if (Exists(found.file)) return found;
        }
        found.file.clear();
    }
    if (const std::string_view text = FindBuiltInSchema(namespaceUri); text.data() != nullptr) {
        found.file = namespaceUri;
        found.text = text;
        return found;
    }
    if (location.empty()) {
        found.problem = "No location is known for the namespace [" + std::string(namespaceUri) + "].";
    } else if (isLocal && !m_impl->options.followLocations) {
        found.problem = "The location [" + std::string(location) + "] is not followed; map it to a file.";
    } else if (isLocal) {
        found.problem = "The document [" + std::string(location) + "] is not there.";
    } else {
        found.problem = "The location [" + std::string(location) +
                        "] is remote; map it to a file, or the namespace [" + std::string(namespaceUri) +
                        "], by a mapping or a catalog.";
    }
    return found;
}

}  // namespace KvXmlLib16::internal
