/// Integers of any size, the value type of `xs:integer` and its unbounded relatives.
///
///     (CBigInteger::Pow10(20) + 1).ToString() == "100000000000000000001"
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "kvxml/export.h"
#include "kvxml/types/decimal.h"

namespace KvXmlLib16 {

/// A signed integer without bounds. Values that fit 64 bits are held in place, larger ones on the heap, owned
/// by the object. There is no negative zero. Errors are CKvInvalidValueException. Const access is safe from
/// several threads.
class KVXML_EXPORT CBigInteger {
public:
    /// Zero.
    CBigInteger() noexcept : m_value(0) {}
    /// Any integer type.
    template <class T, internal::EnableIfInteger<T> = 0>
    CBigInteger(T value) : m_value(0) {
        if constexpr (std::is_signed_v<T>) {
            m_value = static_cast<std::int64_t>(value);
        } else {
            SetUInt64(static_cast<std::uint64_t>(value));
        }
    }
    /// The integer part, exactly. "ERROR: Value out of bound of double." for infinities and NaN.
    CBigInteger(double value);
    /// The integer part.
    CBigInteger(const CDecimal& value);
    /// Parse(text).
    CBigInteger(const char* text);
    CBigInteger(std::string_view text) : m_value(0) { Parse(text); }
    CBigInteger(const std::string& text) : CBigInteger(std::string_view(text)) {}
    CBigInteger(const CBigInteger& other) : m_value(other.m_value) {
        if (other.m_isBig) CopyBig(other);
    }
    CBigInteger(CBigInteger&& other) noexcept : m_value(other.m_value), m_isBig(other.m_isBig) {
        other.Forget();
    }
    CBigInteger& operator=(const CBigInteger& other) {
        if (this != &other) *this = CBigInteger(other);
        return *this;
    }
    CBigInteger& operator=(CBigInteger&& other) noexcept {
        if (this != &other) {
            if (m_isBig) FreeBig();
            m_value = other.m_value;
            m_isBig = other.m_isBig;
            other.Forget();
        }
        return *this;
    }
    virtual ~CBigInteger() {
        if (m_isBig) FreeBig();
    }

    // --- text ---------------------------------------------------------------------------------------------
    /// Reads an integer, leniently: spaces around it are dropped, a text of spaces (or none) is 0, and of
    /// other text only the digits at its end count, with "-" as the first character making them negative
    /// ("12-3" is 3). Text with any character besides digits, signs and whitespace is read as a CDecimal,
    /// with its errors, and loses its fraction ("1.9" is 1, "1E3" is 1000).
    void Parse(std::string_view text);
    void Parse(const char* text);
    void Parse(const std::string& text) { Parse(std::string_view(text)); }
    /// Digits with a leading "-" for negative values.
    std::string ToString() const;
    /// Appends ToString() without temporaries for values of 64 bits.
    void AppendTo(std::string& out) const;

    // --- sign ---------------------------------------------------------------------------------------------
    /// A copy without sign.
    CBigInteger GetAbs() const;
    /// Makes this value non-negative and returns it.
    CBigInteger& Abs();
    /// A copy with the sign flipped.
    CBigInteger GetNegative() const;
    /// Flips the sign of this value and returns it.
    CBigInteger& Negate();
    /// Flips the sign in place, unlike the operator of the built-in types, and returns this value.
    CBigInteger& operator-() { return Negate(); }
    /// -1, 0 or 1.
    int GetSign() const noexcept;

    // --- arithmetic ---------------------------------------------------------------------------------------
    /// Division truncates toward zero, the remainder has the sign of the dividend. Zero divisors throw
    /// "ERROR: Overflow in operator/.", "... operator%.", "... operator /=." and
    /// "... operator%=.".
    friend CBigInteger operator+(const CBigInteger& a, const CBigInteger& b) { return Sum(a, b, false); }
    friend CBigInteger operator-(const CBigInteger& a, const CBigInteger& b) { return Sum(a, b, true); }
    friend CBigInteger operator*(const CBigInteger& a, const CBigInteger& b) { return Product(a, b); }
    friend CBigInteger operator/(const CBigInteger& a, const CBigInteger& b) {
        return Quotient(a, b, "ERROR: Overflow in operator/.");
    }
    friend CBigInteger operator%(const CBigInteger& a, const CBigInteger& b) {
        return Remainder(a, b, "ERROR: Overflow in operator%.");
    }
    CBigInteger& operator+=(const CBigInteger& other) { return *this = Sum(*this, other, false); }
    CBigInteger& operator-=(const CBigInteger& other) { return *this = Sum(*this, other, true); }
    CBigInteger& operator*=(const CBigInteger& other) { return *this = Product(*this, other); }
    CBigInteger& operator/=(const CBigInteger& other) {
        return *this = Quotient(*this, other, "ERROR: Overflow in operator /=.");
    }
    CBigInteger& operator%=(const CBigInteger& other) {
        return *this = Remainder(*this, other, "ERROR: Overflow in operator%=.");
    }
    /// The largest integer whose square does not exceed this value; "ERROR: Negative Number in function
    /// SquareRoot()." for a negative one.
    CBigInteger SquareRoot() const;
    /// 10 to the power of `exponent`.
    static CBigInteger Pow10(unsigned int exponent);

