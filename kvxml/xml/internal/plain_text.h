/// Short texts without calls: comparing, copying of what needs no escaping, appending to reserved room.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "kvxml/xml/string_buffer.h"

namespace KvXmlLib16::internal {

/// Compares up to 16 bytes without a call.
inline bool EqualShort(const char* a, const char* b, std::size_t length) noexcept {
    if (length > 16) return std::memcmp(a, b, length) == 0;
    if (length >= 8) return std::memcmp(a, b, 8) == 0 && std::memcmp(a + length - 8, b + length - 8, 8) == 0;
    if (length >= 4) return std::memcmp(a, b, 4) == 0 && std::memcmp(a + length - 4, b + length - 4, 4) == 0;
    return length == 0 || (a[0] == b[0] && a[length / 2] == b[length / 2] && a[length - 1] == b[length - 1]);
}

// --- looking at eight bytes at once ----------------------------------------------------------------------

inline constexpr std::uint64_t kOnes = 0x0101010101010101u;
inline constexpr std::uint64_t kHighs = 0x8080808080808080u;

constexpr std::uint64_t HasZeroByte(std::uint64_t word) noexcept {
    return (word - kOnes) & ~word & kHighs;
}
constexpr std::uint64_t HasByte(std::uint64_t word, std::uint8_t byte) noexcept {
    return HasZeroByte(word ^ (kOnes * byte));
}
/// Non-zero when a byte is below 0x20.
constexpr std::uint64_t HasControl(std::uint64_t word) noexcept {
    return (word - kOnes * 0x20) & ~word & kHighs;
}

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

// --- looking at sixteen ----------------------------------------------------------------------------------

#if defined(__GNUC__)
/// Sixteen bytes at once, and for each the result of a comparison: all bits or none.
using Bytes16 = unsigned char __attribute__((vector_size(16)));
using Flags16 = signed char __attribute__((vector_size(16)));

/// Copies sixteen bytes, which come from two places or one, unless one of them is a suspect.
template <class Suspects>
bool CopySixteen(char* target, char* targetEnd, const char* source, const char* sourceEnd) noexcept {
    Bytes16 bytes;
    std::memcpy(&bytes, source, 8);
    std::memcpy(reinterpret_cast<char*>(&bytes) + 8, sourceEnd - 8, 8);
    const Flags16 suspects = Suspects::OfBytes(bytes);
    std::uint64_t halves[2];
    std::memcpy(halves, &suspects, sizeof(halves));
    if ((halves[0] | halves[1]) != 0) return false;
    std::memcpy(target, &bytes, 8);
    std::memcpy(targetEnd - 8, reinterpret_cast<const char*>(&bytes) + 8, 8);
    return true;
}
#else
template <class Suspects>
bool CopySixteen(char* target, char* targetEnd, const char* source, const char* sourceEnd) noexcept {
    const auto first = Load<std::uint64_t>(source);
    const auto last = Load<std::uint64_t>(sourceEnd - 8);
    if ((Suspects::OfWord(first) | Suspects::OfWord(last)) != 0) return false;
    Store(target, first);
    Store(targetEnd - 8, last);
    return true;
}
#endif

/// As CopyPlain, for more than 16 bytes.
template <class Suspects>
std::size_t CopyPlainWords(char* target, const char* source, std::size_t length) noexcept {
    std::size_t done = 0;
    for (; done + 16 <= length; done += 16) {
        if (!CopySixteen<Suspects>(target + done, target + done + 16, source + done, source + done + 16))
            return done;
    }
    const std::size_t last = length - 16;
    const bool isPlain =
        CopySixteen<Suspects>(target + last, target + length, source + last, source + length);
    return isPlain ? length : done;
}

/// Copies `length` bytes, or as many as are found to need nothing but copying at a glance; returns how many
/// they were. `target` may be overwritten up to `length` in any case.
///
/// `Suspects::OfByte(char)` is non-zero for a byte that may need more than copying, `OfWord(std::uint64_t)`
/// when one of eight bytes does, and `OfBytes` tells which of sixteen do.
template <class Suspects>
inline std::size_t CopyPlain(char* target, const char* source, std::size_t length) noexcept {
    if (length > 16) return CopyPlainWords<Suspects>(target, source, length);
    if (length >= 8) {
        if (!CopySixteen<Suspects>(target, target + length, source, source + length)) return 0;
    } else if (length >= 4) {
        const auto first = Load<std::uint32_t>(source);
        const auto last = Load<std::uint32_t>(source + length - 4);
        if (Suspects::OfWord(std::uint64_t{first} << 32 | last) != 0) return 0;
        Store(target, first);
        Store(target + length - 4, last);
    } else if (length != 0) {
        const char first = source[0];
        const char middle = source[length / 2];
        const char last = source[length - 1];
        if ((Suspects::OfByte(first) | Suspects::OfByte(middle) | Suspects::OfByte(last)) != 0) return 0;
        target[0] = first;
        target[length / 2] = middle;
        target[length - 1] = last;
    }
    return length;
}

// --- appending to reserved room --------------------------------------------------------------------------

inline char* Put(char* out, std::string_view text) noexcept {
    CStringBuffer::CopyBytes(out, text.data(), text.size());
    return out + text.size();
}

}  // namespace KvXmlLib16::internal
