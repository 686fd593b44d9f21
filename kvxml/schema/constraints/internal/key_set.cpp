#include "kvxml/schema/constraints/internal/key_set.h"

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
    CKeyNode& made = m_nodes.emplace_back();
    made.key = key & ~(bit | (bit - 1));
    made.bit = bit;
    made.low = low;
    made.high = high;
    return {&made, 0, nullptr};
}

/// Two sets that part above both of their nodes.
CKeySet CKeySets::Join(const CKeySet& a, const CKeySet& b) {
    const std::uint32_t bit = HighestBit(a.node->key ^ b.node->key);
    return (a.node->key & bit) == 0 ? Branch(a.node->key, bit, a, b) : Branch(a.node->key, bit, b, a);
}

CKeySet CKeySets::Unite(const CKeySet& a, const CKeySet& b) {
    if (b.IsEmpty() || a == b) return a;
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
