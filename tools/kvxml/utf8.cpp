#include "tools/kvxml/utf8.h"

namespace tool {

namespace {

bool IsContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

}  // namespace

Character FirstCharacter(std::string_view text) {
    if (text.empty()) return {0, 0, true};
    const auto lead = static_cast<unsigned char>(text[0]);
    if (lead < 0x80) return {lead, 1, true};
    const Character illFormed{lead, 1, false};
    const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (length == 0 || length > text.size()) return illFormed;
    char32_t code = lead & (0x7Fu >> length);
    for (const char byte : text.substr(1, length - 1)) {
        if (!IsContinuation(byte)) return illFormed;
        code = code << 6 | (static_cast<unsigned char>(byte) & 0x3Fu);
    }
    constexpr char32_t kSmallest[] = {0, 0, 0, 0x800, 0x10000};
    const bool isSurrogate = code >= 0xD800 && code < 0xE000;
    if (code < kSmallest[length] || code > 0x10FFFF || isSurrogate) return illFormed;
    return {code, length, true};
}

std::size_t CutLength(std::string_view text, std::size_t length) {
    if (length >= text.size()) return text.size();
    constexpr std::size_t kMostContinuations = 3;
    for (std::size_t back = 0; back <= kMostContinuations && back <= length; ++back) {
        if (!IsContinuation(text[length - back])) return length - back;
    }
    return length;  // no UTF-8
}

}  // namespace tool
