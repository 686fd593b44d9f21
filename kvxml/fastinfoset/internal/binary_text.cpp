#include "kvxml/fastinfoset/internal/binary_text.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <type_traits>

#include "kvxml/base/internal/words.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/types/base64.h"

namespace KvXmlLib16::internal {

namespace {

unsigned ByteAt(std::string_view octets, std::size_t at) noexcept {
    return static_cast<unsigned char>(octets[at]);
}

bool IsXmlCharacter(char32_t c) noexcept {
    if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
    return c != 0xFFFE && c != 0xFFFF;
}

void AppendUtf8(std::string& out, char32_t c) {
    const auto put = [&](char32_t byte) { out.push_back(static_cast<char>(byte)); };
    if (c < 0x80) {
        put(c);
        return;
    }
    if (c < 0x800) {
        put(0xC0 | c >> 6);
    } else {
        if (c < 0x10000) {
            put(0xE0 | c >> 12);
        } else {
            put(0xF0 | c >> 18);
            put(0x80 | (c >> 12 & 0x3F));
        }
        put(0x80 | (c >> 6 & 0x3F));
    }
    put(0x80 | (c & 0x3F));
}

/// The bits of a value, big-endian.
template <class Unsigned>
Unsigned Load(std::string_view octets, std::size_t at) noexcept {
    Unsigned value = 0;
    for (std::size_t i = 0; i < sizeof(Unsigned); ++i)
        value = static_cast<Unsigned>(std::uint64_t{value} << 8 | ByteAt(octets, at + i));
    return value;
}

template <class Value>
char* Write(char* out, char* end, Value value) noexcept {
    if constexpr (std::is_floating_point_v<Value>) {
        std::string_view word;
        if (std::isnan(value)) word = "NaN";
        if (std::isinf(value)) word = value < 0 ? "-INF" : "INF";
        if (!word.empty()) return out + word.copy(out, word.size());
    }
    return std::to_chars(out, end, value).ptr;
}

template <class Value, class Unsigned>
const char* DecodeNumbers(std::string_view octets, std::string& text) {
    static_assert(sizeof(Value) == sizeof(Unsigned));
    if (octets.size() % sizeof(Value) != 0) return "The octets do not make whole values";
    for (std::size_t at = 0; at < octets.size(); at += sizeof(Value)) {
        char buffer[40];
        const auto value = std::bit_cast<Value>(Load<Unsigned>(octets, at));
        if (at > 0) text += ' ';
        text.append(buffer, Write(buffer, buffer + sizeof buffer, value));
    }
    return nullptr;
}

const char* DecodeBooleans(std::string_view octets, std::string& text) {
    const std::size_t unused = ByteAt(octets, 0) >> 4;
    if (unused > 7 || (octets.size() == 1 && unused > 3)) return "The count of unused bits is too large";
    const std::size_t end = octets.size() * 8 - unused;
    const auto bit = [&](std::size_t i) { return (ByteAt(octets, i / 8) >> (7 - i % 8) & 1) != 0; };
    for (std::size_t i = end; i < octets.size() * 8; ++i) {
        if (bit(i)) return "Unused bits are set";
    }
    for (std::size_t i = 4; i < end; ++i) {
        if (i > 4) text += ' ';
        text += bit(i) ? "true" : "false";
    }
    return nullptr;
}

void AppendHex(std::string& text, std::string_view octets, const char* digits) {
    for (const char octet : octets) {
        text += digits[static_cast<unsigned char>(octet) >> 4];
        text += digits[static_cast<unsigned char>(octet) & 0x0F];
    }
}

const char* DecodeUuids(std::string_view octets, std::string& text) {
    if (octets.size() % 16 != 0) return "The octets do not make whole values";
    for (std::size_t at = 0; at < octets.size(); at += 16) {
        if (at > 0) text += ' ';
        std::size_t from = at;
        for (const std::size_t length : {4U, 2U, 2U, 2U, 6U}) {
            if (from > at) text += '-';
            AppendHex(text, octets.substr(from, length), "0123456789abcdef");
            from += length;
        }
    }
    return nullptr;
}

}  // namespace

bool IsXmlText(std::string_view text, bool& hasReturns) noexcept {
    const char* at = text.data();
    const char* const end = at + text.size();
    bool isAscii = true;
    while (at != end) {
        const char* blockEnd = end;
        if (end - at >= 8) {
            const auto word = Load<std::uint64_t>(at);
            blockEnd = at + 8;
            if ((HasControl(word) | HasNonAscii(word)) == 0) {
                at = blockEnd;
                continue;
            }
        }
        for (; at != blockEnd; ++at) {
            const auto c = static_cast<unsigned char>(*at);
            if (c >= 0x80) {
                isAscii = false;
            } else if (c < 0x20) {
                if (!IsXmlCharacter(c)) return false;
                if (c == '\r') hasReturns = true;
            }
        }
    }
    if (isAscii) return true;
    return WellFormedUtf8Length(text) == text.size() && text.find("\xEF\xBF\xBE") == std::string_view::npos &&
           text.find("\xEF\xBF\xBF") == std::string_view::npos;
}

CRestrictedAlphabet::CRestrictedAlphabet(std::string_view characters) : m_characters(characters) {
    for (std::size_t i = 0; i < characters.size(); ++i) {
        if ((ByteAt(characters, i) & 0xC0) != 0x80) m_offsets.push_back(static_cast<std::uint32_t>(i));
    }
    while (std::size_t{1} << m_bits <= m_offsets.size())
        ++m_bits;
    m_offsets.push_back(static_cast<std::uint32_t>(characters.size()));
}

const char* CRestrictedAlphabet::Decode(std::string_view octets, std::string& text) const {
    constexpr const char* kPadding = "Text in a restricted alphabet is not filled up with ones";
    text.clear();
    const std::uint64_t ones = (std::uint64_t{1} << m_bits) - 1;
    std::uint64_t window = 0;  // its low `held` bits are not used yet
    unsigned held = 0;
    for (std::size_t at = 0; at < octets.size(); ++at) {
        window = window << 8 | ByteAt(octets, at);
        held += 8;
        while (held >= m_bits) {
            const std::uint64_t value = window >> (held - m_bits) & ones;
            if (value == ones) {
                // Only what is left of the last octet may be padding.
                const std::uint64_t rest = (std::uint64_t{1} << held) - 1;
                if (at + 1 < octets.size() || held >= 8 || (window & rest) != rest) return kPadding;
                held = 0;
                break;
            }
            if (value + 1 >= m_offsets.size()) return "A character is beyond its restricted alphabet";
            const std::size_t offset = m_offsets[static_cast<std::size_t>(value)];
            text.append(m_characters, offset, m_offsets[static_cast<std::size_t>(value) + 1] - offset);
            held -= m_bits;
        }
        window &= (std::uint64_t{1} << held) - 1;
    }
    if (held != 0 && (held >= 8 || window != (std::uint64_t{1} << held) - 1)) return kPadding;
    return text.empty() ? "There is no character in a text" : nullptr;
}

const char* DecodeUtf16(std::string_view octets, std::string& text) {
    text.clear();
    if (octets.size() % 2 != 0) return "UTF-16 text has an odd number of octets";
    for (std::size_t at = 0; at < octets.size(); at += 2) {
        char32_t c = Load<std::uint16_t>(octets, at);
        if (c >= 0xD800 && c < 0xE000) {
            at += 2;
            const char32_t low = at < octets.size() ? Load<std::uint16_t>(octets, at) : 0;
            if (c >= 0xDC00 || low < 0xDC00 || low >= 0xE000) return "UTF-16 text has an unpaired surrogate";
            c = 0x10000 + ((c & 0x3FF) << 10 | (low & 0x3FF));
        }
        if (!IsXmlCharacter(c)) return "A character is not allowed";
        AppendUtf8(text, c);
    }
    return nullptr;
}

const char* DecodeAlgorithm(EncodingAlgorithm algorithm, std::string_view octets, std::string& text) {
    text.clear();
    switch (algorithm) {
        case EncodingAlgorithm::Hexadecimal:
            AppendHex(text, octets, "0123456789ABCDEF");
            return nullptr;
        case EncodingAlgorithm::Base64:
            text.resize(CBase64::EncodedLength(octets.size()));
            CBase64(octets).Encode(text.data());
            return nullptr;
        case EncodingAlgorithm::Short:
            return DecodeNumbers<std::int16_t, std::uint16_t>(octets, text);
        case EncodingAlgorithm::Int:
            return DecodeNumbers<std::int32_t, std::uint32_t>(octets, text);
        case EncodingAlgorithm::Long:
            return DecodeNumbers<std::int64_t, std::uint64_t>(octets, text);
        case EncodingAlgorithm::Boolean:
            return DecodeBooleans(octets, text);
        case EncodingAlgorithm::Float:
            return DecodeNumbers<float, std::uint32_t>(octets, text);
        case EncodingAlgorithm::Double:
            return DecodeNumbers<double, std::uint64_t>(octets, text);
        case EncodingAlgorithm::Uuid:
            return DecodeUuids(octets, text);
        default:
            return "Unknown encoding algorithm";
    }
}

}  // namespace KvXmlLib16::internal
