#include "kvxml/types/decimal.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <system_error>
#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/types/big_integer.h"
#include "kvxml/types/format_string.h"
#include "kvxml/types/internal/big_number.h"
#include "kvxml/types/internal/value_hash.h"
#include "kvxml/types/whitespace_utils.h"

namespace KvXmlLib16 {

using internal::BigNumber;
using internal::UInt128;

namespace {

__extension__ typedef __int128 Int128;

constexpr int kMaxSmallScale = 18;
constexpr std::int64_t kMaxSmallValue = std::numeric_limits<std::int64_t>::max();
// Digits on either side of the point; far beyond what memory bandwidth makes sensible, and safe in 32 bits.
constexpr std::size_t kMaxDigits = 1000000000;

constexpr std::int64_t kPow10[kMaxSmallScale + 1] = {1,
                                                     10,
                                                     100,
                                                     1000,
                                                     10000,
                                                     100000,
                                                     1000000,
                                                     10000000,
                                                     100000000,
                                                     1000000000,
                                                     10000000000,
                                                     100000000000,
                                                     1000000000000,
                                                     10000000000000,
                                                     100000000000000,
                                                     1000000000000000,
                                                     10000000000000000,
                                                     100000000000000000,
                                                     1000000000000000000};

constexpr unsigned int DigitOf(char c) noexcept {
    return static_cast<unsigned char>(c) - unsigned{'0'};
}

constexpr std::uint64_t Magnitude(std::int64_t value) noexcept {
    const auto bits = static_cast<std::uint64_t>(value);
    return value < 0 ? 0 - bits : bits;
}

[[noreturn]] void ThrowInvalidChar(std::size_t position, std::string_view text) {
    // Put together by hand: zero bytes in the text are kept.
    std::string message("The string representing a Decimal, contained an invalid char at position ");
    message.append(std::to_string(position)).append(" [").append(text).append("].");
    throw CKvInvalidValueException(std::move(message));
}

[[noreturn]] void ThrowTooLarge(std::string_view text) {
    constexpr std::size_t kShown = 100;
    throw CKvInvalidValueException(FormatString("The string representing a Decimal, is too large [%s%s].",
                                                std::string(text.substr(0, kShown)).c_str(),
                                                text.size() > kShown ? "..." : ""));
}

[[noreturn]] void ThrowTooLargeForDouble() {
    throw CKvOverFlowException("The Decimal value if to large to fit into a Double");
}

// Places the point into the digits that stand at `digits` (at most 19) and drops insignificant zeros.
char* WriteWithPoint(char* out, const char* digits, std::size_t count, std::size_t scale) noexcept {
    while (scale > 0 && count > 0 && digits[count - 1] == '0') {
        --count;
        --scale;
    }
    if (count <= scale) {
        *out++ = '0';
        if (scale == 0) return out;
        *out++ = '.';
        std::memset(out, '0', scale - count);
        out += scale - count;
        std::memcpy(out, digits, count);
        return out + count;
    }
    const std::size_t whole = count - scale;
    std::memcpy(out, digits, whole);
    out += whole;
    if (scale == 0) return out;
    *out++ = '.';
    std::memcpy(out, digits + whole, scale);
    return out + scale;
}

}  // namespace

// --- construction -----------------------------------------------------------------------------------------

CDecimal::CDecimal(const char* text) : CDecimal(std::string_view(internal::OrEmpty(text))) {}

CDecimal::CDecimal(double value) : CDecimal() {
    if (!std::isfinite(value)) {
        throw CKvInvalidValueException(
            FormatString("The value [%f] can not be converted to a Decimal", value));
    }
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    Parse({buffer, static_cast<std::size_t>(result.ptr - buffer)});
}

CDecimal::CDecimal(const CBigInteger& value) : CDecimal() {
    if (value.m_isBig) {
        SetBig(BigNumber(*value.m_big), 0);
    } else {
        SetInt64(value.m_value);
    }
}

void CDecimal::SetInt64(std::int64_t value) {
    if (value == std::numeric_limits<std::int64_t>::min()) {
        SetBig(BigNumber::FromInt64(value), 0);
    } else {
        m_value = value;
    }
}

void CDecimal::SetUInt64(std::uint64_t value) {
    if (value > static_cast<std::uint64_t>(kMaxSmallValue)) {
        SetBig(BigNumber::FromMagnitude(value, false), 0);
    } else {
        m_value = static_cast<std::int64_t>(value);
    }
}

// Sets number / 10^scale in the normal form that the class keeps.
void CDecimal::SetBig(BigNumber&& number, std::int64_t scale) {
    if (scale < 0) {
        number.MultiplyByPow10(static_cast<std::size_t>(-scale));
        scale = 0;
    }
    if (scale > 0) {
        if (number.IsZero()) scale = 0;
        const std::size_t zeros = number.TrailingZeros(static_cast<std::size_t>(scale));
        if (zeros > 0) number.DivideByPow10(zeros);
        scale -= static_cast<std::int64_t>(zeros);
    }
    if (scale > static_cast<std::int64_t>(kMaxDigits)) {
        throw CKvOverFlowException("The Decimal value has too many fraction digits");
    }
    std::int64_t small = 0;
    if (scale <= kMaxSmallScale && number.FitsInt64(small) &&
        small != std::numeric_limits<std::int64_t>::min()) {
        if (m_isBig) FreeBig();
        m_value = small;
        m_isBig = false;
    } else if (m_isBig) {
        *m_big = std::move(number);
    } else {
        m_big = new BigNumber(std::move(number));
        m_isBig = true;
    }
    m_scale = static_cast<std::int32_t>(scale);
}

void CDecimal::CopyBig(const CDecimal& other) {
    m_big = new BigNumber(*other.m_big);
    m_isBig = true;
}

void CDecimal::FreeBig() noexcept {
    delete m_big;
}

BigNumber CDecimal::Unscaled() const {
    return m_isBig ? *m_big : BigNumber::FromInt64(m_value);
}

// --- text -------------------------------------------------------------------------------------------------

void CDecimal::Parse(std::string_view text) {
    const char* p = text.data();
    const char* const end = p + text.size();
    const bool negative = p != end && *p == '-';
    if (p != end && (*p == '-' || *p == '+')) ++p;
    // The accumulator wraps for long numbers, whose count of digits then says so.
    std::uint64_t value = 0;
    const char* const first = p;
    unsigned int digit = 0;
    while (p != end && (digit = DigitOf(*p)) <= 9) {
        value = value * 10 + digit;
        ++p;
    }
    auto count = p - first;
    std::ptrdiff_t scale = 0;
    if (p != end && *p == '.') {
        const char* const fraction = ++p;
        while (p != end && (digit = DigitOf(*p)) <= 9) {
            value = value * 10 + digit;
            ++p;
        }
        scale = p - fraction;
        count += scale;
    }
    if (p != end || count == 0 || count > kMaxSmallScale) {
        ParseSlow(text);
        return;
    }
    if (m_isBig) FreeBig();
    m_isBig = false;
    m_value = negative ? -static_cast<std::int64_t>(value) : static_cast<std::int64_t>(value);
    m_scale = static_cast<std::int32_t>(scale);
}

void CDecimal::ParseSlow(std::string_view text) {
    std::size_t end = text.size();
    while (end > 0 && CWhitespaceUtils::IsWhiteSpace(text[end - 1]))
        --end;
    std::size_t i = 0;
    while (i < end && CWhitespaceUtils::IsWhiteSpace(text[i]))
        ++i;
    const bool negative = i < end && text[i] == '-';
    if (i < end && (text[i] == '-' || text[i] == '+')) ++i;

    const std::size_t wholeBegin = i;
    while (i < end && DigitOf(text[i]) <= 9)
        ++i;
    const std::string_view whole = text.substr(wholeBegin, i - wholeBegin);
    std::string_view fraction;
    if (i < end && text[i] == '.') {
        const std::size_t fractionBegin = ++i;
        while (i < end && DigitOf(text[i]) <= 9)
            ++i;
        fraction = text.substr(fractionBegin, i - fractionBegin);
    }
    if (whole.empty() && fraction.empty()) ThrowInvalidChar(i, text);
    std::int64_t exponent = 0;
    if (i < end && (text[i] == 'e' || text[i] == 'E')) {
        ++i;
        const bool negativeExponent = i < end && text[i] == '-';
        if (i < end && (text[i] == '-' || text[i] == '+')) ++i;
        const std::size_t exponentBegin = i;
        for (; i < end && DigitOf(text[i]) <= 9; ++i) {
            if (exponent <= kMaxExponent) exponent = exponent * 10 + DigitOf(text[i]);
        }
        if (i == exponentBegin) ThrowInvalidChar(i, text);
        if (negativeExponent) exponent = -exponent;
    }
    if (i < end) ThrowInvalidChar(i, text);
    if (exponent > kMaxExponent || exponent < -kMaxExponent || whole.size() > kMaxDigits ||
        fraction.size() > kMaxDigits) {
        ThrowTooLarge(text);
    }
    if (fraction.empty()) {
        SetBig(BigNumber::FromDigits(whole, negative), -exponent);
        return;
    }
    std::string digits;
    digits.reserve(whole.size() + fraction.size());
    digits.append(whole).append(fraction);
    SetBig(BigNumber::FromDigits(digits, negative), static_cast<std::int64_t>(fraction.size()) - exponent);
}

std::size_t CDecimal::GetMaxTextLength() const noexcept {
    if (!m_isBig) return kMaxSmallLength;
    return std::max(m_big->DigitCount(), static_cast<std::size_t>(m_scale)) + 3;
}

char* CDecimal::FormatTo(char* buffer) const noexcept {
    const auto scale = static_cast<std::size_t>(m_scale);
    if (!m_isBig) {
        if (m_value < 0) *buffer++ = '-';
        if (scale == 0) return std::to_chars(buffer, buffer + 20, Magnitude(m_value)).ptr;
        char digits[20];
        const auto result = std::to_chars(digits, digits + sizeof digits, Magnitude(m_value));
        // A zero whose fraction was cut off still has a scale.
        return m_value == 0
                   ? (*buffer = '0', buffer + 1)
                   : WriteWithPoint(buffer, digits, static_cast<std::size_t>(result.ptr - digits), scale);
    }
    if (m_big->negative) *buffer++ = '-';
    const std::size_t count = m_big->DigitCount();
    if (count > scale) {
        // All digits, then the fraction is moved one place on for the point.
        char* const end = m_big->WriteDigits(buffer);
        if (scale == 0) return end;
        char* const point = end - scale;
        std::memmove(point + 1, point, scale);
        *point = '.';
        return end + 1;
    }
    *buffer++ = '0';
    *buffer++ = '.';
    std::memset(buffer, '0', scale - count);
    return m_big->WriteDigits(buffer + (scale - count));
}

void CDecimal::AppendTo(std::string& out) const {
    if (!m_isBig) {
        char buffer[kMaxSmallLength];
        out.append(buffer, static_cast<std::size_t>(FormatTo(buffer) - buffer));
        return;
    }
    const std::size_t length = out.size();
    out.resize(length + GetMaxTextLength());
    out.resize(static_cast<std::size_t>(FormatTo(out.data() + length) - out.data()));
}

std::string CDecimal::ToString() const {
    std::string text;
    AppendTo(text);
    return text;
}

std::string CDecimal::ToString(int fractionDigits) const {
    if (fractionDigits <= 0) return Round(0).ToString();
    std::string text;
    Round(fractionDigits).AppendTo(text);
    const auto wanted = static_cast<std::size_t>(fractionDigits);
    std::size_t point = text.find('.');
    if (point == std::string::npos) {
        point = text.size();
        text += '.';
    }
    text.append(wanted - (text.size() - point - 1), '0');
    return text;
}

// --- digits -----------------------------------------------------------------------------------------------

// At most `fractionDigits` digits after the point.
CDecimal CDecimal::ScaledTo(int fractionDigits, bool round) const {
    fractionDigits = std::max(fractionDigits, 0);
    if (m_scale <= fractionDigits) return *this;
    const int dropped = m_scale - fractionDigits;
    CDecimal result;
    if (!m_isBig) {
        const std::int64_t divisor = kPow10[dropped];
        result.m_value = m_value / divisor;
        const std::int64_t rest = m_value % divisor;
        if (round && Magnitude(rest) >= static_cast<std::uint64_t>(divisor) / 2)
            result.m_value += m_value < 0 ? -1 : 1;
        result.m_scale = result.m_value == 0 ? 0 : fractionDigits;
        return result;
    }
    BigNumber number = *m_big;
    const auto places = static_cast<std::size_t>(dropped);
    const bool up = round && number.Digit(places - 1) >= 5;
    const bool negative = number.negative;
    number.DivideByPow10(places);
    if (up) {
        number.IncrementMagnitude();
        number.negative = negative;
    }
    result.SetBig(std::move(number), fractionDigits);
    return result;
}

void CDecimal::ChangeFractionalDivider(int fractionDigits) {
    if (m_scale > std::max(fractionDigits, 0)) *this = ScaledTo(fractionDigits, false);
}

CDecimal CDecimal::Round(int fractionDigits) const {
    return ScaledTo(fractionDigits, true);
}

std::int32_t CDecimal::GetFractionDigits() const noexcept {
    if (m_isBig) return m_scale;
    if (m_value == 0) return 0;
    std::int32_t digits = m_scale;
    for (std::int64_t value = m_value; digits > 0 && value % 10 == 0; value /= 10)
        --digits;
    return digits;
}

std::int32_t CDecimal::GetTotalDigits() const noexcept {
    const std::int32_t fraction = GetFractionDigits();
    if (m_isBig) return std::max(internal::ToCount(m_big->DigitCount()), fraction);
    const std::uint64_t magnitude =
        Magnitude(m_value) / static_cast<std::uint64_t>(kPow10[m_scale - fraction]);
    std::int32_t digits = 1;
    while (digits <= kMaxSmallScale && magnitude >= static_cast<std::uint64_t>(kPow10[digits]))
        ++digits;
    return std::max(digits, fraction);
}

int CDecimal::GetSign() const noexcept {
    if (m_isBig) return m_big->negative ? -1 : 1;
    return m_value < 0 ? -1 : (m_value > 0 ? 1 : 0);
}

// --- arithmetic -------------------------------------------------------------------------------------------

CDecimal CDecimal::operator-() const {
    CDecimal result(*this);
    if (m_isBig) {
        result.m_big->negative = !m_big->negative;
    } else {
        result.m_value = -m_value;
    }
    return result;
}

CDecimal& CDecimal::operator+=(const CDecimal& other) {
    return *this = Sum(*this, other, false);
}
CDecimal& CDecimal::operator-=(const CDecimal& other) {
    return *this = Sum(*this, other, true);
}
CDecimal& CDecimal::operator*=(const CDecimal& other) {
    return *this = Product(*this, other);
}
CDecimal& CDecimal::operator/=(const CDecimal& other) {
    return *this = Divide(other, kDivisionDigits);
}

CDecimal CDecimal::Sum(const CDecimal& a, const CDecimal& b, bool subtract) {
    const std::int32_t scale = std::max(a.m_scale, b.m_scale);
    CDecimal result;
    if (!a.m_isBig && !b.m_isBig) {
        const Int128 left = static_cast<Int128>(a.m_value) * kPow10[scale - a.m_scale];
        const Int128 right = static_cast<Int128>(b.m_value) * kPow10[scale - b.m_scale];
        const Int128 sum = subtract ? left - right : left + right;
        if (sum >= -kMaxSmallValue && sum <= kMaxSmallValue) {
            result.m_value = static_cast<std::int64_t>(sum);
            result.m_scale = scale;
        } else {
            result.SetBig(BigNumber::FromMagnitude(static_cast<UInt128>(sum < 0 ? -sum : sum), sum < 0),
                          scale);
        }
        return result;
    }
    BigNumber left = a.Unscaled();
    BigNumber right = b.Unscaled();
    left.MultiplyByPow10(static_cast<std::size_t>(scale - a.m_scale));
    right.MultiplyByPow10(static_cast<std::size_t>(scale - b.m_scale));
    result.SetBig(subtract ? BigNumber::Subtract(left, right) : BigNumber::Add(left, right), scale);
    return result;
}

CDecimal CDecimal::Product(const CDecimal& a, const CDecimal& b) {
    const std::int64_t scale = std::int64_t{a.m_scale} + b.m_scale;
    CDecimal result;
    if (!a.m_isBig && !b.m_isBig) {
        const Int128 product = static_cast<Int128>(a.m_value) * b.m_value;
        if (scale <= kMaxSmallScale && product >= -kMaxSmallValue && product <= kMaxSmallValue) {
            result.m_value = static_cast<std::int64_t>(product);
            result.m_scale = static_cast<std::int32_t>(scale);
        } else {
            result.SetBig(
                BigNumber::FromMagnitude(static_cast<UInt128>(product < 0 ? -product : product), product < 0),
                scale);
        }
        return result;
    }
    result.SetBig(BigNumber::Multiply(a.Unscaled(), b.Unscaled()), scale);
    return result;
}

CDecimal CDecimal::Divide(const CDecimal& divisor, int fractionDigits) const {
    if (divisor.GetSign() == 0) throw CKvInvalidValueException("ERROR: Overflow in operator/.");
    fractionDigits = std::max(fractionDigits, 0);
    // The quotient of the integers with one more digit than wanted, which decides the rounding: what lies
    // after a digit 5 can only confirm it.
    BigNumber dividend = Unscaled();
    BigNumber other = divisor.Unscaled();
    const std::int64_t shift = std::int64_t{fractionDigits} + 1 + divisor.m_scale - m_scale;
    if (shift >= 0) {
        dividend.MultiplyByPow10(static_cast<std::size_t>(shift));
    } else {
        other.MultiplyByPow10(static_cast<std::size_t>(-shift));
    }
    BigNumber quotient;
    BigNumber remainder;
    BigNumber::Divide(dividend, other, quotient, remainder);
    const bool negative = GetSign() * divisor.GetSign() < 0;
    const bool up = quotient.Digit(0) >= 5;
    quotient.DivideByPow10(1);
    if (up) quotient.IncrementMagnitude();
    quotient.negative = negative && !quotient.IsZero();
    CDecimal result;
    result.SetBig(std::move(quotient), fractionDigits);
    return result;
}

int CDecimal::CompareSlow(const CDecimal& other) const {
    const int sign = GetSign();
    const int otherSign = other.GetSign();
    if (sign != otherSign) return sign < otherSign ? -1 : 1;
    if (!m_isBig && !other.m_isBig) {
        const std::int32_t scale = std::max(m_scale, other.m_scale);
        const Int128 left = static_cast<Int128>(m_value) * kPow10[scale - m_scale];
        const Int128 right = static_cast<Int128>(other.m_value) * kPow10[scale - other.m_scale];
        return left < right ? -1 : (left > right ? 1 : 0);
    }
    // Digits in front of the point decide most cases without making the scales equal.
    const auto wholeDigits = [](const CDecimal& d, const BigNumber& n) {
        return static_cast<std::int64_t>(n.DigitCount()) - d.m_scale;
    };
    BigNumber left = Unscaled();
    BigNumber right = other.Unscaled();
    const std::int64_t leftDigits = wholeDigits(*this, left);
    const std::int64_t rightDigits = wholeDigits(other, right);
    if (leftDigits != rightDigits) return (leftDigits < rightDigits ? -1 : 1) * sign;
    const std::int32_t scale = std::max(m_scale, other.m_scale);
    left.MultiplyByPow10(static_cast<std::size_t>(scale - m_scale));
    right.MultiplyByPow10(static_cast<std::size_t>(scale - other.m_scale));
    return BigNumber::Compare(left, right);
}

// --- conversions ------------------------------------------------------------------------------------------

std::int64_t CDecimal::ToInt64() const {
    if (!m_isBig) return m_value / kPow10[m_scale];
    BigNumber number = *m_big;
    number.DivideByPow10(static_cast<std::size_t>(m_scale));
    std::int64_t value = 0;
    if (!number.FitsInt64(value))
        throw CKvOverFlowException("The Decimal value if to large to fit into a LONGLONG");
    return value;
}

std::int32_t CDecimal::ToInt32() const {
    CDecimal whole(*this);
    whole.ChangeFractionalDivider(0);
    if (whole.m_isBig || whole.m_value < std::numeric_limits<std::int32_t>::min() ||
        whole.m_value > std::numeric_limits<std::int32_t>::max()) {
        throw CKvOverFlowException("The Decimal value if to large to fit into a LONG");
    }
    return static_cast<std::int32_t>(whole.m_value);
}

double CDecimal::ToDouble() const {
    if (!m_isBig && m_scale == 0) return static_cast<double>(m_value);
    std::string text;
    char buffer[kMaxSmallLength];
    std::string_view view;
    if (m_isBig) {
        // What is far out of range needs no text, which may be long.
        const std::int64_t wholeDigits = static_cast<std::int64_t>(m_big->DigitCount()) - m_scale;
        if (wholeDigits > std::numeric_limits<double>::max_exponent10 + 1) ThrowTooLargeForDouble();
        if (wholeDigits < -400) return 0.0;
        AppendTo(text);
        view = text;
    } else {
        view = {buffer, static_cast<std::size_t>(FormatTo(buffer) - buffer)};
    }
    double value = 0;
    const auto result = std::from_chars(view.data(), view.data() + view.size(), value);
    if (result.ec == std::errc() && std::isfinite(value)) return value;
    // Out of range: either too large, or closer to zero than the smallest double.
    if (m_isBig && static_cast<std::int64_t>(m_big->DigitCount()) > m_scale) ThrowTooLargeForDouble();
    return 0.0;
}

std::size_t CDecimal::GetHash() const noexcept {
    if (m_isBig) {
        std::size_t hash = internal::HashOf(m_scale, m_big->negative);
        for (const std::uint32_t limb : m_big->limbs)
            hash = internal::HashOf(hash, limb);
        return hash;
    }
    std::int64_t value = m_value;
    std::int32_t scale = m_scale;
    for (; scale > 0 && value % 10 == 0; --scale)
        value /= 10;
    return internal::HashOf(scale, value);
}

}  // namespace KvXmlLib16
