#include "kvxml/schema/reader/internal/structure_rules.h"

#include <initializer_list>
#include <string_view>
#include <utility>

namespace KvXmlLib16::internal {

namespace {

/// The rules of one element.
class LocalRules {
public:
    LocalRules(const CSchemaNode& node, IStructureReport& report) : m_node(node), m_report(report) {}

    void CheckElement(bool isLocal) {
        CheckDefaultAndFixed("src-element.1");
        if (isLocal && CheckNameOrReference("src-element.2.1")) {
            CheckBesideReference({"nillable", "default", "fixed", "form", "block", "type"},
                                 {SchemaTag::SimpleType, SchemaTag::ComplexType, SchemaTag::Key,
                                  SchemaTag::Keyref, SchemaTag::Unique},
                                 "src-element.2.2");
            return;
        }
        CheckTypeOrChild("src-element.3");
    }

    void CheckAttribute(bool isLocal) {
        CheckDefaultAndFixed("src-attribute.1");
        const std::string_view use = m_node.Get("use");
        if (m_node.Has("default") && (use == "required" || use == "prohibited")) {
            Fault("An attribute with a default cannot have the use [" + std::string(use) + "].",
                  "src-attribute.2");
        }
        if (isLocal && CheckNameOrReference("src-attribute.3.1")) {
            CheckBesideReference({"form", "type"}, {SchemaTag::SimpleType}, "src-attribute.3.2");
            return;
        }
        CheckTypeOrChild("src-attribute.4");
    }

    void CheckSimpleRestriction() {
        if (m_node.Has("base") == HasChild(SchemaTag::SimpleType)) {
            Fault("A restriction has either the attribute [base] or a child [simpleType].",
                  "src-restriction-base-or-simpleType");
        }
    }
    void CheckList() {
        if (m_node.Has("itemType") == HasChild(SchemaTag::SimpleType)) {
            Fault("A list has either the attribute [itemType] or a child [simpleType].",
                  "src-list-itemType-or-simpleType");
        }
    }
    void CheckUnion() {
        if (m_node.Get("memberTypes").empty() && !HasChild(SchemaTag::SimpleType)) {
            Fault("A union has members: the attribute [memberTypes], children [simpleType], or both.",
                  "src-union-memberTypes-or-simpleTypes");
        }
    }
    void CheckNotation() {
        if (!m_node.Has("public") && !m_node.Has("system"))
            Fault("A notation has a public identifier, a system identifier, or both.", "n-props-correct");
    }

    // --- children of redefine
    // --------------------------------------------------------------------------------

    void CheckRedefinedSimpleType() {
        const CSchemaNode* const restriction = m_node.Child(SchemaTag::Restriction);
        if (restriction == nullptr || !restriction->Has("base"))
            Fault("A simple type that is redefined is a restriction of itself.", "src-redefine.5");
    }
    void CheckRedefinedComplexType() {
        for (const CSchemaNode* child : m_node.children) {
            if (child->tag == SchemaTag::SimpleContent || child->tag == SchemaTag::ComplexContent) return;
        }
        Fault("A complex type that is redefined is a restriction or extension of itself.", "src-redefine.5");
    }

private:
    void Fault(std::string message, const char* constraint) {
        m_report.Report(m_node, std::move(message), constraint);
    }
    bool HasChild(SchemaTag tag) const { return m_node.Child(tag) != nullptr; }

    void CheckDefaultAndFixed(const char* constraint) {
        if (m_node.Has("default") && m_node.Has("fixed"))
            Fault("The attributes [default] and [fixed] exclude each other.", constraint);
    }
    /// True for a reference.
    bool CheckNameOrReference(const char* constraint) {
        const bool isReference = m_node.Has("ref");
        if (isReference == m_node.Has("name")) {
            Fault("A local " + std::string(m_node.localName) +
                      " has either the attribute [name] or the attribute [ref].",
                  constraint);
        }
        return isReference;
    }
    void CheckBesideReference(std::initializer_list<std::string_view> attributes,
                              std::initializer_list<SchemaTag> children, const char* constraint) {
        std::string found;
        const auto add = [&](std::string_view name) {
            found.append(found.empty() ? "[" : ", [").append(name) += ']';
        };
        for (const std::string_view name : attributes) {
            if (m_node.Has(name)) add(name);
        }
        for (const SchemaTag tag : children) {
            if (HasChild(tag)) add(TagName(tag));
        }
        if (!found.empty()) Fault("Beside the attribute [ref] there cannot be " + found + ".", constraint);
    }
    void CheckTypeOrChild(const char* constraint) {
        if (m_node.Has("type") && (HasChild(SchemaTag::SimpleType) || HasChild(SchemaTag::ComplexType)))
            Fault("The attribute [type] and a type inside exclude each other.", constraint);
    }

    const CSchemaNode& m_node;
    IStructureReport& m_report;
};

}  // namespace

void CheckLocalRules(const CSchemaNode& node, Construct construct, IStructureReport& report) {
    LocalRules rules(node, report);
    const bool isRedefined = node.parent != nullptr && node.parent->tag == SchemaTag::Redefine;
    switch (construct) {
        case Construct::GlobalElement:
        case Construct::LocalElement:
        case Construct::ElementOfAll:
            return rules.CheckElement(construct != Construct::GlobalElement);
        case Construct::GlobalAttribute:
        case Construct::LocalAttribute:
            return rules.CheckAttribute(construct == Construct::LocalAttribute);
        case Construct::SimpleRestriction:
            return rules.CheckSimpleRestriction();
        case Construct::List:
            return rules.CheckList();
        case Construct::Union:
            return rules.CheckUnion();
        case Construct::Notation:
            return rules.CheckNotation();
        case Construct::GlobalSimpleType:
            if (isRedefined) rules.CheckRedefinedSimpleType();
            break;
        case Construct::GlobalComplexType:
            if (isRedefined) rules.CheckRedefinedComplexType();
            break;
        default:
            break;
    }
}

}  // namespace KvXmlLib16::internal
