#include "kvxml/schema/constraints/internal/element_names.h"

namespace KvXmlLib16::internal {

std::uint32_t CElementNames::NumberOf(std::string_view namespaceUri) {
    const auto [found, isNew] =
        m_namespaceNumbers.emplace(namespaceUri, static_cast<std::uint32_t>(m_namespaces.size()));
    if (isNew) m_namespaces.push_back(namespaceUri);
    return found->second;
}

CElementNames::Names CElementNames::Own(const CElementDeclaration& element) {
    const auto [found, isNew] = m_own.emplace(&element, Names());
    if (isNew) {
        const std::uint32_t number =
            m_nameNumbers.emplace(element.name, static_cast<std::uint32_t>(m_nameNumbers.size()))
                .first->second;
        found->second.names = m_sets.Single(number, m_declarations.size(), nullptr);
        found->second.namespaces = m_sets.Single(NumberOf(element.name.namespaceUri), 0, nullptr);
        m_declarations.push_back(&element);
    }
    return found->second;
}

/// The same for a member of the group whose affiliation is `above`.
CElementNames::Member CElementNames::Below(const Member& above, const CElementDeclaration& element) noexcept {
    Member below{&element, above.steps, above.blocked};
    const CTypeDefinition* const top = above.element->typeDefinition;
    const CTypeDefinition* type = element.typeDefinition;
    if (type == top) return below;
    for (const CTypeDefinition* at = type; at != nullptr && at != top; at = at->baseTypeDefinition) {
        const CComplexTypeDefinition* const complex = at->AsComplex();
        if (complex == nullptr) {
            below.steps |= Derivation_Restriction;
            break;
        }
        below.steps |= complex->derivationMethod;
        if (at != type) below.blocked |= complex->prohibitedSubstitutions;
    }
    if (const CComplexTypeDefinition* complex = top->AsComplex())
        below.blocked |= complex->prohibitedSubstitutions;
    return below;
}

CElementNames::Names CElementNames::Substitutable(const CElementDeclaration& head) {
    if (head.substitutionGroupMembers.empty() ||
        (head.disallowedSubstitutions & Derivation_Substitution) != 0)
        return Own(head);
    // Members before what they are members of, without recursion.
    const Member top{&head, Derivation_None, head.disallowedSubstitutions};
    std::vector<Member> open{top};
    while (!open.empty()) {
        const Member member = open.back();
        if (m_members.count(member) != 0) {
            open.pop_back();
            continue;
        }
        const std::size_t before = open.size();
        std::vector<const Names*> parts;
        for (const CElementDeclaration* element : member.element->substitutionGroupMembers) {
            const Member below = Below(member, *element);
            // What is blocked here is blocked for all below it too.
            if ((below.steps & below.blocked) != 0) continue;
            const auto found = m_members.find(below);
            if (found == m_members.end()) {
                open.push_back(below);
            } else {
                parts.push_back(&found->second);
            }
        }
        if (open.size() != before) continue;
        open.pop_back();
        Names all = Own(*member.element);
        for (const Names* part : parts) {
            all.names = m_sets.Unite(all.names, part->names);
            all.namespaces = m_sets.Unite(all.namespaces, part->namespaces);
        }
        m_members.emplace(member, all);
    }
    return m_members.at(top);
}

}  // namespace KvXmlLib16::internal
