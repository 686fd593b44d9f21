// Values in the terms of the standard library: streams, hashes, chrono, containers, optional.
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "kvxml/base/optional_value.h"
#include "kvxml/types/big_integer.h"
#include "kvxml/types/binary_data.h"
#include "kvxml/types/date_time_chrono.h"
#include "kvxml/types/decimal.h"
#include "tests/support/error_of.h"

namespace KvXmlLib16 {
namespace {

using namespace std::chrono;
using namespace std::string_view_literals;

template <class T>
std::string Streamed(const T& value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

// The first texts are forms of one value, the others are values apart from it and from each other.
template <class T, class Make>
void ExpectHashes(const std::vector<const char*>& equal, const std::vector<const char*>& others, Make make) {
    std::unordered_set<T> values;
    for (const char* text : equal)
        values.insert(make(text));
    EXPECT_EQ(values.size(), 1U) << equal[0];
    for (const char* text : others)
        values.insert(make(text));
    EXPECT_EQ(values.size(), 1U + others.size()) << equal[0];
    std::unordered_set<std::size_t> hashes;
    for (const T& value : values)
        hashes.insert(std::hash<T>()(value));
    EXPECT_EQ(hashes.size(), values.size()) << equal[0];
}

TEST(ValueInterfaces, EqualValuesHaveEqualHashes) {
    const auto decimal = [](const char* text) { return CDecimal(text); };
    ExpectHashes<CDecimal>({"1.5", "1.500", "15E-1"}, {"-1.5", "15", "0.15", "0"}, decimal);
    ExpectHashes<CDecimal>({"0", "-0.00"}, {"1"}, decimal);
    ExpectHashes<CDecimal>({"12345678901234567890.5", "12345678901234567890.50"},
                           {"-12345678901234567890.5", "123456789012345678905"}, decimal);
    ExpectHashes<CBigInteger>({"123456789012345678901", "0123456789012345678901"},
                              {"-123456789012345678901", "1", "-1", "0"},
                              [](const char* text) { return CBigInteger(text); });
    ExpectHashes<CDateTime>({"2024-02-29T12:00:00Z", "2024-02-29T13:00:00+01:00"},
                            {"2024-02-29T12:00:00", "2024-02-29T12:00:00.000000001Z", "2024-02-29", "2024"},
                            CDateTime::FromText);
    ExpectHashes<CDateTime>({"00:00:00Z", "00:00:00+00:00"}, {"00:00:00", "--01", "---01"},
                            CDateTime::FromText);
    ExpectHashes<CDateTimeSpan>({"P400Y", "P4800M", "P146097D", "PT3506328H"},
                                {"P1M", "P30D", "PT1S", "-PT1S"}, CDateTimeSpan::FromText);
    ExpectHashes<CBinaryData>({"0A0b", "0a0B"}, {"", "0A", "0B0A"}, [](const char* text) {
        CBinaryData value;
        value.SetAsHexString(text);
        return value;
    });
}

TEST(ValueInterfaces, StreamsGetTheXsdForm) {
    EXPECT_EQ(Streamed(CDecimal("1.50")), "1.5");
    EXPECT_EQ(Streamed(CBigInteger::Pow10(20)), "100000000000000000000");
    EXPECT_EQ(Streamed(CDateTime(2024, 2, 29)), "2024-02-29");
    EXPECT_EQ(Streamed(CDateTimeSpan::FromText("-PT90M")), "-PT90M");
    EXPECT_TRUE(CDateTimeSpan::FromText("P12M") <= CDateTimeSpan::FromText("P1Y"));
    EXPECT_FALSE(CDateTimeSpan::FromText("P1M") >= CDateTimeSpan::FromText("P30D"));
}

TEST(ValueInterfaces, PointsInTime) {
    const struct {
        const char* text;
        std::int64_t nanos;
        const char* written;
    } rows[] = {
        {"1970-01-01T00:00:00Z", 0, "1970-01-01T00:00:00Z"},
        {"1970-01-01", 0, "1970-01-01T00:00:00Z"},
        {"1970-01-02T01:00:00.000000001+01:00", 86400000000001, "1970-01-02T00:00:00.000000001Z"},
        {"1969-12-31T23:59:59.999", -1000000, "1969-12-31T23:59:59.999Z"},
    };
    for (const auto& row : rows) {
        const auto point = ToTimePoint<nanoseconds>(CDateTime::FromText(row.text));
        EXPECT_EQ(point.time_since_epoch().count(), row.nanos) << row.text;
        EXPECT_EQ(ToDateTime(point).ToString(), row.written);
    }
    const CDateTime late = CDateTime::FromText("9999-12-31T23:59:59.5Z");
    EXPECT_THROW(ToTimePoint<nanoseconds>(late), CKvOverFlowException);
    EXPECT_EQ(ToDateTime(ToTimePoint<milliseconds>(late)), late);
    EXPECT_EQ(ToTimePoint<days>(CDateTime::FromText("1969-12-31T12:00:00")).time_since_epoch(), days(-1));
    EXPECT_EQ(ToTimePoint<duration<double>>(late).time_since_epoch().count(), 253402300799.5);
    EXPECT_THROW(ToTimePoint(CDateTime::FromText("12:00:00")), CKvInvalidValueException);
    using Far = time_point<system_clock, duration<std::int64_t>>;
    EXPECT_THROW(ToDateTime(Far::max()), CKvInvalidValueException);
    EXPECT_THROW(ToDateTime(time_point<system_clock, duration<std::int64_t, std::ratio<3600>>>::min()),
                 CKvOverFlowException);
    EXPECT_EQ(ToYearMonthDay(late), year(9999) / 12 / 31);
    EXPECT_EQ(ToDate(year(2024) / 2 / 29).ToString(), "2024-02-29");
    EXPECT_THROW(ToDate(year(2023) / 2 / 29), CKvInvalidValueException);
}

TEST(ValueInterfaces, LengthsOfTime) {
    const struct {
        const char* text;
        std::int64_t millis;
        const char* written;
    } rows[] = {
        {"PT1.5S", 1500, "PT1.500S"},
        {"-P1DT1H1M1.001S", -90061001, "-P1DT1H1M1.001S"},
        {"PT90M", 5400000, "PT1H30M"},
    };
    for (const auto& row : rows) {
        const auto length = ToDuration<milliseconds>(CDateTimeSpan::FromText(row.text));
        EXPECT_EQ(length.count(), row.millis);
        EXPECT_EQ(ToDateTimeSpan(length).ToString(), row.written);
    }
    EXPECT_EQ(ToDuration<minutes>(CDateTimeSpan::FromText("-PT90S")), minutes(-1));
    EXPECT_THROW(ToDuration(CDateTimeSpan::FromText("P1M")), CKvInvalidValueException);
    EXPECT_THROW(ToDuration(CDateTimeSpan(0, std::numeric_limits<std::uint64_t>::max(), 0)),
                 CKvOverFlowException);
    EXPECT_THROW((ToDuration<duration<std::int32_t, std::milli>>(CDateTimeSpan::FromText("P30D"))),
                 CKvOverFlowException);
    EXPECT_EQ(ToDateTimeSpan(nanoseconds::min()).ToString(), "-P106751DT23H47M16.854775808S");
    EXPECT_THROW(ToDateTimeSpan(seconds::min()), CKvOverFlowException);
}

TEST(ValueInterfaces, BinaryData) {
    const std::vector<unsigned char> bytes = {0, 1, 255};
    const CBinaryData value(bytes);
    EXPECT_EQ(value.GetAsHexString(), "0001FF");
    EXPECT_EQ(std::vector<unsigned char>(value.begin(), value.end()), bytes);
    const std::span<const unsigned char> view(value);
    EXPECT_EQ(view.data(), value.GetData());
    EXPECT_EQ(view.size(), 3U);
    EXPECT_EQ(CBinaryData(std::as_bytes(view)), value);
    EXPECT_EQ(CBinaryData(std::array<char, 3>{'\0', '\1', '\xFF'}), value);
    EXPECT_EQ(CBinaryData("\0\1\xFF"sv), value);
    const CBinaryData none((std::vector<std::byte>()));
    EXPECT_TRUE(none.empty() && none.begin() == none.end());
}

TEST(ValueInterfaces, OptionalValues) {
    COptionalValue<std::string> value = std::optional<std::string>("text");
    std::optional<std::string> standard = value;
    EXPECT_EQ(standard, "text");
    value = std::nullopt;
    EXPECT_FALSE(value.IsSet());
    standard = value;
    EXPECT_FALSE(standard.has_value());
}

}  // namespace
}  // namespace KvXmlLib16
