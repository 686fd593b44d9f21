// Particle Valid (Restriction), XML Schema Part 1, 3.9.6.
#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "kvxml/schema/constraints/internal/element_names.h"
#include "kvxml/schema/constraints/internal/restriction_tree.h"
#include "kvxml/schema/constraints/internal/schema_constraints.h"
#include "kvxml/schema/datatypes/internal/simple_type_checker.h"

namespace KvXmlLib16::internal {

namespace {

using Node = CRestrictionNode;
using Kind = CRestrictionNode::Kind;

constexpr std::uint64_t kUnbounded = CParticle::kUnbounded;

// Failures that only say that two particles have nothing to do with each other. They are compared by address.
constexpr const char* kForbidden = "cos-particle-restrict.2";
constexpr const char* kOtherName = "rcase-NameAndTypeOK.1";
constexpr const char* kOtherNamespace = "rcase-NSCompat.1";
constexpr const char* kTooLarge = "";

bool SaysWhy(const char* failure) noexcept {
    return failure != kForbidden && failure != kOtherName && failure != kOtherNamespace;
}

/// Occurrence Range OK.
bool IsRangeOk(std::uint64_t min, std::uint64_t max, const Node& base) noexcept {
    return min >= base.minOccurs && (base.maxOccurs == kUnbounded || max <= base.maxOccurs);
}
bool IsRangeOk(const Node& node, const Node& base) noexcept {
    return IsRangeOk(node.minOccurs, node.maxOccurs, base);
}

/// The simple type of an element's content; null for mixed content.
const CSimpleTypeDefinition* ContentTypeOf(const CElementDeclaration& element) noexcept {
    const CComplexTypeDefinition* const complex = element.typeDefinition->AsComplex();
    return complex != nullptr ? complex->simpleContent : element.typeDefinition->AsSimple();
}

bool HaveSameValue(const CElementDeclaration& a, const CElementDeclaration& b) {
    const auto keyOf = [](const CElementDeclaration& element, std::string& key) {
        const CSimpleTypeDefinition* const type = ContentTypeOf(element);
        const CVectorScope scope(element.valueConstraint.scope);
        CCheckedValue value;
        if (type == nullptr || type->checker == nullptr ||
            !type->checker->Check(element.valueConstraint.text, &scope, &value, nullptr, nullptr))
            return false;
        key = std::move(value.key);
        return true;
    };
    std::string keyA;
    std::string keyB;
    if (keyOf(a, keyA) && keyOf(b, keyB)) return keyA == keyB;
    return a.valueConstraint.text == b.valueConstraint.text;
}

class CRestrictionCheck {
public:
    CRestrictionCheck() : m_names(m_sets) {}

    /// The constraint that is violated; null: none.
    const char* Check(const CParticle* restricted, const CParticle* base) {
        const Node* const r = restricted != nullptr ? m_tree.Make(*restricted) : nullptr;
        const Node* const b = base != nullptr ? m_tree.Make(*base) : nullptr;
        if (m_tree.IsTooLarge()) return kTooLarge;
        if (r == nullptr) return b == nullptr || b->IsEmptiable() ? nullptr : "rcase-Recurse.2";
        if (b == nullptr) return kForbidden;
        const char* const failure = Check(*r, *b, true);
        return m_tree.IsTooLarge() ? kTooLarge : failure;
    }

private:
    struct PairHash {
        std::size_t operator()(const std::pair<const Node*, const Node*>& pair) const noexcept {
            return std::hash<const void*>()(pair.first) * 31 + std::hash<const void*>()(pair.second);
        }
    };
    /// The particles of a group that is restricted; of one particle "as if it were a group".
    struct Members {
        const Node* const* first;
        std::size_t count;
        std::uint64_t minOccurs;
        std::uint64_t maxOccurs;
        const Node* const* begin() const noexcept { return first; }
        const Node* const* end() const noexcept { return first + count; }
    };

