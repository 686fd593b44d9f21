#include "kvxml/types/big_integer.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/types/internal/big_number.h"
#include "kvxml/types/internal/value_hash.h"

namespace KvXmlLib16 {

using internal::BigNumber;

// --- construction -----------------------------------------------------------------------------------------

CBigInteger::CBigInteger(const char* text) : CBigInteger(std::string_view(internal::OrEmpty(text))) {}

CBigInteger::CBigInteger(double value) : m_value(0) {
    if (!std::isfinite(value)) throw CKvInvalidValueException("ERROR: Value out of bound of double.");
    SetBig(BigNumber::FromDouble(value));
}

CBigInteger::CBigInteger(const CDecimal& value) : m_value(0) {
    CDecimal whole(value);
    whole.ChangeFractionalDivider(0);
    if (whole.m_isBig) {
        SetBig(std::move(*whole.m_big));
    } else {
        m_value = whole.ToInt64();
    }
}

CBigInteger::CBigInteger(int sign, const DigitVector& digits) : m_value(0) {
    std::string text;
    text.reserve(digits.size());
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit)
        text += static_cast<char>('0' + *digit);
    SetBig(BigNumber::FromDigits(text, sign < 0));
}

void CBigInteger::SetUInt64(std::uint64_t value) {
    if (value > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        SetBig(BigNumber::FromMagnitude(value, false));
    } else {
        m_value = static_cast<std::int64_t>(value);
    }
}

void CBigInteger::SetBig(BigNumber&& number) {
    std::int64_t small = 0;
    if (number.FitsInt64(small)) {
        if (m_isBig) FreeBig();
        m_value = small;
        m_isBig = false;
    } else if (m_isBig) {
        *m_big = std::move(number);
    } else {
        m_big = new BigNumber(std::move(number));
        m_isBig = true;
    }
}

void CBigInteger::CopyBig(const CBigInteger& other) {
    m_big = new BigNumber(*other.m_big);
    m_isBig = true;
}

void CBigInteger::FreeBig() noexcept {
    delete m_big;
}

BigNumber CBigInteger::Number() const {
    return m_isBig ? *m_big : BigNumber::FromInt64(m_value);
}

// --- text -------------------------------------------------------------------------------------------------

void CBigInteger::Parse(const char* text) {
    Parse(std::string_view(internal::OrEmpty(text)));
}

void CBigInteger::Parse(std::string_view text) {
    if (text.find_first_not_of("0123456789+- \t\n\r") != std::string_view::npos) {
        *this = CBigInteger(CDecimal(text));
        return;
    }
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    const bool negative = !text.empty() && text.front() == '-';
    const std::size_t lastOther = text.find_last_not_of("0123456789");
    const std::string_view digits = text.substr(lastOther == std::string_view::npos ? 0 : lastOther + 1);
    if (digits.size() <= 18) {
        std::int64_t value = 0;
        for (const char c : digits)
            value = value * 10 + (c - '0');
        if (m_isBig) FreeBig();
        m_isBig = false;
        m_value = negative ? -value : value;
    } else {
        SetBig(BigNumber::FromDigits(digits, negative));
    }
}

void CBigInteger::AppendTo(std::string& out) const {
    if (m_isBig) {
        if (m_big->negative) out += '-';
        m_big->AppendDigits(out);
        return;
    }
    char buffer[24];
    out.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, m_value).ptr);
}

std::string CBigInteger::ToString() const {
    std::string text;
    AppendTo(text);
    return text;
}

std::int32_t CBigInteger::GetDigitCount() const noexcept {
    if (m_isBig) return internal::ToCount(m_big->DigitCount());
    std::int32_t digits = 1;
    for (std::int64_t value = m_value / 10; value != 0; value /= 10)
        ++digits;
    return digits;
}

// --- sign -------------------------------------------------------------------------------------------------

int CBigInteger::GetSign() const noexcept {
    if (m_isBig) return m_big->negative ? -1 : 1;
    return m_value < 0 ? -1 : (m_value > 0 ? 1 : 0);
}

