/// Arithmetic on integers of any size, shared by CDecimal and CBigInteger.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace KvXmlLib16::internal {

__extension__ typedef unsigned __int128 UInt128;

/// Sign and magnitude; the magnitude in base 10^9, so that text and powers of ten cost linear time.
struct BigNumber {
    static constexpr std::uint64_t kBase = 1000000000;
    static constexpr std::size_t kLimbDigits = 9;
    using Limbs = std::vector<std::uint32_t>;

    bool negative = false;  // never set for zero
    Limbs limbs;            // least significant first, no zero at the high end; zero has none

    static BigNumber FromInt64(std::int64_t value);
    static BigNumber FromMagnitude(UInt128 magnitude, bool isNegative);
    /// `digits` holds decimal digit characters only.
    static BigNumber FromDigits(std::string_view digits, bool isNegative);
    /// The integer part of a finite number, exactly.
    static BigNumber FromDouble(double value);

    bool IsZero() const noexcept { return limbs.empty(); }
    /// True, with the value, when it fits 64 bits.
    bool FitsInt64(std::int64_t& value) const noexcept;
    /// 0 for zero.
    std::size_t DigitCount() const noexcept;
    /// Decimal digit at position `index` from the least significant one.
    unsigned int Digit(std::size_t index) const noexcept;
    /// Zero digits at the low end, at most `limit`.
    std::size_t TrailingZeros(std::size_t limit) const noexcept;
    /// Appends the digits of the magnitude; nothing for zero.
    void AppendDigits(std::string& out) const;
    /// Writes the digits of the magnitude to a buffer of DigitCount() characters.
    char* WriteDigits(char* out) const noexcept;

    void MultiplyByPow10(std::size_t exponent);
    /// Truncates toward zero.
    void DivideByPow10(std::size_t exponent);
    /// Adds 1 to the magnitude.
    void IncrementMagnitude();
    void Trim() noexcept;

    static int CompareMagnitude(const BigNumber& a, const BigNumber& b) noexcept;
    static int Compare(const BigNumber& a, const BigNumber& b) noexcept;
    static BigNumber Add(const BigNumber& a, const BigNumber& b);
    static BigNumber Subtract(const BigNumber& a, const BigNumber& b);
    static BigNumber Multiply(const BigNumber& a, const BigNumber& b);
    /// Quotient truncated toward zero, remainder with the sign of `a`. `b` must not be zero.
    static void Divide(const BigNumber& a, const BigNumber& b, BigNumber& quotient, BigNumber& remainder);
    /// Largest integer whose square does not exceed `a`, which must not be negative.
    static BigNumber SquareRoot(const BigNumber& a);
};

/// A count of digits as the public interface gives it, cut to what 32 bits hold.
inline std::int32_t ToCount(std::size_t count) noexcept {
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    return count < static_cast<std::size_t>(kMost) ? static_cast<std::int32_t>(count) : kMost;
}

}  // namespace KvXmlLib16::internal
