/// The names that may stand where an element is asked for: its own and those of its substitution group.
#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "kvxml/schema/constraints/internal/key_set.h"
#include "kvxml/schema/model/internal/schema_store.h"

namespace KvXmlLib16::internal {

/// Names of elements as sets; what substitution groups have in common is kept once.
class CElementNames {
public:
    struct Names {
        CKeySet names;       ///< keys are numbers of names, marks those of declarations
        CKeySet namespaces;  ///< keys are numbers of namespaces
    };

    explicit CElementNames(CKeySets& sets) noexcept : m_sets(sets) {}

    /// All declarations that may stand for the head, itself included.
    Names Substitutable(const CElementDeclaration& head);
    std::uint32_t NumberOf(std::string_view namespaceUri);
    std::string_view NamespaceOf(std::uint32_t number) const noexcept { return m_namespaces[number]; }
    const CElementDeclaration& DeclarationOf(std::uint64_t mark) const noexcept {
        return *m_declarations[static_cast<std::size_t>(mark)];
    }

private:
    /// A member seen from a head: what the types in between were derived by, and what they block.
    struct Member {
        const CElementDeclaration* element;
        DerivationSet steps;
        DerivationSet blocked;

        friend bool operator==(const Member& a, const Member& b) noexcept {
            return a.element == b.element && a.steps == b.steps && a.blocked == b.blocked;
        }
    };
    struct MemberHash {
        std::size_t operator()(const Member& member) const noexcept {
            return std::hash<const void*>()(member.element) * 61 + member.steps * 8u + member.blocked;
        }
    };

    Names Own(const CElementDeclaration& element);
    static Member Below(const Member& above, const CElementDeclaration& element) noexcept;

    CKeySets& m_sets;
    std::unordered_map<CExpandedName, std::uint32_t, CExpandedNameHash> m_nameNumbers;
    std::unordered_map<std::string_view, std::uint32_t> m_namespaceNumbers;
    std::vector<std::string_view> m_namespaces;              // by number
    std::vector<const CElementDeclaration*> m_declarations;  // by mark
    std::unordered_map<const CElementDeclaration*, Names> m_own;
    std::unordered_map<Member, Names, MemberHash> m_members;
};

}  // namespace KvXmlLib16::internal
