#include "kvxml/types/internal/big_number.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace KvXmlLib16::internal {

namespace {

constexpr std::uint32_t kPow10[] = {1,      10,      100,      1000,      10000,
                                    100000, 1000000, 10000000, 100000000, 1000000000};

using Limbs = BigNumber::Limbs;
constexpr std::uint64_t kBase = BigNumber::kBase;
constexpr std::uint32_t kBase32 = 1000000000;

Limbs AddLimbs(const Limbs& a, const Limbs& b) {
    const Limbs& longer = a.size() >= b.size() ? a : b;
    const Limbs& shorter = a.size() >= b.size() ? b : a;
    Limbs sum;
    sum.reserve(longer.size() + 1);
    std::uint32_t carry = 0;
    for (std::size_t i = 0; i < longer.size(); ++i) {
        std::uint32_t digit = longer[i] + carry + (i < shorter.size() ? shorter[i] : 0);
        carry = digit >= kBase ? 1 : 0;
        if (carry != 0) digit -= kBase32;
        sum.push_back(digit);
    }
    if (carry != 0) sum.push_back(carry);
    return sum;
}

// a >= b
Limbs SubtractLimbs(const Limbs& a, const Limbs& b) {
    Limbs difference(a.size());
    std::uint32_t borrow = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const std::uint32_t subtrahend = (i < b.size() ? b[i] : 0) + borrow;
        borrow = a[i] < subtrahend ? 1 : 0;
        difference[i] = a[i] + (borrow != 0 ? kBase32 : 0) - subtrahend;
    }
    return difference;
}

// Divides in place and returns the remainder.
std::uint32_t DivideBySmall(Limbs& limbs, std::uint32_t divisor) {
    std::uint64_t remainder = 0;
    for (std::size_t i = limbs.size(); i-- > 0;) {
        const std::uint64_t current = remainder * kBase + limbs[i];
        limbs[i] = static_cast<std::uint32_t>(current / divisor);
        remainder = current % divisor;
    }
    return static_cast<std::uint32_t>(remainder);
}

void MultiplyBySmall(Limbs& limbs, std::uint32_t factor) {
    std::uint64_t carry = 0;
    for (std::uint32_t& limb : limbs) {
        const std::uint64_t current = std::uint64_t{limb} * factor + carry;
        limb = static_cast<std::uint32_t>(current % kBase);
        carry = current / kBase;
    }
    if (carry != 0) limbs.push_back(static_cast<std::uint32_t>(carry));
}

}  // namespace

BigNumber BigNumber::FromMagnitude(UInt128 magnitude, bool isNegative) {
    BigNumber number;
    number.negative = isNegative && magnitude != 0;
    for (; magnitude != 0; magnitude /= kBase)
        number.limbs.push_back(static_cast<std::uint32_t>(magnitude % kBase));
    return number;
}

BigNumber BigNumber::FromInt64(std::int64_t value) {
    const auto bits = static_cast<std::uint64_t>(value);
    return FromMagnitude(value < 0 ? 0 - bits : bits, value < 0);
}

BigNumber BigNumber::FromDigits(std::string_view digits, bool isNegative) {
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    BigNumber number;
    number.limbs.reserve(digits.size() / kLimbDigits + 1);
    for (std::size_t end = digits.size(); end > 0;) {
        const std::size_t begin = end > kLimbDigits ? end - kLimbDigits : 0;
        std::uint32_t limb = 0;
        for (std::size_t i = begin; i < end; ++i)
            limb = limb * 10 + static_cast<std::uint32_t>(digits[i] - '0');
        number.limbs.push_back(limb);
        end = begin;
    }
    number.negative = isNegative && !number.limbs.empty();
    return number;
}

BigNumber BigNumber::FromDouble(double value) {
    int exponent = 0;
    const double fraction = std::frexp(std::fabs(std::trunc(value)), &exponent);
    if (fraction == 0.0) return {};
    // The 53 significant bits, shifted to where they belong.
    const auto mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, 53));
    BigNumber number = FromMagnitude(exponent < 53 ? mantissa >> (53 - exponent) : mantissa, value < 0);
    for (int shift = exponent - 53; shift > 0; shift -= 29)
        MultiplyBySmall(number.limbs, 1U << std::min(shift, 29));
    return number;
}

