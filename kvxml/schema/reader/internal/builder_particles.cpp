// Particles and model groups.
#include "kvxml/schema/reader/internal/component_builder.h"

namespace KvXmlLib16::internal {

namespace {

/// A number of any length; what 64 bits do not hold counts as unbounded.
std::uint64_t ReadCount(std::string_view text, std::uint64_t missing) noexcept {
    if (text.data() == nullptr) return missing;
    if (text == "unbounded") return CParticle::kUnbounded;
    std::uint64_t count = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') continue;  // a leading "+"
        const auto digit = static_cast<std::uint64_t>(c - '0');
        if (count > (CParticle::kUnbounded - digit) / 10) return CParticle::kUnbounded;
        count = count * 10 + digit;
    }
    return count;
}

CModelGroup::Compositor CompositorOf(SchemaTag tag) noexcept {
    return tag == SchemaTag::All      ? CModelGroup::Compositor::All
           : tag == SchemaTag::Choice ? CModelGroup::Compositor::Choice
                                      : CModelGroup::Compositor::Sequence;
}

}  // namespace

/// False when the particle is none because it may not occur at all.
bool CComponentBuilder::ReadOccurs(At at, CParticle& particle) {
    particle.minOccurs = ReadCount(at.node->Get("minOccurs"), 1);
    particle.maxOccurs = ReadCount(at.node->Get("maxOccurs"), 1);
    if (particle.minOccurs > particle.maxOccurs) {
        Fault(at, "minOccurs is greater than maxOccurs.", "p-props-correct.2.1");
        particle.minOccurs = particle.maxOccurs;
    }
    return particle.maxOccurs != 0;
}

/// Null when there is no particle: it may not occur, or its reference leads nowhere.
CParticle* CComponentBuilder::MakeParticle(At at, const CComponent& scope) {
    switch (at.node->tag) {
        case SchemaTag::All:
        case SchemaTag::Choice:
        case SchemaTag::Sequence:
        case SchemaTag::Group:
            return MakeGroupParticle(at, scope);
        case SchemaTag::Element:
        case SchemaTag::Any:
            break;
        default:
            return nullptr;
    }
    auto& particle = m_store.Make<CParticle>();
    Begin(particle, at);
    const bool mayOccur = ReadOccurs(at, particle);
    if (at.node->tag == SchemaTag::Any) {
        particle.term = MakeWildcard(at);
    } else if (at.node->Has("ref")) {
        particle.term = Resolve(m_store.elements, at, at.node->Get("ref"), "element");
        particle.isReference = true;
    } else {
        particle.term = &MakeLocalElement(at, scope);
    }
    return mayOccur && particle.term != nullptr ? &particle : nullptr;
}

CParticle* CComponentBuilder::MakeGroupParticle(At at, const CComponent& scope) {
    auto& particle = m_store.Make<CParticle>();
    Begin(particle, at);
    const bool mayOccur = ReadOccurs(at, particle);
    if (at.node->tag == SchemaTag::Group) {
        const auto* definition = Resolve(m_store.modelGroups, at, at.node->Get("ref"), "model group");
        if (definition == nullptr) return nullptr;
        particle.modelGroupDefinition = definition;
        particle.term = definition->modelGroup;
        particle.isReference = true;
    } else {
        particle.term = &MakeModelGroup(at, scope);
    }
    return mayOccur ? &particle : nullptr;
}

CModelGroup& CComponentBuilder::MakeModelGroup(At at, const CComponent& scope) {
    auto& group = m_store.Make<CModelGroup>();
    FillModelGroup(group, at, scope);
    return group;
}

void CComponentBuilder::FillModelGroup(CModelGroup& group, At at, const CComponent& scope) {
    Begin(group, at);
    group.compositor = CompositorOf(at.node->tag);
    for (const CSchemaNode* child : at.node->children) {
        if (const CParticle* particle = MakeParticle({at.source, child}, scope))
            group.particles.push_back(particle);
    }
}

void CComponentBuilder::FillModelGroupDefinition(CModelGroupDefinition& definition, At at) {
    Begin(definition, at);
    for (const CSchemaNode* child : at.node->children) {
        if (child->tag == SchemaTag::All || child->tag == SchemaTag::Choice ||
            child->tag == SchemaTag::Sequence) {
            FillModelGroup(const_cast<CModelGroup&>(*definition.modelGroup), {at.source, child}, definition);
        }
    }
}

}  // namespace KvXmlLib16::internal
