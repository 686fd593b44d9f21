/// Unique particle attribution and element declarations consistent (XML Schema Part 1, 3.8.6).
///
/// Each particle and group is looked at once, however many types share it: what a container needs to know of
/// its parts is which elements may come first in them, and which may follow a content that is complete
/// already. Two particles compete when both are in sets that meet in the same place. Repetitions are counted,
/// not unrolled.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "kvxml/schema/constraints/internal/element_names.h"
#include "kvxml/schema/constraints/internal/key_set.h"
#include "kvxml/schema/model/fault.h"
#include "kvxml/schema/model/particle.h"

namespace KvXmlLib16::internal {

class CContentAnalysis {
public:
    explicit CContentAnalysis(CFaultList& faults) : m_faults(faults), m_names(m_sets) {}

    /// Checks a whole content model; what was part of one before is not checked again.
    void CheckContent(const CParticle& particle);
    /// Checks a group that no content model uses: only its declarations must be consistent.
    void CheckUnused(const CModelGroup& group);

private:
    /// Places in a content model. Particles are told apart by their marks too: a group that is referred to
    /// twice has each particle at two places.
    struct Positions {
        CKeySet names;               // of elements
        CKeySet elementNamespaces;   // of elements, one for each
        CKeySet wildcardNamespaces;  // that wildcards list
        CKeySet open;                // a wildcard that lists none: any, or all but one; has one key, 0
    };
    /// Places that may be reached after different contents, so that two of one name need not compete; who
    /// competes with a name competes with one of two at least.
    struct Followers {
        Positions one;
        Positions other;  // for keys of `one` with more than one place
    };
    /// What is known of a particle or group.
    struct Content {
        bool isNullable = false;
        Positions first;      // may come first
        Followers following;  // may come after a content that is not empty and could end there
        CKeySet names;        // all elements, the implied ones included
        /// How much the number of rounds of its inner repetitions can vary, when nothing else stands in
        /// between: rounds of `maxRounds / minRounds` at best. Not nullable content only.
        std::uint64_t minRounds = 1;
        std::uint64_t maxRounds = 1;
        std::size_t particles = 1;  // with groups counted at each reference
        std::size_t nesting = 0;
        bool isTooLarge = false;  // and that was told
    };

    const Content& Evaluate(const CModelGroup& group);
    Content OfParticle(const CParticle& particle);
    Content OfLeaf(const CParticle& particle);
    Content OfGroup(const CModelGroup& group);
    void AddToSequence(Content& all, const Content& next, const CParticle& particle);
    void AddToChoice(Content& all, const Content& next, const CParticle& particle, const CModelGroup& group);
    void Repeat(Content& content, const CParticle& particle);
    void Count(Content& all, const Content& part, const CParticle& at);

    Positions Unite(const Positions& a, const Positions& b);
    void Add(Followers& all, const Positions& more);
    void Add(Followers& all, const Followers& more);
    CKeySet Collisions(const CKeySet& a, const CKeySet& b);
    void Compare(const Followers& a, const Positions& b, const CParticle& at);
    void Compare(const Positions& a, const Positions& b, const CParticle& at);
    void CompareOpen(const CKeySet& open, const Positions& other, const CParticle& at);
    void ReportOverlap(const CParticle& a, const CParticle& b, const CParticle& at);
    void AddNames(Content& all, const Content& next);

    CFaultList& m_faults;
    CKeySets m_sets;
    CElementNames m_names;
    std::unordered_map<const CModelGroup*, Content> m_groups;
    std::unordered_map<const CParticle*, Content> m_repeated;
    using Pair = std::pair<const CParticle*, const CParticle*>;
    std::set<Pair> m_overlaps;      // reported ones
    std::set<Pair> m_inconsistent;  // reported ones
    bool m_isUnused = false;
};

/// "element [a]", "wildcard [##other]", "group [g]".
std::string DescribeParticle(const CParticle& particle);
/// "line 3, column 5", with the file when it is not that of `from`.
std::string DescribePlace(const CSourcePlace& place, const CSourcePlace& from);

}  // namespace KvXmlLib16::internal