    const char* Check(const Node& r, const Node& b, bool withRange);
    const char* CheckPair(const Node& r, const Node& b, bool withRange);
    const char* CheckElement(const Node& r, const Node& b, bool withRange);
    const char* CheckAgainstWildcard(const Node& r, const Node& b, bool withRange);
    const char* CheckAgainstHead(const Node& r, const Node& b);
    const char* NameAndTypeOk(const Node& r, const Node& b) const;
    const char* NsSubset(const Node& r, const Node& b, bool withRange) const;
    const char* Recurse(const Members& r, const Node& b);
    const char* RecurseUnordered(const Members& r, const Node& b);
    const char* RecurseLax(const Members& r, const Node& b);
    const char* MapAndSum(const Node& r, const Node& b);
    bool AreMembersIn(const Node& r, const Node& b);
    template <class Accept>
    const char* FindFor(const Node& r, const Node& b, const char* otherwise, Accept accept);

    static Members MembersOf(const Node& node) noexcept {
        return {node.children.data(), node.children.size(), node.minOccurs, node.maxOccurs};
    }

    CRestrictionTree m_tree;
    CKeySets m_sets;
    CElementNames m_names;
    std::size_t m_depth = 0;
    std::unordered_map<std::pair<const Node*, const Node*>, const char*, PairHash> m_known[2];
};

const char* CRestrictionCheck::Check(const Node& r, const Node& b, bool withRange) {
    if (&r == &b || (r.term == b.term && (!withRange || IsRangeOk(r, b)))) return nullptr;
    if (r.children.empty() && b.children.empty()) return CheckPair(r, b, withRange);
    const auto [known, isNew] = m_known[withRange ? 1 : 0].emplace(std::make_pair(&r, &b), nullptr);
    if (!isNew) return known->second;
    if (m_depth > kMaxContentNesting) return kTooLarge;
    ++m_depth;
    const char*& result = known->second;  // stays where it is
    result = CheckPair(r, b, withRange);
    --m_depth;
    return result;
}

/// The table of 3.9.6.
const char* CRestrictionCheck::CheckPair(const Node& r, const Node& b, bool withRange) {
    if (r.kind == Kind::Element) return CheckElement(r, b, withRange);
    if (b.kind == Kind::Wildcard) {
        return r.kind == Kind::Wildcard ? NsSubset(r, b, withRange) : CheckAgainstWildcard(r, b, withRange);
    }
    if (b.kind == Kind::Element) return CheckAgainstHead(r, b);
    if (r.kind == b.kind) {
        if (r.kind == Kind::Choice) return RecurseLax(MembersOf(r), b);
        return Recurse(MembersOf(r), b);
    }
    if (r.kind == Kind::Sequence)
        return b.kind == Kind::All ? RecurseUnordered(MembersOf(r), b) : MapAndSum(r, b);
    return kForbidden;
}

// --- elements ----------------------------------------------------------------------------------------------

const char* CRestrictionCheck::CheckElement(const Node& r, const Node& b, bool withRange) {
    if (b.kind == Kind::Wildcard) {
        bool isAdmitted = true;
        auto visit = [&](std::uint32_t number, const CKeySet&) {
            return isAdmitted = b.Wildcard().Admits(m_names.NamespaceOf(number));
        };
        ForEach(m_names.Substitutable(r.Element()).namespaces, visit);
        if (!isAdmitted) return kOtherNamespace;
        return !withRange || IsRangeOk(r, b) ? nullptr : "rcase-NSCompat.2";
    }
    if (b.kind == Kind::Element) {
        if (&r.Element() != &b.Element() && !b.Element().substitutionGroupMembers.empty() &&
            IsSubstitutable(r.Element(), b.Element())) {
            // As a group of its own, against the choice of the members.
            return IsRangeOk(1, 1, b) && r.OccursOnce() ? nullptr : "rcase-RecurseLax.1";
        }
        return NameAndTypeOk(r, b);
    }
    const Node* const only = &r;
    const Members asGroup{&only, 1, 1, 1};
    if (b.kind != Kind::Choice) return Recurse(asGroup, b);
    const char* const failure = RecurseLax(asGroup, b);
    return failure != nullptr && AreMembersIn(r, b) ? nullptr : failure;
}

/// The members of r's substitution group, which r stands for, are all alternatives of the choice.
bool CRestrictionCheck::AreMembersIn(const Node& r, const Node& b) {
    if (r.Element().substitutionGroupMembers.empty() || !IsRangeOk(r, b)) return false;
    bool areIn = true;
    auto visit = [&](std::uint32_t, const CKeySet& member) {
        const CElementDeclaration& element = m_names.DeclarationOf(member.mark);
        const std::vector<const Node*>& named = m_tree.Named(b, element.name);
        return areIn = std::any_of(named.begin(), named.end(), [&](const Node* one) {
                   return &one->Element() == &element && IsRangeOk(1, 1, *one);
               });
    };
    ForEach(m_names.Substitutable(r.Element()).names, visit);
    return areIn;
}

const char* CRestrictionCheck::NameAndTypeOk(const Node& r, const Node& b) const {
    const CElementDeclaration& own = r.Element();
    const CElementDeclaration& base = b.Element();
    if (own.name != base.name) return kOtherName;
    if (!IsRangeOk(r, b)) return "rcase-NameAndTypeOK.2";
    if (&own == &base) return nullptr;
    if (own.isNillable && !base.isNillable) return "rcase-NameAndTypeOK.3.2.1";
    if (base.valueConstraint.kind == CValueConstraint::Fixed &&
        (own.valueConstraint.kind != CValueConstraint::Fixed || !HaveSameValue(own, base)))
        return "rcase-NameAndTypeOK.3.2.2";
    const auto& constraints = base.identityConstraints;
    if (!std::all_of(own.identityConstraints.begin(), own.identityConstraints.end(), [&](const auto* one) {
            return std::find(constraints.begin(), constraints.end(), one) != constraints.end();
        }))
        return "rcase-NameAndTypeOK.3.2.3";
    if ((base.disallowedSubstitutions & ~own.disallowedSubstitutions) != 0)
        return "rcase-NameAndTypeOK.3.2.4";
    return IsDerivationOk(*own.typeDefinition, *base.typeDefinition,
                          Derivation_Extension | Derivation_List | Derivation_Union)
               ? nullptr
               : "rcase-NameAndTypeOK.3.2.5";
}

/// A group against an element: possible when that stands for its substitution group.
const char* CRestrictionCheck::CheckAgainstHead(const Node& r, const Node& b) {
    if (b.Element().substitutionGroupMembers.empty() || r.kind == Kind::Wildcard || r.kind == Kind::All)
        return kForbidden;
    for (const Node* child : r.children) {
        if (child->kind != Kind::Element || !child->OccursOnce() ||
            !IsSubstitutable(child->Element(), b.Element()))
            return r.kind == Kind::Choice ? "rcase-RecurseLax.2" : "rcase-MapAndSum.1";
    }
    if (r.kind == Kind::Choice) return IsRangeOk(r, b) ? nullptr : "rcase-RecurseLax.1";
    return IsRangeOk(r.totalMin, r.totalMax, b) ? nullptr : "rcase-MapAndSum.2";
}

// --- wildcards ---------------------------------------------------------------------------------------------

const char* CRestrictionCheck::NsSubset(const Node& r, const Node& b, bool withRange) const {
    if (withRange && !IsRangeOk(r, b)) return "rcase-NSSubset.1";
    if (!IsSubset(r.Wildcard(), b.Wildcard())) return "rcase-NSSubset.2";
    const bool isOfUrType = b.Wildcard().place.document == nullptr;
    if (!isOfUrType && r.Wildcard().processContents < b.Wildcard().processContents) return "rcase-NSSubset.3";
    return nullptr;
}

/// NSRecurseCheckCardinality: only the ranges of the whole count.
const char* CRestrictionCheck::CheckAgainstWildcard(const Node& r, const Node& b, bool withRange) {
    for (const Node* child : r.children) {
        if (const char* failure = Check(*child, b, false))
            return SaysWhy(failure) ? failure : "rcase-NSRecurseCheckCardinality.1";
    }
    return !withRange || IsRangeOk(r.totalMin, r.totalMax, b) ? nullptr : "rcase-NSRecurseCheckCardinality.2";
}

// --- groups ------------------------------------------------------------------------------------------------

const char* CRestrictionCheck::Recurse(const Members& r, const Node& b) {
    if (!IsRangeOk(r.minOccurs, r.maxOccurs, b)) return "rcase-Recurse.1";
    const char* reason = nullptr;
    auto at = b.children.begin();
    for (const Node* child : r) {
        for (;; ++at) {
            if (at == b.children.end()) return reason != nullptr ? reason : "rcase-Recurse.2";
            const char* const failure = Check(*child, **at, true);
            if (failure == nullptr) break;
            if (SaysWhy(failure) && (reason == nullptr || !(*at)->IsEmptiable())) reason = failure;
            if (!(*at)->IsEmptiable()) return SaysWhy(failure) ? failure : "rcase-Recurse.2";
        }
        ++at;
        reason = nullptr;
    }
    return std::all_of(at, b.children.end(), [](const Node* rest) { return rest->IsEmptiable(); })
               ? nullptr
               : "rcase-Recurse.2";
}

/// The first of b's particles that accepts r. `otherwise` unless there is a better reason.
template <class Accept>
const char* CRestrictionCheck::FindFor(const Node& r, const Node& b, const char* otherwise, Accept accept) {
    const char* reason = otherwise;
    const auto isOne = [&](const Node* candidate) {
        const char* const failure = Check(r, *candidate, true);
        if (failure == nullptr) return accept(candidate);
        if (SaysWhy(failure)) reason = failure;
        return false;
    };
    const auto& likely = r.kind == Kind::Element ? m_tree.Named(b, r.Element().name) : m_tree.NotNamed(b);
    if (std::any_of(likely.begin(), likely.end(), isOne)) return nullptr;
    // A group may come down to one element only when that is the head of a substitution group.
    if (r.kind == Kind::Element) {
        const auto& others = m_tree.NotNamed(b);
        if (std::any_of(others.begin(), others.end(), isOne)) return nullptr;
    }
    return reason;
}

const char* CRestrictionCheck::RecurseUnordered(const Members& r, const Node& b) {
    if (!IsRangeOk(r.minOccurs, r.maxOccurs, b)) return "rcase-RecurseUnordered.1";
    std::unordered_set<const Node*> used;
    for (const Node* child : r) {
        const char* const failure = FindFor(*child, b, "rcase-RecurseUnordered.2",
                                            [&](const Node* one) { return used.insert(one).second; });
        if (failure != nullptr) return failure;
    }
    return std::all_of(b.children.begin(), b.children.end(),
                       [&](const Node* one) { return one->IsEmptiable() || used.count(one) != 0; })
               ? nullptr
               : "rcase-RecurseUnordered.2";
}

const char* CRestrictionCheck::RecurseLax(const Members& r, const Node& b) {
    if (!IsRangeOk(r.minOccurs, r.maxOccurs, b)) return "rcase-RecurseLax.1";
    auto at = b.children.begin();
    for (const Node* child : r) {
        const char* reason = "rcase-RecurseLax.2";
        for (;; ++at) {
            if (at == b.children.end()) return reason;
            const char* const failure = Check(*child, **at, true);
            if (failure == nullptr) break;
            if (SaysWhy(failure)) reason = failure;
        }
        ++at;
    }
    return nullptr;
}

const char* CRestrictionCheck::MapAndSum(const Node& r, const Node& b) {
    for (const Node* child : r.children) {
        if (const char* failure = FindFor(*child, b, "rcase-MapAndSum.1", [](const Node*) { return true; }))
            return failure;
    }
    const auto times = [&](std::uint64_t number) {
        const std::uint64_t count = r.children.size();
        if (number == kUnbounded || number > (kUnbounded - 1) / count) return kUnbounded;
        return number * count;
    };
    return IsRangeOk(times(r.minOccurs), times(r.maxOccurs), b) ? nullptr : "rcase-MapAndSum.2";
}

}  // namespace

bool IsParticleRestriction(const CParticle* restricted, const CParticle* base, const char** constraint) {
    if (restricted != nullptr && base != nullptr && restricted->term == base->term &&
        restricted->minOccurs >= base->minOccurs && restricted->maxOccurs <= base->maxOccurs)
        return true;
    CRestrictionCheck check;
    const char* const failure = check.Check(restricted, base);
    if (constraint != nullptr) *constraint = failure;
    return failure == nullptr;
}

}  // namespace KvXmlLib16::internal
