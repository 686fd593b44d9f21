/// Visits components in the order of their dependence, without recursion.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

namespace KvXmlLib16::internal {

/// How many steps of dependence are followed; longer chains are refused, so that what walks them later may
/// recurse.
inline constexpr std::size_t kMaxDependence = 1000;

/// Calls `complete(T&)` for every item after those that it depends on. `dependencies(T&)` returns a vector of
/// T*; `onCircle(T&, T&)` is told of an item and the dependency that closes a circle, `onDepth(T&)` of one at
/// the end of a chain of more than kMaxDependence; both cut the dependence, or the call of `complete` does
/// without it.
template <class T, class Items, class Dependencies, class Complete, class OnCircle, class OnDepth>
void InOrderOfDependence(Items& items, Dependencies dependencies, Complete complete, OnCircle onCircle,
                         OnDepth onDepth) {
    enum : std::uint8_t { kOpen = 1, kDone = 2 };
    struct Known {
        std::uint8_t state = 0;
        std::size_t depth = 0;
    };
    struct Frame {
        T* item;
        std::vector<T*> needs;
        std::size_t next = 0;
        std::size_t depth = 0;
    };
    std::unordered_map<const T*, Known> known;
    std::vector<Frame> path;
    const auto open = [&](T& item) {
        known[&item].state = kOpen;
        path.push_back({&item, dependencies(item), 0, 0});
    };
    for (auto& first : items) {
        T& start = static_cast<T&>(first);
        if (known[&start].state == 0) open(start);
        while (!path.empty()) {
            Frame& frame = path.back();
            if (frame.next < frame.needs.size()) {
                T& need = *frame.needs[frame.next++];
                const Known seen = known[&need];
                if (seen.state == kOpen) {
                    onCircle(*frame.item, need);
                } else if (seen.state == kDone) {
                    if (seen.depth + 1 > frame.depth) frame.depth = seen.depth + 1;
                } else {
                    open(need);
                }
                continue;
            }
            if (frame.depth > kMaxDependence) {
                onDepth(*frame.item);
                frame.depth = 0;
            }
            T& item = *frame.item;
            known[&item] = {kDone, frame.depth};
            path.pop_back();
            complete(item);
            if (!path.empty() && known[&item].depth + 1 > path.back().depth)
                path.back().depth = known[&item].depth + 1;
        }
    }
}

}  // namespace KvXmlLib16::internal
