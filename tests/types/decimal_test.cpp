#include "kvxml/types/decimal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

#include "kvxml/runtime/exceptions.h"
#include "kvxml/types/big_integer.h"

namespace KvXmlLib16 {
namespace {

template <class Exception, class Action>
std::string MessageOf(Action action) {
    try {
        action();
    } catch (const Exception& e) {
        return e.GetMessage();
    }
    return "nothing thrown";
}

const std::string kNines(40, '9');

TEST(Decimal, WritesTheShortestForm) {
    const struct {
        std::string text;
        std::string expected;
    } rows[] = {
        {"0", "0"},
        {"-0", "0"},
        {"-0.000", "0"},
        {"+1.50", "1.5"},
        {"100", "100"},
        {"007.0", "7"},
        {".5", "0.5"},
        {"5.", "5"},
        {"-.050", "-0.05"},
        {" \t12.5\r\n", "12.5"},
        {"123456789012345678", "123456789012345678"},
        {"0.000000000000000001", "0.000000000000000001"},
        {"-0.0000000000000000001", "-0.0000000000000000001"},
        {"9223372036854775807", "9223372036854775807"},
        {"-9223372036854775808", "-9223372036854775808"},
        {"1234567890123456789.123456789", "1234567890123456789.123456789"},
        {"0000000000000000000000001.1000000000000000000000000", "1.1"},
        {kNines + "." + kNines, kNines + "." + kNines},
        {"1.5E3", "1500"},
        {"1.5e-3", "0.0015"},
        {"12E+0", "12"},
        {"1000E-3", "1"},
        {"0E10000", "0"},
        {"1E30", "1" + std::string(30, '0')},
        {"-25E-30", "-0." + std::string(28, '0') + "25"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const CDecimal value(row.text);
        EXPECT_EQ(value.ToString(), row.expected);
        EXPECT_LE(row.expected.size(), value.GetMaxTextLength());
        EXPECT_EQ(CDecimal(value.ToString()), value);
        std::string appended = "x";
        value.AppendTo(appended);
        EXPECT_EQ(appended, "x" + row.expected);
    }
}

TEST(Decimal, RefusesOtherText) {
    const struct {
        const char* text;
        int position;
    } rows[] = {
        {"", 0},      {" ", 0},    {"-", 1},   {".", 1},    {"abc", 0},   {"1,5", 1},
        {"1.2.3", 3}, {"--1", 1},  {"1 2", 1}, {"12x", 2},  {"1E", 2},    {"1E+", 3},
        {"1E5x", 3},  {"0x10", 1}, {"INF", 0}, {"1.5-", 3}, {" 1.5x", 4}, {"12345678901234567890z", 20},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(MessageOf<CKvInvalidValueException>([&] { CDecimal value(row.text); }),
                  "The string representing a Decimal, contained an invalid char at position " +
                      std::to_string(row.position) + " [" + row.text + "].");
    }
    CDecimal kept("1.5");
    EXPECT_THROW(kept.Parse("1.5x"), CKvInvalidValueException);
    EXPECT_EQ(kept.ToString(), "1.5");
}

TEST(Decimal, LargeExponentsAreRefusedBeforeTheyCostMemory) {
    EXPECT_EQ(CDecimal("1E10000").ToString().size(), 10001U);
    EXPECT_EQ(CDecimal("1E-10000").ToString().size(), 10002U);
    for (const char* text :
         {"1E10001", "1E-10001", "1E999999999", "0E99999999999999999999", "1E-99999999999999999999"}) {
        EXPECT_EQ(MessageOf<CKvInvalidValueException>([&] { CDecimal value(text); }),
                  std::string("The string representing a Decimal, is too large [") + text + "].");
    }
}

TEST(Decimal, FixedFractionDigitsRoundHalfAwayFromZero) {
    const struct {
        const char* text;
        int digits;
        const char* expected;
    } rows[] = {
        {"1.005", 2, "1.01"},
        {"-1.005", 2, "-1.01"},
        {"1.0049", 2, "1.00"},
        {"59.7", 2, "59.70"},
        {"3", 3, "3.000"},
        {"-0.4", 0, "0"},
        {"-0.5", 0, "-1"},
        {"0.004", 2, "0.00"},
        {"99.995", 2, "100.00"},
        {"999999999999999999", 1, "999999999999999999.0"},
        {"1.5", -3, "2"},
        {"99999999999999999999.99", 1, "100000000000000000000.0"},
        {"-0.00000000000000000000000000000000006", 34, "-0.0000000000000000000000000000000001"},
        {"0.00000000000000000000000000000000006", 30, "0.000000000000000000000000000000"},
        {"1", 25, "1.0000000000000000000000000"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(CDecimal(row.text).ToString(row.digits), row.expected);
    }
    CDecimal cut("-12.789");
    cut.ChangeFractionalDivider(5);
    EXPECT_EQ(cut.ToString(), "-12.789");
    cut.ChangeFractionalDivider(1);
    EXPECT_EQ(cut.ToString(), "-12.7");
    CDecimal big(kNines + ".9");
    big.ChangeFractionalDivider(0);
    EXPECT_EQ(big.ToString(), kNines);
}

TEST(Decimal, ComesFromNumbersOfEveryType) {
    EXPECT_EQ(CDecimal().ToString(), "0");
    EXPECT_EQ(CDecimal(std::numeric_limits<std::int32_t>::min()).ToString(), "-2147483648");
    EXPECT_EQ(CDecimal(std::numeric_limits<std::uint32_t>::max()).ToString(), "4294967295");
    EXPECT_EQ(CDecimal(std::numeric_limits<std::int64_t>::min()).ToString(), "-9223372036854775808");
    EXPECT_EQ(CDecimal(std::numeric_limits<std::uint64_t>::max()).ToString(), "18446744073709551615");
    EXPECT_EQ(CDecimal(0L).ToString() + CDecimal(1LL).ToString() + CDecimal(2ULL).ToString(), "012");
    EXPECT_EQ(CDecimal(0.1).ToString(), "0.1");
    EXPECT_EQ(CDecimal(-2.5e-7f).ToString(5), "0.00000");
    EXPECT_EQ(CDecimal(1e300).ToString(), "1" + std::string(300, '0'));
    EXPECT_EQ(CDecimal(CBigInteger("-" + kNines)).ToString(), "-" + kNines);
    EXPECT_EQ(CDecimal(CBigInteger(-5)).ToString(), "-5");
    EXPECT_THROW(CDecimal(std::numeric_limits<double>::infinity()), CKvInvalidValueException);
    EXPECT_THROW(CDecimal(std::nan("")), CKvInvalidValueException);
}

TEST(Decimal, CountsDigitsForFacets) {
    const struct {
        std::string text;
        int total;
        int fraction;
    } rows[] = {
        {"0", 1, 0},
        {"0.000", 1, 0},
        {"0.001", 3, 3},
        {"1.50", 2, 1},
        {"-123.45", 5, 2},
        {"00100.00", 3, 0},
        {kNines, 40, 0},
        {"0." + kNines, 40, 40},
        {"1." + kNines, 41, 40},
        {"999999999999999999", 18, 0},
        {"9223372036854775807", 19, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(CDecimal(row.text).GetTotalDigits(), row.total);
        EXPECT_EQ(CDecimal(row.text).GetFractionDigits(), row.fraction);
    }
}

TEST(Decimal, ArithmeticIsExact) {
    const struct {
        const char* a;
        const char* b;
        const char* sum;
        const char* difference;
        const char* product;
        const char* quotient;  // 10 digits
    } rows[] = {
        {"0.1", "0.2", "0.3", "-0.1", "0.02", "0.5"},
        {"1.50", "-0.5", "1", "2", "-0.75", "-3"},
        {"1", "3", "4", "-2", "3", "0.3333333333"},
        {"-2", "3", "1", "-5", "-6", "-0.6666666667"},
        {"9223372036854775807", "1", "9223372036854775808", "9223372036854775806", "9223372036854775807",
         "9223372036854775807"},
        {"-9223372036854775808", "-1", "-9223372036854775809", "-9223372036854775807", "9223372036854775808",
         "9223372036854775808"},
        {"123456789012345678901234567890.5", "0.0000000000000000000001",
         "123456789012345678901234567890.5000000000000000000001",
         "123456789012345678901234567890.4999999999999999999999", "12345678.90123456789012345678905",
         "1234567890123456789012345678905000000000000000000000"},
        {"100000000000000000000", "-100000000000000000000", "0", "200000000000000000000",
         "-10000000000000000000000000000000000000000", "-1"},
        {"1000000000.000000001", "1000000000.000000001", "2000000000.000000002", "0",
         "1000000000000000002.000000000000000001", "1"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.a) + " and " + row.b);
        const CDecimal a(row.a);
        const CDecimal b(row.b);
        EXPECT_EQ((a + b).ToString(), row.sum);
        EXPECT_EQ((a - b).ToString(), row.difference);
        EXPECT_EQ((a * b).ToString(), row.product);
        EXPECT_EQ(a.Divide(b, 10).ToString(), row.quotient);
        EXPECT_EQ(-(-a), a);
    }
    EXPECT_EQ((CDecimal(2) / 3).ToString(), "0.6666666666666666666666666667");
    EXPECT_EQ(CDecimal("1E-20").Divide(3, 5).ToString(), "0");
    EXPECT_THROW(CDecimal(1) / CDecimal("0.00"), CKvInvalidValueException);
    CDecimal total = 1;
    total += "0.5";
    total *= 4;
    total -= 1;
    total /= 2;
    EXPECT_EQ(total.ToString(), "2.5");
}

TEST(Decimal, OrdersByValue) {
    const std::string ascending[] = {"-" + kNines + ".5",
                                     "-" + kNines,
                                     "-9223372036854775808",
                                     "-9223372036854775807.5",
                                     "-10",
                                     "-9.99",
                                     "-1E-40",
                                     "0",
                                     "1E-41",
                                     "1E-40",
                                     "0.00000000000000001",
                                     "1",
                                     "1.00000000000000000000000000001",
                                     "1.05",
                                     "1.5",
                                     "9223372036854775807",
                                     "9223372036854775808",
                                     kNines,
                                     kNines + ".5",
                                     "1E60"};
    for (std::size_t i = 0; i < std::size(ascending); ++i) {
        for (std::size_t k = 0; k < std::size(ascending); ++k) {
            SCOPED_TRACE(ascending[i] + " and " + ascending[k]);
            const CDecimal a(ascending[i]);
            const CDecimal b(ascending[k]);
            EXPECT_EQ(a.CompareTo(b), i < k ? -1 : (i > k ? 1 : 0));
            EXPECT_EQ(a <= b, i <= k);
        }
    }
    EXPECT_EQ(CDecimal("1.5"), CDecimal("1.500"));
    EXPECT_EQ(CDecimal("1.5"), CDecimal("1."
                                        "5000000000000000000000000000000000"));
    EXPECT_EQ(CDecimal("-0"), 0);
    EXPECT_TRUE(CDecimal("0.1") == 0.1 && CDecimal("2") > 1 && 3u > CDecimal("2"));
}

TEST(Decimal, ConvertsToNativeTypesOrSaysThatItCannot) {
    EXPECT_EQ(CDecimal("-2147483648.9").ToInt32(), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(static_cast<std::int32_t>(CDecimal("2147483647.9")), 2147483647);
    EXPECT_EQ(CDecimal("-9223372036854775808.5").ToInt64(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(CDecimal("0." + kNines).ToInt64(), 0);
    EXPECT_EQ(CDecimal("0.1").ToDouble(), 0.1);
    EXPECT_EQ(CDecimal("-1E308").ToDouble(), -1e308);
    EXPECT_EQ(CDecimal("5E-324").ToDouble(), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(CDecimal("-1E-400").ToDouble(), 0.0);
    EXPECT_EQ(CDecimal("9007199254740993").ToDouble(), 9007199254740992.0);
    for (const char* text : {"2147483648", "-2147483649", "1E40"}) {
        EXPECT_EQ(MessageOf<CKvOverFlowException>([&] { CDecimal(text).ToInt32(); }),
                  "The Decimal value if to large to fit into a LONG");
    }
    for (const char* text : {"9223372036854775808", "-9223372036854775809.0"}) {
        EXPECT_EQ(MessageOf<CKvOverFlowException>([&] { CDecimal(text).ToInt64(); }),
                  "The Decimal value if to large to fit into a LONGLONG");
    }
    for (const char* text : {"1E309", "-2E308"}) {
        EXPECT_EQ(MessageOf<CKvOverFlowException>([&] { CDecimal(text).ToDouble(); }),
                  "The Decimal value if to large to fit into a Double");
    }
}

TEST(Decimal, CopiesAreIndependentAndMovesLeaveZero) {
    for (const std::string& text : {std::string("1.5"), kNines}) {
        CDecimal a(text);
        CDecimal b(a);
        b += 1;
        EXPECT_EQ(a.ToString(), text);
        CDecimal c(std::move(b));
        EXPECT_EQ(c - 1, a);
        EXPECT_EQ(b, 0);  // NOLINT(bugprone-use-after-move): the state is documented by the test
        c = a;
        CDecimal& alias = c;
        c = alias;
        EXPECT_EQ(c, a);
        a = CDecimal(7);
        EXPECT_EQ(a.ToString() + " " + c.ToString(), "7 " + text);
    }
}

}  // namespace
}  // namespace KvXmlLib16
