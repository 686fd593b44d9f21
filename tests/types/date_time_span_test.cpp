#include "kvxml/types/date_time_span.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/error_of.h"

using namespace KvXmlLib16;

namespace {

CDateTimeSpan Of(std::string_view text) {
    CDateTimeSpan span;
    span.ParseXSDDuration(text);
    return span;
}

TEST(DateTimeSpan, LexicalForms) {
    const struct {
        const char* text;
        const char* written;  // null: as read
    } rows[] = {
        {"-P1Y2M3DT4H5M6.007008S", nullptr},
        {"PT1.5S", "PT1.500S"},
        {"PT1.S", "PT1S"},
        {"PT0.000250S", "PT0.000250S"},
        {"PT0.000000123S", "PT0.000000003S"},  // of digits 7 to 9 the last stays
        {"-P0Y", "-P"},
        {"PT5S1Y", "P1YT5S"},
        {"P65537Y", "P1Y"},
        {"P4294967295MT4294967295H", nullptr},
        {"PT2147483648M", "PT18446744071562067968M"},
        {"P5T1H", "PT1H"},
        {"P0DT0H0M0.000S", "P"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Of(row.text).ToString(), row.written == nullptr ? row.text : row.written) << row.text;
    }

    const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    CDateTimeSpan longest(65535, 4294967295U, 4294967295U, 4294967295U, most, most, 65535, 65535, 65535);
    longest.Negate();
    EXPECT_EQ(longest.ToString(),
              "-P65535Y4294967295M4294967295DT4294967295H18446744073709551615M18446744073709551615."
              "655356553565535S");
    EXPECT_LE(longest.ToString().size(), CDateTimeSpan::kMaxTextLength);
}

TEST(DateTimeSpan, RefusedTexts) {
    CDateTimeSpan span;
    const auto errorOf = [&span](auto text) {
        span = Of("-P7Y");
        return ErrorOf<CKvInvalidValueException>([&] { span.ParseXSDDuration(text); });
    };
    EXPECT_EQ(errorOf(static_cast<const char*>(nullptr)), "Invalid XSD Duration (Null String)");
    EXPECT_EQ(span.ToString(), "P");
    EXPECT_EQ(errorOf(""), "Invalid XSD Duration (Empty String)");
    EXPECT_EQ(errorOf("PT5.0000000123S"), "Invalid XSD Duration [PT5.0000000123S] Fraction part too long");
    EXPECT_EQ(span.ToString(), "PT5.000000002S") << "what was read before the fault";
    std::vector<std::string> texts = {"P",      "-",      "P1M1M",     "PT1S1M",  "-P",         "PT",
                                      "P1YT",   "1Y",     "+P1Y",      "P1",      "P1D1M",      "PT1H1H",
                                      "PT1M1H", "P1H",    "P1DT1D",    "PTT1H",   "P1Y ",       "p1y",
                                      "PT1.5",  "PT1.5M", "PT1,5S",    "P1Y\xff", "P\xd9\xa1Y", "PT1.5S2.5S",
                                      "P1S",    "P1.5S",  "PT1H1YT1M", "PT1H1D"};
    texts.emplace_back("P1Y\0", 4);
    texts.push_back("P" + std::string(1 << 20, '9'));
    for (const std::string& text : texts) {
        EXPECT_TRUE(errorOf(std::string_view(text)) ==
                    "Invalid XSD Duration [" + text + "] expected [-]P[nY][nM][nD][T[nH][nM][nS.ff]]")
            << text.substr(0, 20);
    }
}

TEST(DateTimeSpan, Signs) {
    CDateTimeSpan span(1, 0, 0);
    span.Negate();
    EXPECT_TRUE(span.IsNegative() && span.GetAsNegative().IsNegative());
    span.Negate();
    EXPECT_TRUE(!span.IsNegative() && span.GetAsNegative().IsNegative());
    span.Negate();
    span.SetDateTimeSpan(0, 1, 0, 0, 0, 0);
    EXPECT_EQ(span.ToString(), "P1M");
}

TEST(DateTimeSpan, PartialOrder) {
    const struct {
        const char* a;
        char order;
        const char* b;
    } rows[] = {
        {"P1Y", '=', "P12M"},
        {"P0Y", '=', "-PT0S"},
        {"-P1M", '?', "-P30D"},
        {"P1M", '>', "P27D"},
        {"P1M", '<', "P32D"},
        {"P1Y", '>', "P364D"},
        {"P1Y", '?', "P365D"},
        {"P1Y", '?', "P366D"},
        {"P1Y", '<', "P367D"},
        {"P65535Y4294967295M", '>', "P4294967295D"},
        {"PT2147483648S", '>', "PT2147483647M"},  // sign-extended on reading
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.a) + " " + row.order + " " + row.b);
        const CDateTimeSpan a = Of(row.a);
        const CDateTimeSpan b = Of(row.b);
        EXPECT_EQ("=<>?"[a.CompareTo(b)], row.order);
        EXPECT_EQ(a == b, row.order == '=');
        EXPECT_EQ(a != b, row.order != '=');
        EXPECT_EQ(a < b, row.order == '<');
        EXPECT_EQ(a > b, row.order == '>');
    }
}

}  // namespace
