// What may stand for what: emptiable particles, derived types.
#include <algorithm>

#include "kvxml/schema/constraints/internal/schema_constraints.h"

namespace KvXmlLib16::internal {

bool IsEmptiable(const CParticle* particle) noexcept {
    if (particle == nullptr || particle->minOccurs == 0) return true;
    const CModelGroup* const group = particle->AsGroup();
    if (group == nullptr) return false;
    const auto isEmptiable = [](const CParticle* child) { return IsEmptiable(child); };
    if (group->compositor == CModelGroup::Compositor::Choice)
        return std::any_of(group->particles.begin(), group->particles.end(), isEmptiable);
    return std::all_of(group->particles.begin(), group->particles.end(), isEmptiable);
}

namespace {

/// Type Derivation OK (Simple), 3.14.6.
bool IsSimpleDerivationOk(const CSimpleTypeDefinition& derived, const CTypeDefinition& base,
                          DerivationSet blocked) noexcept {
    for (const CTypeDefinition* at = &derived; at != nullptr; at = at->baseTypeDefinition) {
        if (at == &base) return true;
        if (at->baseTypeDefinition == nullptr || (blocked & Derivation_Restriction) != 0) break;
        if (at->baseTypeDefinition != &base && (at->baseTypeDefinition->final & Derivation_Restriction) != 0)
            break;
    }
    const CSimpleTypeDefinition* const simple = base.AsSimple();
    if (simple == nullptr)
        return base.baseTypeDefinition == nullptr && (blocked & Derivation_Restriction) == 0;
    if (derived.variety != CSimpleTypeDefinition::Variety::Atomic &&
        simple->variety == CSimpleTypeDefinition::Variety::Absent)
        return true;
    // A member of a union without facets of its own stands for the union.
    return simple->variety == CSimpleTypeDefinition::Variety::Union && simple->isConstructed &&
           std::any_of(simple->memberTypeDefinitions.begin(), simple->memberTypeDefinitions.end(),
                       [&](const CSimpleTypeDefinition* member) {
                           return IsSimpleDerivationOk(derived, *member, blocked);
                       });
}

}  // namespace

bool IsDerivationOk(const CTypeDefinition& derived, const CTypeDefinition& base,
                    DerivationSet blocked) noexcept {
    // Type Derivation OK (Complex), 3.4.6.
    const CTypeDefinition* at = &derived;
    while (at != nullptr && !at->IsSimple()) {
        if (at == &base) return true;
        if ((at->AsComplex()->derivationMethod & blocked) != 0) return false;
        at = at->baseTypeDefinition;
    }
    return at != nullptr && IsSimpleDerivationOk(*at->AsSimple(), base, blocked);
}

}  // namespace KvXmlLib16::internal
