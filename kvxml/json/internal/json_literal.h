/// Which values JSON writes without quotation marks.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kvxml/base/internal/ascii.h"
#include "kvxml/base/internal/words.h"
#include "kvxml/types/item_type.h"

namespace KvXmlLib16::internal {

/// Kinds whose values are numbers or truth values, which need no quotation marks.
constexpr bool IsBare(ItemType type) noexcept {
    constexpr auto kinds = [](ItemType first, ItemType last) {
        return (std::uint64_t{2} << last) - (std::uint64_t{1} << first);
    };
    constexpr std::uint64_t kBare =
        kinds(ItemType_i1, ItemType_r8) | kinds(ItemType_boolean, ItemType_integer);
    return (kBare >> type & 1) != 0;
}

/// Whether one to eight characters, which are in the low bytes of `text`, are a number without an exponent.
constexpr bool IsShortNumber(std::uint64_t text, std::size_t length) noexcept {
    const std::uint64_t rest = length == 8 ? 0 : ~std::uint64_t{0} << 8 * length;
    // High bits of the bytes that are a point, or another character that is no digit.
    const std::uint64_t points = HasByte(text | rest, '.');
    const std::uint64_t digits = text ^ kOnes * '0';
    const std::uint64_t others = ((digits + kOnes * 0x76) | digits) & kHighs & ~rest;
    const std::uint64_t ends = std::uint64_t{0x80} | std::uint64_t{0x80} << 8 * (length - 1);
    const bool startsWithZero = (digits & 0xFF) == 0 && length > 1 && (points & 0x8000) == 0;
    return others == points && (others & ends) == 0 && (others & (others - 1)) == 0 && !startsWithZero;
}

/// Whether `text` is a number as RFC 8259 has it, "true" or "false".
inline bool IsLiteral(std::string_view text) noexcept {
    const char* at = text.data();
    const char* const end = at + text.size();
    if constexpr (std::endian::native == std::endian::little) {
        if (!text.empty() && text.size() <= 8 &&
            IsShortNumber(LoadUpToEight(text.data(), text.size()), text.size()))
            return true;
    }
    const auto digits = [&at, end] {
        const char* const begin = at;
        while (at != end && IsDigit(*at))
            ++at;
        return at != begin;
    };
    if (at != end && *at == '-') ++at;
    if (at != end && *at == '0')
        ++at;
    else if (!digits())
        return text == "true" || text == "false";
    if (at != end && *at == '.') {
        ++at;
        if (!digits()) return false;
    }
    if (at != end && (*at == 'e' || *at == 'E')) {
        ++at;
        if (at != end && (*at == '+' || *at == '-')) ++at;
        if (!digits()) return false;
    }
    return at == end;
}

/// The same for the text that the library makes of a number or truth value: all but "NaN", "INF" and "-INF".
constexpr bool IsCanonicalLiteral(std::string_view text) noexcept {
    return !text.empty() && (IsDigit(text.back()) || text.back() == 'e');
}

}  // namespace KvXmlLib16::internal
