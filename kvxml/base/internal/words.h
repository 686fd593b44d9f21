/// Several bytes of text at once: loading, comparing, and looking for bytes of a kind.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace KvXmlLib16::internal {

template <typename Word>
Word Load(const char* from) noexcept {
    Word word;
    std::memcpy(&word, from, sizeof(word));
    return word;
}
template <typename Word>
void Store(char* to, Word word) noexcept {
    std::memcpy(to, &word, sizeof(word));
}

/// Eight bytes of text as a number, the first byte lowest.
inline std::uint64_t LoadEight(const char* text) noexcept {
    if constexpr (std::endian::native == std::endian::little) return Load<std::uint64_t>(text);
    std::uint64_t word = 0;
    for (int i = 7; i >= 0; --i)
        word = word << 8 | static_cast<unsigned char>(text[i]);
    return word;
}

/// One to eight bytes of text as a number, the first byte lowest. For little-endian hosts only.
inline std::uint64_t LoadUpToEight(const char* text, std::size_t count) noexcept {
    // Two loads that may overlap: what they share is the same in both.
    if (count >= 4) {
        const auto first = std::uint64_t{Load<std::uint32_t>(text)};
        const auto last = std::uint64_t{Load<std::uint32_t>(text + count - 4)};
        return first | last << (8 * (count - 4));
    }
    const auto byte = [text](std::size_t i) {
        return std::uint64_t{static_cast<unsigned char>(text[i])} << (8 * i);
    };
    return byte(0) | byte(count / 2) | byte(count - 1);
}

/// Compares up to 16 bytes without a call.
inline bool EqualShort(const char* a, const char* b, std::size_t length) noexcept {
    if (length > 16) return std::memcmp(a, b, length) == 0;
    if (length >= 8) return std::memcmp(a, b, 8) == 0 && std::memcmp(a + length - 8, b + length - 8, 8) == 0;
    if (length >= 4) return std::memcmp(a, b, 4) == 0 && std::memcmp(a + length - 4, b + length - 4, 4) == 0;
    return length == 0 || (a[0] == b[0] && a[length / 2] == b[length / 2] && a[length - 1] == b[length - 1]);
}

/// Compares eight bytes at a time, for texts that are equal more often than not.
inline bool EqualByWords(const char* a, const char* b, std::size_t length) noexcept {
    if (length < sizeof(std::uint64_t)) return std::memcmp(a, b, length) == 0;
    const std::size_t last = length - sizeof(std::uint64_t);
    for (std::size_t i = 0; i < last; i += sizeof(std::uint64_t)) {
        if (Load<std::uint64_t>(a + i) != Load<std::uint64_t>(b + i)) return false;
    }
    return Load<std::uint64_t>(a + last) == Load<std::uint64_t>(b + last);
}

// --- which bytes there are among eight ---------------------------------------------------------------------

inline constexpr std::uint64_t kOnes = 0x0101010101010101u;   ///< 1 in every byte; times n: n in every byte
inline constexpr std::uint64_t kHighs = 0x8080808080808080u;  ///< the high bit of every byte

// Each result has the high bits of bytes that are meant, and is 0 when there are none. Only the lowest mark
// is sure: a byte above one that is meant may be marked as well.

/// Bytes below `bound`, which is 0x80 at most.
constexpr std::uint64_t HasBelow(std::uint64_t word, std::uint8_t bound) noexcept {
    return (word - kOnes * bound) & ~word & kHighs;
}
constexpr std::uint64_t HasControl(std::uint64_t word) noexcept {
    return HasBelow(word, 0x20);
}
constexpr std::uint64_t HasByte(std::uint64_t word, std::uint8_t byte) noexcept {
    return HasBelow(word ^ (kOnes * byte), 1);
}
constexpr std::uint64_t HasNonAscii(std::uint64_t word) noexcept {
    return word & kHighs;
}

/// Bytes that are zero; every mark is sure.
constexpr std::uint64_t ZeroBytes(std::uint64_t word) noexcept {
    return ~(((word & ~kHighs) + ~kHighs) | word | ~kHighs);
}

}  // namespace KvXmlLib16::internal
