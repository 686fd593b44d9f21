#include "kvxml/schema/reader/internal/schema_structure.h"

#include <algorithm>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/schema/reader/internal/structure_rules.h"
#include "kvxml/schema/reader/internal/structure_tables.h"

namespace KvXmlLib16::internal {

namespace {

std::string Quoted(std::string_view text) {
    return "[" + std::string(text) + "]";
}

/// Walks a tree in document order, each element with the rules of its context.
class CStructureChecker : public IStructureReport {
public:
    CStructureChecker(const CSchemaDocument& document, CFaultList& faults)
        : m_document(document), m_faults(faults) {}

    void Run(const CSchemaNode& root) {
        if (root.tag != SchemaTag::Schema) {
            Report(root,
                   "The document element " + Quoted(root.localName) + " of the namespace " +
                       Quoted(root.namespaceUri) + " is not the element [schema] of the namespace " +
                       Quoted(kSchemaNamespace) + ".",
                   "s4s-elt-invalid-content");
            return;
        }
        Enter(root, Construct::Schema);
        while (!m_open.empty()) {
            Frame& frame = m_open.back();
            if (frame.nextChild == frame.node->children.size()) {
                Leave(frame);
                m_open.pop_back();
                continue;
            }
            const CSchemaNode& child = *frame.node->children[frame.nextChild++];
            if (const CChildRule* rule = FindChild(frame, child)) Enter(child, rule->construct);
        }
    }

    void Report(const CSchemaNode& node, std::string message, const char* constraint) override {
        CFault fault;
        fault.file = m_document.file;
        fault.line = node.line;
        fault.column = node.column;
        fault.message = std::move(message);
        fault.constraint = constraint;
        m_faults.Add(std::move(fault));
    }

private:
    /// An element whose children are being looked at.
    struct Frame {
        const CSchemaNode* node;
        const CConstructRule* rule;
        std::size_t nextChild = 0;
        std::size_t part = 0;  ///< of the content model
        bool isPartUsed = false;
        const CSchemaNode* last = nullptr;  ///< child that nothing may follow
        bool mayLack = false;               ///< something wrong may stand for what is missing
    };

    void Enter(const CSchemaNode& node, Construct construct) {
        const CConstructRule& rule = RuleOf(construct);
        const bool isOf11 = CheckAttributes(node, rule);
        CheckLocalRules(node, construct, *this);
        if (node.hasCharacters) {
            Report(node,
                   "There is text in " + Quoted(node.localName) +
                       "; only documentation and appinfo can have text.",
                   "s4s-elt-character");
        }
        m_open.push_back({&node, &rule, 0, 0, false, nullptr, isOf11});
    }

    // --- attributes
    // ------------------------------------------------------------------------------------------

    /// True when there are some of XML Schema 1.1.
    bool CheckAttributes(const CSchemaNode& node, const CConstructRule& rule) {
        bool isOf11 = false;
        for (const CSchemaNodeAttribute& attribute : node.attributes) {
            if (attribute.namespaceUri == kXmlNamespace) {
                CheckXmlAttribute(node, attribute);
            } else if (attribute.namespaceUri == kSchemaNamespace) {
                Report(node,
                       "The attribute " + Quoted(attribute.localName) + " of " + Quoted(node.localName) +
                           " is in the namespace of XML Schema; its attributes have no prefix.",
                       "s4s-att-not-allowed");
            } else if (attribute.namespaceUri.empty()) {
                isOf11 |= CheckAttribute(node, rule, attribute);
            }
        }
        for (const CAttributeRule& wanted : rule.attributes) {
            if (wanted.isRequired && !isOf11 && !node.Has(wanted.name)) {
                Report(
                    node,
                    "The attribute " + Quoted(wanted.name) + " of " + Quoted(node.localName) + " is missing.",
                    "s4s-att-must-appear");
            }
        }
        return isOf11;
    }

    bool CheckAttribute(const CSchemaNode& node, const CConstructRule& rule,
                        const CSchemaNodeAttribute& attribute) {
        const auto* const known = std::find_if(
            rule.attributes.begin(), rule.attributes.end(),
            [&](const CAttributeRule& candidate) { return candidate.name == attribute.localName; });
        if (known == rule.attributes.end()) {
            const bool isOf11 = IsAttributeOf11(node.tag, attribute.localName);
            Report(node,
                   "The attribute " + Quoted(attribute.localName) + " of " + Quoted(node.localName) +
                       (isOf11 ? " is of XML Schema 1.1; schemas are read as XML Schema 1.0."
                               : " is not allowed here."),
                   "s4s-att-not-allowed");
            return isOf11;
        }
        CheckForm(node, attribute, known->form);
        if (known->form == AttributeForm::Id && !m_ids.insert(node.Get(attribute.localName)).second) {
            Report(node, "The id " + Quoted(attribute.value) + " stands in the document already.",
                   "s4s-att-invalid-value");
        }
        return false;
    }

    void CheckXmlAttribute(const CSchemaNode& node, const CSchemaNodeAttribute& attribute) {
        // Elsewhere only what XML itself says of it holds, by which it may be empty (XML 1.0, 2.12).
        const bool isOwn = node.tag == SchemaTag::Schema || node.tag == SchemaTag::Documentation;
        if (attribute.localName == "lang" && (isOwn || !attribute.value.empty()))
            CheckForm(node, attribute, AttributeForm::Language);
        if (attribute.localName == "space") CheckForm(node, attribute, AttributeForm::Space);
        if (attribute.localName == "base") CheckForm(node, attribute, AttributeForm::AnyUri);
    }

