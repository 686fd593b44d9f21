// Elements, attributes, their groups, wildcards, notations, identity constraints.
#include <algorithm>

#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/schema/constraints/internal/schema_constraints.h"
#include "kvxml/schema/reader/internal/component_builder.h"

namespace KvXmlLib16::internal {

namespace {

/// `form`, or else the default of the document, decides on the namespace of a local declaration.
bool IsQualified(const CSchemaNode& node, bool byDefault) noexcept {
    const std::string_view form = node.Get("form");
    return form.data() == nullptr ? byDefault : form == "qualified";
}

}  // namespace

void CComponentBuilder::ReadValueConstraint(At at, CValueConstraint& constraint) {
    const bool isFixed = at.node->Has("fixed");
    if (!isFixed && !at.node->Has("default")) return;
    constraint.kind = isFixed ? CValueConstraint::Fixed : CValueConstraint::Default;
    constraint.text = at.node->GetRaw(isFixed ? "fixed" : "default");
    constraint.scope = at.node->scope;
}

// --- elements ----------------------------------------------------------------------------------------------

void CComponentBuilder::FillElement(CElementDeclaration& element, At at) {
    Begin(element, at);
    const CSchemaNode& node = *at.node;
    constexpr DerivationSet kBlocks = Derivation_Extension | Derivation_Restriction | Derivation_Substitution;
    constexpr DerivationSet kFinals = Derivation_Extension | Derivation_Restriction;
    element.isNillable = node.IsTrue("nillable");
    element.isAbstract = node.IsTrue("abstract");
    element.disallowedSubstitutions =
        node.Has("block") ? ReadDerivationSet(node.Get("block"), kBlocks) : at.source->blockDefault & kBlocks;
    if (element.isGlobal) {
        element.substitutionGroupExclusions = node.Has("final")
                                                  ? ReadDerivationSet(node.Get("final"), kFinals)
                                                  : at.source->finalDefault & kFinals;
        if (node.Has("substitutionGroup")) {
            element.substitutionGroupAffiliation =
                Resolve(m_store.elements, at, node.Get("substitutionGroup"), "element");
        }
    }
    ReadValueConstraint(at, element.valueConstraint);
    if (node.Has("type")) {
        element.typeDefinition = ResolveType(at, node.Get("type"));
    } else if (const CSchemaNode* simple = node.Child(SchemaTag::SimpleType)) {
        element.typeDefinition = &MakeAnonymousSimpleType({at.source, simple}, element);
    } else if (const CSchemaNode* complex = node.Child(SchemaTag::ComplexType)) {
        element.typeDefinition = &MakeAnonymousComplexType({at.source, complex}, element);
    } else if (element.substitutionGroupAffiliation != nullptr) {
        m_typeOfHead.emplace_back(&element, at);
        return FillIdentityConstraints(element, at);
    }
    if (element.typeDefinition == nullptr) element.typeDefinition = &m_store.AnyType();
    FillIdentityConstraints(element, at);
}

CElementDeclaration& CComponentBuilder::MakeLocalElement(At at, const CComponent& scope) {
    auto& element = m_store.Make<CElementDeclaration>();
    element.name.localName = m_store.Keep(at.node->Get("name"));
    if (IsQualified(*at.node, at.source->elementsQualified))
        element.name.namespaceUri = at.source->targetNamespace;
    element.scope = &scope;
    FillElement(element, at);
    return element;
}

// --- attributes --------------------------------------------------------------------------------------------

void CComponentBuilder::FillAttribute(CAttributeDeclaration& attribute, At at) {
    Begin(attribute, at);
    const CSchemaNode& node = *at.node;
    if (node.Has("type")) {
        attribute.typeDefinition = ResolveSimpleType(at, node.Get("type"));
    } else if (const CSchemaNode* simple = node.Child(SchemaTag::SimpleType)) {
        attribute.typeDefinition = &MakeAnonymousSimpleType({at.source, simple}, attribute);
    }
    if (attribute.typeDefinition == nullptr)
        attribute.typeDefinition = &m_store.BuiltIn(BuiltInType::AnySimpleType);
    if (attribute.isGlobal) ReadValueConstraint(at, attribute.valueConstraint);
    if (attribute.name.localName == "xmlns") Fault(at, "No attribute can be called [xmlns].", "no-xmlns");
    if (attribute.name.namespaceUri == kInstanceNamespace)
        Fault(at, "No attribute can be declared in the namespace [" + std::string(kInstanceNamespace) + "].",
              "no-xsi");
}

CAttributeUse* CComponentBuilder::MakeAttributeUse(At at, const CComponent& scope) {
    const CSchemaNode& node = *at.node;
    auto& use = m_store.Make<CAttributeUse>();
    Begin(use, at);
    use.isRequired = node.Get("use") == "required";
    use.isProhibited = node.Get("use") == "prohibited";
    ReadValueConstraint(at, use.valueConstraint);
    if (node.Has("ref")) {
        use.attributeDeclaration = Resolve(m_store.attributes, at, node.Get("ref"), "attribute");
        return use.attributeDeclaration == nullptr ? nullptr : &use;
    }
    auto& attribute = m_store.Make<CAttributeDeclaration>();
    attribute.name.localName = m_store.Keep(node.Get("name"));
    if (IsQualified(node, at.source->attributesQualified))
        attribute.name.namespaceUri = at.source->targetNamespace;
    attribute.scope = &scope;
    FillAttribute(attribute, at);
    use.attributeDeclaration = &attribute;
    return &use;
}

CComponentBuilder::Attributes CComponentBuilder::ReadAttributes(At at, const CComponent& scope) {
    Attributes found;
    for (const CSchemaNode* child : at.node->children) {
        const At inner{at.source, child};
        if (child->tag == SchemaTag::Attribute) {
            if (const CAttributeUse* use = MakeAttributeUse(inner, scope)) found.uses.push_back(use);
        } else if (child->tag == SchemaTag::AttributeGroup) {
            const auto* group = Resolve(m_store.attributeGroups, inner, child->Get("ref"), "attribute group");
            if (group != nullptr) found.groups.push_back(group);
        } else if (child->tag == SchemaTag::AnyAttribute) {
            found.wildcard = MakeWildcard(inner);
        }
    }
    return found;
}

void CComponentBuilder::FillAttributeGroup(CAttributeGroupDefinition& group, At at) {
    Begin(group, at);
    Attributes found = ReadAttributes(at, group);
    for (const CAttributeUse* use : found.uses)
        const_cast<CAttributeUse*>(use)->attributeGroup = &group;
    group.attributeUses = std::move(found.uses);
    group.attributeGroups = std::move(found.groups);
    group.ownAttributeWildcard = found.wildcard;
}

CWildcard* CComponentBuilder::MakeWildcard(At at) {
    auto& wildcard = m_store.Make<CWildcard>();
    Begin(wildcard, at);
    const std::string_view process = at.node->Get("processContents");
    wildcard.processContents = process == "skip"  ? CWildcard::ProcessContents::Skip
                               : process == "lax" ? CWildcard::ProcessContents::Lax
                                                  : CWildcard::ProcessContents::Strict;
    std::string_view list = at.node->Get("namespace");
    wildcard.namespaceText = list;
    if (list.data() == nullptr || list == "##any") return &wildcard;
    if (list == "##other") {
        wildcard.constraint = CWildcard::Constraint::Not;
        wildcard.namespaces.push_back(at.source->targetNamespace);
        return &wildcard;
    }
    wildcard.constraint = CWildcard::Constraint::Set;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find_first_of(" \t\r\n"), list.size());
        const std::string_view word = list.substr(0, end);
        list.remove_prefix(std::min(list.size(), end + 1));
        if (word.empty()) continue;
        const std::string_view uri = word == "##local"             ? std::string_view()
                                     : word == "##targetNamespace" ? at.source->targetNamespace
                                                                   : word;
        wildcard.namespaces.push_back(uri);
    }
    std::sort(wildcard.namespaces.begin(), wildcard.namespaces.end());
    wildcard.namespaces.erase(std::unique(wildcard.namespaces.begin(), wildcard.namespaces.end()),
                              wildcard.namespaces.end());
    return &wildcard;
}

