// What may stand for what: emptiable particles, derived types.
#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "kvxml/schema/constraints/internal/schema_constraints.h"

namespace KvXmlLib16::internal {

namespace {

/// Each group is looked at once, however often it is referred to, and without recursion.
bool IsEmptiableGroup(const CModelGroup& top) {
    struct Level {
        const CModelGroup* group;
        std::size_t next;
    };
    std::unordered_map<const CModelGroup*, bool> known;
    std::vector<Level> levels{{&top, 0}};
    for (;;) {
        Level& level = levels.back();
        const CModelGroup& group = *level.group;
        const bool isChoice = group.compositor == CModelGroup::Compositor::Choice;
        bool isEmptiable = !isChoice;  // unless one particle is of the other opinion
        const CModelGroup* unknown = nullptr;
        while (isEmptiable != isChoice && level.next < group.particles.size()) {
            const CParticle& particle = *group.particles[level.next];
            const CModelGroup* const inner = particle.AsGroup();
            bool mayBeEmpty = particle.minOccurs == 0;
            if (!mayBeEmpty && inner != nullptr) {
                const auto found = known.find(inner);
                if (found == known.end()) {
                    unknown = inner;
                    break;
                }
                mayBeEmpty = found->second;
            }
            ++level.next;
            if (mayBeEmpty == isChoice) isEmptiable = isChoice;
        }
        if (unknown != nullptr) {
            levels.push_back({unknown, 0});
            continue;
        }
        known[&group] = isEmptiable;
        levels.pop_back();
        if (levels.empty()) return isEmptiable;
    }
}

}  // namespace

bool IsEmptiable(const CParticle* particle) {
    if (particle == nullptr || particle->minOccurs == 0) return true;
    const CModelGroup* const group = particle->AsGroup();
    return group != nullptr && IsEmptiableGroup(*group);
}

namespace {

/// Type Derivation OK (Simple), 3.14.6.
bool IsSimpleDerivationOk(const CSimpleTypeDefinition& derived, const CTypeDefinition& base,
                          DerivationSet blocked, std::unordered_set<const CTypeDefinition*>& seen) {
    if (!seen.insert(&base).second) return false;  // a member of several unions
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
                           return IsSimpleDerivationOk(derived, *member, blocked, seen);
                       });
}

}  // namespace

bool IsDerivationOk(const CTypeDefinition& derived, const CTypeDefinition& base, DerivationSet blocked) {
    // Type Derivation OK (Complex), 3.4.6.
    const CTypeDefinition* at = &derived;
    while (at != nullptr && !at->IsSimple()) {
        if (at == &base) return true;
        if ((at->AsComplex()->derivationMethod & blocked) != 0) return false;
        at = at->baseTypeDefinition;
    }
    std::unordered_set<const CTypeDefinition*> seen;
    return at != nullptr && IsSimpleDerivationOk(*at->AsSimple(), base, blocked, seen);
}

}  // namespace KvXmlLib16::internal
