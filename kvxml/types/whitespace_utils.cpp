#include "kvxml/types/whitespace_utils.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/words.h"

namespace KvXmlLib16 {

namespace {

// The workers write to `out`, which is empty; they run only when the text has something to change.

void NormalizeLineEnds(std::string_view text, std::string& out) {
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\0') return;
        if (text[i] == '\r') {
            out += '\n';
            if (i + 1 < text.size() && text[i + 1] == '\n') ++i;
        } else {
            out += text[i];
        }
    }
}

void ReplaceFrom(std::size_t first, std::string_view text, std::string& out) {
    out.reserve(text.size());
    out.assign(text, 0, first);
    for (std::size_t i = first; i < text.size(); ++i) {
        const char c = text[i];
        out += CWhitespaceUtils::IsWhiteSpace(c) ? ' ' : c;
        if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
    }
}

void CollapseFrom(std::size_t first, std::string_view text, std::string& out) {
    out.resize(text.size());
    char* const begin = out.data();
    std::memcpy(begin, text.data(), first);
    char* end = begin + first;
    bool afterSpace = false;
    for (const char c : text.substr(first)) {
        const bool isSpace = CWhitespaceUtils::IsWhiteSpace(c);
        *end = isSpace ? ' ' : c;
        end += !(isSpace && afterSpace);
        afterSpace = isSpace;
    }
    out.resize(static_cast<std::size_t>(end - begin));
}

// Length of a part in front in which Collapse changes nothing, found eight bytes at a time: control
// characters and spaces in a row end it.
std::size_t CollapsedLength(std::string_view text) noexcept {
    std::size_t length = 0;
    // One byte is looked at twice, so that no pair of spaces is missed.
    for (; length + sizeof(std::uint64_t) <= text.size(); length += sizeof(std::uint64_t) - 1) {
        const auto word = internal::Load<std::uint64_t>(text.data() + length);
        const std::uint64_t spaces = internal::ZeroBytes(word ^ internal::kOnes * ' ');
        const std::uint64_t controls = internal::ZeroBytes(word & internal::kOnes * 0xe0);
        if ((controls | (spaces & (spaces >> 8))) != 0) break;
    }
    return length;
}

// Whether all bytes are above `last`, up to which a rule may have something to change; false where that does
// not show at a glance.
bool IsAbove(unsigned char last, std::string_view text) noexcept {
    const auto bound = static_cast<std::uint8_t>(last + 1);
    const char* const data = text.data();
    const std::size_t size = text.size();
    if (size >= 8) {
        for (std::size_t i = 0; i + 8 <= size; i += 8) {
            if (internal::HasBelow(internal::Load<std::uint64_t>(data + i), bound) != 0) return false;
        }
        return internal::HasBelow(internal::Load<std::uint64_t>(data + size - 8), bound) == 0;
    }
    if (size >= 4) {
        const auto first = std::uint64_t{internal::Load<std::uint32_t>(data)};
        const auto second = std::uint64_t{internal::Load<std::uint32_t>(data + size - 4)};
        return internal::HasBelow(first << 32 | second, bound) == 0;
    }
    return std::all_of(text.begin(), text.end(),
                       [last](char c) { return static_cast<unsigned char>(c) > last; });
}

}  // namespace

std::string CWhitespaceUtils::Preserve(const char* text, int length) {
    std::string result;
    if (text != nullptr && length > 0) NormalizeLineEnds({text, static_cast<std::size_t>(length)}, result);
    return result;
}

std::string CWhitespaceUtils::Preserve(std::string_view text) {
    return ApplyRule(WhitespaceRule_Preserve, text);
}

std::string CWhitespaceUtils::Replace(std::string_view text) {
    return ApplyRule(WhitespaceRule_Replace, text);
}

std::string CWhitespaceUtils::Collapse(std::string_view text) {
    return ApplyRule(WhitespaceRule_Collapse, text);
}

std::string CWhitespaceUtils::ApplyRule(WhitespaceRule rule, std::string_view text) {
    std::string scratch;
    const std::string_view result = ApplyRuleView(rule, text, scratch);
    if (result.data() == scratch.data()) return scratch;
    return std::string(result);
}

std::string_view CWhitespaceUtils::ApplyRuleView(WhitespaceRule rule, std::string_view text,
                                                 std::string& scratch) {
    // Most values need no change, which shows at a glance.
    const bool isRule = static_cast<std::uint32_t>(rule) <= WhitespaceRule_Collapse;
    const unsigned char last = rule == WhitespaceRule_Preserve ? '\r' : ' ';
    if (isRule && IsAbove(last, text)) return text;
    switch (rule) {
        case WhitespaceRule_None:
            return text;
        case WhitespaceRule_Preserve:
            if (text.empty() || std::memchr(text.data(), '\r', text.size()) == nullptr) return text;
            scratch.clear();
            NormalizeLineEnds(text, scratch);
            return scratch;
        case WhitespaceRule_Replace:
            for (std::size_t i = 0; i < text.size(); ++i) {
                if (text[i] <= '\r' && text[i] != ' ' && IsWhiteSpace(text[i])) {
                    scratch.clear();
                    ReplaceFrom(i, text, scratch);
                    return scratch;
                }
            }
            return text;
        case WhitespaceRule_Collapse: {
            while (!text.empty() && IsWhiteSpace(text.front()))
                text.remove_prefix(1);
            while (!text.empty() && IsWhiteSpace(text.back()))
                text.remove_suffix(1);
            for (std::size_t i = CollapsedLength(text); i < text.size(); ++i) {
                const char c = text[i];
                if (c > ' ' || !IsWhiteSpace(c)) continue;
                // The last character is no whitespace, so there is a next one.
                if (c != ' ' || IsWhiteSpace(text[i + 1])) {
                    scratch.clear();
                    CollapseFrom(i, text, scratch);
                    return scratch;
                }
            }
            return text;
        }
    }
    throw CKvException("Unknown WhitespaceRule");
}

}  // namespace KvXmlLib16
