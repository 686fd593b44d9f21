#include "kvxml/schema/constraints/internal/restriction_tree.h"

#include <algorithm>

namespace KvXmlLib16::internal {

namespace {

using Node = CRestrictionNode;
using Kind = CRestrictionNode::Kind;

constexpr std::uint64_t kUnbounded = CParticle::kUnbounded;
constexpr std::uint64_t kLargest = kUnbounded - 1;

std::uint64_t Sum(std::uint64_t a, std::uint64_t b) noexcept {
    if (a == kUnbounded || b == kUnbounded) return kUnbounded;
    return a > kLargest - b ? kLargest : a + b;
}

std::uint64_t Product(std::uint64_t a, std::uint64_t b) noexcept {
    if (a == 0 || b == 0) return 0;
    if (a == kUnbounded || b == kUnbounded) return kUnbounded;
    return a > kLargest / b ? kLargest : a * b;
}

Kind KindOf(const CComponent& term) noexcept {
    if (term.kind == ComponentKind::ElementDeclaration) return Kind::Element;
    if (term.kind == ComponentKind::Wildcard) return Kind::Wildcard;
    switch (static_cast<const CModelGroup&>(term).compositor) {
        case CModelGroup::Compositor::All:
            return Kind::All;
        case CModelGroup::Compositor::Choice:
            return Kind::Choice;
        default:
            return Kind::Sequence;
    }
}

}  // namespace

void CRestrictionTree::SetTotal(Node& node) noexcept {
    node.totalMin = node.minOccurs;
    node.totalMax = node.maxOccurs;
    if (node.kind == Kind::Element || node.kind == Kind::Wildcard) return;
    std::uint64_t min = 0;
    std::uint64_t max = 0;
    bool isFirst = true;
    for (const Node* child : node.children) {
        if (node.kind != Kind::Choice) {
            min = Sum(min, child->totalMin);
            max = Sum(max, child->totalMax);
        } else {
            min = isFirst ? child->totalMin : std::min(min, child->totalMin);
            max = std::max(max, child->totalMax);
        }
        isFirst = false;
    }
    node.totalMin = Product(node.minOccurs, min);
    node.totalMax = Product(node.maxOccurs, max);
}

/// Inner groups first, without recursion.
const Node* CRestrictionTree::Make(const CParticle& particle) {
    std::vector<const CParticle*> open{&particle};
    while (!open.empty() && !IsTooLarge()) {
        const CParticle& at = *open.back();
        if (m_known.count(&at) != 0) {
            open.pop_back();
            continue;
        }
        const std::size_t before = open.size();
        const Node* const made = MakeOne(at, open);
        if (open.size() != before) continue;  // not yet
        open.pop_back();
        m_known.emplace(&at, made);
    }
    const auto found = m_known.find(&particle);
    return found == m_known.end() ? nullptr : found->second;
}

/// When something has to be made before, it is added to `open`, and the result means nothing.
const Node* CRestrictionTree::MakeOne(const CParticle& particle, std::vector<const CParticle*>& open) {
    Node node;
    node.kind = KindOf(*particle.term);
    node.minOccurs = particle.minOccurs;
    node.maxOccurs = particle.maxOccurs;
    node.term = particle.term;
    if (const CModelGroup* group = particle.AsGroup()) {
        if (!Collect(*group, node, open)) return nullptr;
        if (node.children.empty() && (node.kind != Kind::Choice || node.minOccurs == 0)) return nullptr;
        if (node.children.size() == 1 && node.OccursOnce()) return node.children.front();
    }
    SetTotal(node);
    return &m_nodes.emplace_back(std::move(node));
}

/// The particles of a group, those of inner groups of the same kind that occur once in their place.
bool CRestrictionTree::Collect(const CModelGroup& group, Node& node, std::vector<const CParticle*>& open) {
    struct Level {
        const CModelGroup* group;
        std::size_t next;
        bool isRepeated;
    };
    const std::size_t before = open.size();
    std::unordered_set<const CModelGroup*> seen;
    std::vector<Level> levels{{&group, 0, false}};
    while (!levels.empty() && !IsTooLarge()) {
        Level& level = levels.back();
        if (level.next == level.group->particles.size()) {
            levels.pop_back();
            continue;
        }
        const CParticle& particle = *level.group->particles[level.next++];
        if (level.isRepeated) ++m_repeated;
        const CModelGroup* const inner = particle.AsGroup();
        if (inner != nullptr && particle.minOccurs == 1 && particle.maxOccurs == 1 &&
            inner->compositor == group.compositor && inner->compositor != CModelGroup::Compositor::All &&
            !(inner->particles.empty() && inner->compositor == CModelGroup::Compositor::Choice)) {
            const bool isNew = m_seen.count(inner) == 0 && seen.insert(inner).second;
            levels.push_back({inner, 0, level.isRepeated || !isNew});
            continue;
        }
        const auto known = m_known.find(&particle);
        if (known == m_known.end()) {
            open.push_back(&particle);
        } else if (const Node* child = known->second) {
            // An inner group may have come down to one of this kind.
            if (child->kind == node.kind && child->OccursOnce() && !child->children.empty() &&
                node.kind != Kind::All) {
                m_repeated += child->children.size() / 2;
                node.children.insert(node.children.end(), child->children.begin(), child->children.end());
            } else {
                node.children.push_back(child);
            }
        }
    }
    if (open.size() != before) return false;
    m_seen.merge(seen);
    return true;
}

// --- by name -----------------------------------------------------------------------------------------------

const CRestrictionTree::Index& CRestrictionTree::IndexOf(const Node& group) {
    const auto [found, isNew] = m_indexes.emplace(&group, Index());
    if (!isNew) return found->second;
    for (const Node* child : group.children) {
        const bool isElement = child->kind == Kind::Element;
        if (isElement) found->second.named[child->Element().name].push_back(child);
        if (!isElement || !child->Element().substitutionGroupMembers.empty())
            found->second.others.push_back(child);
    }
    return found->second;
}

const std::vector<const Node*>& CRestrictionTree::Named(const Node& group, const CExpandedName& name) {
    static const std::vector<const Node*> kNone;
    const Index& index = IndexOf(group);
    const auto found = index.named.find(name);
    return found == index.named.end() ? kNone : found->second;
}

const std::vector<const Node*>& CRestrictionTree::NotNamed(const Node& group) {
    return IndexOf(group).others;
}

}  // namespace KvXmlLib16::internal
