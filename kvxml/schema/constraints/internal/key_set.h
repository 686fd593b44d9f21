/// Sets of numbered keys that share their parts: joining or comparing two costs about the size of the smaller
/// one, or of the difference where they share nodes; copying costs nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "kvxml/schema/model/particle.h"

namespace KvXmlLib16::internal {

struct CKeyNode;

/// A set of keys, each with a mark and a particle. A value: copying it is free, nothing changes it. The nodes
/// belong to a CKeySets.
struct CKeySet {
    const CKeyNode* node = nullptr;       ///< null: empty
    std::uint64_t mark = 0;               ///< added to the marks of all keys of the node
    const CParticle* particle = nullptr;  ///< when not null, that of all keys of the node

    bool IsEmpty() const noexcept { return node == nullptr; }
    friend bool operator==(const CKeySet& a, const CKeySet& b) noexcept {
        return a.node == b.node && a.mark == b.mark && a.particle == b.particle;
    }
};

/// A node of a Patricia tree, from the highest bit down. A leaf has no bit.
struct CKeyNode {
    std::uint32_t key = 0;  ///< leaf: the key; else the bits above `bit`
    std::uint32_t bit = 0;
    CKeySet low;
    CKeySet high;

    bool IsLeaf() const noexcept { return bit == 0; }
    bool Covers(std::uint32_t other) const noexcept { return (other & ~(bit | (bit - 1))) == key; }
    const CKeySet& Side(std::uint32_t other) const noexcept { return (other & bit) != 0 ? high : low; }
};

/// What holds for the whole also holds for the part.
inline CKeySet PartOf(const CKeySet& whole, const CKeySet& part) noexcept {
    return {part.node, part.mark + whole.mark, whole.particle != nullptr ? whole.particle : part.particle};
}

/// Makes and owns the nodes, equal ones once. Nothing recurses deeper than a key has bits.
class CKeySets {
public:
    CKeySet Single(std::uint32_t key, std::uint64_t mark, const CParticle* particle);
    /// Of a key that is in both, that of `a` is kept. `a` itself when it has everything.
    CKeySet Unite(const CKeySet& a, const CKeySet& b);

private:
    CKeySet Branch(std::uint32_t key, std::uint32_t bit, const CKeySet& low, const CKeySet& high);
    CKeySet Join(const CKeySet& a, const CKeySet& b);
    const CKeyNode*& SlotOf(const CKeyNode& branch);

    std::deque<CKeyNode> m_nodes;
    std::vector<const CKeyNode*> m_leaves;    // by key
    std::vector<const CKeyNode*> m_branches;  // a hash table, half of it free
    std::size_t m_branchCount = 0;
};

/// Calls `visit(key, a, b)` for each key that is in both sets, `a` and `b` being the sets of that key alone,
/// but where `same(a, b)` holds for them or for sets that they are in. It returns false to stop; so does
/// Meet.
template <class Same, class Visit>
bool Meet(const CKeySet& a, const CKeySet& b, const Same& same, Visit& visit) {
    if (a.IsEmpty() || b.IsEmpty() || same(a, b)) return true;
    const CKeyNode& x = *a.node;
    const CKeyNode& y = *b.node;
    if (x.bit > y.bit) return !x.Covers(y.key) || Meet(PartOf(a, x.Side(y.key)), b, same, visit);
    if (x.bit < y.bit) return !y.Covers(x.key) || Meet(a, PartOf(b, y.Side(x.key)), same, visit);
    if (x.key != y.key) return true;
    if (x.IsLeaf()) return visit(x.key, a, b);
    return Meet(PartOf(a, x.low), PartOf(b, y.low), same, visit) &&
           Meet(PartOf(a, x.high), PartOf(b, y.high), same, visit);
}

/// Calls `visit(key, one)` for each key until it returns false.
template <class Visit>
bool ForEach(const CKeySet& set, Visit& visit) {
    if (set.IsEmpty()) return true;
    if (set.node->IsLeaf()) return visit(set.node->key, set);
    return ForEach(PartOf(set, set.node->low), visit) && ForEach(PartOf(set, set.node->high), visit);
}

/// The set of this key alone; empty when it is not there.
CKeySet Find(CKeySet set, std::uint32_t key) noexcept;

}  // namespace KvXmlLib16::internal
