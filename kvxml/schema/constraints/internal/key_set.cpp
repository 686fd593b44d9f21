#include "kvxml/schema/constraints/internal/key_set.h"

#include <functional>
#include <utility>

namespace KvXmlLib16::internal {

namespace {

std::uint32_t HighestBit(std::uint32_t bits) noexcept {
    std::uint32_t highest = 1;
    while ((bits >>= 1) != 0)
        highest <<= 1;
    return highest;
}

}  // namespace

CKeySet Find(CKeySet set, std::uint32_t key) noexcept {
    while (!set.IsEmpty() && !set.node->IsLeaf())
        set = set.node->Covers(key) ? PartOf(set, set.node->Side(key)) : CKeySet();
    return set.IsEmpty() || set.node->key == key ? set : CKeySet();
}

CKeySet CKeySets::Single(std::uint32_t key, std::uint64_t mark, const CParticle* particle) {
    if (key >= m_leaves.size()) m_leaves.resize(static_cast<std::size_t>(key) + 1);
    if (m_leaves[key] == nullptr) {
        CKeyNode& leaf = m_nodes.emplace_back();
        leaf.key = key;
        m_leaves[key] = &leaf;
    }
    return {m_leaves[key], mark, particle};
}

CKeySet CKeySets::Branch(std::uint32_t key, std::uint32_t bit, const CKeySet& low, const CKeySet& high) {
    CKeyNode branch;
    branch.key = key & ~(bit | (bit - 1));
    branch.bit = bit;
    branch.low = low;
    branch.high = high;
    if (m_branchCount * 2 >= m_branches.size()) {
        const std::vector<const CKeyNode*> old = std::exchange(
            m_branches, std::vector<const CKeyNode*>(m_branches.empty() ? 256 : m_branches.size() * 2));
        for (const CKeyNode* node : old) {
            if (node != nullptr) SlotOf(*node) = node;
        }
    }
    const CKeyNode*& slot = SlotOf(branch);
    if (slot == nullptr) {
        slot = &m_nodes.emplace_back(branch);
        ++m_branchCount;
    }
    return {slot, 0, nullptr};
}

/// Where the node is, or would be.
const CKeyNode*& CKeySets::SlotOf(const CKeyNode& branch) {
    const auto mix = [](std::uint64_t hash, const CKeySet& part) {
        const std::hash<const void*> address;
        hash = (hash ^ address(part.node)) * 0x9E3779B97F4A7C15u;
        hash = (hash ^ (hash >> 29) ^ part.mark ^ address(part.particle)) * 0xBF58476D1CE4E5B9u;
        return hash ^ (hash >> 32);
    };
    const std::uint64_t hash =
        mix(mix(branch.key ^ std::uint64_t{branch.bit} << 32, branch.low), branch.high);
    const std::size_t mask = m_branches.size() - 1;
    std::size_t slot = static_cast<std::size_t>(hash) & mask;
    for (;; slot = (slot + 1) & mask) {
        const CKeyNode* const node = m_branches[slot];
        if (node == nullptr || (node->key == branch.key && node->bit == branch.bit &&
                                node->low == branch.low && node->high == branch.high))
            return m_branches[slot];
    }
}

/// Two sets that part above both of their nodes.
CKeySet CKeySets::Join(const CKeySet& a, const CKeySet& b) {
    const std::uint32_t bit = HighestBit(a.node->key ^ b.node->key);
    return (a.node->key & bit) == 0 ? Branch(a.node->key, bit, a, b) : Branch(a.node->key, bit, b, a);
}

CKeySet CKeySets::Unite(const CKeySet& a, const CKeySet& b) {
    if (b.IsEmpty() || a.node == b.node) return a;
    if (a.IsEmpty()) return b;
    const CKeyNode& x = *a.node;
    const CKeyNode& y = *b.node;
    if (x.bit == y.bit) {
        if (x.key != y.key) return Join(a, b);
        if (x.IsLeaf()) return a;
        const CKeySet low = PartOf(a, x.low);
        const CKeySet high = PartOf(a, x.high);
        const CKeySet lowBoth = Unite(low, PartOf(b, y.low));
        const CKeySet highBoth = Unite(high, PartOf(b, y.high));
        return lowBoth == low && highBoth == high ? a : Branch(x.key, x.bit, lowBoth, highBoth);
    }
    if (x.bit > y.bit) {
        if (!x.Covers(y.key)) return Join(a, b);
        const CKeySet low = PartOf(a, x.low);
        const CKeySet high = PartOf(a, x.high);
        const bool isHigh = (y.key & x.bit) != 0;
        const CKeySet both = Unite(isHigh ? high : low, b);
        if (both == (isHigh ? high : low)) return a;
        return isHigh ? Branch(x.key, x.bit, low, both) : Branch(x.key, x.bit, both, high);
    }
    if (!y.Covers(x.key)) return Join(a, b);
    const CKeySet low = PartOf(b, y.low);
    const CKeySet high = PartOf(b, y.high);
    const bool isHigh = (x.key & y.bit) != 0;
    const CKeySet both = Unite(a, isHigh ? high : low);
    if (both == (isHigh ? high : low)) return b;
    return isHigh ? Branch(y.key, y.bit, low, both) : Branch(y.key, y.bit, both, high);
}

}  // namespace KvXmlLib16::internal
