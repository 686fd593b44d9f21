#include "kvxml/schema/model/declarations.h"

namespace KvXmlLib16 {

bool IsSubstitutable(const CElementDeclaration& member, const CElementDeclaration& head) noexcept {
    if (&member == &head) return true;
    if ((head.disallowedSubstitutions & Derivation_Substitution) != 0) return false;
    const CElementDeclaration* at = &member;
    while (at != nullptr && at != &head)
        at = at->substitutionGroupAffiliation;
    if (at == nullptr) return false;
    // The steps from the member's type to the head's, and what the types on the way block.
    DerivationSet steps = Derivation_None;
    DerivationSet blocked = head.disallowedSubstitutions;
    for (const CTypeDefinition* type = member.typeDefinition; type != head.typeDefinition;
         type = type->baseTypeDefinition) {
        if (type == nullptr) {
            // A member of a union is derived from it without a chain of bases.
            const CSimpleTypeDefinition* const simple = head.typeDefinition->AsSimple();
            if (simple == nullptr || simple->variety != CSimpleTypeDefinition::Variety::Union) return false;
            break;
        }
        if (const CComplexTypeDefinition* complex = type->AsComplex()) {
            steps |= complex->derivationMethod;
            if (type != member.typeDefinition) blocked |= complex->prohibitedSubstitutions;
        } else {
            steps |= Derivation_Restriction;
        }
    }
    if (const CComplexTypeDefinition* complex = head.typeDefinition->AsComplex())
        blocked |= complex->prohibitedSubstitutions;
    return (steps & blocked) == 0;
}

}  // namespace KvXmlLib16
