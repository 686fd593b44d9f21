/// From a namespace and a location in a schema or document to the file to be read. Never a network.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "kvxml/schema/reader/schema_loader.h"

namespace KvXmlLib16::internal {

/// Where a schema document is to be had.
struct CResolvedLocation {
    /// File name for opening and for messages, normalised so that one file has one name; or a name of a
    /// document that is built in. Empty when there is none.
    std::string file;
    /// The document itself when it is built in (namespaces of xml, xlink, the instance attributes); else null
    /// data.
    std::string_view text;
    /// Why there is none: one sentence.
    std::string problem;
};

/// Looks at mappings, then catalogs, then built-in schemas, then the location relative to `baseFile`, then
/// the include paths. A location that is remote (http: and the like) leads to a file by mapping or catalog
/// only.
class CLocationResolver {
public:
    /// Reads the catalogs, with those that they delegate to. CKvException when one cannot be read.
    explicit CLocationResolver(const CSchemaLoadOptions& options);
    ~CLocationResolver();

    /// `location` may be empty (an import that gives none): then namespace alone decides.
    CResolvedLocation Resolve(std::string_view namespaceUri, std::string_view location,
                              const std::string& baseFile) const;
    /// One name for one file: absolute and without `.` and `..`, links kept; for comparing.
    static std::string Identity(const std::string& file);

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace KvXmlLib16::internal
