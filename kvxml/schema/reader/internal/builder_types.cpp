// Simple and complex types, as far as their own elements tell.
#include <algorithm>

#include "kvxml/schema/reader/internal/component_builder.h"

namespace KvXmlLib16::internal {

namespace {

bool FacetOf(SchemaTag tag, FacetKind& kind) noexcept {
    switch (tag) {
        case SchemaTag::Length:
            kind = FacetKind::Length;
            return true;
        case SchemaTag::MinLength:
            kind = FacetKind::MinLength;
            return true;
        case SchemaTag::MaxLength:
            kind = FacetKind::MaxLength;
            return true;
        case SchemaTag::Pattern:
            kind = FacetKind::Pattern;
            return true;
        case SchemaTag::Enumeration:
            kind = FacetKind::Enumeration;
            return true;
        case SchemaTag::WhiteSpace:
            kind = FacetKind::WhiteSpace;
            return true;
        case SchemaTag::MaxInclusive:
            kind = FacetKind::MaxInclusive;
            return true;
        case SchemaTag::MaxExclusive:
            kind = FacetKind::MaxExclusive;
            return true;
        case SchemaTag::MinExclusive:
            kind = FacetKind::MinExclusive;
            return true;
        case SchemaTag::MinInclusive:
            kind = FacetKind::MinInclusive;
            return true;
        case SchemaTag::TotalDigits:
            kind = FacetKind::TotalDigits;
            return true;
        case SchemaTag::FractionDigits:
            kind = FacetKind::FractionDigits;
            return true;
        default:
            return false;
    }
}

}  // namespace

// --- simple types ------------------------------------------------------------------------------------------

CSimpleTypeDefinition& CComponentBuilder::MakeAnonymousSimpleType(At at, const CComponent& context) {
    auto& type = m_store.Make<CSimpleTypeDefinition>();
    type.name.namespaceUri = at.source->targetNamespace;
    type.context = &context;
    FillSimpleType(type, at);
    return type;
}

void CComponentBuilder::FillSimpleType(CSimpleTypeDefinition& type, At at) {
    Begin(type, at);
    constexpr DerivationSet kFinals = Derivation_Restriction | Derivation_List | Derivation_Union;
    type.final = at.node->Has("final") ? ReadDerivationSet(at.node->Get("final"), kFinals)
                                       : at.source->finalDefault & kFinals;
    type.baseTypeDefinition = &m_store.BuiltIn(BuiltInType::AnySimpleType);
    for (const CSchemaNode* child : at.node->children) {
        const At inner{at.source, child};
        if (child->tag == SchemaTag::Restriction) {
            FillSimpleRestriction(type, inner);
        } else if (child->tag == SchemaTag::List) {
            type.variety = CSimpleTypeDefinition::Variety::List;
            type.isConstructed = true;
            if (const CSchemaNode* item = child->Child(SchemaTag::SimpleType)) {
                type.itemTypeDefinition = &MakeAnonymousSimpleType({at.source, item}, type);
            } else {
                type.itemTypeDefinition = ResolveSimpleType(inner, child->Get("itemType"));
            }
            if (type.itemTypeDefinition == nullptr)
                type.itemTypeDefinition = &m_store.BuiltIn(BuiltInType::String);
        } else if (child->tag == SchemaTag::Union) {
            type.variety = CSimpleTypeDefinition::Variety::Union;
            type.isConstructed = true;
            std::string_view names = child->Get("memberTypes");
            while (!names.empty()) {
                const std::size_t end = std::min(names.find_first_of(" \t\r\n"), names.size());
                const std::string_view name = names.substr(0, end);
                names.remove_prefix(std::min(names.size(), end + 1));
                if (name.empty()) continue;
                if (const auto* member = ResolveSimpleType(inner, name))
                    type.memberTypeDefinitions.push_back(member);
            }
            for (const CSchemaNode* member : child->children) {
                if (member->tag == SchemaTag::SimpleType)
                    type.memberTypeDefinitions.push_back(&MakeAnonymousSimpleType({at.source, member}, type));
            }
        }
    }
}

void CComponentBuilder::FillSimpleRestriction(CSimpleTypeDefinition& type, At at) {
    type.variety = CSimpleTypeDefinition::Variety::Atomic;  // that of the base, once it is known
    const CSimpleTypeDefinition* base = nullptr;
    if (const CSchemaNode* inner = at.node->Child(SchemaTag::SimpleType)) {
        base = &MakeAnonymousSimpleType({at.source, inner}, type);
    } else {
        CExpandedName name;
        const std::string_view text = at.node->Get("base");
        if (m_redefining != nullptr && at.node->parent == m_redefining) {
            if (ResolveName(at, text, name)) {
                if (name == m_redefiningName) {
                    base = static_cast<const CTypeDefinition*>(m_originals[m_redefining])->AsSimple();
                } else {
                    Fault(at, "A type that is redefined has itself as its base.", "src-redefine.5");
                }
            }
        } else {
            base = ResolveSimpleType(at, text);
        }
    }
    if (base != nullptr) {
        type.baseTypeDefinition = base;
    } else {
        m_broken.insert(&type);
    }
    ReadFacets(type, at);
}

void CComponentBuilder::ReadFacets(CSimpleTypeDefinition& type, At at) {
    for (const CSchemaNode* child : at.node->children) {
        FacetKind kind{};
        if (!FacetOf(child->tag, kind)) continue;
        auto& facet = m_store.Make<CFacet>();
        Begin(facet, {at.source, child});
        facet.facet = kind;
        facet.value = child->GetRaw("value");
        facet.isFixed = child->IsTrue("fixed");
        if (kind == FacetKind::Enumeration) facet.scope = child->scope;
        type.ownFacets.push_back(&facet);
    }
}

// --- complex types -----------------------------------------------------------------------------------------

CComplexTypeDefinition& CComponentBuilder::MakeAnonymousComplexType(At at, const CComponent& context) {
    auto& type = m_store.Make<CComplexTypeDefinition>();
    type.name.namespaceUri = at.source->targetNamespace;
    type.context = &context;
    FillComplexType(type, at);
    return type;
}

void CComponentBuilder::FillComplexType(CComplexTypeDefinition& type, At at) {
    Begin(type, at);
    constexpr DerivationSet kSet = Derivation_Extension | Derivation_Restriction;
    const CSchemaNode& node = *at.node;
    type.isAbstract = node.IsTrue("abstract");
    type.prohibitedSubstitutions =
        node.Has("block") ? ReadDerivationSet(node.Get("block"), kSet) : at.source->blockDefault & kSet;
    type.final =
        node.Has("final") ? ReadDerivationSet(node.Get("final"), kSet) : at.source->finalDefault & kSet;
    type.baseTypeDefinition = &m_store.AnyType();
    PendingContent pending;
    pending.at = at;
    pending.isMixed = node.IsTrue("mixed");
    if (const CSchemaNode* simple = node.Child(SchemaTag::SimpleContent)) {
        pending.isSimpleContent = true;
        FillSimpleContent(type, {at.source, simple}, pending);
    } else if (const CSchemaNode* complex = node.Child(SchemaTag::ComplexContent)) {
        type.hasComplexContentElement = true;
        if (complex->Has("mixed")) pending.isMixed = complex->IsTrue("mixed");
        FillComplexContent(type, {at.source, complex}, pending);
    } else {
        type.derivationMethod = Derivation_Restriction;
        for (const CSchemaNode* child : node.children) {
            if (const CParticle* particle = MakeParticle({at.source, child}, type))
                type.ownParticle = particle;
        }
        TakeAttributes(type, at);
    }
    m_pending.emplace(&type, pending);
}

void CComponentBuilder::TakeAttributes(CComplexTypeDefinition& type, At at) {
    Attributes found = ReadAttributes(at, type);
    type.ownAttributeUses = std::move(found.uses);
    type.ownAttributeGroups = std::move(found.groups);
    type.ownAttributeWildcard = found.wildcard;
}

namespace {

const CSchemaNode* DerivationOf(const CSchemaNode& content) noexcept {
    const CSchemaNode* const extension = content.Child(SchemaTag::Extension);
    return extension != nullptr ? extension : content.Child(SchemaTag::Restriction);
}

}  // namespace

/// Base and method of a derivation that is written out; inside a redefinition the base is what is replaced.
void CComponentBuilder::ReadDerivation(CComplexTypeDefinition& type, At at, PendingContent& pending) {
    pending.isExtension = at.node->tag == SchemaTag::Extension;
    type.derivationMethod = pending.isExtension ? Derivation_Extension : Derivation_Restriction;
    const std::string_view text = at.node->Get("base");
    const bool redefines = m_redefining != nullptr && at.node->parent->parent == m_redefining;
    CExpandedName name;
    if (!redefines) {
        if (const CTypeDefinition* base = ResolveType(at, text)) {
            type.baseTypeDefinition = base;
        } else {
            m_broken.insert(&type);
        }
    } else if (ResolveName(at, text, name)) {
        if (name == m_redefiningName) {
            type.baseTypeDefinition = static_cast<const CTypeDefinition*>(m_originals[m_redefining]);
        } else {
            Fault(at, "A type that is redefined has itself as its base.", "src-redefine.5");
        }
    }
    TakeAttributes(type, at);
}

void CComponentBuilder::FillSimpleContent(CComplexTypeDefinition& type, At at, PendingContent& pending) {
    const CSchemaNode* const derivation = DerivationOf(*at.node);
    if (derivation == nullptr) return;
    const At inner{at.source, derivation};
    ReadDerivation(type, inner, pending);
    if (pending.isExtension) return;
    auto& content = m_store.Make<CSimpleTypeDefinition>();
    Begin(content, inner);
    content.name.namespaceUri = at.source->targetNamespace;
    content.context = &type;
    if (const CSchemaNode* own = derivation->Child(SchemaTag::SimpleType)) {
        pending.hasOwnContentType = true;
        content.baseTypeDefinition = &MakeAnonymousSimpleType({at.source, own}, type);
    }
    ReadFacets(content, inner);
    pending.contentRestriction = &content;
    m_contentRestrictions.insert(&content);
}

void CComponentBuilder::FillComplexContent(CComplexTypeDefinition& type, At at, PendingContent& pending) {
    const CSchemaNode* const derivation = DerivationOf(*at.node);
    if (derivation == nullptr) return;
    const At inner{at.source, derivation};
    ReadDerivation(type, inner, pending);
    for (const CSchemaNode* child : derivation->children) {
        if (const CParticle* particle = MakeParticle({at.source, child}, type)) type.ownParticle = particle;
    }
}

}  // namespace KvXmlLib16::internal