    // --- comparison ---------------------------------------------------------------------------------------
    /// -1, 0 or 1 as this is less than, equal to or greater than `other`.
    int CompareTo(const CBigInteger& other) const noexcept {
        if (!m_isBig && !other.m_isBig) {
            return m_value < other.m_value ? -1 : (m_value > other.m_value ? 1 : 0);
        }
        return CompareSlow(other);
    }
    friend bool operator==(const CBigInteger& a, const CBigInteger& b) { return a.CompareTo(b) == 0; }
    friend bool operator!=(const CBigInteger& a, const CBigInteger& b) { return a.CompareTo(b) != 0; }
    friend bool operator<(const CBigInteger& a, const CBigInteger& b) { return a.CompareTo(b) < 0; }
    friend bool operator<=(const CBigInteger& a, const CBigInteger& b) { return a.CompareTo(b) <= 0; }
    friend bool operator>(const CBigInteger& a, const CBigInteger& b) { return a.CompareTo(b) > 0; }
    friend bool operator>=(const CBigInteger& a, const CBigInteger& b) { return a.CompareTo(b) >= 0; }

    // --- conversions --------------------------------------------------------------------------------------
    /// "ERROR: Value out of bound of int." when it does not fit.
    operator int() const;
    /// "ERROR: Value out of bound of LONGLONG." when it does not fit.
    operator long() const;
    operator long long() const;

    // --- the same with built-in numbers -------------------------------------------------------------------
    //
    // Without these the conversions above would make such expressions ambiguous. Friends, so that they are
    // considered for this class only and not for what converts to it.
#define KVXML_MIXED_OPERATOR(Result, op)                   \
    template <class T, internal::EnableIfNumber<T> = 0>    \
    friend Result operator op(const CBigInteger& a, T b) { \
        return a op CBigInteger(b);                        \
    }                                                      \
    template <class T, internal::EnableIfNumber<T> = 0>    \
    friend Result operator op(T a, const CBigInteger& b) { \
        return CBigInteger(a) op b;                        \
    }
    KVXML_MIXED_OPERATOR(bool, ==)
    KVXML_MIXED_OPERATOR(bool, !=)
    KVXML_MIXED_OPERATOR(bool, <)
    KVXML_MIXED_OPERATOR(bool, <=)
    KVXML_MIXED_OPERATOR(bool, >)
    KVXML_MIXED_OPERATOR(bool, >=)
    KVXML_MIXED_OPERATOR(CBigInteger, +)
    KVXML_MIXED_OPERATOR(CBigInteger, -)
    KVXML_MIXED_OPERATOR(CBigInteger, *)
    KVXML_MIXED_OPERATOR(CBigInteger, /)
    KVXML_MIXED_OPERATOR(CBigInteger, %)
#undef KVXML_MIXED_OPERATOR

    /// Equal values have equal hashes.
    std::size_t GetHash() const noexcept;

    /// Writes ToString().
    friend KVXML_EXPORT std::ostream& operator<<(std::ostream& stream, const CBigInteger& value);

    /// Number of decimal digits; 1 for 0.
    std::int32_t GetDigitCount() const noexcept;

protected:
    using DigitVector = std::vector<char>;

    /// `sign` +1 or -1; `digits` 0 to 9, least significant first.
    CBigInteger(int sign, const DigitVector& digits);

    // Helpers for subclasses that work on decimal digits (0 to 9, not characters), least significant first.
    static void Build(unsigned int value, DigitVector& digits);
    static void BuildDWORDLONG(std::uint64_t value, DigitVector& digits);
    /// The integer part of the magnitude.
    static void BuildDouble(double value, DigitVector& digits);
    /// The run of digits at the end of `text`.
    static void Build(const std::string& text, DigitVector& digits);
    /// Drops high-order zeros; nothing becomes the single digit 0.
    static void Clean(DigitVector& digits);
    /// -1, 0 or 1.
    static int Compare(const DigitVector& a, const DigitVector& b);
    static void Add(const DigitVector& a, const DigitVector& b, DigitVector& result);
    /// `a` must not be less than `b`.
    static void Subtract(const DigitVector& a, const DigitVector& b, DigitVector& result);
    static void Multiply(const DigitVector& a, char digit, DigitVector& result);
    static void ShiftLeft(DigitVector& digits, int places);
    static void Multiply(const DigitVector& a, const DigitVector& b, DigitVector& result);
    /// Index of the most significant digit that is not 0; -1 for zero.
    static int Position(const DigitVector& digits);
    static void Pow10(unsigned int exponent, DigitVector& digits);
    /// `b` must not be zero.
    static void Divide(const DigitVector& a, const DigitVector& b, DigitVector& quotient,
                       DigitVector& remainder);

private:
    friend class CDecimal;

    void SetUInt64(std::uint64_t value);
    void SetBig(internal::BigNumber&& number);
    internal::BigNumber Number() const;
    int CompareSlow(const CBigInteger& other) const noexcept;
    static CBigInteger Sum(const CBigInteger& a, const CBigInteger& b, bool subtract);
    static CBigInteger Product(const CBigInteger& a, const CBigInteger& b);
    static CBigInteger Quotient(const CBigInteger& a, const CBigInteger& b, const char* zeroDivisor);
    static CBigInteger Remainder(const CBigInteger& a, const CBigInteger& b, const char* zeroDivisor);
    void CopyBig(const CBigInteger& other);
    void FreeBig() noexcept;
    void Forget() noexcept {
        m_value = 0;
        m_isBig = false;
    }

    // In place whenever the value fits; a heap value never does.
    union {
        std::int64_t m_value;
        internal::BigNumber* m_big;
    };
    bool m_isBig = false;
};

static_assert(sizeof(CBigInteger) <= 24, "CBigInteger is held in place by the variant");

}  // namespace KvXmlLib16

template <>
struct std::hash<KvXmlLib16::CBigInteger> {
    std::size_t operator()(const KvXmlLib16::CBigInteger& value) const noexcept { return value.GetHash(); }
};
