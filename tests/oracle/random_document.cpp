#include "tests/oracle/random_document.h"

#include <algorithm>
#include <cctype>
#include <memory>
#include <utility>
#include <vector>

#include "kvxml/schema/datatypes/internal/simple_type_checker.h"
#include "tests/oracle/random_schema.h"

namespace oracle {

using namespace KvXmlLib16;

namespace {

constexpr std::size_t kMostDepth = 12;
constexpr std::size_t kMostNodes = 300;

struct Node {
    std::string name;  // with prefix
    std::vector<std::pair<std::string, std::string>> attributes;
    std::string text;
    std::vector<std::unique_ptr<Node>> children;
};

/// The prefixes that all documents declare.
class CScope final : public internal::IPrefixScope {
public:
    bool Resolve(std::string_view prefix, std::string_view& uri) const override {
        uri = prefix == "t" ? kTarget : prefix == "xs" ? "http://www.w3.org/2001/XMLSchema" : "";
        return !uri.empty() || prefix.empty();
    }
};

std::string Prefixed(const CExpandedName& name) {
    return (name.namespaceUri.empty() ? "" : "t:") + std::string(name.localName);
}

class CMaker {
public:
    CMaker(const CSchemaSet& schema, CRandom& random) : m_schema(schema), m_random(random) {}

    std::unique_ptr<Node> Make(const CElementDeclaration& declaration, std::size_t depth) {
        auto node = std::make_unique<Node>();
        const CElementDeclaration* element = &declaration;
        if (!element->substitutionGroupMembers.empty() && (element->isAbstract || m_random.Chance(50)))
            element = m_random.Of(element->substitutionGroupMembers);
        node->name = Prefixed(element->name);
        m_all.push_back(node.get());
        const CTypeDefinition* type = element->typeDefinition;
        if (m_random.Chance(5) || (type->AsComplex() != nullptr && type->AsComplex()->isAbstract)) {
            for (const CTypeDefinition* other : m_schema.GetTypes()) {
                if (other == type || !IsDerivedFrom(*other, *type) || m_random.Chance(40)) continue;
                node->attributes.emplace_back("xsi:type", Prefixed(other->name));
                type = other;
                break;
            }
        }
        if (element->isNillable && m_random.Chance(20)) {
            node->attributes.emplace_back("xsi:nil", "true");
            if (const CComplexTypeDefinition* complex = type->AsComplex()) AddAttributes(*node, *complex);
            return node;
        }
        const bool isFixed = element->valueConstraint.kind == CValueConstraint::Fixed;
        Fill(*node, *type, depth);
        if (isFixed && node->children.empty()) node->text = m_random.Chance(50) ? "" : "10";
        return node;
    }

    /// One mistake somewhere.
    void Spoil() {
        Node& node = *m_random.Of(m_all);
        const std::size_t count = node.children.size();
        const auto at = [&](std::size_t index) {
            return node.children.begin() + static_cast<std::ptrdiff_t>(index);
        };
        switch (m_random.Below(10)) {
            case 0:
                if (count > 0)
                    std::rotate(at(m_random.Below(count)), node.children.end() - 1, node.children.end());
                break;
            case 1:
                // Nodes that are out of the tree may still be spoiled, to no effect.
                if (count > 0) m_removed.push_back(std::move(*at(0))), node.children.erase(at(0));
                break;
            case 2:
                if (count > 0)
                    node.children.insert(at(m_random.Below(count + 1)), Copy(**at(m_random.Below(count))));
                break;
            case 3:
                if (count > 1) std::iter_swap(at(m_random.Below(count)), at(m_random.Below(count)));
                break;
            case 4:
                node.name = m_random.Of(m_all)->name;
                break;
            case 5:
                node.text = RandomText(m_random);
                break;
            case 6:
                if (!node.attributes.empty()) node.attributes.erase(node.attributes.begin());
                break;
            case 7:
                if (!node.attributes.empty()) m_random.Of(node.attributes).second = RandomText(m_random);
                break;
            case 8:
                AddWild(node);
                break;
            default:
                AddAttribute(node);
                break;
        }
    }

private:
    static std::unique_ptr<Node> Copy(const Node& node) {
        auto copy = std::make_unique<Node>();
        copy->name = node.name;
        copy->attributes = node.attributes;
        copy->text = node.text;
        for (const auto& child : node.children)
            copy->children.push_back(Copy(*child));
        return copy;
    }

