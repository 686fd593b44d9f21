/// Writing of text that mostly needs no escaping: copying what can stay as it is, replacing the rest.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "kvxml/base/internal/words.h"
#include "kvxml/xml/string_buffer.h"

namespace KvXmlLib16::internal {

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

/// Copies text and stops at or shortly before the first byte that may need escaping, a suspect. Returns how
/// many bytes were copied; up to `length` bytes at `target` may be overwritten in any case.
///
/// `Suspects::OfByte(char)` is non-zero for a suspect, `OfWord(std::uint64_t)` when one of eight bytes is
/// one, and `OfBytes` marks those among sixteen.
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

/// Text is escaped in pieces of this length, each of which needs contiguous room.
inline constexpr std::size_t kPieceLength = 1024;

/// Appends text of any length. `put(out, rest)` puts what stands for the suspect that `rest` begins with,
/// at most `longest` characters, and returns their end.
template <class Suspects, class Replacement>
void AppendEscapedInPieces(CStringBuffer& buffer, std::string_view text, std::size_t longest,
                           const Replacement& put) {
    while (!text.empty()) {
        const std::size_t length = std::min(text.size(), kPieceLength);
        char* out = buffer.Reserve(length);
        const std::size_t plain = CopyPlain<Suspects>(out, text.data(), length);
        buffer.Commit(out + plain);
        text.remove_prefix(plain);
        if (plain == length) continue;
        // A suspect is among the next ones, or they were too few to be copied at a glance.
        const std::size_t count = std::min<std::size_t>(text.size(), 8);
        out = buffer.Reserve(count * longest);
        for (std::size_t i = 0; i < count; ++i) {
            if (Suspects::OfByte(text[i]) == 0)
                *out++ = text[i];
            else
                out = put(out, text.substr(i));
        }
        buffer.Commit(out);
        text.remove_prefix(count);
    }
}

}  // namespace KvXmlLib16::internal
