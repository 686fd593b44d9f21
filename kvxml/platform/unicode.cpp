// UTF-8, UTF-16 and wchar_t text; needs nothing of the host.
#include <cstdint>

#include "kvxml/base/internal/words.h"
#include "kvxml/platform/internal/code_page.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::string_view kReplacementUtf8 = "\xEF\xBF\xBD";
constexpr std::uint32_t kReplacement = 0xFFFD;

/// The first byte that is not ASCII, or `end`.
const char* SkipAscii(const char* text, const char* end) noexcept {
    const auto eight = [&text](std::size_t at) { return Load<std::uint64_t>(text + at); };
    while (end - text >= 32 && HasNonAscii(eight(0) | eight(8) | eight(16) | eight(24)) == 0)
        text += 32;
    while (end - text >= 8 && HasNonAscii(eight(0)) == 0)
        text += 8;
    while (text != end && static_cast<unsigned char>(*text) < 0x80)
        ++text;
    return text;
}

bool IsTrail(unsigned char byte, unsigned char low = 0x80, unsigned char high = 0xBF) noexcept {
    return byte >= low && byte <= high;
}

struct Sequence {
    std::size_t length;  // bytes, at least 1
    bool isCharacter;    // false: the longest beginning of a character, or a byte that never begins one
};

// The sequence that begins with the non-ASCII byte at `text`, by the table of well-formed byte sequences of
// the Unicode Standard (3.9).
Sequence NextSequence(const char* text, const char* end) noexcept {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const auto left = static_cast<std::size_t>(end - text);
    const unsigned char lead = byte(0);
    if (lead < 0xC2 || lead > 0xF4) return {1, false};
    if (lead < 0xE0) {
        if (left < 2 || !IsTrail(byte(1))) return {1, false};
        return {2, true};
    }
    const bool isThree = lead < 0xF0;
    const unsigned char low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned char high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (left < 2 || !IsTrail(byte(1), low, high)) return {1, false};
    if (left < 3 || !IsTrail(byte(2))) return {2, false};
    if (isThree) return {3, true};
    if (left < 4 || !IsTrail(byte(3))) return {3, false};
    return {4, true};
}

// Takes one character off the front of `text`; U+FFFD for an ill-formed sequence.
std::uint32_t TakeCharacter(const char*& text, const char* end) noexcept {
    const unsigned char lead = static_cast<unsigned char>(*text);
    if (lead < 0x80) {
        ++text;
        return lead;
    }
    const Sequence sequence = NextSequence(text, end);
    std::uint32_t character = kReplacement;
    if (sequence.isCharacter) {
        character = lead & (0xFFU >> (sequence.length + 1));
        for (std::size_t i = 1; i < sequence.length; ++i)
            character = (character << 6) | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    text += sequence.length;
    return character;
}

void AppendUtf8(std::string& utf8, std::uint32_t character) {
    const auto put = [&](std::uint32_t byte) { utf8.push_back(static_cast<char>(byte)); };
    if (character < 0x80) {
        put(character);
    } else if (character < 0x800) {
        put(0xC0 | (character >> 6));
        put(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        put(0xE0 | (character >> 12));
        put(0x80 | ((character >> 6) & 0x3F));
        put(0x80 | (character & 0x3F));
    } else {
        put(0xF0 | (character >> 18));
        put(0x80 | ((character >> 12) & 0x3F));
        put(0x80 | ((character >> 6) & 0x3F));
        put(0x80 | (character & 0x3F));
    }
}

}  // namespace

bool IsAllAscii(std::string_view text) noexcept {
    const char* const end = text.data() + text.size();
    return SkipAscii(text.data(), end) == end;
}

std::size_t WellFormedUtf8Length(std::string_view text) noexcept {
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const char* position = begin;
    for (;;) {
        position = SkipAscii(position, end);
        // Text in other scripts rarely alternates with long ASCII runs: stay here until it does.
        do {
            if (position == end) return text.size();
            const Sequence sequence = NextSequence(position, end);
            if (!sequence.isCharacter) return static_cast<std::size_t>(position - begin);
            position += sequence.length;
        } while (position == end || static_cast<unsigned char>(*position) >= 0x80);
    }
}

std::string RepairUtf8(std::string_view utf8) {
    std::size_t length = WellFormedUtf8Length(utf8);
    if (length == utf8.size()) return std::string(utf8);
    std::string result;
    result.reserve(utf8.size() + kReplacementUtf8.size());
    for (;;) {
        result.append(utf8.substr(0, length));
        utf8.remove_prefix(length);
        if (utf8.empty()) return result;
        result.append(kReplacementUtf8);
        utf8.remove_prefix(NextSequence(utf8.data(), utf8.data() + utf8.size()).length);
        length = WellFormedUtf8Length(utf8);
    }
}

std::string WideToUtf8(std::wstring_view wide) {
    std::string result;
    result.reserve(wide.size());
    for (std::size_t i = 0; i < wide.size(); ++i) {
        auto character = static_cast<std::uint32_t>(wide[i]);
        if constexpr (sizeof(wchar_t) == 2) {
            character &= 0xFFFF;
            if (character >= 0xD800 && character <= 0xDBFF && i + 1 < wide.size()) {
                const std::uint32_t low = static_cast<std::uint32_t>(wide[i + 1]) & 0xFFFF;
                if (low >= 0xDC00 && low <= 0xDFFF) {
                    character = 0x10000 + ((character - 0xD800) << 10) + (low - 0xDC00);
                    ++i;
                }
            }
        }
        const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
        AppendUtf8(result, isSurrogate || character > 0x10FFFF ? kReplacement : character);
    }
    return result;
}

std::wstring Utf8ToWide(std::string_view utf8) {
    std::wstring result;
    result.reserve(utf8.size());
    const char* text = utf8.data();
    const char* const end = text + utf8.size();
    while (text != end) {
        const std::uint32_t character = TakeCharacter(text, end);
        if (sizeof(wchar_t) == 2 && character > 0xFFFF) {
            result.push_back(static_cast<wchar_t>(0xD7C0 + (character >> 10)));
            result.push_back(static_cast<wchar_t>(0xDC00 + (character & 0x3FF)));
        } else {
            result.push_back(static_cast<wchar_t>(character));
        }
    }
    return result;
}

std::string Utf8ToUtf16Le(std::string_view utf8) {
    // No sequence gives more than two bytes for each of its own.
    std::string result(utf8.size() * 2, '\0');
    char* out = result.data();
    const auto put = [&](std::uint32_t unit) {
        *out++ = static_cast<char>(unit & 0xFF);
        *out++ = static_cast<char>(unit >> 8);
    };
    const char* text = utf8.data();
    const char* const end = text + utf8.size();
    while (text != end) {
        for (const char* const ascii = SkipAscii(text, end); text != ascii; ++text) {
            *out++ = *text;
            *out++ = '\0';
        }
        while (text != end && static_cast<unsigned char>(*text) >= 0x80) {
            const std::uint32_t character = TakeCharacter(text, end);
            if (character > 0xFFFF) {
                put(0xD7C0 + (character >> 10));
                put(0xDC00 + (character & 0x3FF));
            } else {
                put(character);
            }
        }
    }
    result.resize(static_cast<std::size_t>(out - result.data()));
    return result;
}

}  // namespace KvXmlLib16::internal