bool BigNumber::FitsInt64(std::int64_t& value) const noexcept {
    if (limbs.size() > 3) return false;
    UInt128 magnitude = 0;
    for (std::size_t i = limbs.size(); i-- > 0;)
        magnitude = magnitude * kBase + limbs[i];
    if (magnitude > (UInt128{1} << 63) - (negative ? 0 : 1)) return false;
    const auto bits = static_cast<std::uint64_t>(magnitude);
    value = static_cast<std::int64_t>(negative ? 0 - bits : bits);
    return true;
}

std::size_t BigNumber::DigitCount() const noexcept {
    if (limbs.empty()) return 0;
    std::size_t top = 1;
    while (top < kLimbDigits && limbs.back() >= kPow10[top])
        ++top;
    return (limbs.size() - 1) * kLimbDigits + top;
}

unsigned int BigNumber::Digit(std::size_t index) const noexcept {
    const std::size_t limb = index / kLimbDigits;
    return limb < limbs.size() ? limbs[limb] / kPow10[index % kLimbDigits] % 10 : 0;
}

std::size_t BigNumber::TrailingZeros(std::size_t limit) const noexcept {
    std::size_t zeros = 0;
    for (std::uint32_t limb : limbs) {
        if (limb == 0) {
            zeros += kLimbDigits;
        } else {
            for (; limb % 10 == 0; limb /= 10)
                ++zeros;
            break;
        }
    }
    return std::min(zeros, limit);
}

char* BigNumber::WriteDigits(char* out) const noexcept {
    char* const end = out + DigitCount();
    char* position = end;
    for (std::uint32_t limb : limbs) {
        for (std::size_t i = 0; i < kLimbDigits && position > out; ++i, limb /= 10) {
            *--position = static_cast<char>('0' + limb % 10);
        }
    }
    return end;
}

void BigNumber::AppendDigits(std::string& out) const {
    const std::size_t length = out.size();
    out.resize(length + DigitCount());
    WriteDigits(out.data() + length);
}

void BigNumber::MultiplyByPow10(std::size_t exponent) {
    if (limbs.empty() || exponent == 0) return;
    if (exponent % kLimbDigits != 0) MultiplyBySmall(limbs, kPow10[exponent % kLimbDigits]);
    limbs.insert(limbs.begin(), exponent / kLimbDigits, 0);
}

void BigNumber::DivideByPow10(std::size_t exponent) {
    const std::size_t whole = std::min(exponent / kLimbDigits, limbs.size());
    limbs.erase(limbs.begin(), limbs.begin() + static_cast<std::ptrdiff_t>(whole));
    if (exponent % kLimbDigits != 0) DivideBySmall(limbs, kPow10[exponent % kLimbDigits]);
    Trim();
}

void BigNumber::IncrementMagnitude() {
    for (std::uint32_t& limb : limbs) {
        if (++limb < kBase) return;
        limb = 0;
    }
    limbs.push_back(1);
}

void BigNumber::Trim() noexcept {
    while (!limbs.empty() && limbs.back() == 0)
        limbs.pop_back();
    if (limbs.empty()) negative = false;
}

int BigNumber::CompareMagnitude(const BigNumber& a, const BigNumber& b) noexcept {
    if (a.limbs.size() != b.limbs.size()) return a.limbs.size() < b.limbs.size() ? -1 : 1;
    for (std::size_t i = a.limbs.size(); i-- > 0;) {
        if (a.limbs[i] != b.limbs[i]) return a.limbs[i] < b.limbs[i] ? -1 : 1;
    }
    return 0;
}

int BigNumber::Compare(const BigNumber& a, const BigNumber& b) noexcept {
    if (a.negative != b.negative) return a.negative ? -1 : 1;
    const int magnitude = CompareMagnitude(a, b);
    return a.negative ? -magnitude : magnitude;
}

BigNumber BigNumber::Add(const BigNumber& a, const BigNumber& b) {
    BigNumber sum;
    if (a.negative == b.negative) {
        sum.limbs = AddLimbs(a.limbs, b.limbs);
        sum.negative = a.negative;
    } else {
        const int order = CompareMagnitude(a, b);
        if (order == 0) return sum;
        sum.limbs = order > 0 ? SubtractLimbs(a.limbs, b.limbs) : SubtractLimbs(b.limbs, a.limbs);
        sum.negative = order > 0 ? a.negative : b.negative;
    }
    sum.Trim();
    return sum;
}

BigNumber BigNumber::Subtract(const BigNumber& a, const BigNumber& b) {
    BigNumber negated = b;
    negated.negative = !b.negative && !b.IsZero();
    return Add(a, negated);
}

