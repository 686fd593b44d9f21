/// What text writers share: copying of text that needs no escaping, and appending to reserved room.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "kvxml/xml/string_buffer.h"

namespace KvXmlLib16::internal {

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

/// As CopyPlain, for 8 bytes and more.
template <class Suspects>
std::size_t CopyPlainWords(char* target, const char* source, std::size_t length) noexcept {
    std::size_t done = 0;
    for (; done + 8 <= length; done += 8) {
        const auto word = Load<std::uint64_t>(source + done);
        if (Suspects::OfWord(word) != 0) return done;
        Store(target + done, word);
    }
    const auto last = Load<std::uint64_t>(source + length - 8);
    if (Suspects::OfWord(last) != 0) return done;
    Store(target + length - 8, last);
    return length;
}

/// Copies `length` bytes, or as many as are found to need nothing but copying at a glance; returns how many
/// they were. `target` may be overwritten up to `length` in any case.
///
/// `Suspects::OfByte(char)` is non-zero for a byte that may need more than copying, `OfWord(std::uint64_t)`
/// when one of eight bytes does.
template <class Suspects>
inline std::size_t CopyPlain(char* target, const char* source, std::size_t length) noexcept {
    if (length > 16) return CopyPlainWords<Suspects>(target, source, length);
    if (length >= 8) {
        const auto first = Load<std::uint64_t>(source);
        const auto last = Load<std::uint64_t>(source + length - 8);
        if ((Suspects::OfWord(first) | Suspects::OfWord(last)) != 0) return 0;
        Store(target, first);
        Store(target + length - 8, last);
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
