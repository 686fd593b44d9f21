#include "kvxml/xml/internal/xml_name_check.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "kvxml/platform/internal/code_page.h"

namespace KvXmlLib16::internal {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

constexpr Range kStart[] = {{0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x2FF},    {0x370, 0x37D},
                            {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F}, {0x2C00, 0x2FEF},
                            {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF}};
constexpr Range kInside[] = {{0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}};

template <std::size_t kCount>
bool IsIn(const Range (&ranges)[kCount], char32_t code) noexcept {
    return std::any_of(std::begin(ranges), std::end(ranges),
                       [code](const Range& range) { return range.first <= code && code <= range.last; });
}

bool IsAsciiStart(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

/// Decodes a character of well-formed UTF-8 beyond ASCII.
char32_t Decode(std::string_view text, std::size_t& at) noexcept {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(at++);
    std::size_t following = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    char32_t code = lead & (0x3FU >> following);
    for (; following > 0; --following)
        code = code << 6 | (byte(at++) & 0x3FU);
    return code;
}

}  // namespace

bool IsXmlName(std::string_view text, bool allowColon) noexcept {
    if (text.empty()) return false;
    const bool isUtf8 = IsLocalUtf8();
    bool isChecked = false;  // that the text is well-formed UTF-8
    for (std::size_t at = 0; at < text.size();) {
        const char c = text[at];
        const bool isFirst = at == 0;
        if (static_cast<unsigned char>(c) < 0x80) {
            const bool isInside = (c >= '0' && c <= '9') || c == '-' || c == '.';
            if (!IsAsciiStart(c) && !(c == ':' && allowColon) && (isFirst || !isInside)) return false;
            ++at;
        } else if (!isUtf8) {
            ++at;
        } else {
            if (!isChecked && WellFormedUtf8Length(text) != text.size()) return false;
            isChecked = true;
            const char32_t code = Decode(text, at);
            if (!IsIn(kStart, code) && (isFirst || !IsIn(kInside, code))) return false;
        }
    }
    return true;
}

}  // namespace KvXmlLib16::internal