BigNumber BigNumber::Multiply(const BigNumber& a, const BigNumber& b) {
    BigNumber product;
    if (a.IsZero() || b.IsZero()) return product;
    product.negative = a.negative != b.negative;
    product.limbs.assign(a.limbs.size() + b.limbs.size(), 0);
    for (std::size_t i = 0; i < a.limbs.size(); ++i) {
        const std::uint64_t factor = a.limbs[i];
        std::uint64_t carry = 0;
        std::size_t k = i;
        for (std::uint32_t limb : b.limbs) {
            const std::uint64_t current = product.limbs[k] + factor * limb + carry;
            product.limbs[k++] = static_cast<std::uint32_t>(current % kBase);
            carry = current / kBase;
        }
        product.limbs[k] = static_cast<std::uint32_t>(carry);
    }
    product.Trim();
    return product;
}

// Long division as in Knuth, The Art of Computer Programming, volume 2, algorithm D.
void BigNumber::Divide(const BigNumber& a, const BigNumber& b, BigNumber& quotient, BigNumber& remainder) {
    BigNumber q;
    BigNumber r = a;
    if (CompareMagnitude(a, b) >= 0) {
        q.negative = a.negative != b.negative;
        const std::size_t n = b.limbs.size();
        if (n == 1) {
            q.limbs = a.limbs;
            r.limbs.assign(1, DivideBySmall(q.limbs, b.limbs[0]));
        } else {
            // Scaled so that the divisor's highest limb is at least half the base: then an estimated quotient
            // limb is at most 2 too large.
            const auto scale = static_cast<std::uint32_t>(kBase / (b.limbs.back() + std::uint64_t{1}));
            Limbs divisor = b.limbs;
            MultiplyBySmall(divisor, scale);
            Limbs& u = r.limbs;
            const std::size_t m = u.size() - n;
            MultiplyBySmall(u, scale);
            u.resize(n + m + 1, 0);
            q.limbs.assign(m + 1, 0);
            for (std::size_t j = m + 1; j-- > 0;) {
                const std::uint64_t top = u[j + n] * kBase + u[j + n - 1];
                std::uint64_t estimate = top / divisor[n - 1];
                std::uint64_t rest = top % divisor[n - 1];
                while (estimate >= kBase || estimate * divisor[n - 2] > rest * kBase + u[j + n - 2]) {
                    --estimate;
                    rest += divisor[n - 1];
                    if (rest >= kBase) break;
                }
                std::uint64_t carry = 0;
                std::uint32_t borrow = 0;
                for (std::size_t i = 0; i <= n; ++i) {
                    const std::uint64_t part = (i < n ? estimate * divisor[i] : 0) + carry;
                    carry = part / kBase;
                    const auto subtrahend = static_cast<std::uint32_t>(part % kBase) + borrow;
                    borrow = u[j + i] < subtrahend ? 1 : 0;
                    u[j + i] += (borrow != 0 ? kBase32 : 0);
                    u[j + i] -= subtrahend;
                }
                if (borrow != 0) {  // one too large after all: add the divisor back
                    --estimate;
                    std::uint32_t back = 0;
                    for (std::size_t i = 0; i <= n; ++i) {
                        std::uint32_t limb = u[j + i] + (i < n ? divisor[i] : 0) + back;
                        back = limb >= kBase ? 1 : 0;
                        if (back != 0) limb -= kBase32;
                        u[j + i] = limb;
                    }
                }
                q.limbs[j] = static_cast<std::uint32_t>(estimate);
            }
            DivideBySmall(u, scale);
        }
        q.Trim();
        r.Trim();
    }
    quotient = std::move(q);
    remainder = std::move(r);
}

BigNumber BigNumber::SquareRoot(const BigNumber& a) {
    if (a.IsZero()) return {};
    // Newton's iteration from above; it falls until it reaches the root.
    BigNumber root;
    root.limbs.assign(1, 1);
    root.MultiplyByPow10((a.DigitCount() + 1) / 2);
    for (;;) {
        BigNumber next;
        BigNumber rest;
        Divide(a, root, next, rest);
        next = Add(next, root);
        DivideBySmall(next.limbs, 2);
        next.Trim();
        if (CompareMagnitude(next, root) >= 0) return root;
        root = std::move(next);
    }
}

}  // namespace KvXmlLib16::internal
