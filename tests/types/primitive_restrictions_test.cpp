#include "kvxml/types/primitive_restrictions.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "kvxml/runtime/exceptions.h"
#include "kvxml/runtime/text_settings.h"
#include "kvxml/types/conversions.h"

namespace KvXmlLib16 {
namespace {

constexpr auto kCollapse = CWhitespaceUtils::WhitespaceRule_Collapse;

// Facets by name; what is left alone is not set.
struct Facets {
    const char* pattern = nullptr;
    std::int32_t minLength = -1;
    std::int32_t maxLength = -1;
    const char* minInclusive = nullptr;
    const char* maxInclusive = nullptr;
    const char* minExclusive = nullptr;
    const char* maxExclusive = nullptr;
    std::int32_t length = -1;
    std::int32_t totalDigits = -1;
    std::int32_t fractionDigits = -1;
    const char* enumeration = nullptr;
};

CPrimitiveRestrictions Make(const Facets& f) {
    return {f.pattern,      f.minLength, f.maxLength,   f.minInclusive,   f.maxInclusive, f.minExclusive,
            f.maxExclusive, f.length,    f.totalDigits, f.fractionDigits, kCollapse,      f.enumeration};
}

// "" when the value passes, otherwise the message.
template <class Value>
std::string Verdict(const CPrimitiveRestrictions& restrictions, ItemType type, const Value& value) {
    try {
        restrictions.Check("Size", type, value);
    } catch (const CKvInvalidValueException& e) {
        return e.GetMessage();
    }
    return "";
}

TEST(PrimitiveRestrictions, NoFacetIsNoCheck) {
    EXPECT_TRUE(CPrimitiveRestrictions().IsEmpty());
    EXPECT_TRUE(Make({}).IsEmpty());
    EXPECT_TRUE(Make({.pattern = "", .minInclusive = "", .enumeration = ""}).IsEmpty());
    EXPECT_FALSE(Make({.maxLength = 0}).IsEmpty());
    EXPECT_EQ(Make({}).GetWhitespaceRule(), kCollapse);
    CPrimitiveRestrictions().Check("a", ItemType_i4, "no number");
}

TEST(PrimitiveRestrictions, EveryFacetForEveryKindThatHasIt) {
    const struct {
        ItemType type;
        Facets facets;
        std::vector<std::string> good;
        std::vector<std::string> bad;
    } rows[] = {
        {ItemType_string, {.length = 3}, {"abc", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"}, {"", "ab", "abcd"}},
        {ItemType_string, {.minLength = 1, .maxLength = 2}, {"a", "\xE2\x82\xAC\xE2\x82\xAC"}, {"", "abc"}},
        {ItemType_string, {.maxLength = 0}, {""}, {"a"}},
        {ItemType_string, {.minLength = 3, .maxLength = 2}, {}, {"", "ab", "abc"}},
        {ItemType_string, {.minInclusive = "m"}, {"a", "z"}, {}},
        {ItemType_string,
         {.enumeration = "red\ngreen\n\nblue"},
         {"red", "green", "blue", ""},
         {"re", "Red", "red "}},
        {ItemType_char, {.enumeration = "a\nb"}, {"a"}, {"c"}},
        {ItemType_string, {.pattern = "[A-Z]{2}|x"}, {"AB", "x"}, {"ABC", "xAB", "", "AB\n"}},
        {ItemType_hexBinary, {.minLength = 2, .maxLength = 2}, {"0aFF"}, {"0a", "0a0b0c"}},
        {ItemType_base64Binary, {.length = 3}, {"TWFu"}, {"TQ=="}},
        {ItemType_hexBinary, {.enumeration = "0A\nffff"}, {"0a", "FFFF"}, {"0b", "", "ff"}},
        {ItemType_boolean, {.pattern = "true|1"}, {"true", "1"}, {"false", "0"}},
        {ItemType_i4,
         {.minInclusive = "-5", .maxInclusive = "5"},
         {"-5", "5", "0"},
         {"-6", "6", "2147483647"}},
        {ItemType_i1, {.minExclusive = "-5", .maxExclusive = "5"}, {"-4", "4"}, {"-5", "5"}},
        {ItemType_i8, {.minInclusive = "9223372036854775806"}, {"9223372036854775807"}, {"0"}},
        {ItemType_ui8,
         {.minExclusive = "18446744073709551614"},
         {"18446744073709551615"},
         {"18446744073709551614", "0"}},
        {ItemType_ui2, {.minInclusive = "10", .maxInclusive = "1"}, {}, {"0", "5", "10"}},
        {ItemType_i2, {.enumeration = "1\n02\n3.0"}, {"1", "2", "3", "+2"}, {"0", "4"}},
        {ItemType_i4, {.totalDigits = 3}, {"-999", "000100"}, {"1000"}},
        {ItemType_decimal,
         {.totalDigits = 4, .fractionDigits = 2},
         {"12.34", "12.3400", "0012", "-0.01"},
         {"123.45", "0.001", "12345"}},
        {ItemType_decimal, {.fractionDigits = 0}, {"1.00"}, {"1.5"}},
        {ItemType_decimal,
         {.minInclusive = "0.1", .maxExclusive = "1E30"},
         {"0.10", "999999999999999999999999999999"},
         {"0.09", "1000000000000000000000000000000"}},
        {ItemType_integer,
         {.maxInclusive = "99999999999999999999"},
         {"99999999999999999999", "-1E30"},
         {"100000000000000000000"}},
        {ItemType_r4, {.maxInclusive = "0.1"}, {"0.1", "-INF"}, {"0.1001", "INF", "NaN"}},
        {ItemType_r8, {.maxInclusive = "INF", .minExclusive = "-1e3"}, {"-999.9", "INF"}, {"-1000", "NaN"}},
        {ItemType_r8, {.enumeration = "1.5\nNaN"}, {"15e-1", "NaN"}, {"1", "INF"}},
        {ItemType_date,
         {.minInclusive = "2001-02-03", .maxExclusive = "2002-01-01"},
         {"2001-02-03", "2001-12-31"},
         {"2001-02-02", "2002-01-01"}},
        {ItemType_datetime,
         {.maxInclusive = "2001-01-01T00:00:00Z"},
         {"2001-01-01T01:00:00+01:00", "2000-01-01T00:00:00"},
         {"2001-01-01T00:00:01Z", "2001-01-01T00:00:00"}},
        {ItemType_time, {.minInclusive = "08:00:00"}, {"08:00:00"}, {"07:59:59"}},
        {ItemType_yearMonth, {.enumeration = "2001-05"}, {"2001-05"}, {"2001-06"}},
        {ItemType_year, {.minInclusive = "1970"}, {"1970"}, {"1969"}},
        {ItemType_month, {.maxInclusive = "--06"}, {"--06"}, {"--07"}},
        {ItemType_day, {.enumeration = "---01\n---15"}, {"---15"}, {"---14"}},
        {ItemType_duration, {.maxInclusive = "P1M"}, {"P27D"}, {"P32D", "P30D"}},
    };
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const CPrimitiveRestrictions restrictions = Make(rows[i].facets);
        for (const std::string& value : rows[i].good) {
            EXPECT_EQ(Verdict(restrictions, rows[i].type, value), "") << "row " << i << ": " << value;
        }
        for (const std::string& value : rows[i].bad) {
            EXPECT_NE(Verdict(restrictions, rows[i].type, value), "") << "row " << i << ": " << value;
        }
    }
}

TEST(PrimitiveRestrictions, MessagesNameMemberValueAndFacet) {
    const struct {
        ItemType type;
        Facets facets;
        const char* value;
        const char* expected;
    } rows[] = {
        {ItemType_string,
         {.length = 1},
         "ab",
         "Invalid Value for Size [ab]. It violates the facet length [1]."},
        {ItemType_string,
         {.minLength = 3},
         "ab",
         "Invalid Value for Size [ab]. It violates the facet minLength [3]."},
        {ItemType_string,
         {.maxLength = 1},
         "ab",
         "Invalid Value for Size [ab]. It violates the facet maxLength [1]."},
        {ItemType_string,
         {.pattern = "x+"},
         "ab",
         "Invalid Value for Size [ab]. It violates the facet pattern [x+]."},
        {ItemType_string,
         {.enumeration = "a\nb"},
         "ab",
         "Invalid Value for Size [ab]. It violates the facet enumeration [a, b]."},
        {ItemType_i4,
         {.minInclusive = "7"},
         "6",
         "Invalid Value for Size [6]. It violates the facet minInclusive [7]."},
        {ItemType_i4,
         {.maxInclusive = "5"},
         "+6",
         "Invalid Value for Size [+6]. It violates the facet maxInclusive [5]."},
        {ItemType_r8,
         {.minExclusive = "0"},
         "0.0",
         "Invalid Value for Size [0.0]. It violates the facet minExclusive [0]."},
        {ItemType_r8,
         {.maxExclusive = "0"},
         "0",
         "Invalid Value for Size [0]. It violates the facet maxExclusive [0]."},
        {ItemType_decimal,
         {.totalDigits = 2},
         "123",
         "Invalid Value for Size [123]. It violates the facet totalDigits [2]."},
        {ItemType_decimal,
         {.fractionDigits = 1},
         "1.25",
         "Invalid Value for Size [1.25]. It violates the facet fractionDigits [1]."},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Verdict(Make(row.facets), row.type, row.value), row.expected);
    const std::string message = Verdict(Make({.maxLength = 1}), ItemType_string, std::string(100000, 'x'));
    EXPECT_LT(message.size(), 1100U);
}

TEST(PrimitiveRestrictions, TypedValues) {
    const CPrimitiveRestrictions small = Make({.maxInclusive = "10"});
    EXPECT_EQ(Verdict(small, ItemType_i4, 10), "");
    EXPECT_EQ(Verdict(small, ItemType_i4, 11),
              "Invalid Value for Size [11]. It violates the facet maxInclusive [10].");
    EXPECT_NE(Verdict(small, ItemType_ui8, std::numeric_limits<std::uint64_t>::max()), "");
    EXPECT_EQ(Verdict(small, ItemType_i8, std::numeric_limits<std::int64_t>::min()), "");
    EXPECT_NE(Verdict(small, ItemType_r4, 10.5f), "");
    EXPECT_NE(Verdict(small, ItemType_decimal, CDecimal("10.01")), "");
    EXPECT_NE(Verdict(small, ItemType_integer, CBigInteger::Pow10(30)), "");
    EXPECT_EQ(Verdict(Make({.maxInclusive = "--06"}), ItemType_month, std::uint8_t{7}),
              "Invalid Value for Size [--07]. It violates the facet maxInclusive [--06].");
    EXPECT_NE(Verdict(Make({.maxInclusive = "2001-01-01"}), ItemType_date,
                      CConversions::dateFromString("2001-01-02", kCollapse)),
              "");
    EXPECT_NE(Verdict(Make({.maxInclusive = "P1D"}), ItemType_duration,
                      CConversions::durationFromString("P2D", kCollapse)),
              "");
    EXPECT_NE(Verdict(Make({.length = 1}), ItemType_hexBinary,
                      CConversions::hexBinaryFromString("0102", kCollapse)),
              "");
    EXPECT_NE(Verdict(Make({.pattern = "false"}), ItemType_boolean, true), "");

    // A pattern sees the text at hand, and the usual text of the value when there is none.
    const CPrimitiveRestrictions money = Make({.pattern = "\\d+\\.\\d{2}"});
    money.Check("Price", ItemType_decimal, CDecimal("1.50"), "1.50");
    EXPECT_NE(Verdict(money, ItemType_decimal, CDecimal("1.50")), "");
    EXPECT_EQ(Verdict(money, ItemType_decimal, CDecimal("1.25")), "");
}

TEST(PrimitiveRestrictions, TextIsInTheLocalCodePage) {
    SetLocalCharEncoding(1252);
    const CPrimitiveRestrictions word = Make({.pattern = "[\xE0-\xFF\x80]+", .length = 2});
    const std::string good = Verdict(word, ItemType_string, "\xE9\x80");
    const std::string tooLong = Verdict(word, ItemType_string, "\xC3\xA9\xE9");
    const std::string other = Verdict(word, ItemType_string, "\xE9\xC9");
    SetLocalCharEncoding(3);
    EXPECT_EQ(good, "");
    EXPECT_EQ(tooLong, "Invalid Value for Size [\xC3\xA9\xE9]. It violates the facet length [2].");
    EXPECT_NE(other, "");
}

TEST(PrimitiveRestrictions, BadFacetsFailAtTheCheckThatNeedsThem) {
    EXPECT_THROW(Make({.minInclusive = "ten"}).Check("a", ItemType_i4, 1), CKvInvalidValueException);
    EXPECT_THROW(Make({.enumeration = "1\nx"}).Check("a", ItemType_r8, 1.0), CKvInvalidValueException);
    EXPECT_THROW(Make({.length = 1}).Check("a", ItemType_i4, "x"), CKvInvalidValueException);
    const CPrimitiveRestrictions bad = Make({.pattern = "a("});
    for (int i = 0; i < 2; ++i) {
        try {
            bad.Check("a", ItemType_string, "a");
            FAIL();
        } catch (const CKvException& e) {
            EXPECT_EQ(e.GetMessage(), "Invalid Regular Expression: a( Error: 'missing ')' at position 2'");
        }
    }
}

TEST(PrimitiveRestrictions, CopiesAreSharedByThreads) {
    const CPrimitiveRestrictions restrictions = Make({.pattern = "\\d+", .maxInclusive = "500"});
    std::atomic<int> refused{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([copy = restrictions, &refused] {
            for (int i = 0; i < 1000; ++i)
                refused += Verdict(copy, ItemType_i4, i).empty() ? 0 : 1;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(refused, 4 * 499);
}

}  // namespace
}  // namespace KvXmlLib16
