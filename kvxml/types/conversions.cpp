#include "kvxml/types/conversions.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <system_error>
#include <type_traits>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/ascii.h"
#include "kvxml/platform/internal/c_locale.h"
#include "kvxml/types/base64.h"
#include "kvxml/types/format_string.h"
#include "kvxml/types/internal/digits.h"
#include "kvxml/types/internal/format_override.h"
#include "kvxml/types/internal/real_text.h"
#include "kvxml/types/internal/whitespace.h"

namespace KvXmlLib16 {

namespace {

using WhitespaceRule = CWhitespaceUtils::WhitespaceRule;

// --- integers ---------------------------------------------------------------------------------------------

[[noreturn]] void ThrowNotConvertible(std::string_view text, const char* kind) {
    throw CKvInvalidValueException(
        FormatString("The value [%s] can not be converted to a %s", std::string(text).c_str(), kind));
}

[[noreturn]] void ThrowTooLarge(std::string_view text, const char* kind) {
    throw CKvInvalidValueException(
        FormatString("The value [%s] is to large to fit in a %s", std::string(text).c_str(), kind));
}

// What isspace() accepts in the "C" locale.
constexpr bool IsCSpace(char c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

constexpr bool IsRule(WhitespaceRule rule) noexcept {
    return static_cast<std::uint32_t>(rule) <= CWhitespaceUtils::WhitespaceRule_Collapse;
}

// Reads as strtol and strtoul do in base 10, except that the whole text must be used.
template <class T>
[[gnu::noinline]] T ParseAnyInteger(std::string_view text, WhitespaceRule rule, const char* kind) {
    using Unsigned = std::make_unsigned_t<T>;
    std::string scratch;
    text = internal::ApplyRule(rule, text, scratch);
    const char* p = text.data();
    const char* const end = p + text.size();
    while (p != end && IsCSpace(*p))
        ++p;
    const bool negative = p != end && *p == '-';
    if (p != end && (*p == '-' || *p == '+')) ++p;
    Unsigned magnitude = 0;
    const auto result = std::from_chars(p, end, magnitude);
    if (result.ptr == p) ThrowNotConvertible(text, kind);
    // A range error comes before the complaint about what follows the digits.
    bool inRange = result.ec == std::errc();
    if constexpr (std::is_signed_v<T>) {
        inRange = inRange &&
                  magnitude <= static_cast<Unsigned>(std::numeric_limits<T>::max()) + (negative ? 1U : 0U);
    }
    if (!inRange) ThrowTooLarge(text, kind);
    if (result.ptr != end) ThrowNotConvertible(text, kind);
    return static_cast<T>(negative ? Unsigned{0} - magnitude : magnitude);
}

// A sign and digits that cannot overflow are all that most texts hold, and no rule changes them.
template <class T>
T ParseInteger(std::string_view text, WhitespaceRule rule, const char* kind) {
    constexpr std::size_t kSafeDigits = std::numeric_limits<std::make_signed_t<T>>::digits10;
    static_assert(kSafeDigits <= internal::kMaxReadDigits);
    const bool negative = !text.empty() && text.front() == '-';
    const std::size_t count = text.size() - (negative ? 1 : 0);
    std::uint64_t magnitude = 0;
    if (count - 1 < kSafeDigits && IsRule(rule) &&
        internal::ReadDigits(text.data() + (negative ? 1 : 0), count, magnitude)) {
        return static_cast<T>(negative ? 0 - magnitude : magnitude);
    }
    return ParseAnyInteger<T>(text, rule, kind);
}

// The narrow kinds are read as 32 bits, with the messages of those, and then checked against their own range.
template <class Narrow, class Wide>
Narrow ParseNarrow(std::string_view text, WhitespaceRule rule, const char* kind, const char* wideKind) {
    const Wide value = ParseInteger<Wide>(text, rule, wideKind);
    if (value < std::numeric_limits<Narrow>::min() || value > std::numeric_limits<Narrow>::max()) {
        ThrowTooLarge(text, kind);
    }
    return static_cast<Narrow>(value);
}

template <class T>
void AppendNumber(std::string& out, T value) {
    char buffer[24];
    out.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
}

// --- floating point ---------------------------------------------------------------------------------------

// strtod on the whole text; false when it does not end where the text does.
bool ParseWithStrtod(std::string_view text, double& value) {
    const std::string terminated(text);
    const internal::CScopedCLocale locale;
    char* stop = nullptr;
    value = std::strtod(terminated.c_str(), &stop);
    return stop == terminated.c_str() + terminated.size();
}

// As strtod, without its need for a terminator and its dependence on the locale.
bool ParseDouble(std::string_view text, double& value) {
    const char* p = text.data();
    const char* const end = p + text.size();
    const bool negative = *p == '-';
    if (*p == '-' || *p == '+') ++p;
    // Blanks, words, hexadecimal and values out of range are left to strtod itself.
    const bool plain =
        p != end && ((*p >= '0' && *p <= '9') || *p == '.') && !(end - p > 1 && (p[1] | 0x20) == 'x');
    if (plain) {
        const auto result = std::from_chars(p, end, value);
        if (result.ec == std::errc()) {
            if (negative) value = -value;
            return result.ptr == end;
        }
    }
    return ParseWithStrtod(text, value);
}

[[gnu::noinline]] double ParseAnyReal(std::string_view text, WhitespaceRule rule, const char* kind) {
    std::string scratch;
    text = internal::ApplyRule(rule, text, scratch);
    if (text.empty()) ThrowNotConvertible(text, kind);
    if (internal::DigitValue(text.back()) > 9) {
        if (text == "NaN" || text == "1.#QNAN" || text == "-NAN")
            return std::numeric_limits<double>::quiet_NaN();
        if (text == "-INF") return -std::numeric_limits<double>::infinity();
        if (text == "INF") return std::numeric_limits<double>::infinity();
    }
    double value = 0;
    if (!ParseDouble(text, value)) ThrowNotConvertible(text, kind);
    return value;
}

// Digits with a point between them, all of which make an integer that a double holds exactly: dividing it by
// a power of ten that a double holds exactly rounds once, as reading the text does.
bool ParseShortReal(std::string_view text, double& value) {
    constexpr std::size_t kExactDigits = 15;
    static constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6, 1e7,
                                              1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14};
    const bool negative = !text.empty() && text.front() == '-';
    if (negative) text.remove_prefix(1);
    if (text.size() < 3 || text.size() > kExactDigits + 1) return false;
    const auto* const point = static_cast<const char*>(std::memchr(text.data(), '.', text.size()));
    if (point == nullptr) return false;
    const auto whole = static_cast<std::size_t>(point - text.data());
    const std::size_t fraction = text.size() - whole - 1;
    std::uint64_t high = 0;
    std::uint64_t low = 0;
    if (whole == 0 || fraction == 0 || !internal::ReadDigits(text.data(), whole, high) ||
        !internal::ReadDigits(point + 1, fraction, low))
        return false;
    const double power = kPowersOfTen[fraction];
    value = (static_cast<double>(high) * power + static_cast<double>(low)) / power;
    if (negative) value = -value;
    return true;
}

// Text that is a number from end to end has nothing that a rule would change, and is no word.
double ParseReal(std::string_view text, WhitespaceRule rule, const char* kind) {
    double exact = 0;
    if (IsRule(rule) && ParseShortReal(text, exact)) return exact;
    if (!text.empty() && internal::DigitValue(text.back()) <= 9 && IsRule(rule)) {
        double value = 0;
        const char* const end = text.data() + text.size();
        const auto result = std::from_chars(text.data(), end, value);
        if (result.ec == std::errc() && result.ptr == end) return value;
    }
    return ParseAnyReal(text, rule, kind);
}

void AppendReal(std::string& out, double value, int digits, std::string_view format) {
    if (!format.empty() && std::isfinite(value)) return internal::AppendFormattedReal(out, value, format);
    char buffer[internal::kMaxRealLength];
    out.append(buffer, internal::WriteXsdReal(buffer, value, digits));
}

// --- the rest ---------------------------------------------------------------------------------------------

CDateTime ParseDate(std::string_view text, WhitespaceRule rule) {
    std::string scratch;
    CDateTime value;
    value.ParseXSDDate(internal::ApplyRule(rule, text, scratch));
    return value;
}

void AppendTwoDigits(std::string& out, const char* prefix, unsigned int value) {
    out += prefix;
    if (value < 10) out += '0';
    AppendNumber(out, value);
}

// Makes the function that returns from the one that appends.
template <class Append, class... Arguments>
std::string ToText(Append append, const Arguments&... arguments) {
    std::string text;
    append(text, arguments...);
    return text;
}

}  // namespace

// --- integers ---------------------------------------------------------------------------------------------

void CConversions::AppendI1(std::string& out, std::int8_t value) {
    AppendNumber(out, int{value});
}
void CConversions::AppendI2(std::string& out, std::int16_t value) {
    AppendNumber(out, int{value});
}
void CConversions::AppendI4(std::string& out, std::int32_t value) {
    AppendNumber(out, value);
}
void CConversions::AppendI8(std::string& out, std::int64_t value) {
    AppendNumber(out, value);
}
void CConversions::AppendUI1(std::string& out, std::uint8_t value) {
    AppendNumber(out, int{value});
}
void CConversions::AppendUI2(std::string& out, std::uint16_t value) {
    AppendNumber(out, int{value});
}
void CConversions::AppendUI4(std::string& out, std::uint32_t value) {
    AppendNumber(out, value);
}
void CConversions::AppendUI8(std::string& out, std::uint64_t value) {
    AppendNumber(out, value);
}

std::string CConversions::i1ToString(std::int8_t value) {
    return ToText(AppendI1, value);
}
std::string CConversions::i2ToString(std::int16_t value) {
    return ToText(AppendI2, value);
}
std::string CConversions::i4ToString(std::int32_t value) {
    return ToText(AppendI4, value);
}
std::string CConversions::i8ToString(std::int64_t value) {
    return ToText(AppendI8, value);
}
std::string CConversions::ui1ToString(std::uint8_t value) {
    return ToText(AppendUI1, value);
}
std::string CConversions::ui2ToString(std::uint16_t value) {
    return ToText(AppendUI2, value);
}
std::string CConversions::ui4ToString(std::uint32_t value) {
    return ToText(AppendUI4, value);
}
std::string CConversions::ui8ToString(std::uint64_t value) {
    return ToText(AppendUI8, value);
}

std::int8_t CConversions::i1FromString(std::string_view text, WhitespaceRule rule) {
    return ParseNarrow<std::int8_t, std::int32_t>(text, rule, "i1", "i4");
}
std::int16_t CConversions::i2FromString(std::string_view text, WhitespaceRule rule) {
    return ParseNarrow<std::int16_t, std::int32_t>(text, rule, "i2", "i4");
}
std::int32_t CConversions::i4FromString(std::string_view text, WhitespaceRule rule) {
    return ParseInteger<std::int32_t>(text, rule, "i4");
}
std::int64_t CConversions::i8FromString(std::string_view text, WhitespaceRule rule) {
    return ParseInteger<std::int64_t>(text, rule, "i8");
}
std::uint8_t CConversions::ui1FromString(std::string_view text, WhitespaceRule rule) {
    return ParseNarrow<std::uint8_t, std::uint32_t>(text, rule, "ui1", "ui4");
}
std::uint16_t CConversions::ui2FromString(std::string_view text, WhitespaceRule rule) {
    return ParseNarrow<std::uint16_t, std::uint32_t>(text, rule, "ui2", "ui4");
}
std::uint32_t CConversions::ui4FromString(std::string_view text, WhitespaceRule rule) {
    return ParseInteger<std::uint32_t>(text, rule, "ui4");
}
std::uint64_t CConversions::ui8FromString(std::string_view text, WhitespaceRule rule) {
    return ParseInteger<std::uint64_t>(text, rule, "ui8");
}

// --- floating point ---------------------------------------------------------------------------------------

void CConversions::AppendR4(std::string& out, float value, std::string_view format) {
    AppendReal(out, static_cast<double>(value), internal::kR4Digits, format);
}
void CConversions::AppendR8(std::string& out, double value, std::string_view format) {
    AppendReal(out, value, internal::kR8Digits, format);
}

std::string CConversions::r4ToString(float value) {
    return ToText(AppendR4, value, std::string_view());
}
std::string CConversions::r4ToString(float value, std::string_view format) {
    return ToText(AppendR4, value, format);
}
std::string CConversions::r8ToString(double value) {
    return ToText(AppendR8, value, std::string_view());
}
std::string CConversions::r8ToString(double value, std::string_view format) {
    return ToText(AppendR8, value, format);
}

float CConversions::r4FromString(std::string_view text, WhitespaceRule rule) {
    const double value = ParseReal(text, rule, "r4");
    // Beyond the range the conversion is spelled out, since a plain cast would leave it undefined.
    constexpr double kMax = std::numeric_limits<float>::max();
    constexpr double kHalfUlp = 0x1p103;
    if (std::fabs(value) >= kMax + kHalfUlp) {
        return value < 0 ? -std::numeric_limits<float>::infinity() : std::numeric_limits<float>::infinity();
    }
    if (std::fabs(value) > kMax)
        return value < 0 ? -std::numeric_limits<float>::max() : std::numeric_limits<float>::max();
    return static_cast<float>(value);
}
double CConversions::r8FromString(std::string_view text, WhitespaceRule rule) {
    return ParseReal(text, rule, "r8");
}

// --- text and boolean -------------------------------------------------------------------------------------

void CConversions::AppendBoolean(std::string& out, bool value) {
    out += value ? std::string_view("true") : std::string_view("false");
}
void CConversions::AppendChar(std::string& out, char value) {
    if (value != '\0') out += value;
}
void CConversions::AppendString(std::string& out, std::string_view value) {
    out += value;
}

std::string CConversions::booleanToString(bool value) {
    return value ? "true" : "false";
}
std::string CConversions::charToString(char value) {
    return ToText(AppendChar, value);
}
std::string CConversions::stringToString(std::string_view value) {
    return std::string(value);
}

bool CConversions::booleanFromString(std::string_view text, WhitespaceRule rule) {
    if (IsRule(rule)) {
        if (text == "true") return true;
        if (text == "false") return false;
    }
    std::string scratch;
    const std::string_view value = internal::ApplyRule(rule, text, scratch);
    if (internal::EqualsIgnoreAsciiCase(value, "true")) return true;
    if (internal::EqualsIgnoreAsciiCase(value, "false")) return false;
    if (value == "1") return true;
    if (value == "0") return false;
    throw CKvInvalidValueException(FormatString(
        "A Boolean Value read from an XML document was invalid [%s]. Valid values are 'true', 'false', "
        "'1', or '0'",
        std::string(text).c_str()));
}

char CConversions::charFromString(std::string_view text, WhitespaceRule rule) {
    std::string scratch;
    text = internal::ApplyRule(rule, text, scratch);
    if (text.size() == 1) return text[0];
    throw CKvInvalidValueException(
        FormatString("The value [%s] can not be a char as it is either empty of greater than 1 char long",
                     std::string(text).c_str()));
}

std::string CConversions::stringFromString(std::string_view text, WhitespaceRule rule) {
    return CWhitespaceUtils::ApplyRule(rule, text);
}

// --- dates and durations ----------------------------------------------------------------------------------

void CConversions::AppendYear(std::string& out, std::uint16_t value) {
    AppendNumber(out, int{value});
}
void CConversions::AppendMonth(std::string& out, std::uint8_t value) {
    AppendTwoDigits(out, "--", value);
}
void CConversions::AppendDay(std::string& out, std::uint8_t value) {
    AppendTwoDigits(out, "---", value);
}
void CConversions::AppendDateTime(std::string& out, const CDateTime& value) {
    char buffer[CDateTime::kMaxTextLength];
    out.append(buffer, value.FormatXsd(buffer));
}
void CConversions::AppendDuration(std::string& out, const CDateTimeSpan& value) {
    char buffer[CDateTimeSpan::kMaxTextLength];
    out.append(buffer, value.FormatXsd(buffer));
}

std::string CConversions::yearToString(std::uint16_t value) {
    return ToText(AppendYear, value);
}
std::string CConversions::monthToString(std::uint8_t value) {
    return ToText(AppendMonth, value);
}
std::string CConversions::dayToString(std::uint8_t value) {
    return ToText(AppendDay, value);
}
std::string CConversions::dateToString(const CDateTime& value) {
    return ToText(AppendDateTime, value);
}
std::string CConversions::datetimeToString(const CDateTime& value) {
    return ToText(AppendDateTime, value);
}
std::string CConversions::timeToString(const CDateTime& value) {
    return ToText(AppendDateTime, value);
}
std::string CConversions::yearMonthToString(const CDateTime& value) {
    return ToText(AppendDateTime, value);
}
std::string CConversions::monthDayToString(const CDateTime& value) {
    return ToText(AppendDateTime, value);
}
std::string CConversions::durationToString(const CDateTimeSpan& value) {
    return value.ToString();
}

std::uint16_t CConversions::yearFromString(std::string_view text, WhitespaceRule rule) {
    return static_cast<std::uint16_t>(ParseDate(text, rule).GetYear());
}
std::uint8_t CConversions::monthFromString(std::string_view text, WhitespaceRule rule) {
    return ParseDate(text, rule).GetMonth();
}
std::uint8_t CConversions::dayFromString(std::string_view text, WhitespaceRule rule) {
    return ParseDate(text, rule).GetDay();
}
CDateTime CConversions::dateFromString(std::string_view text, WhitespaceRule rule) {
    return ParseDate(text, rule);
}
CDateTime CConversions::yearMonthFromString(std::string_view text, WhitespaceRule rule) {
    return ParseDate(text, rule);
}
CDateTime CConversions::monthDayFromString(std::string_view text, WhitespaceRule rule) {
    return ParseDate(text, rule);
}

CDateTime CConversions::datetimeFromString(std::string_view text, WhitespaceRule rule) {
    CDateTime value;
    if (!IsRule(rule) || !value.ParsePlainDateTime(text)) {
        std::string scratch;
        value.ParseXSDDateTime(internal::ApplyRule(rule, text, scratch));
    }
    return value;
}

CDateTime CConversions::timeFromString(std::string_view text, WhitespaceRule rule) {
    std::string scratch;
    CDateTime value;
    value.ParseXSDTime(internal::ApplyRule(rule, text, scratch));
    return value;
}

CDateTimeSpan CConversions::durationFromString(std::string_view text, WhitespaceRule rule) {
    std::string scratch;
    CDateTimeSpan value;
    value.ParseXSDDuration(internal::ApplyRule(rule, text, scratch));
    return value;
}

// --- unbounded numbers ------------------------------------------------------------------------------------

void CConversions::AppendDecimal(std::string& out, const CDecimal& value, std::string_view format) {
    if (format.empty()) {
        value.AppendTo(out);
        return;
    }
    int fractionDigits = 0;
    internal::ReadFractionDigits(format, fractionDigits);
    out += value.ToString(fractionDigits);
}
void CConversions::AppendInteger(std::string& out, const CBigInteger& value) {
    value.AppendTo(out);
}

std::string CConversions::decimalToString(const CDecimal& value) {
    return value.ToString();
}
std::string CConversions::decimalToString(const CDecimal& value, std::string_view format) {
    return ToText(AppendDecimal, value, format);
}
std::string CConversions::integerToString(const CBigInteger& value) {
    return value.ToString();
}

CDecimal CConversions::decimalFromString(std::string_view text, WhitespaceRule rule) {
    std::string scratch;
    return CDecimal(internal::ApplyRule(rule, text, scratch));
}

CBigInteger CConversions::integerFromString(std::string_view text, WhitespaceRule rule) {
    std::string scratch;
    return CBigInteger(internal::ApplyRule(rule, text, scratch));
}

// --- binary -----------------------------------------------------------------------------------------------

void CConversions::AppendHexBinary(std::string& out, const CBinaryData& value) {
    out += value.GetAsHexString();
}
void CConversions::AppendBase64Binary(std::string& out, const CBinaryData& value) {
    const std::size_t length = out.size();
    out.resize(length + CBase64::EncodedLength(value.GetLength()));
    CBase64(value.GetData(), value.GetLength()).Encode(out.data() + length);
}

std::string CConversions::hexBinaryToString(const CBinaryData& value) {
    return value.GetAsHexString();
}
std::string CConversions::base64BinaryToString(const CBinaryData& value) {
    return value.GetAsBase64();
}

CBinaryData CConversions::hexBinaryFromString(std::string_view text, WhitespaceRule rule) {
    std::string scratch;
    CBinaryData value;
    value.SetAsHexString(internal::ApplyRule(rule, text, scratch));
    return value;
}

CBinaryData CConversions::base64BinaryFromString(std::string_view text, WhitespaceRule rule) {
    // The decoder passes over blanks itself, and these rules change nothing else.
    const bool leaveToDecoder =
        rule == CWhitespaceUtils::WhitespaceRule_Replace || rule == CWhitespaceUtils::WhitespaceRule_Collapse;
    std::string scratch;
    CBinaryData value;
    value.SetAsBase64(leaveToDecoder ? text : internal::ApplyRule(rule, text, scratch));
    return value;
}

}  // namespace KvXmlLib16
