/// Lexical forms and values of the primitive types (XML Schema Part 2, 3.2), strictly and without allocation:
/// what is variable in length stays a view into the text that was read.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kvxml/schema/model/type_definition.h"

namespace KvXmlLib16::internal {

/// Of values that are only partly ordered.
enum class Order : std::uint8_t { Less, Equal, Greater, Unordered };

/// A decimal number: digits without zeros that mean nothing. Zero has neither, and no sign.
struct CDecimalView {
    bool isNegative = false;
    std::string_view whole;
    std::string_view fraction;
};
bool ParseDecimal(std::string_view text, CDecimalView& value) noexcept;
/// No point, though zeros after it would mean nothing.
bool ParseInteger(std::string_view text, CDecimalView& value) noexcept;
Order Compare(const CDecimalView& a, const CDecimalView& b) noexcept;

bool ParseBoolean(std::string_view text, bool& value) noexcept;

/// Rounds as IEEE 754 has it; what is too large becomes INF. `isFloat`: to 32 bits. `value` may be null.
bool ParseDouble(std::string_view text, bool isFloat, double* value) noexcept;
/// NaN is equal to itself and not ordered otherwise.
Order CompareDoubles(double a, double b) noexcept;

/// A point or period of time: what the type does not have is filled as 3.2.7.3 fills it for comparing.
struct CTimeView {
    std::int64_t days = 0;      ///< since 1970-01-01, after the zone was taken into account
    std::int32_t second = 0;    ///< of the day
    std::string_view fraction;  ///< digits of the second's fraction, zeros at the end left out
    bool hasZone = false;
};
/// `type` is DateTime, Time, Date or one of the g-kinds. Years beyond 16 digits are taken as the last of 16
/// digits.
bool ParseTime(BuiltInType type, std::string_view text, CTimeView& value) noexcept;
Order Compare(const CTimeView& a, const CTimeView& b) noexcept;

struct CDurationView {
    bool isNegative = false;
    std::int64_t months = 0;
    std::int64_t seconds = 0;
    std::string_view fraction;  ///< as in CTimeView
};
/// Numbers beyond 15 digits are taken as the last of 15 digits.
bool ParseDuration(std::string_view text, CDurationView& value) noexcept;
/// By the four points in time of 3.2.6.2.
Order Compare(const CDurationView& a, const CDurationView& b) noexcept;

/// Number of octets; false when the text is no such form.
bool ParseHexBinary(std::string_view text, std::size_t& octets) noexcept;
bool ParseBase64(std::string_view text, std::size_t& octets) noexcept;

/// A reference that RFC 2396 (with RFC 2732) allows after the escaping of XLink 1.0, 5.4.
bool IsAnyUri(std::string_view text) noexcept;
bool IsLanguage(std::string_view text) noexcept;
/// One or more name characters of XML 1.0.
bool IsNmtoken(std::string_view text) noexcept;

/// Characters (code points) of UTF-8 text.
std::size_t CountCharacters(std::string_view utf8) noexcept;

/// `replace` and `collapse` (4.3.6). The view is `text` itself, or a part of it, when nothing inside must
/// change; else of `buffer`.
std::string_view TreatWhiteSpace(std::string_view text, WhiteSpace rule, std::string& buffer);

}  // namespace KvXmlLib16::internal