    void AddAttribute(Node& node) {
        static const std::vector<std::pair<const char*, const char*>> kAttributes = {
            {"xsi:nil", "true"},  {"xsi:nil", "0"}, {"xsi:type", "xs:string"},
            {"xsi:type", "t:C9"}, {"a1", "10"},     {"a2", "x"},
            {"t:a3", "1"},        {"x:other", "y"}, {"xml:lang", "en"}};
        const auto& [name, value] = m_random.Of(kAttributes);
        for (const auto& attribute : node.attributes) {
            if (attribute.first == name) return;
        }
        node.attributes.emplace_back(name, value);
    }

    void AddWild(Node& node) {
        static const std::vector<const char*> kNames = {"x:wild", "wild", "t:root", "t:wild", "x:e1"};
        auto child = std::make_unique<Node>();
        child->name = m_random.Of(kNames);
        node.children.insert(
            node.children.begin() + static_cast<std::ptrdiff_t>(m_random.Below(node.children.size() + 1)),
            std::move(child));
    }

    std::string Value(const CSimpleTypeDefinition& type) {
        std::string text;
        for (int attempt = 0; attempt < 12; ++attempt) {
            text = Sample(type, 0);
            if (type.checker->Check(text, &m_scope, nullptr, nullptr, nullptr)) break;
        }
        return text;
    }

    std::string Sample(const CSimpleTypeDefinition& type, int depth) {
        if (depth > 5) return "10";
        std::vector<const CFacet*> values;
        for (const CFacet* facet : type.ownFacets) {
            if (facet->facet == FacetKind::Enumeration) values.push_back(facet);
        }
        if (!values.empty() && m_random.Chance(90)) return std::string(m_random.Of(values)->value);
        if (type.variety == CSimpleTypeDefinition::Variety::Union && !type.memberTypeDefinitions.empty())
            return Sample(*m_random.Of(type.memberTypeDefinitions), depth + 1);
        if (type.variety == CSimpleTypeDefinition::Variety::List && !type.isBuiltIn) {
            std::string text;
            for (std::size_t i = m_random.Below(5); i > 0; --i)
                text += Sample(*type.itemTypeDefinition, depth + 1) + (i > 1 ? " " : "");
            return text;
        }
        if (!type.isBuiltIn) return Sample(*type.baseTypeDefinition->AsSimple(), depth);
        return RandomText(m_random, type.name.localName);
    }

    void AddAttributes(Node& node, const CComplexTypeDefinition& type) {
        for (const CAttributeUse* use : type.attributeUses) {
            if (!use->isRequired && m_random.Chance(50)) continue;
            const bool isFixed = use->EffectiveValueConstraint().kind == CValueConstraint::Fixed;
            node.attributes.emplace_back(Prefixed(use->attributeDeclaration->name),
                                         isFixed ? std::string(use->EffectiveValueConstraint().text)
                                                 : Value(*use->attributeDeclaration->typeDefinition));
        }
        if (type.attributeWildcard != nullptr && m_random.Chance(40)) AddAttribute(node);
    }

    void Fill(Node& node, const CTypeDefinition& type, std::size_t depth) {
        if (const CSimpleTypeDefinition* simple = type.AsSimple()) {
            node.text = Value(*simple);
            return;
        }
        const CComplexTypeDefinition& complex = *type.AsComplex();
        AddAttributes(node, complex);
        if (complex.simpleContent != nullptr) node.text = Value(*complex.simpleContent);
        if (complex.contentKind == CComplexTypeDefinition::ContentKind::Mixed && m_random.Chance(50))
            node.text = "text";
        if (complex.particle != nullptr) Fill(node, *complex.particle, depth);
    }

