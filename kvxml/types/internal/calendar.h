/// Calendar arithmetic shared by dates and durations: the proleptic Gregorian calendar over whole year
/// numbers, the year 0 included.
#pragma once

#include <cstdint>

namespace KvXmlLib16 {

class CDateTimeSpan;

namespace internal {

constexpr std::int32_t kSecondsPerDay = 86400;
constexpr std::int32_t kNanosPerSecond = 1000000000;

struct CivilDate {
    std::int64_t year;
    std::int32_t month;  // 1 to 12
    std::int32_t day;    // 1 to 31
};

/// A point on an unzoned time line. Any number of days fits, so that durations of any length can be added.
struct Instant {
    std::int64_t days = 0;    // since 1970-01-01
    std::int32_t second = 0;  // of the day, 0 to 86399
    std::int32_t nano = 0;    // of the second, 0 to 999999999
};

constexpr std::int64_t FloorDivide(std::int64_t value, std::int64_t divisor) noexcept {
    const std::int64_t quotient = value / divisor;
    return value % divisor < 0 ? quotient - 1 : quotient;
}

constexpr std::int64_t FloorModulo(std::int64_t value, std::int64_t divisor) noexcept {
    const std::int64_t rest = value % divisor;
    return rest < 0 ? rest + divisor : rest;
}

constexpr bool IsLeapYear(std::int64_t year) noexcept {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

/// Longest form of the month; February has 29 days.
constexpr std::uint8_t kDaysInMonth[12] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

constexpr std::int32_t DaysInMonth(std::int64_t year, std::int32_t month) noexcept {
    return month == 2 && !IsLeapYear(year) ? 28 : kDaysInMonth[month - 1];
}

/// Days from 1970-01-01. Months beyond 12 and days beyond the month run on into the following ones.
///
/// Years are counted from March 1, which puts the leap day at their end: 153 days per five months, 146097
/// days per 400 years.
constexpr std::int64_t DaysFromCivil(std::int64_t year, std::int64_t month, std::int64_t day) noexcept {
    const std::int64_t months = year * 12 + month - 3;  // since March of the year 0
    const std::int64_t y = FloorDivide(months, 12);
    const std::int64_t m = FloorModulo(months, 12);
    const std::int64_t era = FloorDivide(y, 400);
    const std::int64_t yearOfEra = FloorModulo(y, 400);
    return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + (153 * m + 2) / 5 + day - 1 -
           719468;
}

/// Reverse of DaysFromCivil.
constexpr CivilDate CivilFromDays(std::int64_t days) noexcept {
    const std::int64_t shifted = days + 719468;
    const std::int64_t era = FloorDivide(shifted, 146097);
    const std::int64_t dayOfEra = FloorModulo(shifted, 146097);
    const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t m = (5 * dayOfYear + 2) / 153;
    const std::int64_t month = m < 10 ? m + 3 : m - 9;
    return {era * 400 + yearOfEra + (month <= 2 ? 1 : 0), static_cast<std::int32_t>(month),
            static_cast<std::int32_t>(dayOfYear - (153 * m + 2) / 5 + 1)};
}

/// Carries seconds and nanoseconds, which may be negative or too large, into the days.
constexpr Instant MakeInstant(std::int64_t days, std::int64_t seconds, std::int64_t nanos) noexcept {
    seconds += FloorDivide(nanos, kNanosPerSecond);
    return {days + FloorDivide(seconds, kSecondsPerDay),
            static_cast<std::int32_t>(FloorModulo(seconds, kSecondsPerDay)),
            static_cast<std::int32_t>(FloorModulo(nanos, kNanosPerSecond))};
}

constexpr Instant ShiftSeconds(const Instant& instant, std::int32_t seconds) noexcept {
    return MakeInstant(instant.days, std::int64_t{instant.second} + seconds, instant.nano);
}

/// Negative, zero or positive as `a` lies before, at or after `b`.
constexpr int CompareInstants(const Instant& a, const Instant& b) noexcept {
    if (a.days != b.days) return a.days < b.days ? -1 : 1;
    if (a.second != b.second) return a.second < b.second ? -1 : 1;
    if (a.nano != b.nano) return a.nano < b.nano ? -1 : 1;
    return 0;
}

/// Adds (or subtracts) a duration by the algorithm of W3C XML Schema 1.0 Datatypes, Appendix E.
Instant AddSpan(const Instant& start, const CDateTimeSpan& span, bool subtract) noexcept;

}  // namespace internal
}  // namespace KvXmlLib16
