/// The same numbers on every host for the same seed.
#pragma once

#include <cstddef>
#include <cstdint>

namespace oracle {

class CRandom {
public:
    explicit CRandom(std::uint64_t seed) noexcept : m_state(seed * 2 + 1) {}

    /// From 0 to `count` - 1.
    std::size_t Below(std::size_t count) noexcept {
        m_state += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = m_state;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
        return static_cast<std::size_t>((mixed ^ (mixed >> 31)) % count);
    }
    bool Chance(std::size_t percent) noexcept { return Below(100) < percent; }
    template <class Items>
    auto& Of(Items& items) noexcept {
        return items[Below(items.size())];
    }

private:
    std::uint64_t m_state;
};

}  // namespace oracle
