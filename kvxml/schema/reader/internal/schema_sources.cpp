#include "kvxml/schema/reader/internal/schema_sources.h"

#include <algorithm>
#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/schema/reader/internal/schema_structure.h"
#include "kvxml/xml/xml_reader.h"

namespace KvXmlLib16::internal {

/// A document as it stands in its file, however often it is used.
struct CSchemaSources::Tree {
    CSchemaTree tree;
    bool isSound = false;
};

DerivationSet ReadDerivationSet(std::string_view text, DerivationSet all) noexcept {
    DerivationSet set = Derivation_None;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(" \t\r\n"), text.size());
        const std::string_view word = text.substr(0, end);
        text.remove_prefix(std::min(text.size(), end + 1));
        if (word == "#all") return all;
        if (word == "extension") set |= Derivation_Extension;
        if (word == "restriction") set |= Derivation_Restriction;
        if (word == "substitution") set |= Derivation_Substitution;
        if (word == "list") set |= Derivation_List;
        if (word == "union") set |= Derivation_Union;
    }
    return set & all;
}

CSchemaSources::CSchemaSources(CSchemaStore& store, const CLocationResolver& resolver, CFaultList& faults,
                               CFaultList* remarks)
    : m_store(store), m_resolver(resolver), m_faults(faults), m_remarks(remarks) {}

CSchemaSources::~CSchemaSources() = default;

void CSchemaSources::Fault(const CSchemaSource& source, const CSchemaNode& node, std::string message,
                           const char* constraint, bool isRemark) {
    CFault fault;
    fault.file = source.document->file;
    fault.line = node.line;
    fault.column = node.column;
    fault.message = std::move(message);
    fault.constraint = constraint;
    if (!isRemark) {
        m_faults.Add(std::move(fault));
    } else if (m_remarks != nullptr) {
        m_remarks->Add(std::move(fault));
    }
}

void CSchemaSources::Add(const CSchemaRoot& root) {
    if (root.isHint) {
        const CResolvedLocation found = m_resolver.Resolve(root.hintNamespace, root.file, root.baseFile);
        if (found.file.empty()) {
            if (m_remarks != nullptr) m_remarks->Add({root.baseFile, 0, 0, {}, found.problem, {}});
            return;
        }
        try {
            Read(found.file, found.text, found.text.data() != nullptr, {}, false);
        } catch (const CKvException&) {
            return;  // a hint may lead nowhere
        }
    } else {
        Read(root.file, root.text, root.isText, {}, false);
    }
    FollowReferences();
}

CSchemaSources::Tree* CSchemaSources::ReadTree(const std::string& identity, const std::string& file,
                                               std::string_view text, bool isText) {
    std::unique_ptr<Tree>& known = m_trees[identity];
    if (known != nullptr) return known.get();
    auto tree = std::make_unique<Tree>();
    CXmlReader reader;
    if (isText) {
        reader.OpenText(text, file);
    } else {
        reader.OpenFile(file.c_str());
    }
    CSchemaDocument document;
    document.file = m_store.Keep(file);
    try {
        tree->tree.Read(reader, m_store);
    } catch (const CKvException& e) {
        CFault fault;
        fault.file = file;
        fault.line = reader.GetLine();
        fault.column = reader.GetColumn();
        fault.message = e.GetMessage();
        m_faults.Add(std::move(fault));
        known = std::move(tree);
        return known.get();
    }
    tree->isSound = CheckSchemaStructure(tree->tree, document, m_store, m_faults);
    known = std::move(tree);
    return known.get();
}

/// Null when the document is no schema; its faults are reported once.
CSchemaSource* CSchemaSources::Read(const std::string& file, std::string_view text, bool isText,
                                    std::string_view includerNamespace, bool isInclude) {
    const std::string identity = isText ? "text:" + file : CLocationResolver::Identity(file);
    Tree* const tree = ReadTree(identity, file, text, isText);
    const CSchemaNode* const root = tree->tree.GetRoot();
    if (!tree->isSound || root == nullptr || root->tag != SchemaTag::Schema) return nullptr;
    const bool hasOwn = root->Has("targetNamespace");
    const std::string_view target = m_store.Keep(hasOwn      ? root->Get("targetNamespace")
                                                 : isInclude ? includerNamespace
                                                             : std::string_view());
    CSchemaSource*& known = m_known[{identity, target}];
    if (known != nullptr) return known;
    CSchemaSource& source = m_sources.emplace_back();
    known = &source;
    source.document = &m_store.MakeDocument();
    source.document->file = m_store.Keep(file);
    source.document->targetNamespace = target;
    source.root = root;
    source.identity = identity;
    source.targetNamespace = target;
    source.isChameleon = !hasOwn && !target.empty();
    source.elementsQualified = root->Get("elementFormDefault") == "qualified";
    source.attributesQualified = root->Get("attributeFormDefault") == "qualified";
    source.blockDefault = ReadDerivationSet(
        root->Get("blockDefault"), Derivation_Extension | Derivation_Restriction | Derivation_Substitution);
    source.finalDefault =
        ReadDerivationSet(root->Get("finalDefault"),
                          Derivation_Extension | Derivation_Restriction | Derivation_List | Derivation_Union);
    m_store.namespaces.insert(target);
    m_waiting.push_back(&source);
    return &source;
}

