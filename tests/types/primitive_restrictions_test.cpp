#include "kvxml/types/primitive_restrictions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/platform/text_settings.h"
#include "kvxml/types/conversions.h"
#include "tests/support/error_of.h"

namespace KvXmlLib16 {
namespace {

using namespace std::string_literals;
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

TEST(PrimitiveRestrictions, EveryFacetForEveryKindThatHasIt) {
    const struct {
        ItemType type;
        Facets facets;
        std::vector<std::string> good;
        std::vector<std::string> bad;
    } rows[] = {
        // Lengths: characters of text, octets of binary values; numbers and dates have none.
        {ItemType_string, {.length = 3}, {"abc", "\u00E4\u20AC\U0001F600"}, {"", "ab", "abcd"}},
        {ItemType_string, {.minLength = 1, .maxLength = 2}, {"a", "\u20AC\u20AC"}, {"", "abc"}},
        {ItemType_string, {.maxLength = 0}, {""}, {"a", "\0"s}},
        {ItemType_string, {.maxLength = 3}, {"\x80\xC3\xE2\x82"}, {"\x80\x80\x80\x80", "\xC3\xC3\xC3\xC3"}},
        {ItemType_char, {.maxLength = 1}, {"x", "\xC3"}, {"xy"}},
        {ItemType_hexBinary, {.minLength = 2, .maxLength = 2}, {"0aFF"}, {"0a", "0a0b0c", ""}},
        {ItemType_base64Binary, {.length = 3}, {"TWFu", "TW Fu"}, {"TQ==", ""}},
        // Bounds, by the order of the kind; text and booleans have none.
        {ItemType_string, {.minInclusive = "m", .fractionDigits = 2}, {"a", "z", "1.555"}, {}},
        {ItemType_i1, {.minExclusive = "-5", .maxExclusive = "5"}, {"-4", "4"}, {"-5", "5"}},
        {ItemType_i4, {.minInclusive = "-5", .maxInclusive = "5"}, {"-5", "5"}, {"-6", "6", "2147483647"}},
        {ItemType_i8, {.minInclusive = "9223372036854775806"}, {"9223372036854775807"}, {"0"}},
        {ItemType_ui1, {.minInclusive = "-1", .maxExclusive = "256"}, {"0", "255"}, {}},
        {ItemType_ui2, {.minExclusive = "3", .maxExclusive = "3"}, {}, {"2", "3", "4"}},
        {ItemType_ui4, {.maxInclusive = "4294967294"}, {"0"}, {"-1"}},
        {ItemType_ui8, {.minExclusive = "18446744073709551614"}, {"18446744073709551615"}, {"0"}},
        {ItemType_integer, {.maxInclusive = "9999999999"}, {"9999999999", "-1E30"}, {"10000000000"}},
        {ItemType_decimal,
         {.minInclusive = "0.1", .maxExclusive = "1E30"},
         {"0.10", "1E29"},
         {"0.09", "1E30"}},
        {ItemType_r4, {.maxInclusive = "0.1"}, {"0.1", "-INF"}, {"0.1001", "INF", "NaN"}},
        {ItemType_r8, {.maxInclusive = "INF", .minExclusive = "-1e3"}, {"-999.9", "INF"}, {"-1000", "NaN"}},
        {ItemType_r8, {.minInclusive = "NaN"}, {"NaN"}, {"INF", "0"}},
        {ItemType_date,
         {.minInclusive = "2001-02-03", .maxExclusive = "2002-01-01"},
         {"2001-02-03", "2001-12-31"},
         {"2001-02-02", "2002-01-01", "2001-02-03Z", "2001"}},
        {ItemType_datetime,
         {.maxInclusive = "2001-01-01T00:00:00Z"},
         {"2001-01-01T01:00:00+01:00", "2000-12-31T09:59:59"},
         {"2001-01-01T00:00:01Z", "2001-01-01T00:00:00", "2000-12-31T10:00:01"}},
        {ItemType_time, {.minInclusive = "08:00:00"}, {"08:00:00"}, {"07:59:59", "08:00:00Z"}},
        {ItemType_monthDay, {.minInclusive = "--02-29"}, {"--03-01"}, {"--02-28"}},
        {ItemType_month, {.maxInclusive = "--06"}, {"--06"}, {"--07"}},
        {ItemType_duration, {.maxInclusive = "P1M"}, {"P27D", "P1M"}, {"P32D", "P30D", "P28D"}},
        // Digits.
        {ItemType_i4, {.totalDigits = 3}, {"-999", "000100"}, {"1000"}},
        {ItemType_decimal,
         {.totalDigits = 4, .fractionDigits = 2},
         {"12.34", "12.3400", "0012", "-0.01"},
         {"123.45", "0.001", "12345"}},
        // Enumerations, by value.
        {ItemType_string,
         {.enumeration = "red\n blue  sky\n"},
         {"red", "blue sky", "", "red "},
         {"re", "Red"}},
        {ItemType_char, {.enumeration = "a\nb"}, {"a"}, {"c"}},
        {ItemType_boolean, {.enumeration = "1"}, {"true", "1"}, {"false", "0"}},
        {ItemType_hexBinary, {.enumeration = "0A\nffff\n"}, {"0a", "FFFF", ""}, {"0b", "ff"}},
        {ItemType_base64Binary, {.enumeration = "TWFu\nT Q = ="}, {"TW\nFu", "TQ=="}, {"TWFv", ""}},
        {ItemType_i2, {.enumeration = "1\n02\n+3.0"}, {"1", "2", "3", "+2"}, {"0", "4"}},
        {ItemType_decimal, {.enumeration = "1.00\n-0"}, {"1", "1.0", "0.0"}, {"1.01"}},
        {ItemType_r8, {.enumeration = "1.5\nNaN\n0"}, {"15e-1", "NaN", "-0"}, {"1", "INF"}},
        {ItemType_date, {.enumeration = "2001-01-01Z"}, {"2001-01-01+00:00"}, {"2001-01-01", "2001-01-02Z"}},
        {ItemType_yearMonth, {.enumeration = "2001-05"}, {"2001-05"}, {"2001-06"}},
        {ItemType_year, {.enumeration = "2001"}, {"2001"}, {"2002"}},
        {ItemType_day, {.enumeration = "---01\n---15"}, {"---15"}, {"---14"}},
        {ItemType_duration, {.enumeration = "P1D\nP1Y"}, {"PT24H", "P12M"}, {"P365D"}},
        // Patterns see the text, without what its whitespace rule takes away.
        {ItemType_string, {.pattern = "[A-Z]{2}|x"}, {"AB", "x", "AB\n"}, {"ABC", "xAB", "", "A B"}},
        {ItemType_i4, {.pattern = "\\d{3}"}, {"007", " 007\n"}, {"7", " 7 "}},
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
        std::string value;
        std::string facet;
    } rows[] = {
        {ItemType_string, {.length = 1}, "ab", "length [1]"},
        {ItemType_string, {.minLength = 3}, "ab", "minLength [3]"},
        {ItemType_string, {.maxLength = 1}, "ab", "maxLength [1]"},
        {ItemType_string, {.pattern = "x+"}, "ab", "pattern [x+]"},
        {ItemType_string, {.enumeration = "a\nb"}, "ab", "enumeration [a, b]"},
        {ItemType_i4, {.minInclusive = "7"}, "6", "minInclusive [7]"},
        {ItemType_i4, {.maxInclusive = "5"}, "+6", "maxInclusive [5]"},
        {ItemType_r8, {.minExclusive = "0"}, "0.0", "minExclusive [0]"},
        {ItemType_r8, {.maxExclusive = "0"}, "0", "maxExclusive [0]"},
        {ItemType_decimal, {.totalDigits = 2}, "123", "totalDigits [2]"},
        {ItemType_decimal, {.fractionDigits = 1}, "1.25", "fractionDigits [1]"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Verdict(Make(row.facets), row.type, row.value),
                  "Invalid Value for Size [" + row.value + "]. It violates the facet " + row.facet + ".");
    }
    const std::string message = Verdict(Make({.maxLength = 1}), ItemType_string, std::string(100000, 'x'));
    EXPECT_LT(message.size(), 1100U);
}

TEST(PrimitiveRestrictions, TypedValues) {
    const CPrimitiveRestrictions small = Make({.maxInclusive = "10"});
    EXPECT_EQ(Verdict(small, ItemType_i4, 10), "");
    EXPECT_EQ(Verdict(small, ItemType_i4, 11),
              "Invalid Value for Size [11]. It violates the facet maxInclusive [10].");
    EXPECT_NE(Verdict(small, ItemType_r4, 10.5f), "");
    EXPECT_NE(Verdict(small, ItemType_integer, CBigInteger::Pow10(30)), "");
    EXPECT_EQ(Verdict(Make({.maxInclusive = "--06"}), ItemType_month, std::uint8_t{7}),
              "Invalid Value for Size [--07]. It violates the facet maxInclusive [--06].");
    EXPECT_NE(Verdict(Make({.length = 1}), ItemType_hexBinary,
                      CConversions::hexBinaryFromString("0102", kCollapse)),
              "");

    // A pattern sees the text at hand, and the usual text of the value when there is none.
    const CPrimitiveRestrictions money = Make({.pattern = "\\d+\\.\\d{2}"});
    money.Check("Price", ItemType_decimal, CDecimal("1.50"), "1.50");
    EXPECT_NE(Verdict(money, ItemType_decimal, CDecimal("1.50")), "");
}

TEST(PrimitiveRestrictions, LongEnumerationsAreNotSearchedOneByOne) {
    const auto timeOf = [](ItemType type, const char* prefix, int count) {
        std::string values;
        for (int i = 0; i < count; ++i)
            values.append(prefix).append(std::to_string(i)).append(i + 1 < count ? "Y\n" : "Y");
        if (type != ItemType_duration)
            values.erase(std::remove(values.begin(), values.end(), 'Y'), values.end());
        const CPrimitiveRestrictions restrictions = Make({.enumeration = values.c_str()});
        const std::string last = values.substr(values.rfind('\n') + 1);
        restrictions.Check("Size", type, last);
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < 2000; ++i)
            restrictions.Check("Size", type, last);
        return std::chrono::steady_clock::now() - start;
    };
    for (const ItemType type : {ItemType_string, ItemType_decimal, ItemType_r8, ItemType_duration}) {
        const char* const prefix = type == ItemType_duration ? "P" : "1";
        EXPECT_LT(timeOf(type, prefix, 16000), 20 * timeOf(type, prefix, 100) + std::chrono::milliseconds(20))
            << type;
    }
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

// Construction takes anything, since generated classes build facets before main.
TEST(PrimitiveRestrictions, FacetsThatMakeNoSenseFailAtTheFirstCheck) {
    const struct {
        ItemType type;
        Facets facets;
        const char* expected;
    } rows[] = {
        {ItemType_string, {.minLength = 3, .maxLength = 2}, "minLength [3] contradicts maxLength [2]."},
        {ItemType_hexBinary, {.maxLength = 2, .length = 3}, "length [3] contradicts maxLength [2]."},
        {ItemType_decimal, {.totalDigits = 0}, "totalDigits [0] must be positive."},
        {ItemType_i4,
         {.totalDigits = 1, .fractionDigits = 2},
         "fractionDigits [2] contradicts totalDigits [1]."},
        {ItemType_r8,
         {.minInclusive = "1.0", .maxExclusive = "1"},
         "minInclusive [1.0] contradicts maxExclusive [1]."},
        {ItemType_duration,
         {.minExclusive = "P2D", .maxExclusive = "P1D"},
         "minExclusive [P2D] contradicts maxExclusive [P1D]."},
        {ItemType_i1, {.minInclusive = "128"}, "minInclusive [128] leaves no value of the type."},
        {ItemType_ui1, {.minExclusive = "255"}, "minExclusive [255] leaves no value of the type."},
        {ItemType_ui4, {.maxInclusive = "-1"}, "maxInclusive [-1] leaves no value of the type."},
        {ItemType_ui8, {.maxExclusive = "0"}, "maxExclusive [0] leaves no value of the type."},
        {ItemType_i1, {.enumeration = "1\n200"}, "enumeration [200] is no value of the type."},
        {ItemType_i4, {.minInclusive = "ten"}, "minInclusive [ten] is no value of the type."},
        {ItemType_decimal,
         {.minExclusive = "1E999999999"},
         "minExclusive [1E999999999] is no value of the type."},
        {ItemType_r8, {.enumeration = "1\n"}, "enumeration [] is no value of the type."},
        {ItemType_char, {.enumeration = "ab"}, "enumeration [ab] is no value of the type."},
        {ItemType_boolean, {.enumeration = "yes"}, "enumeration [yes] is no value of the type."},
        {ItemType_base64Binary, {.enumeration = "?"}, "enumeration [?] is no value of the type."},
        {ItemType_r4, {.maxExclusive = "1,5"}, "maxExclusive [1,5] is no value of the type."},
        {ItemType_hexBinary, {.enumeration = "0"}, "enumeration [0] is no value of the type."},
        {ItemType_date, {.minInclusive = "2001-05"}, "minInclusive [2001-05] is no value of the type."},
        {ItemType_duration, {.maxInclusive = "1Y"}, "maxInclusive [1Y] is no value of the type."},
    };
    for (const auto& row : rows) {
        const CPrimitiveRestrictions restrictions = Make(row.facets);
        const char* const value = row.type == ItemType_date        ? "2001-01-01"
                                  : row.type == ItemType_duration  ? "P1D"
                                  : row.type == ItemType_hexBinary ? "00"
                                                                   : "1";
        for (int i = 0; i < 2; ++i) {
            const std::string message =
                ErrorOf<CKvInvalidParamException>([&] { restrictions.Check("Size", row.type, value); });
            EXPECT_EQ(message.substr(0, message.find('\n')),
                      std::string("Invalid Facet of Size: ") + row.expected);
        }
    }
    // Values of another kind than the one that facets were first used for.
    const CPrimitiveRestrictions shared = Make({.maxInclusive = "1.5"});
    EXPECT_EQ(Verdict(shared, ItemType_decimal, "1"), "");
    EXPECT_THROW(shared.Check("Size", ItemType_i4, 1), CKvInvalidParamException);
    EXPECT_NE(Verdict(shared, ItemType_r8, 1.6), "");
    EXPECT_EQ(ErrorOf([] { Make({.length = 1}).Check("a", ItemType_i4, "x"); }),
              "The value [x] can not be converted to a i4");
}

}  // namespace
}  // namespace KvXmlLib16
