#include "kvxml/types/big_integer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "kvxml/runtime/exceptions.h"

namespace KvXmlLib16 {
namespace {

template <class Action>
std::string MessageOf(Action action) {
    try {
        action();
    } catch (const CKvInvalidValueException& e) {
        return e.GetMessage();
    }
    return "nothing thrown";
}

const std::string kNines(40, '9');

TEST(BigInteger, ParsesLeniently) {
    const struct {
        std::string text;
        std::string expected;
    } rows[] = {
        {"  -00123  ", "-123"},
        {"", "0"},
        {"   ", "0"},
        {"-", "0"},
        {"-0", "0"},
        {"+5", "5"},
        {"12-3", "3"},
        {"1 2", "2"},
        {"-1-2", "-2"},
        {"\t12", "12"},
        {"1.9", "1"},
        {"-1.9", "-1"},
        {"1E3", "1000"},
        {"12\n", "0"},
        {"-9223372036854775808", "-9223372036854775808"},
        {"9223372036854775808", "9223372036854775808"},
        {"-" + kNines, "-" + kNines},
        {"000" + kNines + " ", kNines},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(CBigInteger(row.text).ToString(), row.expected);
    }
    EXPECT_EQ(MessageOf([] { CBigInteger value("12a"); }),
              "The string representing a Decimal, contained an invalid char at position 2 [12a].");
}

TEST(BigInteger, ComesFromNumbersOfEveryType) {
    EXPECT_EQ(CBigInteger(-5).ToString(), "-5");
    EXPECT_EQ(CBigInteger(4000000000UL).ToString(), "4000000000");
    EXPECT_EQ(CBigInteger(std::numeric_limits<long long>::min()).ToString(), "-9223372036854775808");
    EXPECT_EQ(CBigInteger(std::numeric_limits<unsigned long long>::max()).ToString(), "18446744073709551615");
    EXPECT_EQ(CBigInteger(-1234.99).ToString(), "-1234");
    EXPECT_EQ(CBigInteger(0.5).ToString(), "0");
    EXPECT_EQ(CBigInteger(std::ldexp(1.0, 100)).ToString(), "1267650600228229401496703205376");
    EXPECT_EQ(CBigInteger(std::numeric_limits<double>::max()).GetDigitCount(), 309);
    EXPECT_EQ(CBigInteger(CDecimal("-" + kNines + ".9")).ToString(), "-" + kNines);
    EXPECT_EQ(CBigInteger(CDecimal("-0.9")).ToString(), "0");
    EXPECT_THROW(CBigInteger(std::nan("")), CKvInvalidValueException);
}

TEST(BigInteger, Arithmetic) {
    const struct {
        std::string a;
        std::string b;
        std::string sum;
        std::string difference;
        std::string product;
        std::string quotient;
        std::string remainder;
    } rows[] = {
        {"7", "-2", "5", "9", "-14", "-3", "1"},
        {"-7", "2", "-5", "-9", "-14", "-3", "-1"},
        {"3", "7", "10", "-4", "21", "0", "3"},
        {"-9223372036854775808", "-1", "-9223372036854775809", "-9223372036854775807", "9223372036854775808",
         "9223372036854775808", "0"},
        {"9223372036854775807", "9223372036854775807", "18446744073709551614", "0",
         "85070591730234615847396907784232501249", "1", "0"},
        {kNines, "1", "1" + std::string(40, '0'), std::string(39, '9') + "8", kNines, kNines, "0"},
        {"-" + kNines, "10", "-" + std::string(38, '9') + "89", "-1" + std::string(38, '0') + "09",
         "-" + kNines + "0", "-" + std::string(39, '9'), "-9"},
        // The estimate of a quotient limb is one too large here and has to be taken back.
        {"500000000000000000000000000000000000", "500000000000000000000000001",
         "500000000500000000000000000000000001", "499999999499999999999999999999999999",
         "250000000000000000000000000500000000000000000000000000000000000", "999999999",
         "499999999999999999000000001"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.a + " and " + row.b);
        const CBigInteger a(row.a);
        const CBigInteger b(row.b);
        EXPECT_EQ((a + b).ToString(), row.sum);
        EXPECT_EQ((a - b).ToString(), row.difference);
        EXPECT_EQ((a * b).ToString(), row.product);
        EXPECT_EQ((a / b).ToString(), row.quotient);
        EXPECT_EQ((a % b).ToString(), row.remainder);
    }
    CBigInteger value = 10;
    value += 5;
    value -= CBigInteger("1");
    value *= -3;
    EXPECT_EQ(value, -42);
    value /= 4;
    EXPECT_EQ(value, -10);
    value %= 3;
    EXPECT_EQ(value, -1);
}

TEST(BigInteger, DivisionUndoesMultiplication) {
    std::mt19937 random(12345);
    const auto number = [&](std::size_t maxDigits) {
        std::string digits = random() % 2 != 0 ? "-" : "";
        // Runs of 0 and 9 reach the carries that evenly spread digits hardly ever do.
        for (std::size_t left = 1 + random() % maxDigits; left > 0;) {
            const std::size_t run = std::min<std::size_t>(left, 1 + random() % 12);
            const char choice[] = {'0', '9', static_cast<char>('0' + random() % 10)};
            digits.append(run, choice[random() % 3]);
            left -= run;
        }
        return CBigInteger(digits);
    };
    for (int i = 0; i < 3000; ++i) {
        const CBigInteger a = number(120);
        const CBigInteger b = number(60);
        if (b == 0) continue;
        const CBigInteger quotient = a / b;
        const CBigInteger remainder = a % b;
        ASSERT_EQ(quotient * b + remainder, a) << a.ToString() << " / " << b.ToString();
        ASSERT_LT(remainder.GetAbs(), b.GetAbs()) << a.ToString() << " / " << b.ToString();
        ASSERT_TRUE(remainder == 0 || remainder.GetSign() == a.GetSign());
        const CBigInteger root = a.GetAbs().SquareRoot();
        ASSERT_TRUE(root * root <= a.GetAbs() && (root + 1) * (root + 1) > a.GetAbs()) << a.ToString();
    }
}

TEST(BigInteger, TenThousandDigits) {
    const CBigInteger a = CBigInteger::Pow10(10000) - 1;
    const CBigInteger square = a * a;
    EXPECT_EQ(square.ToString(), std::string(9999, '9') + "8" + std::string(9999, '0') + "1");
    EXPECT_EQ(square / a, a);
    EXPECT_EQ(square % a, 0);
    EXPECT_EQ((square + a).SquareRoot(), a);
}

TEST(BigInteger, Failures) {
    CBigInteger value = 5;
    EXPECT_EQ(MessageOf([&] { value / 0; }), "ERROR: Overflow in operator/.");
    EXPECT_EQ(MessageOf([&] { value % 0; }), "ERROR: Overflow in operator%.");
    EXPECT_EQ(MessageOf([&] { value /= 0; }), "ERROR: Overflow in operator /=.");
    EXPECT_EQ(MessageOf([&] { value %= CBigInteger(""); }), "ERROR: Overflow in operator%=.");
    EXPECT_EQ(MessageOf([] { CBigInteger(-1).SquareRoot(); }),
              "ERROR: Negative Number in function SquareRoot().");
    for (const char* text : {"2147483648", "-2147483649", "99999999999999999999"}) {
        EXPECT_EQ(MessageOf([&] { static_cast<void>(static_cast<int>(CBigInteger(text))); }),
                  "ERROR: Value out of bound of int.");
    }
    for (const char* text : {"9223372036854775808", "-9223372036854775809"}) {
        EXPECT_EQ(MessageOf([&] { static_cast<void>(static_cast<std::int64_t>(CBigInteger(text))); }),
                  "ERROR: Value out of bound of LONGLONG.");
    }
    EXPECT_EQ(static_cast<int>(CBigInteger("-2147483648")), std::numeric_limits<int>::min());
    const std::int64_t least = CBigInteger("-9223372036854775808");
    EXPECT_EQ(least, std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(value, 5);
}

TEST(BigInteger, SignAndOrder) {
    CBigInteger value("-" + kNines);
    EXPECT_EQ(value.GetAbs().ToString(), kNines);
    EXPECT_EQ(value.GetNegative().ToString(), kNines);
    EXPECT_EQ((-value).ToString(), kNines);
    EXPECT_EQ(value.ToString(), kNines) << "the unary operator changes its operand";
    value.Negate();
    EXPECT_EQ(value.Abs(), CBigInteger(kNines));
    CBigInteger least(std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(least.GetNegative().ToString(), "9223372036854775808");
    EXPECT_EQ(least.GetNegative().Negate(), least);
    EXPECT_EQ(CBigInteger(0).Negate().ToString(), "0");

    const std::string ascending[] = {"-1" + kNines, "-" + kNines,          "-9223372036854775808", "-1",
                                     "0",           "9223372036854775807", "9223372036854775808",  kNines,
                                     "1" + kNines};
    for (std::size_t i = 0; i < std::size(ascending); ++i) {
        for (std::size_t k = 0; k < std::size(ascending); ++k) {
            const CBigInteger a(ascending[i]);
            const CBigInteger b(ascending[k]);
            EXPECT_EQ(a.CompareTo(b), i < k ? -1 : (i > k ? 1 : 0))
                << ascending[i] << " and " << ascending[k];
        }
    }
    EXPECT_TRUE(CBigInteger(2) < 3 && 3L > CBigInteger(2) && CBigInteger(kNines) != 3ULL);
}

TEST(BigInteger, PowersAndSmallRoots) {
    EXPECT_EQ(CBigInteger::Pow10(0), 1);
    EXPECT_EQ(CBigInteger::Pow10(20).ToString(), "100000000000000000000");
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(static_cast<int>(CBigInteger(i).SquareRoot()), static_cast<int>(std::sqrt(i))) << i;
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
        EXPECT_EQ(Of(""), Digits{0});
        EXPECT_EQ(Compare(Of("99"), Of("100")), -1);
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