CBigInteger& CBigInteger::Negate() {
    if (!m_isBig && m_value != std::numeric_limits<std::int64_t>::min()) {
        m_value = -m_value;
        return *this;
    }
    BigNumber number = Number();
    number.negative = !number.negative;
    SetBig(std::move(number));
    return *this;
}

CBigInteger& CBigInteger::Abs() {
    return GetSign() < 0 ? Negate() : *this;
}

CBigInteger CBigInteger::GetAbs() const {
    return CBigInteger(*this).Abs();
}

CBigInteger CBigInteger::GetNegative() const {
    return CBigInteger(*this).Negate();
}

// --- arithmetic -------------------------------------------------------------------------------------------

CBigInteger CBigInteger::Sum(const CBigInteger& a, const CBigInteger& b, bool subtract) {
    CBigInteger result;
    if (!a.m_isBig && !b.m_isBig &&
        !(subtract ? __builtin_sub_overflow(a.m_value, b.m_value, &result.m_value)
                   : __builtin_add_overflow(a.m_value, b.m_value, &result.m_value))) {
        return result;
    }
    result.SetBig(subtract ? BigNumber::Subtract(a.Number(), b.Number())
                           : BigNumber::Add(a.Number(), b.Number()));
    return result;
}

CBigInteger CBigInteger::Product(const CBigInteger& a, const CBigInteger& b) {
    CBigInteger result;
    if (!a.m_isBig && !b.m_isBig && !__builtin_mul_overflow(a.m_value, b.m_value, &result.m_value))
        return result;
    result.SetBig(BigNumber::Multiply(a.Number(), b.Number()));
    return result;
}

CBigInteger CBigInteger::Quotient(const CBigInteger& a, const CBigInteger& b, const char* zeroDivisor) {
    if (b.GetSign() == 0) throw CKvInvalidValueException(zeroDivisor);
    // -1 is left to the general way: the least 64-bit value has no negative of that size.
    if (!a.m_isBig && !b.m_isBig && b.m_value != -1) return CBigInteger(a.m_value / b.m_value);
    BigNumber quotient;
    BigNumber remainder;
    BigNumber::Divide(a.Number(), b.Number(), quotient, remainder);
    CBigInteger result;
    result.SetBig(std::move(quotient));
    return result;
}

CBigInteger CBigInteger::Remainder(const CBigInteger& a, const CBigInteger& b, const char* zeroDivisor) {
    if (b.GetSign() == 0) throw CKvInvalidValueException(zeroDivisor);
    if (!a.m_isBig && !b.m_isBig && b.m_value != -1) return CBigInteger(a.m_value % b.m_value);
    BigNumber quotient;
    BigNumber remainder;
    BigNumber::Divide(a.Number(), b.Number(), quotient, remainder);
    CBigInteger result;
    result.SetBig(std::move(remainder));
    return result;
}

CBigInteger CBigInteger::SquareRoot() const {
    if (GetSign() < 0) throw CKvInvalidValueException("ERROR: Negative Number in function SquareRoot().");
    CBigInteger result;
    result.SetBig(BigNumber::SquareRoot(Number()));
    return result;
}

CBigInteger CBigInteger::Pow10(unsigned int exponent) {
    BigNumber number = BigNumber::FromInt64(1);
    number.MultiplyByPow10(exponent);
    CBigInteger result;
    result.SetBig(std::move(number));
    return result;
}

// --- comparison and conversion ----------------------------------------------------------------------------

int CBigInteger::CompareSlow(const CBigInteger& other) const noexcept {
    // At least one is beyond 64 bits, so that against one in place its sign decides.
    if (!m_isBig) return other.m_big->negative ? 1 : -1;
    if (!other.m_isBig) return m_big->negative ? -1 : 1;
    return BigNumber::Compare(*m_big, *other.m_big);
}

CBigInteger::operator int() const {
    if (m_isBig || m_value < std::numeric_limits<std::int32_t>::min() ||
        m_value > std::numeric_limits<std::int32_t>::max()) {
        throw CKvInvalidValueException("ERROR: Value out of bound of int.");
    }
    return static_cast<int>(m_value);
}

CBigInteger::operator long long() const {
    if (m_isBig) throw CKvInvalidValueException("ERROR: Value out of bound of LONGLONG.");
    return m_value;
}