void CComponentBuilder::FillNotation(CNotationDeclaration& notation, At at) {
    Begin(notation, at);
    notation.publicIdentifier = at.node->Get("public");
    notation.systemIdentifier = at.node->Get("system");
}

// --- identity constraints ----------------------------------------------------------------------------------

void CComponentBuilder::FillIdentityConstraints(CElementDeclaration& element, At at) {
    for (const CSchemaNode* child : at.node->children) {
        const At inner{at.source, child};
        if (child->tag != SchemaTag::Key && child->tag != SchemaTag::Keyref &&
            child->tag != SchemaTag::Unique)
            continue;
        auto& constraint = m_store.Make<CIdentityConstraintDefinition>();
        constraint.name = {at.source->targetNamespace, m_store.Keep(child->Get("name"))};
        constraint.category = child->tag == SchemaTag::Key ? CIdentityConstraintDefinition::Category::Key
                              : child->tag == SchemaTag::Keyref
                                  ? CIdentityConstraintDefinition::Category::Keyref
                                  : CIdentityConstraintDefinition::Category::Unique;
        FillIdentityConstraint(constraint, inner);
        if (!m_store.identityConstraints.Add(constraint.name, &constraint)) {
            Fault(inner,
                  "The identity constraint [" + std::string(constraint.name.localName) +
                      "] is already defined.",
                  "sch-props-correct.2");
        }
        element.identityConstraints.push_back(&constraint);
        if (child->tag == SchemaTag::Keyref) m_keyrefs.emplace_back(&constraint, inner);
    }
}

void CComponentBuilder::FillIdentityConstraint(CIdentityConstraintDefinition& constraint, At at) {
    Begin(constraint, at);
    for (const CSchemaNode* child : at.node->children) {
        const At inner{at.source, child};
        if (child->tag == SchemaTag::Selector) {
            ReadXPath(inner, false, constraint.selector);
        } else if (child->tag == SchemaTag::Field) {
            ReadXPath(inner, true, constraint.fields.emplace_back());
        }
    }
}

}  // namespace KvXmlLib16::internal
