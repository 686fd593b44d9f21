/// Exact decimal numbers of any size, the value type of `xs:decimal`.
///
///     CDecimal price("19.90");
///     (price * 3).ToString() == "59.7";  (price * 3).ToString(2) == "59.70"
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>

#include "kvxml/export.h"

namespace KvXmlLib16 {

class CBigInteger;

namespace internal {
struct BigNumber;

/// Enables a template for every integer type except bool.
template <class T>
using EnableIfInteger = std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, bool>, int>;
/// Enables a template for every integer and floating type except bool.
template <class T>
using EnableIfNumber = std::enable_if_t<std::is_arithmetic_v<T> && !std::is_same_v<T, bool>, int>;
}  // namespace internal

/// An exact decimal number: an integer divided by a power of ten. Up to 18 digits (and most values of 19) are
/// held in place, larger values on the heap, owned by the object; there is no upper bound.
///
/// How many trailing zeros a fraction was written with is not part of the value: "1.50" and "1.5" are equal
/// and both write "1.5". There is no negative zero: "-0" writes "0". Const access is safe from several
/// threads.
class KVXML_EXPORT CDecimal {
public:
    /// Largest magnitude of an exponent in text ("1E10000"); bounds what a short text can make this class
    /// allocate.
    static constexpr std::int32_t kMaxExponent = 10000;
    /// Fraction digits that `operator/` keeps.
    static constexpr std::int32_t kDivisionDigits = 28;
    /// Room that FormatTo needs for a value that IsSmall().
    static constexpr std::size_t kMaxSmallLength = 24;

    /// Zero.
    CDecimal() noexcept : m_value(0), m_scale(0), m_isBig(false) {}
    /// Reads `xs:decimal` text: optional sign, digits with an optional point, optional exponent ("1.5E3").
    /// Whitespace around the number is accepted. Throws CKvInvalidValueException that names the position (in
    /// bytes, from 0) and the text for anything else, and for an exponent beyond kMaxExponent.
    CDecimal(std::string_view text) : CDecimal() { Parse(text); }
    /// As above. Null counts as empty, which is an error.
    CDecimal(const char* text);
    CDecimal(const std::string& text) : CDecimal(std::string_view(text)) {}
    /// Any integer type.
    template <class T, internal::EnableIfInteger<T> = 0>
    CDecimal(T value) : CDecimal() {
        if constexpr (std::is_signed_v<T>) {
            SetInt64(static_cast<std::int64_t>(value));
        } else {
            SetUInt64(static_cast<std::uint64_t>(value));
        }
    }
    /// The shortest decimal that reads back as `value` (0.1 gives 0.1). CKvInvalidValueException for
    /// infinities and NaN.
    CDecimal(double value);
    /// The number itself, all digits.
    explicit CDecimal(const CBigInteger& value);

    CDecimal(const CDecimal& other) : m_value(other.m_value), m_scale(other.m_scale), m_isBig(false) {
        if (other.m_isBig) CopyBig(other);
    }
    CDecimal(CDecimal&& other) noexcept
        : m_value(other.m_value), m_scale(other.m_scale), m_isBig(other.m_isBig) {
        other.Forget();
    }
    CDecimal& operator=(const CDecimal& other) {
        if (this != &other) *this = CDecimal(other);
        return *this;
    }
    CDecimal& operator=(CDecimal&& other) noexcept {
        if (this != &other) {
            if (m_isBig) FreeBig();
            m_value = other.m_value;
            m_scale = other.m_scale;
            m_isBig = other.m_isBig;
            other.Forget();
        }
        return *this;
    }
    ~CDecimal() {
        if (m_isBig) FreeBig();
    }

    // --- text ---------------------------------------------------------------------------------------------
    /// Replaces the value by the number that `text` holds; errors as the constructor, after which the value
    /// is unchanged.
    void Parse(std::string_view text);
    /// The shortest form: no exponent, no plus sign, no insignificant zeros.
    std::string ToString() const;
    /// Exactly `fractionDigits` digits after the point (none and no point for 0 or less), rounded half away
    /// from zero.
    std::string ToString(int fractionDigits) const;
    /// Appends ToString() without temporaries for values held in place.
    void AppendTo(std::string& out) const;
    /// Writes ToString() to `buffer` without a terminator and returns the end. The buffer must have room for
    /// GetMaxTextLength() characters (kMaxSmallLength when IsSmall()).
    char* FormatTo(char* buffer) const noexcept;
    /// Upper bound for the length of ToString().
    std::size_t GetMaxTextLength() const noexcept;
    /// True when the value is held in place.
    bool IsSmall() const noexcept { return !m_isBig; }