CBigInteger::operator long() const {
    if constexpr (sizeof(long) < sizeof(std::int64_t)) return operator int();
    return static_cast<long>(operator long long());
}

// --- digit vectors ----------------------------------------------------------------------------------------

namespace {

BigNumber FromDigitVector(const std::vector<char>& digits) {
    std::string text;
    text.reserve(digits.size());
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit)
        text += static_cast<char>('0' + *digit);
    return BigNumber::FromDigits(text, false);
}

void ToDigitVector(const BigNumber& number, std::vector<char>& digits) {
    std::string text;
    number.AppendDigits(text);
    digits.clear();
    for (auto c = text.rbegin(); c != text.rend(); ++c)
        digits.push_back(static_cast<char>(*c - '0'));
    if (digits.empty()) digits.push_back(0);
}

}  // namespace

void CBigInteger::Build(unsigned int value, DigitVector& digits) {
    BuildDWORDLONG(value, digits);
}

void CBigInteger::BuildDWORDLONG(std::uint64_t value, DigitVector& digits) {
    ToDigitVector(BigNumber::FromMagnitude(value, false), digits);
}

void CBigInteger::BuildDouble(double value, DigitVector& digits) {
    ToDigitVector(CBigInteger(value).Number(), digits);
}

void CBigInteger::Build(const std::string& text, DigitVector& digits) {
    const std::size_t lastOther = text.find_last_not_of("0123456789");
    const std::size_t first = lastOther == std::string::npos ? 0 : lastOther + 1;
    ToDigitVector(BigNumber::FromDigits(std::string_view(text).substr(first), false), digits);
}

void CBigInteger::Clean(DigitVector& digits) {
    while (digits.size() > 1 && digits.back() == 0)
        digits.pop_back();
    if (digits.empty()) digits.push_back(0);
}

int CBigInteger::Compare(const DigitVector& a, const DigitVector& b) {
    return BigNumber::CompareMagnitude(FromDigitVector(a), FromDigitVector(b));
}

void CBigInteger::Add(const DigitVector& a, const DigitVector& b, DigitVector& result) {
    ToDigitVector(BigNumber::Add(FromDigitVector(a), FromDigitVector(b)), result);
}

void CBigInteger::Subtract(const DigitVector& a, const DigitVector& b, DigitVector& result) {
    ToDigitVector(BigNumber::Subtract(FromDigitVector(a), FromDigitVector(b)), result);
}

void CBigInteger::Multiply(const DigitVector& a, char digit, DigitVector& result) {
    Multiply(a, DigitVector(1, digit), result);
}

void CBigInteger::ShiftLeft(DigitVector& digits, int places) {
    if (places > 0) digits.insert(digits.begin(), static_cast<std::size_t>(places), 0);
    Clean(digits);
}

void CBigInteger::Multiply(const DigitVector& a, const DigitVector& b, DigitVector& result) {
    ToDigitVector(BigNumber::Multiply(FromDigitVector(a), FromDigitVector(b)), result);
}

int CBigInteger::Position(const DigitVector& digits) {
    int position = static_cast<int>(digits.size()) - 1;
    while (position >= 0 && digits[static_cast<std::size_t>(position)] == 0)
        --position;
    return position;
}

void CBigInteger::Pow10(unsigned int exponent, DigitVector& digits) {
    digits.assign(exponent, 0);
    digits.push_back(1);
}

void CBigInteger::Divide(const DigitVector& a, const DigitVector& b, DigitVector& quotient,
                         DigitVector& remainder) {
    BigNumber q;
    BigNumber r;
    BigNumber::Divide(FromDigitVector(a), FromDigitVector(b), q, r);
    ToDigitVector(q, quotient);
    ToDigitVector(r, remainder);
}

std::size_t CBigInteger::GetHash() const noexcept {
    if (!m_isBig) return internal::HashOf(m_value);
    std::size_t hash = internal::HashOf(m_big->negative);
    for (const std::uint32_t limb : m_big->limbs)
        hash = internal::HashOf(hash, limb);
    return hash;
}

}  // namespace KvXmlLib16
