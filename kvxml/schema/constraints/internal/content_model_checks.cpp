// Content models: unique particle attribution, consistent declarations, where all-groups may stand.
#include <unordered_set>

#include "kvxml/schema/constraints/internal/content_analysis.h"
#include "kvxml/schema/constraints/internal/reporter.h"
#include "kvxml/schema/constraints/internal/schema_constraints.h"

namespace KvXmlLib16::internal {

std::string DescribeParticle(const CParticle& particle) {
    if (const CElementDeclaration* element = particle.AsElement())
        return "element " + ShownName(element->name);
    if (const CWildcard* wildcard = particle.AsWildcard()) {
        const std::string_view text = wildcard->namespaceText;
        return "wildcard [" + std::string(text.empty() ? "##any" : text) + "]";
    }
    if (particle.modelGroupDefinition != nullptr)
        return "group " + ShownName(particle.modelGroupDefinition->name);
    return "group";
}

std::string DescribePlace(const CSourcePlace& place, const CSourcePlace& from) {
    std::string text = "line " + std::to_string(place.line) + ", column " + std::to_string(place.column);
    if (place.document != nullptr && place.document != from.document)
        text += " of " + std::string(place.document->file);
    return text;
}

namespace {

bool IsAll(const CParticle& particle) noexcept {
    const CModelGroup* const group = particle.AsGroup();
    return group != nullptr && group->compositor == CModelGroup::Compositor::All;
}

/// All Group Limited (3.8.6).
void CheckAllGroups(CSchemaStore& store, CFaultList& faults) {
    // An extension makes a sequence of the base's content and its own.
    std::unordered_set<const CModelGroup*> extensions;
    for (const CTypeDefinition* type : store.allTypes) {
        const CComplexTypeDefinition* const complex = type->AsComplex();
        if (complex == nullptr || complex->particle == nullptr) continue;
        const CParticle& content = *complex->particle;
        if (IsAll(content) && content.maxOccurs > 1) {
            Report(faults, content.place, "An all-group cannot occur more than once.", "cos-all-limited.1.2");
        }
        if (complex->derivationMethod != Derivation_Extension || complex->ownParticle == nullptr ||
            complex->particle == complex->ownParticle)
            continue;
        const CModelGroup& group = *content.AsGroup();
        for (const CParticle* particle : group.particles) {
            if (!IsAll(*particle)) continue;
            extensions.insert(&group);
            Report(faults, particle == complex->ownParticle ? particle->place : complex->place,
                   "An all-group must be the whole content of a type; it can neither extend other content "
                   "nor be extended.",
                   "cos-all-limited.1.2");
            break;
        }
    }
    for (const CModelGroup& group : store.Pool<CModelGroup>()) {
        const bool isAll = group.compositor == CModelGroup::Compositor::All;
        for (const CParticle* particle : group.particles) {
            if (isAll && particle->maxOccurs > 1) {
                Report(faults, particle->place,
                       DescribeParticle(*particle) + " of an all-group can occur once at most.",
                       "cos-all-limited.2");
            }
            if (IsAll(*particle) && extensions.count(&group) == 0) {
                Report(faults, particle->place,
                       "An all-group must be the whole content of a type, not part of another group.",
                       "cos-all-limited.1.2");
            }
        }
    }
}

}  // namespace

void CheckContentModels(CSchemaStore& store, CFaultList& faults) {
    CheckAllGroups(store, faults);
    CContentAnalysis analysis(faults);
    for (const CTypeDefinition* type : store.allTypes) {
        const CComplexTypeDefinition* const complex = type->AsComplex();
        if (complex != nullptr && complex->particle != nullptr) analysis.CheckContent(*complex->particle);
    }
    for (const CModelGroupDefinition* definition : store.modelGroups.ordered)
        analysis.CheckUnused(*definition->modelGroup);
}

}  // namespace KvXmlLib16::internal
