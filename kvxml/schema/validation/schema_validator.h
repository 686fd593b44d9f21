/// Is a document valid? Streaming, every fault, with its place.
///
///     CSchemaValidator validator(schema);
///     const CValidationReport report = validator.ValidateFile("orders.xml");
///     for (const CFault& fault : report.GetFaults()) std::cerr << ToText(fault) << '\n';
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "kvxml/schema/model/fault.h"
#include "kvxml/schema/model/schema_export.h"
#include "kvxml/schema/model/schema_set.h"
#include "kvxml/settings/serialization_context.h"

namespace KvXmlLib16 {

class CXmlDocument;
class CXmlReader;

/// The outcome for one document.
class KVXML_SCHEMA_EXPORT CValidationReport : public CFaultList {
public:
    using CFaultList::CFaultList;
    bool IsValid() const noexcept { return IsEmpty(); }
};

struct CValidationOptions {
    std::size_t maxFaults = CFaultList::kDefaultLimit;
    /// Limits and encodings of reading. Its document check does not count.
    const CSerializationContext* context = nullptr;  ///< null: the default context
    /// Names are matched by their local parts alone, as in JSON without namespaces.
    bool ignoreNamespaces = false;
};

/// Validates documents, one after another, against a schema set that is shared. One thread at a time uses a
/// validator; to make one takes no time. Memory does not grow with the document, tables of identity
/// constraints and IDs apart.
///
/// A document that is not well-formed is a fault of the report with the parser's message and place, not an
/// exception; CKvException is thrown when a file cannot be read at all.
class KVXML_SCHEMA_EXPORT CSchemaValidator {
public:
    explicit CSchemaValidator(std::shared_ptr<const CSchemaSet> schema,
                              const CValidationOptions& options = {});
    CSchemaValidator(const CSchemaValidator&) = delete;
    CSchemaValidator& operator=(const CSchemaValidator&) = delete;
    ~CSchemaValidator();

    CValidationReport ValidateFile(const char* fileName);
    CValidationReport ValidateBuffer(const void* data, std::size_t length, std::string_view name = {});
    /// Reads all events of the reader. One that stands at the document element already is taken from there.
    CValidationReport Validate(CXmlReader& reader);
    /// A document of any format that has been loaded, under the name `name` in faults, which have no lines.
    CValidationReport Validate(const CXmlDocument& document, std::string_view name = {});

    // In step with the caller: the caller reads, and hands over each event after `Begin`.

    void Begin(const CXmlReader& reader, CValidationReport& report);
    /// The reader's current event.
    void OnEvent(const CXmlReader& reader);
    void End();
    /// After a start event: declaration and type that the element was judged by; null when unknown (lax,
    /// skip).
    const CElementDeclaration* GetElementDeclaration() const noexcept;
    const CTypeDefinition* GetTypeDefinition() const noexcept;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace KvXmlLib16
