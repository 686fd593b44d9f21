/// Reads schema documents into a set of components.
///
///     CSchemaLoader loader;
///     loader.AddFile("orders.xsd");
///     std::shared_ptr<const CSchemaSet> schema = loader.Load();   // throws when it is no valid schema
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/schema/model/fault.h"
#include "kvxml/schema/model/schema_export.h"
#include "kvxml/schema/model/schema_set.h"

namespace KvXmlLib16 {

/// What a loader takes into account. Nothing is ever fetched from a network.
struct CSchemaLoadOptions {
    /// OASIS XML catalogs (1.1), asked in this order for namespaces and locations.
    std::vector<std::string> catalogs;
    /// Namespace, or location as it stands in a schema, to a file.
    std::vector<std::pair<std::string, std::string>> mappings;
    /// Folders searched for relative locations that do not exist beside the document.
    std::vector<std::string> includePaths;
    /// Open the files that locations in schemas and hints lead to. Without, only root documents, mappings,
    /// catalogs and what is built in are read: for schemas from outside, which could name any file.
    bool followLocations = true;
    /// Check all constraints on schemas; without, only what is needed to make the components.
    bool fullChecking = true;
    std::size_t maxFaults = CFaultList::kDefaultLimit;
};

/// Thrown for an invalid schema; has all faults. The message is that of the first.
class KVXML_SCHEMA_EXPORT CKvSchemaException : public CKvException {
public:
    explicit CKvSchemaException(CFaultList faults);
    ~CKvSchemaException() override;
    const CFaultList& GetFaults() const noexcept { return m_faults; }

private:
    CFaultList m_faults;
};

/// Collects root documents, then reads them with all that they include, import and redefine. One thread at a
/// time; what it makes is shared freely.
class KVXML_SCHEMA_EXPORT CSchemaLoader {
public:
    explicit CSchemaLoader(CSchemaLoadOptions options = {});
    CSchemaLoader(const CSchemaLoader&) = delete;
    CSchemaLoader& operator=(const CSchemaLoader&) = delete;
    ~CSchemaLoader();

    void AddFile(std::string fileName);
    /// A document in memory; relative locations in it start from `baseName`, which errors show as its name.
    void AddText(std::string xml, std::string baseName);
    /// A location for a namespace, as an `xsi:schemaLocation` gives it, seen from `baseFile`: found by
    /// mappings and catalogs first; not fatal when there is nothing.
    void AddHint(std::string namespaceUri, std::string location, std::string baseFile);

    /// Reads everything. CKvSchemaException when the schema is invalid, CKvException when a root file cannot
    /// be read. The loader is empty afterwards.
    std::shared_ptr<const CSchemaSet> Load();
    /// The same without throwing for an invalid schema: null, with the faults in `faults`. Remarks that are
    /// not fatal (a location that leads nowhere) are added to `remarks` when it is not null.
    std::shared_ptr<const CSchemaSet> Load(CFaultList& faults, CFaultList* remarks = nullptr);

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace KvXmlLib16
