// Complex types and attribute groups, once what they are derived from is complete.
#include <algorithm>

#include "kvxml/schema/constraints/internal/schema_constraints.h"
#include "kvxml/schema/reader/internal/component_builder.h"

namespace KvXmlLib16::internal {

namespace {

using ContentKind = CComplexTypeDefinition::ContentKind;

std::string NameOf(const CExpandedName& name) {
    return "[" + std::string(name.localName) + "]";
}

/// The representation of "no content" (3.4.2, effective content, 2.1).
bool IsNoContent(const CParticle* particle) noexcept {
    if (particle == nullptr) return true;
    const CModelGroup* const group = particle->AsGroup();
    if (group == nullptr || !group->particles.empty()) return false;
    return group->compositor != CModelGroup::Compositor::Choice || particle->minOccurs == 0;
}

}  // namespace

void CComponentBuilder::AddUses(std::vector<const CAttributeUse*>& uses,
                                const std::vector<const CAttributeUse*>& more, const CComponent& owner,
                                const char* constraint) {
    if (more.empty()) return;
    std::unordered_map<CExpandedName, const CAttributeUse*, CExpandedNameHash> known;
    for (const CAttributeUse* use : uses)
        known.emplace(use->attributeDeclaration->name, use);
    for (const CAttributeUse* use : more) {
        if (use->isProhibited) continue;
        const auto [found, isNew] = known.emplace(use->attributeDeclaration->name, use);
        if (isNew) {
            uses.push_back(use);
        } else if (found->second != use) {
            FaultAt(use->place.document != nullptr ? use->place : owner.place,
                    "The attribute " + NameOf(use->attributeDeclaration->name) + " is declared twice.",
                    constraint);
        }
    }
}

const CWildcard* CComponentBuilder::CompleteWildcard(
    const CWildcard* own, const std::vector<const CAttributeGroupDefinition*>& groups,
    const CComponent& owner) {
    const CWildcard* complete = own;
    for (const CAttributeGroupDefinition* group : groups) {
        const CWildcard* const other = group->attributeWildcard;
        if (other == nullptr) continue;
        if (complete == nullptr) {
            complete = other;
            continue;
        }
        auto& narrowed = m_store.Make<CWildcard>();
        narrowed.place = complete->place;
        narrowed.annotation = complete->annotation;
        if (!Intersect(*complete, *other, narrowed)) {
            FaultAt(
                owner.place,
                "The wildcards of the attribute groups have no intersection that can be expressed.",
                owner.kind == ComponentKind::AttributeGroupDefinition ? "src-attribute_group.2" : "src-ct.4");
            return complete;
        }
        narrowed.processContents = complete->processContents;
        complete = &narrowed;
    }
    return complete;
}

void CComponentBuilder::CompleteAttributeGroup(CAttributeGroupDefinition& group) {
    const std::vector<const CAttributeUse*> own = std::move(group.attributeUses);
    group.attributeUses.clear();
    AddUses(group.attributeUses, own, group, "ag-props-correct.2");
    for (const CAttributeGroupDefinition* inner : group.attributeGroups)
        AddUses(group.attributeUses, inner->attributeUses, group, "ag-props-correct.2");
    group.attributeWildcard = CompleteWildcard(group.ownAttributeWildcard, group.attributeGroups, group);
}

void CComponentBuilder::CompleteComplexType(CComplexTypeDefinition& type) {
    const auto found = m_pending.find(&type);
    if (found == m_pending.end()) return;  // anyType
    const PendingContent& pending = found->second;
    CompleteAttributes(type);
    if (pending.isSimpleContent) {
        CompleteSimpleContent(type, pending);
    } else {
        CompleteComplexContent(type, pending);
    }
}

void CComponentBuilder::CompleteAttributes(CComplexTypeDefinition& type) {
    std::vector<const CAttributeUse*> own;
    AddUses(own, type.ownAttributeUses, type, "ct-props-correct.4");
    for (const CAttributeGroupDefinition* group : type.ownAttributeGroups)
        AddUses(own, group->attributeUses, type, "ct-props-correct.4");
    const CWildcard* wildcard = CompleteWildcard(type.ownAttributeWildcard, type.ownAttributeGroups, type);

    const CComplexTypeDefinition* const base = type.baseTypeDefinition->AsComplex();
    if (base == nullptr) {
        type.attributeUses = std::move(own);
        type.attributeWildcard = wildcard;
        return;
    }
    if (type.derivationMethod == Derivation_Extension) {
        type.attributeUses = base->attributeUses;
        AddUses(type.attributeUses, own, type, "ct-props-correct.4");
        if (base->attributeWildcard == nullptr) {
            type.attributeWildcard = wildcard;
        } else if (wildcard == nullptr) {
            type.attributeWildcard = base->attributeWildcard;
        } else {
            auto& united = m_store.Make<CWildcard>();
            united.place = wildcard->place;
            united.annotation = wildcard->annotation;
            if (!Unite(*wildcard, *base->attributeWildcard, united)) {
                FaultAt(type.place,
                        "The attribute wildcard and that of the base have no union that can be expressed.",
                        "src-ct.5");
                united.constraint = CWildcard::Constraint::Any;
            }
            united.processContents = wildcard->processContents;
            type.attributeWildcard = &united;
        }
        return;
    }
    std::unordered_set<CExpandedName, CExpandedNameHash> named;
    for (const CAttributeUse* use : own)
        named.insert(use->attributeDeclaration->name);
    for (const CAttributeUse* use : type.ownAttributeUses)
        named.insert(use->attributeDeclaration->name);  // prohibited ones too
    for (const CAttributeUse* use : base->attributeUses) {
        if (named.count(use->attributeDeclaration->name) == 0) type.attributeUses.push_back(use);
    }
    type.attributeUses.insert(type.attributeUses.end(), own.begin(), own.end());
    type.attributeWildcard = wildcard;
}

void CComponentBuilder::CompleteSimpleContent(CComplexTypeDefinition& type, const PendingContent& pending) {
    type.contentKind = ContentKind::Simple;
    const CSimpleTypeDefinition* const string = &m_store.BuiltIn(BuiltInType::String);
    const CSimpleTypeDefinition* const simpleBase = type.baseTypeDefinition->AsSimple();
    const CComplexTypeDefinition* const base = type.baseTypeDefinition->AsComplex();
    const bool isBroken = m_broken.count(&type) != 0;
    const auto refuse = [&](const char* message) {
        if (!isBroken) FaultAt(type.place, message, "src-ct.2");
        type.simpleContent = string;
    };
    if (pending.isExtension) {
        if (simpleBase != nullptr) {
            type.simpleContent = simpleBase;
        } else if (base->contentKind == ContentKind::Simple) {
            type.simpleContent = base->simpleContent;
        } else {
            refuse("Simple content can only extend a simple type or a type of simple content.");
        }
        return;
    }
    if (pending.contentRestriction == nullptr)
        return refuse("Simple content must be derived from something.");
    CSimpleTypeDefinition& content = *pending.contentRestriction;
    const bool hasSimpleBase = base != nullptr && base->contentKind == ContentKind::Simple;
    const bool hasEmptiableBase = base != nullptr && base->contentKind == ContentKind::Mixed &&
                                  IsEmptiable(base->particle) && pending.hasOwnContentType;
    if (!hasSimpleBase && !hasEmptiableBase)
        refuse(
            "Simple content can only restrict a type of simple content, or one of emptiable mixed content "
            "with "
            "a simple type of its own.");
    if (!pending.hasOwnContentType) content.baseTypeDefinition = hasSimpleBase ? base->simpleContent : string;
    if (content.baseTypeDefinition->AsSimple()->variety == CSimpleTypeDefinition::Variety::Absent) {
        // Simple content of anySimpleType without a restriction stays what it is.
        if (!content.ownFacets.empty())
            FaultAt(type.place, "A type cannot be a restriction of [anySimpleType].", "cos-st-restricts.1.1");
        type.simpleContent = content.baseTypeDefinition->AsSimple();
        return;
    }
    CompleteSimpleType(content);
    type.simpleContent = &content;
}

void CComponentBuilder::CompleteComplexContent(CComplexTypeDefinition& type, const PendingContent& pending) {
    const CParticle* effective = IsNoContent(type.ownParticle) ? nullptr : type.ownParticle;
    if (effective == nullptr && pending.isMixed) {
        auto& particle = m_store.Make<CParticle>();
        particle.place = type.place;
        auto& sequence = m_store.Make<CModelGroup>();
        sequence.place = type.place;
        particle.term = &sequence;
        effective = &particle;
    }
    const auto setOwn = [&] {
        type.particle = effective;
        type.contentKind = effective == nullptr ? ContentKind::Empty
                           : pending.isMixed    ? ContentKind::Mixed
                                                : ContentKind::ElementOnly;
    };
    const CComplexTypeDefinition* const base = type.baseTypeDefinition->AsComplex();
    if (type.hasComplexContentElement && base == nullptr) {
        if (m_broken.count(&type) == 0)
            FaultAt(type.place, "Complex content can only be derived from a complex type.", "src-ct.1");
        return setOwn();
    }
    if (!pending.isExtension) return setOwn();
    if (effective == nullptr) {
        type.contentKind = base->contentKind;
        type.simpleContent = base->simpleContent;
        type.particle = base->particle;
        return;
    }
    if (base->contentKind == ContentKind::Empty || base->particle == nullptr) return setOwn();
    auto& sequence = m_store.Make<CModelGroup>();
    sequence.place = type.place;
    sequence.particles = {base->particle, effective};
    auto& particle = m_store.Make<CParticle>();
    particle.place = type.place;
    particle.term = &sequence;
    type.particle = &particle;
    type.contentKind = pending.isMixed ? ContentKind::Mixed : ContentKind::ElementOnly;
}

}  // namespace KvXmlLib16::internal
