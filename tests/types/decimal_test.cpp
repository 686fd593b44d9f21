#include "kvxml/types/decimal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "kvxml/types/big_integer.h"
#include "tests/support/error_of.h"

namespace KvXmlLib16 {
namespace {

using Invalid = CKvInvalidValueException;
using OverFlow = CKvOverFlowException;

const std::string kNines(40, '9');

TEST(Decimal, WritesTheShortestForm) {
    const struct {
        std::string text;
        std::string expected;
    } rows[] = {
        {"-0.000", "0"},
        {"5.", "5"},
        {"-.050", "-0.05"},
        {"-0.0000000000000000001", "-0.0000000000000000001"},
        {"0000000000000000000000001.1000000000000000000000000", "1.1"},
        {kNines + "." + kNines, kNines + "." + kNines},
        {"1.5E3", "1500"},
        {"0E10000", "0"},
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
    const std::string mega(1 << 20, '9');
    const struct {
        const char* text;
        std::size_t position;
    } rows[] = {
        {"", 0},      {" ", 0},   {"-", 1},      {".", 1},         {"1,5", 1},  {"1.2.3", 3},
        {"--1", 1},   {"1E", 2},  {"1E+", 3},    {"1E5x", 3},      {"0x10", 1}, {"INF", 0},
        {" 1.5x", 4}, {"1 2", 1}, {"1.\xc3", 2}, {"1\xd9\xa2", 1},
    };
    CDecimal kept("1.5");
    const auto check = [&kept](const std::string& text, std::size_t position) {
        EXPECT_TRUE(ErrorOf<Invalid>([&] { kept.Parse(text); }) ==
                    "The string representing a Decimal, contained an invalid char at position " +
                        std::to_string(position) + " [" + text + "].")
            << text.substr(0, 30);
    };
    for (const auto& row : rows)
        check(row.text, row.position);
    check(std::string("1\000", 2), 1);
    check("12345678901234567890z", 20);
    check(mega + "." + mega + "x", 2 * mega.size() + 1);
    check(std::string(1 << 20, '-'), 1);
    EXPECT_EQ(kept.ToString(), "1.5");
}

TEST(Decimal, LongTextsAndLargeExponents) {
    EXPECT_EQ(CDecimal("1E10000").ToString().size(), 10001U);
    EXPECT_EQ(CDecimal("1E-10000").ToString().size(), 10002U);
    for (const char* text : {"1E10001", "1E-10001", "-1E999999999", "-1E-999999999", "0E99999999999999999999",
                             "1E-99999999999999999999"}) {
        EXPECT_EQ(ErrorOf<Invalid>([&] { CDecimal value(text); }),
                  std::string("The string representing a Decimal, is too large [") + text + "].");
    }
    const std::string long7(1 << 20, '7');
    EXPECT_EQ(ErrorOf<Invalid>([&] { CDecimal value(long7 + "E10001"); }),
              "The string representing a Decimal, is too large [" + long7.substr(0, 100) + "...].");

    CDecimal value("-" + long7 + "." + long7);
    EXPECT_TRUE(value.ToString() == "-" + long7 + "." + long7);
    EXPECT_TRUE(value.ToString(1) == "-" + long7 + ".8");
    EXPECT_TRUE(value + value - value == value && -value > value);
    EXPECT_EQ(value.GetTotalDigits(), 2 << 20);
    value.ChangeFractionalDivider(0);
    EXPECT_TRUE(CBigInteger(value) == CBigInteger("-" + long7));
    EXPECT_EQ(ErrorOf<OverFlow>([&] { value.ToDouble(); }),
              "The Decimal value if to large to fit into a Double");

    // Fractions may grow as long as memory and counts allow, and cost nothing until they are written.
    CDecimal tiny("1E-10000");
    for (int i = 0; i < 15; ++i)
        tiny *= tiny;
    EXPECT_EQ(tiny.GetFractionDigits(), 327680000);
    EXPECT_TRUE(tiny > 0 && tiny < "1E-10000" && tiny.ToDouble() == 0.0 && tiny.ToInt64() == 0);
    EXPECT_EQ(tiny.ToString(3), "0.000");
    tiny *= tiny;
    EXPECT_EQ(ErrorOf<OverFlow>([&] { tiny *= tiny; }), "The Decimal value has too many fraction digits");
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
        {"-0.4", 0, "0"},
        {"-0.004", 2, "0.00"},
        {"99999999999999999999.99", 1, "100000000000000000000.0"},
        {"-99999999999999999999.5", 0, "-100000000000000000000"},
        {"0.00000000000000000000000000000000006", 30, "0.000000000000000000000000000000"},
        {"1", 25, "1.0000000000000000000000000"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(CDecimal(row.text).ToString(row.digits), row.expected) << row.text;

    const struct {
        std::string text;
        int digits;
        std::string cut;
    } cuts[] = {
        {"-12.789", 5, "-12.789"}, {"-12.789", 1, "-12.7"},    {"-0.9", 0, "0"},
        {"12.789", -1, "12"},      {kNines + ".9", 0, kNines}, {"0." + kNines, 2, "0.99"},
    };
    for (const auto& row : cuts) {
        CDecimal value(row.text);
        value.ChangeFractionalDivider(row.digits);
        EXPECT_EQ(value.ToString(), row.cut) << row.text;
    }
}

TEST(Decimal, ComesFromNumbersOfEveryType) {
    EXPECT_EQ(CDecimal(std::numeric_limits<std::int64_t>::min()).ToString(), "-9223372036854775808");
    EXPECT_EQ(CDecimal(std::numeric_limits<std::uint64_t>::max()).ToString(), "18446744073709551615");
    EXPECT_EQ(CDecimal(0.1).ToString(), "0.1");
    EXPECT_EQ(CDecimal(CBigInteger("-" + kNines)).ToString(), "-" + kNines);
    EXPECT_EQ(ErrorOf<Invalid>([] { CDecimal value(-std::numeric_limits<double>::infinity()); }),
              "The value [-inf] can not be converted to a Decimal");
    EXPECT_THROW(CDecimal(std::nan("")), Invalid);
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
        {"1", "3", "4", "-2", "3", "0.3333333333"},
        {"9223372036854775807", "1", "9223372036854775808", "9223372036854775806", "9223372036854775807",
         "9223372036854775807"},
        {"-9223372036854775808", "-1", "-9223372036854775809", "-9223372036854775807", "9223372036854775808",
         "9223372036854775808"},
        {"123456789012345678901234567890.5", "0.0000000000000000000001",
         "123456789012345678901234567890.5000000000000000000001",
         "123456789012345678901234567890.4999999999999999999999", "12345678.90123456789012345678905",
         "1234567890123456789012345678905000000000000000000000"},
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
    }
    const struct {
        const char* a;
        const char* b;
        int digits;
        const char* quotient;
    } quotients[] = {
        {"2", "3", CDecimal::kDivisionDigits, "0.6666666666666666666666666667"},
        {"1", "8.0000000001", 2, "0.12"},
        {"25", "1E1", -1, "3"},
        {"7", "1E40", 41, "0.0000000000000000000000000000000000000007"},
        {"1E-20", "3", 5, "0"},
        {"1E-30", "1E-60", 0, "1000000000000000000000000000000"},
    };
    for (const auto& row : quotients)
        EXPECT_EQ(CDecimal(row.a).Divide(row.b, row.digits).ToString(), row.quotient) << row.a;
    CDecimal total = 1;
    total += "0.5";
    total *= 4;
    total -= 1;
    total /= 2;
    EXPECT_EQ(total.ToString(), "2.5");
    EXPECT_EQ(ErrorOf<Invalid>([&] { total /= "0.00"; }), "ERROR: Overflow in operator/.");
}

TEST(Decimal, OrdersByValue) {
    const std::vector<std::string> ascending = {
        "-1.5E40", "-1E40", "-9.5E18", "-9.4E18", "-10", "-9.99",  "-1E-40", "0",      "1E-10000",
        "1E-40",   "1E-17", "1",       "1.05",    "1.5", "9.2E18", "9.3E18", "1.5E40", "1E10000"};
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        for (std::size_t k = 0; k < ascending.size(); ++k) {
            SCOPED_TRACE(ascending[i] + " and " + ascending[k]);
            const CDecimal a(ascending[i]);
            const CDecimal b(ascending[k]);
            EXPECT_EQ(a.CompareTo(b), i < k ? -1 : (i > k ? 1 : 0));
            EXPECT_EQ(a <= b, i <= k);
        }
    }
    EXPECT_EQ(CDecimal("1.5"), CDecimal("1.50000000000000000000000000000000000"));
}

TEST(Decimal, ConvertsToNativeTypesOrSaysThatItCannot) {
    EXPECT_EQ(CDecimal("-2147483648.9").ToInt32(), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(CDecimal("-9223372036854775808.5").ToInt64(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(CDecimal("5E-324").ToDouble(), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(CDecimal("-1E-350").ToDouble(), 0.0);
    EXPECT_EQ(CDecimal("9007199254740993").ToDouble(), 9007199254740992.0);
    const struct {
        const char* text;
        void (*convert)(const CDecimal&);
        const char* type;
    } rows[] = {
        {"2147483648", [](const CDecimal& d) { d.ToInt32(); }, "LONG"},
        {"-2147483649", [](const CDecimal& d) { d.ToInt32(); }, "LONG"},
        {"1E10000", [](const CDecimal& d) { d.ToInt32(); }, "LONG"},
        {"9223372036854775808", [](const CDecimal& d) { d.ToInt64(); }, "LONGLONG"},
        {"-9223372036854775809.0", [](const CDecimal& d) { d.ToInt64(); }, "LONGLONG"},
        {"1.8E308", [](const CDecimal& d) { d.ToDouble(); }, "Double"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ErrorOf<OverFlow>([&] { row.convert(row.text); }),
                  std::string("The Decimal value if to large to fit into a ") + row.type);
    }
}

}  // namespace
}  // namespace KvXmlLib16