    // --- digits -------------------------------------------------------------------------------------------
    /// Cuts the fraction off after `fractionDigits` digits, without rounding; 0 or less leaves the integer
    /// part. A fraction that is not longer stays as it is.
    void ChangeFractionalDivider(int fractionDigits);
    /// Rounds half away from zero to at most `fractionDigits` digits after the point.
    CDecimal Round(int fractionDigits) const;
    /// Digits that the totalDigits facet counts: the least n such that the value is i / 10^k with |i| < 10^n
    /// and k <= n. 0 has one, 0.001 three, 100 three, 1.50 two.
    std::int32_t GetTotalDigits() const noexcept;
    /// Digits after the point without trailing zeros.
    std::int32_t GetFractionDigits() const noexcept;
    /// -1, 0 or 1.
    int GetSign() const noexcept;

    // --- arithmetic: exact, except division ---------------------------------------------------------------
    CDecimal operator-() const;
    CDecimal& operator+=(const CDecimal& other);
    CDecimal& operator-=(const CDecimal& other);
    CDecimal& operator*=(const CDecimal& other);
    CDecimal& operator/=(const CDecimal& other);
    friend CDecimal operator+(const CDecimal& a, const CDecimal& b) { return Sum(a, b, false); }
    friend CDecimal operator-(const CDecimal& a, const CDecimal& b) { return Sum(a, b, true); }
    friend CDecimal operator*(const CDecimal& a, const CDecimal& b) { return Product(a, b); }
    /// Divide(a, b) with kDivisionDigits.
    friend CDecimal operator/(const CDecimal& a, const CDecimal& b) { return a.Divide(b, kDivisionDigits); }
    /// Quotient with at most `fractionDigits` digits after the point, rounded half away from zero.
    /// CKvInvalidValueException for a zero divisor.
    CDecimal Divide(const CDecimal& divisor, int fractionDigits) const;

    // --- comparison by value ------------------------------------------------------------------------------
    /// -1, 0 or 1 as this is less than, equal to or greater than `other`.
    int CompareTo(const CDecimal& other) const {
        if (!m_isBig && !other.m_isBig && m_scale == other.m_scale) {
            return m_value < other.m_value ? -1 : (m_value > other.m_value ? 1 : 0);
        }
        return CompareSlow(other);
    }
    friend bool operator==(const CDecimal& a, const CDecimal& b) { return a.CompareTo(b) == 0; }
    friend bool operator!=(const CDecimal& a, const CDecimal& b) { return a.CompareTo(b) != 0; }
    friend bool operator<(const CDecimal& a, const CDecimal& b) { return a.CompareTo(b) < 0; }
    friend bool operator<=(const CDecimal& a, const CDecimal& b) { return a.CompareTo(b) <= 0; }
    friend bool operator>(const CDecimal& a, const CDecimal& b) { return a.CompareTo(b) > 0; }
    friend bool operator>=(const CDecimal& a, const CDecimal& b) { return a.CompareTo(b) >= 0; }
    /// Equal values have equal hashes, however they were written.
    std::size_t GetHash() const noexcept;

    /// Writes ToString().
    friend KVXML_EXPORT std::ostream& operator<<(std::ostream& stream, const CDecimal& value);

    // --- conversions --------------------------------------------------------------------------------------
    //
    // The fraction is dropped for integers; CKvOverFlowException when the value does not fit.

    std::int32_t ToInt32() const;
    std::int64_t ToInt64() const;
    /// The nearest double.
    double ToDouble() const;
    explicit operator std::int32_t() const { return ToInt32(); }
    explicit operator std::int64_t() const { return ToInt64(); }
    explicit operator double() const { return ToDouble(); }

private:
    friend class CBigInteger;

    void SetInt64(std::int64_t value);
    void SetUInt64(std::uint64_t value);
    void ParseSlow(std::string_view text);
    void SetBig(internal::BigNumber&& number, std::int64_t scale);
    internal::BigNumber Unscaled() const;
    CDecimal ScaledTo(int fractionDigits, bool round) const;
    int CompareSlow(const CDecimal& other) const;
    static CDecimal Sum(const CDecimal& a, const CDecimal& b, bool subtract);
    static CDecimal Product(const CDecimal& a, const CDecimal& b);
    void CopyBig(const CDecimal& other);
    void FreeBig() noexcept;
    void Forget() noexcept {
        m_value = 0;
        m_scale = 0;
        m_isBig = false;
    }

    // The value is (m_isBig ? *m_big : m_value) / 10^m_scale. In place: 0 <= m_scale <= 18 and m_value is not
    // the least int64. On the heap: only what does not fit in place, and with a scale above 0 the last digit
    // is not 0, so that a heap value never equals one in place.
    union {
        std::int64_t m_value;
        internal::BigNumber* m_big;
    };
    std::int32_t m_scale;
    bool m_isBig;
};

static_assert(sizeof(CDecimal) == 16 || sizeof(void*) != 8, "CDecimal is passed around by value");

}  // namespace KvXmlLib16

template <>
struct std::hash<KvXmlLib16::CDecimal> {
    std::size_t operator()(const KvXmlLib16::CDecimal& value) const noexcept { return value.GetHash(); }
};
