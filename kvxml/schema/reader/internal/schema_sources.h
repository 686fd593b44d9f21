/// The documents of a set: root documents and all that they include, import and redefine, each once for each
/// namespace that it is read for.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "kvxml/schema/reader/internal/location_resolver.h"
#include "kvxml/schema/reader/internal/schema_node.h"

namespace KvXmlLib16::internal {

/// One document, read for one target namespace.
struct CSchemaSource {
    CSchemaDocument* document = nullptr;
    const CSchemaNode* root = nullptr;
    std::string identity;              ///< of the file; empty for texts without a name
    std::string_view targetNamespace;  ///< that in force
    bool isChameleon = false;          ///< has none of its own: names without prefix are in that in force
    bool elementsQualified = false;
    bool attributesQualified = false;
    DerivationSet blockDefault = Derivation_None;
    DerivationSet finalDefault = Derivation_None;
    /// Namespaces that the document imports; the empty one for an import without.
    std::unordered_set<std::string_view> imports;
    /// Documents that it includes and redefines.
    std::vector<CSchemaSource*> included;
    /// Its redefine elements, each with the document that it redefines.
    std::vector<std::pair<const CSchemaNode*, CSchemaSource*>> redefinitions;
};

/// A document that is to be read first.
struct CSchemaRoot {
    std::string file;
    std::string text;  ///< instead of the file when `isText`
    bool isText = false;
    bool isHint = false;  ///< may be missing
    std::string hintNamespace;
    std::string baseFile;
};

/// Reads and owns the trees.
class CSchemaSources {
public:
    CSchemaSources(CSchemaStore& store, const CLocationResolver& resolver, CFaultList& faults,
                   CFaultList* remarks);
    CSchemaSources(const CSchemaSources&) = delete;
    CSchemaSources& operator=(const CSchemaSources&) = delete;
    ~CSchemaSources();

    /// Reads a root with all that it leads to. CKvException when the root itself cannot be read.
    void Add(const CSchemaRoot& root);
    /// In order of reading; what a document redefines comes before it.
    const std::vector<CSchemaSource*>& GetSources() const noexcept { return m_order; }

private:
    struct Tree;

    CSchemaSource* Read(const std::string& file, std::string_view text, bool isText,
                        std::string_view includerNamespace, bool isInclude);
    Tree* ReadTree(const std::string& identity, const std::string& file, std::string_view text, bool isText);
    void FollowReferences();
    void FollowInclude(CSchemaSource& source, const CSchemaNode& node);
    void FollowImport(CSchemaSource& source, const CSchemaNode& node);
    void Fault(const CSchemaSource& source, const CSchemaNode& node, std::string message,
               const char* constraint, bool isRemark = false);

    CSchemaStore& m_store;
    const CLocationResolver& m_resolver;
    CFaultList& m_faults;
    CFaultList* m_remarks;
    std::map<std::string, std::unique_ptr<Tree>> m_trees;  // by identity
    std::deque<CSchemaSource> m_sources;
    std::vector<CSchemaSource*> m_order;
    std::vector<CSchemaSource*> m_waiting;  // their references are still to be followed
    std::map<std::pair<std::string, std::string_view>, CSchemaSource*> m_known;
};

/// The `block`, `final` and default attributes: a list of words or `#all`, which stands for `all`.
DerivationSet ReadDerivationSet(std::string_view text, DerivationSet all) noexcept;

}  // namespace KvXmlLib16::internal