    void CheckForm(const CSchemaNode& node, const CSchemaNodeAttribute& attribute, AttributeForm form) {
        if (HasForm(attribute.value, form)) return;
        std::string message = "The value " + Quoted(attribute.value) + " of the attribute " +
                              Quoted(attribute.localName) + " of " + Quoted(node.localName) + " is not ";
        Report(node, message.append(DescriptionOf(form)) += '.', "s4s-att-invalid-value");
    }

    // --- children
    // --------------------------------------------------------------------------------------------

    /// The rule of a child that may be there, though perhaps at another place; null after a fault otherwise.
    const CChildRule* FindChild(Frame& frame, const CSchemaNode& child) {
        const CChildRule* found = nullptr;
        if (child.tag != SchemaTag::Other) {
            found = FindAhead(frame, child);
            if (found == nullptr) found = FindBehind(frame, child);
        }
        if (found != nullptr) return found;
        frame.mayLack = true;
        std::string message = "The element " + Quoted(child.localName);
        if (child.namespaceUri != kSchemaNamespace) {
            message += " of the namespace " + Quoted(child.namespaceUri);
        } else if (IsElementOf11(child.localName)) {
            message += " is of XML Schema 1.1; schemas are read as XML Schema 1.0";
            Report(child, message += '.', "s4s-elt-invalid-content");
            return nullptr;
        }
        Report(child, message + " is not allowed in " + Quoted(frame.node->localName) + Content(frame),
               "s4s-elt-invalid-content");
        return nullptr;
    }

    static const CChildRule* FindIn(const CContentPart& part, SchemaTag tag) {
        const auto* const found = std::find_if(part.children.begin(), part.children.end(),
                                               [&](const CChildRule& rule) { return rule.tag == tag; });
        return found == part.children.end() ? nullptr : found;
    }

    /// The child at the place where the content model is, or after it.
    const CChildRule* FindAhead(Frame& frame, const CSchemaNode& child) {
        const auto& content = frame.rule->content;
        for (std::size_t part = frame.part; part < content.count; ++part) {
            const CChildRule* const found = FindIn(content.first[part], child.tag);
            if (found == nullptr) continue;
            if (part == frame.part && frame.isPartUsed && !content.first[part].repeats) continue;
            if (frame.last != nullptr) {
                Report(child,
                       "The element " + Quoted(child.localName) + " cannot stand after " +
                           Quoted(frame.last->localName) + ".",
                       "s4s-elt-invalid-content");
                return found;
            }
            for (std::size_t skipped = frame.part; skipped < part; ++skipped) {
                if (skipped != frame.part || !frame.isPartUsed) CheckLack(frame, skipped, child);
            }
            frame.part = part;
            frame.isPartUsed = true;
            if (found->isLast) frame.last = &child;
            return found;
        }
        return nullptr;
    }

    /// The child where it comes too late.
    const CChildRule* FindBehind(const Frame& frame, const CSchemaNode& child) {
        const auto& content = frame.rule->content;
        for (std::size_t part = 0; part <= frame.part && part < content.count; ++part) {
            const CChildRule* const found = FindIn(content.first[part], child.tag);
            if (found == nullptr) continue;
            Report(child,
                   "The element " + Quoted(child.localName) + " stands too late, or once too often, in " +
                       Quoted(frame.node->localName) + Content(frame),
                   "s4s-elt-invalid-content");
            return found;
        }
        return nullptr;
    }

    void Leave(Frame& frame) {
        const std::size_t from = frame.part + (frame.isPartUsed ? 1 : 0);
        for (std::size_t part = from; part < frame.rule->content.count; ++part)
            CheckLack(frame, part, *frame.node);
    }

    /// One fault for each element that lacks something.
    void CheckLack(Frame& frame, std::size_t part, const CSchemaNode& place) {
        if (!frame.rule->content.first[part].isRequired || frame.mayLack) return;
        frame.mayLack = true;
        std::string names;
        for (const CChildRule& child : frame.rule->content.first[part].children)
            names.append(names.empty() ? "[" : ", [").append(TagName(child.tag)) += ']';
        const bool isAtChild = &place != frame.node;
        Report(place,
               "The element " + Quoted(frame.node->localName) + " lacks " +
                   (frame.rule->content.first[part].children.count > 1 ? "one of " : "") + names +
                   (isAtChild ? " before " + Quoted(place.localName) : "") + Content(frame),
               "s4s-elt-invalid-content");
    }

    static std::string Content(const Frame& frame) {
        return "; its content is " + ContentText(*frame.rule) + ".";
    }

    const CSchemaDocument& m_document;
    CFaultList& m_faults;
    std::vector<Frame> m_open;
    std::unordered_set<std::string_view> m_ids;
};

}  // namespace

bool CheckSchemaStructure(const CSchemaTree& tree, const CSchemaDocument& document, CSchemaStore&,
                          CFaultList& faults) {
    if (tree.GetRoot() == nullptr) return false;
    const std::size_t before = faults.GetCount();
    CStructureChecker(document, faults).Run(*tree.GetRoot());
    return faults.GetCount() == before;
}

}  // namespace KvXmlLib16::internal
