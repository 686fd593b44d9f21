#include "kvxml/types/big_integer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

#include "tests/support/error_of.h"

namespace KvXmlLib16 {
namespace {

using Invalid = CKvInvalidValueException;

const std::string kNines(40, '9');

std::string InvalidChar(int position, const std::string& text) {
    return "The string representing a Decimal, contained an invalid char at position " +
           std::to_string(position) + " [" + text + "].";
}

TEST(BigInteger, ParsesLeniently) {
    const struct {
        const char* text;
        const char* expected;
    } rows[] = {
        {"  -00123  ", "-123"},
        {"", "0"},
        {"12-3", "3"},
        {" \t-12", "12"},  // only spaces are skipped, so the sign does not come first
        {"-1.9", "-1"},
        {"1E3", "1000"},
        {"1-00010000000000000000000000000", "10000000000000000000000000"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(CBigInteger(row.text).ToString(), row.expected) << row.text;
}

TEST(BigInteger, HostileTexts) {
    const std::size_t kMega = 1 << 20;
    const std::string nines(kMega, '9');
    CBigInteger value("-" + nines);
    EXPECT_EQ(value.GetDigitCount(), static_cast<std::int32_t>(kMega));
    EXPECT_TRUE(value.ToString() == "-" + nines && CBigInteger(nines + ".5") == value.GetNegative());
    for (const char c : {'-', '+', ' ', '\t', '0'})
        EXPECT_EQ(CBigInteger(std::string(kMega, c)), 0) << c;
    EXPECT_EQ(CBigInteger(std::string(kMega, '-') + "7"), -7);

    const struct {
        std::string text;
        std::string message;
    } rows[] = {
        {std::string("1\0002", 3), InvalidChar(1, std::string("1\0002", 3))},
        {"\xd9\xa1", InvalidChar(0, "\xd9\xa1")},  // Arabic-Indic one
        {nines + "x", InvalidChar(kMega, nines + "x")},
        {"1E999999999", "The string representing a Decimal, is too large [1E999999999]."},
    };
    value = 5;
    for (const auto& row : rows)
        EXPECT_TRUE(ErrorOf<Invalid>([&] { value.Parse(row.text); }) == row.message) << row.text.substr(0, 9);
    EXPECT_EQ(value, 5) << "a refused text changes nothing";
    value.Parse(static_cast<const char*>(nullptr));
    EXPECT_EQ(value, 0);
}

TEST(BigInteger, ComesFromNumbersOfEveryType) {
    EXPECT_EQ(CBigInteger(4000000000UL).ToString(), "4000000000");
    EXPECT_EQ(CBigInteger(std::numeric_limits<std::uint64_t>::max()).ToString(), "18446744073709551615");
    EXPECT_EQ(CBigInteger(-1234.99).ToString(), "-1234");
    EXPECT_EQ(CBigInteger(std::numeric_limits<double>::max()).GetDigitCount(), 309);
    EXPECT_EQ(CBigInteger(CDecimal("-" + kNines + ".9")).ToString(), "-" + kNines);
    for (const double none : {std::nan(""), -std::numeric_limits<double>::infinity()})
        EXPECT_EQ(ErrorOf<Invalid>([&] { CBigInteger value(none); }), "ERROR: Value out of bound of double.");
}

class Numbers {
public:
    CBigInteger Next(std::size_t digits) {
        std::string text = m_random() % 2 != 0 ? "-" : "";
        // Runs of 0 and 9 reach the carries that evenly spread digits hardly ever do.
        for (std::size_t left = digits; left > 0;) {
            const std::size_t run = std::min<std::size_t>(left, 1 + m_random() % 12);
            const char choice[] = {'0', '9', static_cast<char>('0' + m_random() % 10)};
            text.append(run, choice[m_random() % 3]);
            left -= run;
        }
        return CBigInteger(text);
    }
    std::size_t Below(std::size_t limit) { return m_random() % limit; }

private:
    std::mt19937 m_random{12345};
};

void CheckIdentities(const CBigInteger& a, const CBigInteger& b) {
    ASSERT_TRUE((a + b) * (a - b) == a * a - b * b) << a.ToString() << " and " << b.ToString();
    const CBigInteger root = a.GetAbs().SquareRoot();
    ASSERT_TRUE(root * root <= a.GetAbs() && (root + 1) * (root + 1) > a.GetAbs()) << a.ToString();
    if (b == 0) return;
    const CBigInteger quotient = a / b;
    const CBigInteger remainder = a % b;
    ASSERT_TRUE(quotient * b + remainder == a) << a.ToString() << " / " << b.ToString();
    ASSERT_TRUE(remainder.GetAbs() < b.GetAbs()) << a.ToString() << " / " << b.ToString();
    ASSERT_TRUE(remainder == 0 || remainder.GetSign() == a.GetSign());
    ASSERT_TRUE(a * b / b == a && a * b % b == 0);
}

TEST(BigInteger, IdentitiesHoldForNumbersOfAnySize) {
    CheckIdentities("7", "-2");
    CheckIdentities("-9223372036854775808", "-1");
    // The estimate of a quotient limb is one too large here and has to be taken back.
    CheckIdentities("500000000000000000000000000000000000", "500000000000000000000000001");
    Numbers numbers;
    for (int i = 0; i < 2000; ++i)
        CheckIdentities(numbers.Next(1 + numbers.Below(120)), numbers.Next(1 + numbers.Below(60)));
    CheckIdentities(numbers.Next(10000), numbers.Next(10000));
    const CBigInteger a = CBigInteger::Pow10(10000) - 1;
    const CBigInteger square = a * a;
    EXPECT_TRUE(square.ToString() == std::string(9999, '9') + "8" + std::string(9999, '0') + "1");
    EXPECT_EQ(CBigInteger::Pow10(0), 1);
    EXPECT_TRUE((square - 1).SquareRoot() == a - 1 && square.SquareRoot() == a);
    EXPECT_TRUE((square + a + a).SquareRoot() == a && (square + a + a + 1).SquareRoot() == a + 1);
    CBigInteger value = 15;
    value -= 1;
    value *= -3;
    value /= 4;
    value %= 3;
    value += value;
    EXPECT_EQ(value, -2);
}

TEST(BigInteger, Failures) {
    CBigInteger value("-" + kNines);
    const CBigInteger before = value;
    EXPECT_EQ(ErrorOf<Invalid>([&] { value / 0; }), "ERROR: Overflow in operator/.");
    EXPECT_EQ(ErrorOf<Invalid>([&] { value % 0; }), "ERROR: Overflow in operator%.");
    EXPECT_EQ(ErrorOf<Invalid>([&] { value /= 0; }), "ERROR: Overflow in operator /=.");
    EXPECT_EQ(ErrorOf<Invalid>([&] { value %= CBigInteger("-0"); }), "ERROR: Overflow in operator%=.");
    EXPECT_EQ(ErrorOf<Invalid>([&] { value.SquareRoot(); }),
              "ERROR: Negative Number in function SquareRoot().");
    EXPECT_EQ(value, before);
    for (const char* text : {"2147483648", "-2147483649"}) {
        EXPECT_EQ(ErrorOf<Invalid>([&] { static_cast<void>(static_cast<int>(CBigInteger(text))); }),
                  "ERROR: Value out of bound of int.");
    }
    for (const char* text : {"9223372036854775808", "-9223372036854775809"}) {
        EXPECT_EQ(ErrorOf<Invalid>([&] { static_cast<void>(static_cast<std::int64_t>(CBigInteger(text))); }),
                  "ERROR: Value out of bound of LONGLONG.");
    }
    EXPECT_EQ(static_cast<int>(CBigInteger("-2147483648")), std::numeric_limits<int>::min());
    const auto least64 = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(static_cast<std::int64_t>(CBigInteger(std::to_string(least64))), least64);
}

TEST(BigInteger, SignAndOrder) {
    CBigInteger value("-" + kNines);
    EXPECT_EQ((-value).ToString(), kNines);
    EXPECT_EQ(value.ToString(), kNines) << "the unary operator changes its operand";
    value.Negate();
    EXPECT_EQ(value.Abs(), CBigInteger(kNines));
    CBigInteger least(std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(least.GetNegative().ToString(), "9223372036854775808");
    EXPECT_EQ(CBigInteger(0).Negate().ToString(), "0");

    const char* const ascending[] = {
        "-1E41", "-1E40", "-9223372036854775808", "-1", "0", "9223372036854775807", "9223372036854775808",
        "1E40",  "1E41"};
    for (std::size_t i = 0; i < std::size(ascending); ++i) {
        for (std::size_t k = 0; k < std::size(ascending); ++k) {
            const CBigInteger a(ascending[i]);
            const CBigInteger b(ascending[k]);
            EXPECT_EQ(a.CompareTo(b), i < k ? -1 : (i > k ? 1 : 0))
                << ascending[i] << " and " << ascending[k];
        }
    }
}

class CDigits : public CBigInteger {
public:
    using Digits = DigitVector;
    CDigits(int sign, const Digits& digits) : CBigInteger(sign, digits) {}
    static Digits Of(const std::string& text) {
        Digits digits;
        Build(text, digits);
        return digits;
    }
    static std::string Text(const Digits& digits) { return CDigits(1, digits).ToString(); }
    static void Check() {
        Digits out;
        Digits rest;
        BuildDWORDLONG(1203, out);
        EXPECT_EQ(out, (Digits{3, 0, 2, 1}));
        BuildDouble(12.9, out);
        EXPECT_EQ(out, (Digits{2, 1}));
        EXPECT_EQ(Of("ab0012"), (Digits{2, 1}));
        EXPECT_EQ(Compare(Of("99"), Of("100")), -1);
        EXPECT_EQ(CDigits(-1, {}).ToString(), "0");
        Add(Of("99"), Of("1"), out);
        EXPECT_EQ(Text(out), "100");
        Subtract(Of("100"), Of("1"), out);
        EXPECT_EQ(Text(out), "99");
        Multiply(Of("99"), 9, out);
        ShiftLeft(out, 2);
        EXPECT_EQ(Text(out), "89100");
        Divide(Of("1000"), Of("7"), out, rest);
        EXPECT_EQ(Text(out) + " " + Text(rest), "142 6");
        Pow10(3, out);
        EXPECT_EQ(Position(out), 3);
        EXPECT_EQ(CDigits(-1, {5, 0, 1, 0}).ToString(), "-105");
    }
};

TEST(BigInteger, DigitVectorsOfSubclasses) {
    CDigits::Check();
}

}  // namespace
}  // namespace KvXmlLib16
