/// Content models as the rules of restriction look at them (XML Schema Part 1, 3.9.6): without pointless
/// groups.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "kvxml/schema/model/internal/schema_store.h"
#include "kvxml/schema/model/particle.h"

namespace KvXmlLib16::internal {

/// A particle whose group, if it has one, is not pointless.
struct CRestrictionNode {
    enum class Kind : std::uint8_t { Element, Wildcard, All, Choice, Sequence };

    Kind kind = Kind::Element;
    std::uint64_t minOccurs = 1;
    std::uint64_t maxOccurs = 1;
    const CComponent* term = nullptr;
    std::vector<const CRestrictionNode*> children;
    // The effective total range (3.8.6).
    std::uint64_t totalMin = 1;
    std::uint64_t totalMax = 1;

    const CElementDeclaration& Element() const noexcept {
        return *static_cast<const CElementDeclaration*>(term);
    }
    const CWildcard& Wildcard() const noexcept { return *static_cast<const CWildcard*>(term); }
    /// Particle Emptiable (3.9.6).
    bool IsEmptiable() const noexcept { return totalMin == 0; }
    bool OccursOnce() const noexcept { return minOccurs == 1 && maxOccurs == 1; }
};

/// Makes and owns the nodes, each particle's once.
class CRestrictionTree {
public:
    /// Particles that may stand in the place of references to groups that were referred to before.
    static constexpr std::size_t kMaxRepeated = 10000;

    /// Null when there is nothing but pointless groups.
    const CRestrictionNode* Make(const CParticle& particle);
    /// More than kMaxRepeated: what was made is not complete.
    bool IsTooLarge() const noexcept { return m_repeated > kMaxRepeated; }

    /// Of the alternatives or members, the elements of this name.
    const std::vector<const CRestrictionNode*>& Named(const CRestrictionNode& group,
                                                      const CExpandedName& name);
    /// Of the alternatives or members, all that is not an element, or is the head of a substitution group.
    const std::vector<const CRestrictionNode*>& NotNamed(const CRestrictionNode& group);

private:
    struct Index {
        std::unordered_map<CExpandedName, std::vector<const CRestrictionNode*>, CExpandedNameHash> named;
        std::vector<const CRestrictionNode*> others;
    };

    const CRestrictionNode* MakeOne(const CParticle& particle, std::vector<const CParticle*>& open);
    bool Collect(const CModelGroup& group, CRestrictionNode& node, std::vector<const CParticle*>& open);
    static void SetTotal(CRestrictionNode& node) noexcept;
    const Index& IndexOf(const CRestrictionNode& group);

    std::deque<CRestrictionNode> m_nodes;
    std::unordered_map<const CParticle*, const CRestrictionNode*> m_known;
    std::unordered_map<const CRestrictionNode*, Index> m_indexes;
    std::unordered_set<const CModelGroup*> m_seen;
    std::size_t m_repeated = 0;
};

}  // namespace KvXmlLib16::internal
