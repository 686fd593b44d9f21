#include "kvxml/types/date_time.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kvxml/types/date_time_span.h"
#include "tests/support/error_of.h"

using namespace KvXmlLib16;

namespace {

static_assert(sizeof(CDateTime) == 24);

using Invalid = CKvInvalidValueException;
using InvalidState = CKvInvalidStateException;

CDateTime DateOf(std::string_view text) {
    CDateTime value;
    value.ParseXSDDate(text);
    return value;
}

CDateTime TimeOf(std::string_view text) {
    CDateTime value;
    value.ParseXSDTime(text);
    return value;
}

/// Any lexical form.
CDateTime Of(std::string_view text) {
    if (text.find('T') != std::string_view::npos) return CDateTime(text);
    return text.size() > 2 && text[2] == ':' ? TimeOf(text) : DateOf(text);
}

CDateTimeSpan SpanOf(std::string_view text) {
    CDateTimeSpan span;
    span.ParseXSDDuration(text);
    return span;
}

TEST(DateTime, LexicalForms) {
    const struct {
        const char* text;
        CDateTime::DTType type;
        const char* written;  // null: as read
    } rows[] = {
        {"-0044-03-15T23:59:59.000000001-23:59", CDateTime::dt_dateTime, nullptr},
        {"2001-10-26T21:32:52.12679+14:00", CDateTime::dt_dateTime, "2001-10-26T21:32:52.126790+14:00"},
        {"-0004-02-29-05:30", CDateTime::dt_date, nullptr},
        {"2004-02-29x05:30", CDateTime::dt_date, "2004-02-29"},
        {"-9999+23:59", CDateTime::dt_gYear, nullptr},
        {"--01", CDateTime::dt_gMonth, nullptr},
        {"--05!?-01:00", CDateTime::dt_gMonth, "--05-01:00"},
        {"---31", CDateTime::dt_gDay, nullptr},
        {"---01-00:30", CDateTime::dt_gDay, "---01+00:30"},  // the sign is the hour's
        {"--12-31+02:00", CDateTime::dt_gMonthDay, nullptr},
        {"23:59:59-24:59", CDateTime::dt_time, "23:59:59+00:59"},
        {"12:00:00.abc", CDateTime::dt_time, "12:00:00"},
    };
    for (const auto& row : rows) {
        const CDateTime value = Of(row.text);
        EXPECT_EQ(value.GetType(), row.type) << row.text;
        EXPECT_EQ(value.ToString(), row.written == nullptr ? row.text : row.written);
    }
    const std::string digits = "123456789";
    for (std::size_t count = 0; count <= digits.size(); ++count) {
        std::string written = count == 0 ? "" : "." + digits.substr(0, count);
        if (count % 3 != 0) written.append(3 - count % 3, '0');
        EXPECT_EQ(TimeOf("21:32:52." + digits.substr(0, count) + "Z").ToString(), "21:32:52" + written + "Z");
    }
}

TEST(DateTime, RefusedTexts) {
    using Parse = void (CDateTime::*)(std::string_view);
    const Parse dateTime = &CDateTime::ParseXSDDateTime;
    const Parse date = &CDateTime::ParseXSDDate;
    const Parse time = &CDateTime::ParseXSDTime;
    const struct {
        Parse parse;
        const char* text;
        const char* message;
    } rows[] = {
        {dateTime, "2001-10-26t10:00:00", "Invalid XSD DateTime [2001-10-26t10:00:00]."},
        {dateTime, "2001-10T10:00:00",
         "Invalid XSD DateTime [2001-10T10:00:00] expected CCYY-MM-DDThh:mm:ss[.ff]"},
        {dateTime, "T10:00:00", "Invalid Date (Empty String)"},
        {dateTime, "2001-10-26T", "Invalid XSD Time (Empty String)"},
        {date, "", "Invalid Date (Empty String)"},
        {date, "2001-10-26T10:00:00", "Invalid Date ('T' not allowed)"},
        {date, "2001-10-26+01:00Z", "Invalid Date (Bad Zone value)"},
        {date, "2001+01-0:", "Invalid XSD Time Zone [+01-0:]."},
        {date, "-0100-02-29", "Invalid Day [29] (1 <= day <= days in month"},
        {date, "--02-30", "Invalid Day [30] (1 <= day <= days in month)"},
        {date, "--04-31", "Invalid Day [31] (1 <= day <= days in month)"},
        {date, "---00", "Invalid Day [0] (1 <= day <= 31)"},
        {date, "---32", "Invalid Day [32] (1 <= day <= 31)"},
        {date, "2001-10-26-25:00", "Invalid TimeZone [-25:0]"},
        {date, "0000-13", "Invalid Month [13] (1 <= month <= 12)"},  // the month is checked first
        {time, "", "Invalid XSD Time (Empty String)"},
        {time, "10:00:00.1234567890", "Invalid XSD Time [10:00:00.1234567890] Fraction part too long"},
        {time, "10:00:00+1:00", "Invalid XSD Time Zone [+1:00]."},
        {time, "10:00:00-05:60", "Invalid TimeZone [-5:60]"},
    };
    for (const auto& row : rows) {
        CDateTime value;
        EXPECT_EQ(ErrorOf<Invalid>([&] { (value.*row.parse)(row.text); }), row.message);
    }
    using namespace std::string_literals;
    const std::string mega(1 << 20, '-');
    std::vector<std::string> dates = {"Z",       "-",   "--",   "---",        "1:2",         "+2001",
                                      "2001/10", "--1", "---1", "2O01-10-26", "12345-01-01", "2001-10-26 "};
    dates.insert(dates.end(), {"2001-10-26+0:00", "2001-10-26\0"s, "\xd9\xa2\xd9\xa0", mega + ":"});
    for (const std::string& text : dates) {
        EXPECT_TRUE(ErrorOf<Invalid>([&] { DateOf(text); }) ==
                    "Invalid XSD Date [" + text + "] expected CCYY-MM-DD[Z|[+|-]hh:mm]")
            << text.substr(0, 20);
    }
    const std::string times[] = {
        "1:00:00", "10:00", "10:60:00", "10:00:60", "24:00:00", "10:00:0\0"s, "\xd9\xa1\xd9\xa0:00:00",
        "-1:00:00"};
    for (const std::string& text : times) {
        EXPECT_TRUE(ErrorOf<Invalid>([&] { TimeOf(text); }) ==
                    "Invalid XSD Time [" + text + "] expected hh:mm:ss[.ff]")
            << text.substr(0, 20);
    }
}

TEST(DateTime, WhatARefusedTextLeaves) {
    const auto leaves = [](void (CDateTime::*parse)(const char*), const char* text) {
        CDateTime value("2001-02-03T04:05:06Z");
        const std::string message = ErrorOf<Invalid>([&] { (value.*parse)(text); });
        return message.substr(0, message.find(" [")) + " / " + value.ToString();
    };
    EXPECT_EQ(leaves(&CDateTime::ParseXSDDateTime, nullptr),
              "Invalid DateTime (Null String) / 2001-02-03T04:05:06Z");
    EXPECT_EQ(leaves(&CDateTime::ParseXSDDateTime, "2001-10-26T1"), "Invalid XSD Time / 2001-10-26");
    EXPECT_EQ(leaves(&CDateTime::ParseXSDDate, nullptr), "Invalid Date (Null String) / Error: Date Not Set");
    EXPECT_EQ(leaves(&CDateTime::ParseXSDDate, "1999-02-30"), "Invalid Day / 1999-02-30");
    EXPECT_EQ(leaves(&CDateTime::ParseXSDTime, nullptr), "Invalid Time (Null String) / Error: Date Not Set");
    EXPECT_EQ(leaves(&CDateTime::ParseXSDTime, "bad"), "Invalid XSD Time / Error: Date Not Set");
}

// The commonest form has a reader of its own; with a fraction the same text goes the long way.
TEST(DateTime, PlainTextsAreReadAsThoseWithFraction) {
    const auto read = [](const std::string& text) {
        CDateTime value;
        std::string message = ErrorOf<Invalid>([&] { value.ParseXSDDateTime(text); });
        // What a failed parse leaves counts, too.
        return std::pair(value.ToString(), message);
    };
    for (const std::string zone : {"", "Z"}) {
        for (const std::string start :
             {"2001-05-03T01:02:03", "2000-02-29T23:59:59", "1900-02-28T00:00:00"}) {
            for (std::size_t place = 0; place < start.size(); ++place) {
                for (const char c : std::string("0123456789/:?-T \0\xB1", 19)) {
                    std::string text = start;
                    text[place] = c;
                    auto expected = read(text + ".0" + zone);
                    const std::size_t fraction = expected.second.find(".0" + zone + "]");
                    if (fraction != std::string::npos) expected.second.erase(fraction, 2);
                    EXPECT_EQ(read(text + zone), expected) << text;
                }
            }
        }
    }
}

TEST(DateTime, ToStringFormats) {
    const CDateTime value(2001, 2, 3);
    EXPECT_EQ(value.ToString("G"), "");
    EXPECT_EQ(value.ToString("x"), "Unknown Format: x");
    EXPECT_EQ(CDateTime().ToString("G"), "Error: Date Not Set");
    EXPECT_EQ(CDateTime(CDateTime::dt_date).ToString(), "Error: Date Not Set");

    CDateTime longest(1, 1, 1, 0, 0, 0);
    longest.SetYear(-32768);
    longest.SetMonth(255);
    longest.SetDay(255);
    longest.SetHour(255);
    longest.SetMinute(255);
    longest.SetSecond(255);
    longest.SetMilliSecond(65535);
    longest.SetMicroSecond(65535);
    longest.SetNanoSecond(65535);
    longest.SetTimeZone(-23, 59);
    EXPECT_EQ(longest.ToString(), "-32768-255-255T255:255:255.655356553565535-23:59");
    EXPECT_EQ(longest.ToString().size(), CDateTime::kMaxTextLength);
}

TEST(DateTime, KindSettersCheckTheirValues) {
    const struct {
        void (*set)(CDateTime&);
        const char* message;
    } rows[] = {
        {[](CDateTime& v) { v.SetDate(70000, 1, 1); },
         "Invalid Year [70000] (9999 <= year <= -9999 && year != 0)"},
        {[](CDateTime& v) { v.SetGYear(0); }, "Invalid Year [0] (9999 <= year <= -9999 && year != 0)"},
        {[](CDateTime& v) { v.SetGYearMonth(2000, 0); }, "Invalid Month [0] (1 <= month <= 12)"},
        {[](CDateTime& v) { v.SetGMonth(261); }, "Invalid Month [261] (1 <= month <= 12)"},
        {[](CDateTime& v) { v.SetGDay(-1); }, "Invalid Day [-1] (1 <= day <= 31)"},
        {[](CDateTime& v) { v.SetTime(24, 0, 0); }, "Invalid Hour [24] (0 <= hour <= 23)"},
        {[](CDateTime& v) { v.SetTime(0, 60, 0); }, "Invalid Minute [60] (0 <= minute <= 59)"},
        {[](CDateTime& v) { v.SetDateTime(1, 1, 1, 0, 0, 60); }, "Invalid Second [60] (0 <= second <= 59)"},
        {[](CDateTime& v) { v.SetFracTime(1000, 0, 0); }, "Invalid Milli-Second [1000] (0 <= milli <= 999)"},
        {[](CDateTime& v) { v.SetFracTime(0, 1000, 0); }, "Invalid Micro-Second [1000] (0 <= micro <= 999)"},
        {[](CDateTime& v) { v.SetTime(0, 0, 0, 0, 0, 1000); },
         "Invalid Nano-Second [1000] (0 <= nano <= 999)"},
        {[](CDateTime& v) { v.SetTimeZone(24, 0); }, "Invalid TimeZone [24:0]"},
    };
    for (const auto& row : rows) {
        CDateTime value;
        EXPECT_EQ(ErrorOf<Invalid>([&] { row.set(value); }), row.message);
    }

    CDateTime value(2001, 2, 3, 4, 5, 6);
    EXPECT_EQ(ErrorOf<InvalidState>([&] { value.SetTime(1, 2, 3); }),
              "Failed to copy CDateTime. Invalid Date Type: time, expected: dateTime.");
    value.SetDateTime(2002, 1, 1, 0, 0, 0, 1, 2, 3);
    EXPECT_EQ(value.ToString(), "2002-01-01T00:00:00.001002003");
}

TEST(DateTime, FieldsOfEachKind) {
    const char* const dateTime = "2001-02-03T04:05:06.007008009";
    const char* const time = "04:05:06.007008009";
    const char* const texts[] = {dateTime, "2001-02-03", "2001-02", "2001", time, "---03", "--02", "--02-03"};
    const struct {
        const char* name;
        long (*get)(const CDateTime&);
        void (*set)(CDateTime&, int);  // null: there is none
        const char* kinds;             // one mark per text
        long value;
    } rows[] = {
#define ROW(Name, kinds, value)                                       \
    {#Name, [](const CDateTime& v) -> long { return v.Get##Name(); }, \
     [](CDateTime& v, int n) { v.Set##Name(n); }, kinds, value}
        ROW(Year, "yyyynnnn", 2001),
        ROW(Month, "yyynnnyy", 2),
        ROW(Day, "yynnnyny", 3),
        ROW(Hour, "ynnnynnn", 4),
        ROW(Minute, "ynnnynnn", 5),
        ROW(Second, "ynnnynnn", 6),
        ROW(MilliSecond, "ynnnynnn", 7),
        ROW(MicroSecond, "ynnnynnn", 8),
        ROW(NanoSecond, "ynnnynnn", 9),
#undef ROW
        {"RealSecond", [](const CDateTime& v) -> long { return v.GetRealSecond() == 6.007008009 ? 1 : 0; },
         nullptr, "ynnnynnn", 1},
        {"DayOfWeek", [](const CDateTime& v) -> long { return v.GetDayOfWeek(); }, nullptr, "yynnnnnn", 7},
        {"DayOfYear", [](const CDateTime& v) -> long { return v.GetDayOfYear(); }, nullptr, "yynnnnnn", 34},
    };
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < 8; ++i) {
            SCOPED_TRACE(std::string(row.name) + " of " + texts[i]);
            CDateTime value = Of(texts[i]);
            const std::string message = std::string("Failed to Get") + row.name +
                                        ". Invalid Date Type: " + value.GetTypeAsString() + ".";
            if (row.kinds[i] == 'y') {
                EXPECT_EQ(row.get(value), row.value);
                if (row.set != nullptr) {
                    row.set(value, 77);  // not checked
                    EXPECT_EQ(row.get(value), 77);
                }
            } else {
                EXPECT_EQ(ErrorOf<InvalidState>([&] { row.get(value); }), message);
                if (row.set != nullptr) {
                    EXPECT_EQ(ErrorOf<InvalidState>([&] { row.set(value, 77); }), message);
                }
            }
        }
    }
    EXPECT_EQ(ErrorOf<InvalidState>([] { CDateTime().GetYear(); }),
              "Failed to GetYear. Invalid Date Type: yearZero.");
    EXPECT_EQ(ErrorOf<InvalidState>([] { CDateTime("2001-01-01T00:00:00Z").GetZoneHour(); }),
              "TimeZone is not been used");
    EXPECT_EQ(ErrorOf<InvalidState>([] { CDateTime().GetZoneMinute(); }), "TimeZone is not been used");
}

TEST(DateTime, ConversionBetweenKinds) {
    CDateTime value = TimeOf("01:02:03");
    value.SetDateTime(CDateTime("2001-02-03T04:05:06.5+02:00"), CDateTime::dt_gYearMonth);
    EXPECT_EQ(value.ToString(), "2001-02+02:00");
    value = DateOf("2001-02-03");
    value.SetDateTime(value, CDateTime::dt_gMonthDay);
    EXPECT_EQ(value.ToString(), "--02-03");
    EXPECT_EQ(ErrorOf<Invalid>([&] { value.SetDateTime(DateOf("2001-02-03"), CDateTime::dt_dateTime); }),
              "Attempting to set a CDateTime of type dateTime using an XmlDateTime of type date. The source "
              "CDateTime does not contian enough data to allow the conversion.");
    EXPECT_EQ(ErrorOf<Invalid>([&] { value.SetDateTime(value, CDateTime::dt_none); }), "Invalid Year Zero");
    // A number that is no kind stays none, it does not become another one.
    EXPECT_EQ(CDateTime(static_cast<CDateTime::DTType>(0x14)).GetTypeAsString(), "");
    EXPECT_EQ(CDateTime(static_cast<CDateTime::DTType>(-1)).ToString(), "Error: Date Not Set");
}

TEST(DateTime, SecondsSince1970) {
    const struct {
        const char* text;
        std::int64_t seconds;
    } rows[] = {
        {"2007-10-14T12:09:57+02:00", 1192356597},
        {"1969-12-31T23:59:59.5", -1},
        {"2000-01-01+13:00", 946598400},
        {"2000-01-01-05:00", 946684800},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Of(row.text).GetTime(), row.seconds) << row.text;

    for (std::int64_t seconds = -377000000000; seconds < 253402300800; seconds += 86400 * 17 + 3599) {
        if (seconds >= -62167219200 && seconds < -62135596800) continue;  // the year 0
        ASSERT_EQ(CDateTime(seconds).GetTime(), seconds);
    }
    CDateTime value;
    value = 1192356597L;
    EXPECT_EQ(value.ToString(), "2007-10-14T10:09:57");
    EXPECT_EQ(ErrorOf<Invalid>([&] { value = 253402300800; }),
              "Invalid Year [10000] (9999 <= year <= -9999 && year != 0)");
    EXPECT_THROW(value = std::numeric_limits<std::int64_t>::min(), Invalid);
    EXPECT_THROW(value = std::numeric_limits<std::uint64_t>::max(), Invalid);
    EXPECT_EQ(value.ToString(), "2007-10-14T10:09:57");
    EXPECT_EQ(ErrorOf<Invalid>([] { TimeOf("00:00:00").GetTime(); }),
              "Failed to GetTime, Date Status must be dateTime or date. Invalid Date Type: time.");
}

TEST(DateTime, PlatformTimes) {
    const SYSTEMTIME time = CDateTime("2007-10-14T10:09:57.123456Z").GetAsSystemTime();
    EXPECT_EQ(time.wYear, 2007);
    EXPECT_EQ(CDateTime(time).ToString(), "2007-10-14T10:09:57.123");
    EXPECT_EQ(ErrorOf<Invalid>([] { DateOf("2001-01-01").GetAsSystemTime(); }),
              "Failed to GetAsSystemTime, Date Status must be dateTime. Invalid Date Type: date.");

    const auto fileTime = [](std::uint64_t ticks) {
        return FILETIME{static_cast<std::uint32_t>(ticks), static_cast<std::uint32_t>(ticks >> 32)};
    };
    CDateTime value = DateOf("2001-01-01");
    value = fileTime(0);
    EXPECT_EQ(value.ToString(), "1601-01-01T00:00:00");
    EXPECT_EQ(CDateTime(fileTime(116444736000000000 + 12345678)).ToString(), "1970-01-01T00:00:01.234");
    EXPECT_EQ(ErrorOf<Invalid>([&] { value = fileTime(std::uint64_t{1} << 63); }),
              "Failed to convert FILETIME to SYSTEMTIME");

    const CDateTime now = CDateTime::GetTickCount();
    EXPECT_TRUE(now > CDateTime("2020-01-01T00:00:00"));
}

TEST(DateTime, Normalized) {
    const struct {
        const char* text;
        const char* normalized;
    } rows[] = {
        {"2000-12-31T23:00:00.5-01:30", "2001-01-01T00:30:00.500Z"},
        {"00:30:00+01:00", "23:30:00Z"},
        {"2000-01-01+13:00", "1999-12-31Z"},
        {"--03-01+01:00", "--02-29Z"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Of(row.text).GetNormalized().ToString(), row.normalized);
}

TEST(DateTime, Order) {
    const struct {
        const char* a;
        char order;  // = < > ?
        const char* b;
    } rows[] = {
        {"2000-01-16T12:00:00", '?', "2000-01-16T12:00:00Z"},
        {"2000-01-16T12:00:00", '?', "2000-01-16T02:00:00+04:00"},  // exactly 14 hours
        {"2000-01-16T12:00:00Z", '<', "2000-01-17T02:00:00.000000001"},
        {"2000-01-16T00:00:00", '?', "2000-01-16T12:00:00Z"},
        {"2000-01-16T12:00:00Z", '?', "2000-01-17T02:00:00"},
        {"2000-01-01T00:00:00+01:00", '=', "1999-12-31T23:00:00Z"},
        {"00:30:00+01:00", '<', "00:00:00Z"},
        {"1999", '<', "2000-01-01"},  // the year decides
        {"2000", '?', "2000-01-01"},  // the month is missing
        {"2000-01-01", '?', "2000-01-01T00:00:00"},
        {"12:00:00", '?', "2000-01-01T12:00:00"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.a) + " " + row.order + " " + row.b);
        const CDateTime a = Of(row.a);
        const CDateTime b = Of(row.b);
        const char mirrored = row.order == '<' ? '>' : row.order == '>' ? '<' : row.order;
        EXPECT_EQ("=<>?"[a.CompareTo(b)], row.order);
        EXPECT_EQ("=<>?"[b.CompareTo(a)], mirrored);
        const bool less = row.order == '<';
        const bool equal = row.order == '=';
        const bool greater = row.order == '>';
        EXPECT_TRUE((a == b) == equal && (a != b) != equal && (a < b) == less && (a > b) == greater);
        EXPECT_TRUE((a <= b) == (less || equal) && (a >= b) == (greater || equal));
    }
    EXPECT_TRUE(CDateTime() == CDateTime());
    EXPECT_EQ(CDateTime().CompareTo(DateOf("2000-01-01")), CDateTime::DTCompare_Indeterminate);
}

TEST(DateTime, AddingDurations) {
    const struct {
        const char* start;
        const char* span;
        const char* sum;
    } rows[] = {
        {"2000-01-12T12:13:14Z", "P1Y3M5DT7H10M3.3S", "2001-04-17T19:23:17.300Z"},
        {"2000-01", "-P3M", "1999-10"},
        {"2000-01-31", "P1M", "2000-02-29"},
        {"2000-03-30T00:00:00", "P1M1D", "2000-05-01T00:00:00"},
        {"2000-12-31T23:59:59.999", "PT0.001S", "2001-01-01T00:00:00"},
        {"-0001-06-01", "P2Y", "0001-06-01"},  // through a year 0
        {"23:30:00", "PT1H", "00:30:00"},
        {"2000-01-01T00:00:00", "PT2147483647M", "6083-01-23T02:07:00"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.start) + " + " + row.span);
        CDateTimeSpan span = SpanOf(row.span);
        EXPECT_EQ((Of(row.start) + span).ToString(), row.sum);
        span.Negate();
        EXPECT_EQ((Of(row.start) - span).ToString(), row.sum);
    }
    const struct {
        const char* start;
        const char* span;
        const char* message;
    } refused[] = {
        {"9999-12-31", "P1D", "Invalid Year [10000] (9999 <= year <= -9999 && year != 0)"},
        {"-0001-12-31", "P1D", "Invalid Year [0] (9999 <= year <= -9999 && year != 0)"},
        {"2000-01-01", "P65535Y4294967295M", "Invalid Year [357981476] (9999 <= year <= -9999 && year != 0)"},
    };
    for (const auto& row : refused) {
        CDateTime value = Of(row.start);
        EXPECT_EQ(ErrorOf<Invalid>([&] { value += SpanOf(row.span); }), row.message);
        EXPECT_EQ(value.ToString(), row.start);
    }
    EXPECT_EQ(ErrorOf<Invalid>([] { CDateTime() + CDateTimeSpan(1, 0, 0); }), "Invalid Year Zero");
}

TEST(DateTime, Differences) {
    const struct {
        const char* a;
        const char* b;
        const char* span;
    } rows[] = {
        {"2000-03-01T00:00:00", "2000-02-28T23:00:00", "P1DT1H"},
        {"2000-01-01T00:00:00.25", "1999-12-31T23:59:59.500000001", "PT0.749999999S"},
        {"2000-01-01T00:00:00+02:00", "2000-01-01T00:00:00Z", "-PT2H"},
        {"9999-12-31", "-9999-01-01", "P7304483D"},
    };
    for (const auto& row : rows)
        EXPECT_EQ((Of(row.a) - Of(row.b)).ToString(), row.span) << row.a;
    EXPECT_EQ(ErrorOf<Invalid>([] { DateOf("2000-01-01") - CDateTime(); }), "Invalid Year Zero");
}

}  // namespace
