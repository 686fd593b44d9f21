/// Hashes put together from the parts of a value.
#pragma once

#include <cstddef>
#include <cstdint>

namespace KvXmlLib16::internal {

/// Mixes 64 bits, so that inputs that differ in any bit differ in many (the finaliser of MurmurHash3).
constexpr std::uint64_t MixBits(std::uint64_t bits) noexcept {
    bits = (bits ^ bits >> 33) * 0xff51afd7ed558ccd;
    bits = (bits ^ bits >> 33) * 0xc4ceb9fe1a85ec53;
    return bits ^ bits >> 33;
}

/// The hash of parts in their order.
template <class... Parts>
std::size_t HashOf(Parts... parts) noexcept {
    std::uint64_t hash = 0;
    ((hash = MixBits(hash + 0x9e3779b97f4a7c15 + static_cast<std::uint64_t>(parts))), ...);
    return static_cast<std::size_t>(hash);
}

}  // namespace KvXmlLib16::internal
