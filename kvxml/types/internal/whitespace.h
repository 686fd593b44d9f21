/// The whitespace rules without a call for values that they leave alone, as most.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "kvxml/base/internal/words.h"
#include "kvxml/types/whitespace_utils.h"

namespace KvXmlLib16::internal {

/// Whether all bytes are above `last`. May be false where they are: quick and not exact.
inline bool IsAbove(unsigned char last, std::string_view text) noexcept {
    const auto bound = static_cast<std::uint8_t>(last + 1);
    const char* const data = text.data();
    const std::size_t size = text.size();
    if (size >= 8) {
        for (std::size_t i = 0; i + 8 <= size; i += 8) {
            if (HasBelow(Load<std::uint64_t>(data + i), bound) != 0) return false;
        }
        return HasBelow(Load<std::uint64_t>(data + size - 8), bound) == 0;
    }
    if (size >= 4) {
        const auto first = std::uint64_t{Load<std::uint32_t>(data)};
        const auto second = std::uint64_t{Load<std::uint32_t>(data + size - 4)};
        return HasBelow(first << 32 | second, bound) == 0;
    }
    for (const char c : text) {
        if (static_cast<unsigned char>(c) <= last) return false;
    }
    return true;
}

/// CWhitespaceUtils::ApplyRuleView without the glance that spares the work.
std::string_view ApplyRuleSlowly(CWhitespaceUtils::WhitespaceRule rule, std::string_view text,
                                 std::string& scratch);

/// CWhitespaceUtils::ApplyRuleView.
inline std::string_view ApplyRule(CWhitespaceUtils::WhitespaceRule rule, std::string_view text,
                                  std::string& scratch) {
    const bool isRule = static_cast<std::uint32_t>(rule) <= CWhitespaceUtils::WhitespaceRule_Collapse;
    // Up to which character the rule may have something to change.
    const unsigned char last = rule == CWhitespaceUtils::WhitespaceRule_Preserve ? '\r' : ' ';
    if (rule == CWhitespaceUtils::WhitespaceRule_None || (isRule && IsAbove(last, text))) return text;
    return ApplyRuleSlowly(rule, text, scratch);
}

}  // namespace KvXmlLib16::internal