    void Fill(Node& node, const CParticle& particle, std::size_t depth) {
        const bool isSmall = depth > kMostDepth || m_all.size() > kMostNodes;
        const std::size_t room =
            particle.maxOccurs - particle.minOccurs > 3 ? 3 : particle.maxOccurs - particle.minOccurs;
        const std::size_t count = particle.minOccurs + (isSmall ? 0 : m_random.Below(room + 1));
        if (isSmall && m_all.size() > 2 * kMostNodes) return;
        for (std::size_t i = 0; i < count; ++i) {
            if (const CElementDeclaration* element = particle.AsElement()) {
                node.children.push_back(Make(*element, depth + 1));
            } else if (const CModelGroup* group = particle.AsGroup()) {
                FillGroup(node, *group, depth);
            } else {
                AddWild(*particle.AsWildcard(), node);
            }
        }
    }

    void FillGroup(Node& node, const CModelGroup& group, std::size_t depth) {
        std::vector<const CParticle*> particles = group.particles;
        if (particles.empty()) return;
        if (group.compositor == CModelGroup::Compositor::Choice) particles = {m_random.Of(particles)};
        if (group.compositor == CModelGroup::Compositor::All && particles.size() > 1)
            std::swap(particles.front(), m_random.Of(particles));
        for (const CParticle* particle : particles)
            Fill(node, *particle, depth + 1);
    }

    void AddWild(const CWildcard& wildcard, Node& node) {
        using Process = CWildcard::ProcessContents;
        auto child = std::make_unique<Node>();
        child->name = wildcard.Admits("urn:x") ? "x:wild" : wildcard.Admits("") ? "wild" : "t:wild";
        // What a strict wildcard admits needs a declaration.
        if (wildcard.processContents != Process::Skip && wildcard.Admits(kTarget) && m_random.Chance(80))
            child->name = "t:h1";
        if (m_random.Chance(20)) child->attributes.emplace_back("any", "1");
        if (wildcard.processContents == Process::Strict && child->name != "t:h1" && m_random.Chance(70))
            child->attributes.emplace_back("xsi:type", "xs:anyType");
        child->text = "1";
        node.children.push_back(std::move(child));
    }

    const CSchemaSet& m_schema;
    CRandom& m_random;
    CScope m_scope;
    std::vector<Node*> m_all;
    std::vector<std::unique_ptr<Node>> m_removed;
};

void Escape(std::string& out, std::string_view text) {
    for (const char c : text)
        out += c == '&'    ? "&amp;"
               : c == '<'  ? "&lt;"
               : c == '"'  ? "&quot;"
               : c == '\t' ? "&#9;"
                           : std::string(1, c);
}

void Write(std::string& out, const Node& node, bool isRoot) {
    out += "<" + node.name;
    if (isRoot) {
        out += " xmlns:t=\"" + std::string(kTarget) +
               "\" xmlns:x=\"urn:x\" xmlns:xs=\"http://www.w3.org/2001/XMLSchema\""
               " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"";
    }
    for (const auto& [name, value] : node.attributes) {
        out += " " + name + "=\"";
        Escape(out, value);
        out += '"';
    }
    out += '>';
    Escape(out, node.text);
    for (const auto& child : node.children)
        Write(out, *child, false);
    out += "</" + node.name + ">";
}

}  // namespace

std::string RandomDocument(const CSchemaSet& schema, CRandom& random, std::size_t mistakes) {
    const CElementDeclaration* root = schema.FindElement(kTarget, "root");
    if (root == nullptr) root = schema.FindElement("", "root");
    if (root == nullptr) return {};
    CMaker maker(schema, random);
    const std::unique_ptr<Node> tree = maker.Make(*root, 0);
    for (; mistakes > 0; --mistakes)
        maker.Spoil();
    std::string text;
    Write(text, *tree, true);
    return text;
}

}  // namespace oracle
