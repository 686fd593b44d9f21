#include "kvxml/types/whitespace_utils.h"

#include <cstdint>
#include <cstring>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/words.h"
#include "kvxml/types/internal/whitespace.h"

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
    return internal::ApplyRule(rule, text, scratch);
}

std::string_view internal::ApplyRuleSlowly(CWhitespaceUtils::WhitespaceRule rule, std::string_view text,
                                           std::string& scratch) {
    switch (rule) {
        case CWhitespaceUtils::WhitespaceRule_None:
            return text;
        case CWhitespaceUtils::WhitespaceRule_Preserve:
            if (text.empty() || std::memchr(text.data(), '\r', text.size()) == nullptr) return text;
            scratch.clear();
            NormalizeLineEnds(text, scratch);
            return scratch;
        case CWhitespaceUtils::WhitespaceRule_Replace:
            for (std::size_t i = 0; i < text.size(); ++i) {
                if (text[i] <= '\r' && text[i] != ' ' && CWhitespaceUtils::IsWhiteSpace(text[i])) {
                    scratch.clear();
                    ReplaceFrom(i, text, scratch);
                    return scratch;
                }
            }
            return text;
        case CWhitespaceUtils::WhitespaceRule_Collapse: {
            while (!text.empty() && CWhitespaceUtils::IsWhiteSpace(text.front()))
                text.remove_prefix(1);
            while (!text.empty() && CWhitespaceUtils::IsWhiteSpace(text.back()))
                text.remove_suffix(1);
            for (std::size_t i = CollapsedLength(text); i < text.size(); ++i) {
                const char c = text[i];
                if (c > ' ' || !CWhitespaceUtils::IsWhiteSpace(c)) continue;
                // The last character is no whitespace, so there is a next one.
                if (c != ' ' || CWhitespaceUtils::IsWhiteSpace(text[i + 1])) {
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