void CSchemaSources::FollowReferences() {
    const std::size_t from = m_order.size();
    while (!m_waiting.empty()) {
        CSchemaSource& source = *m_waiting.back();
        m_waiting.pop_back();
        m_order.push_back(&source);
        for (const CSchemaNode* child : source.root->children) {
            if (child->tag == SchemaTag::Include || child->tag == SchemaTag::Redefine) {
                FollowInclude(source, *child);
            } else if (child->tag == SchemaTag::Import) {
                FollowImport(source, *child);
            }
        }
    }
    // What a document redefines comes before it; circles are cut anywhere.
    std::vector<CSchemaSource*> sorted(m_order.begin(), m_order.begin() + static_cast<std::ptrdiff_t>(from));
    std::unordered_set<const CSchemaSource*> done(sorted.begin(), sorted.end());
    for (std::size_t i = from; i < m_order.size(); ++i) {
        std::vector<std::pair<CSchemaSource*, std::size_t>> path;
        if (done.insert(m_order[i]).second) path.emplace_back(m_order[i], 0);
        while (!path.empty()) {
            auto& [source, next] = path.back();
            if (next < source->included.size()) {
                CSchemaSource* const inner = source->included[next++];
                if (done.insert(inner).second) path.emplace_back(inner, 0);
            } else {
                sorted.push_back(source);
                path.pop_back();
            }
        }
    }
    m_order = std::move(sorted);
}

void CSchemaSources::FollowInclude(CSchemaSource& source, const CSchemaNode& node) {
    const bool isRedefine = node.tag == SchemaTag::Redefine;
    const std::string_view location = node.Get("schemaLocation");
    const CResolvedLocation found =
        m_resolver.Resolve(source.targetNamespace, location, std::string(source.document->file));
    const bool isEmptyRedefine =
        isRedefine && std::none_of(node.children.begin(), node.children.end(), [](const CSchemaNode* child) {
            return child->tag != SchemaTag::Annotation;
        });
    const auto missing = [&](const std::string& why) {
        Fault(source, node, why, isRedefine ? "src-redefine" : "src-include", !isRedefine || isEmptyRedefine);
    };
    if (found.file.empty()) return missing(found.problem);
    CSchemaSource* included = nullptr;
    const std::size_t faultsBefore = m_faults.GetCount();
    try {
        included = Read(found.file, found.text, found.text.data() != nullptr, source.targetNamespace, true);
    } catch (const CKvException& e) {
        return missing(e.GetMessage());
    }
    if (included == nullptr) {
        if (m_faults.GetCount() == faultsBefore) {
            Fault(source, node, "The document [" + found.file + "] is no schema.",
                  isRedefine ? "src-redefine.2" : "src-include.2");
        }
        return;
    }
    if (included->targetNamespace != source.targetNamespace) {
        Fault(source, node,
              "The document [" + found.file + "] has the target namespace [" +
                  std::string(included->targetNamespace) + "], not [" + std::string(source.targetNamespace) +
                  "].",
              isRedefine ? "src-redefine.3" : "src-include.2");
        return;
    }
    source.included.push_back(included);
    if (isRedefine) source.redefinitions.emplace_back(&node, included);
}

void CSchemaSources::FollowImport(CSchemaSource& source, const CSchemaNode& node) {
    const std::string_view wanted = m_store.Keep(node.Get("namespace"));
    if (wanted == source.targetNamespace && (node.Has("namespace") || source.targetNamespace.empty())) {
        Fault(source, node,
              "A document cannot import its own target namespace [" + std::string(wanted) + "].",
              "src-import.1");
        return;
    }
    source.imports.insert(wanted);
    if (wanted == kSchemaNamespace) return;  // its components are built in
    const CResolvedLocation found =
        m_resolver.Resolve(wanted, node.Get("schemaLocation"), std::string(source.document->file));
    if (found.file.empty()) {
        if (node.Has("schemaLocation")) Fault(source, node, found.problem, "src-import", true);
        return;
    }
    CSchemaSource* imported = nullptr;
    try {
        imported = Read(found.file, found.text, found.text.data() != nullptr, {}, false);
    } catch (const CKvException& e) {
        Fault(source, node, e.GetMessage(), "src-import", true);
        return;
    }
    if (imported != nullptr && imported->targetNamespace != wanted) {
        Fault(source, node,
              "The document [" + found.file + "] has the target namespace [" +
                  std::string(imported->targetNamespace) + "], not the imported [" + std::string(wanted) +
                  "].",
              "src-import.3");
    }
}

}  // namespace KvXmlLib16::internal
