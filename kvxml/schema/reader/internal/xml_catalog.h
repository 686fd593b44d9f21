/// OASIS XML Catalogs 1.1: from URIs to URIs of files.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace KvXmlLib16::internal {

/// The entries of catalog files, asked in the order in which they were added; catalogs named by `nextCatalog`
/// and the `delegate...` entries come after the file that names them. `uri` and `system` entries serve alike,
/// and `public` ones for what is no URI of a file.
class CXmlCatalog {
public:
    /// CKvException when the file cannot be read or is not well-formed; a next catalog that is missing is
    /// passed over.
    void Add(const std::string& file);
    /// The file's URI or path, made absolute by the catalog's base; empty when no entry fits.
    std::string Find(std::string_view uri) const;

private:
    enum class Match { Exact, Prefix, Suffix };
    struct Entry {
        Match match;
        std::string key;
        std::string value;
    };

    void Read(const std::string& file, std::vector<std::string>& next);

    std::vector<Entry> m_entries;
    std::vector<std::string> m_read;  // no file twice
};

}  // namespace KvXmlLib16::internal
