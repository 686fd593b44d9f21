/// Dates and durations to and from the types of <chrono>.
///
///     CDateTime now = ToDateTime(std::chrono::system_clock::now());       //
///     "2024-02-29T12:00:00.123456789Z" std::chrono::system_clock::time_point t = ToTimePoint(now); auto
///     limit = ToDuration<std::chrono::milliseconds>(CDateTimeSpan::FromText("PT1.5S"));
///
/// CKvOverFlowException where the type that is asked for can not hold the value.
#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <ratio>
#include <type_traits>

#include "kvxml/base/exceptions.h"
#include "kvxml/types/date_time.h"
#include "kvxml/types/date_time_span.h"

#if defined(__cpp_lib_chrono) && __cpp_lib_chrono >= 201907L
#define KVXML_HAS_CALENDAR 1
#elif defined(_GLIBCXX_RELEASE) && _GLIBCXX_RELEASE >= 11 && __cplusplus >= 202002L
#define KVXML_HAS_CALENDAR 1
#endif

namespace KvXmlLib16 {

namespace internal {

using Seconds64 = std::chrono::duration<std::int64_t>;

/// Whole seconds, of any sign, and the nanoseconds after them.
struct SplitSeconds {
    std::int64_t seconds;
    std::int64_t nanos;  // 0 to 999,999,999
};

[[noreturn]] inline void ThrowNoRoom() {
    throw CKvOverFlowException("The date or duration does not fit the type asked for");
}

/// Rounded down to the unit of `Duration`.
template <class Duration>
Duration MakeDuration(const SplitSeconds& value) {
    using Rep = typename Duration::rep;
    using Period = typename Duration::period;
    static_assert(std::is_floating_point<Rep>::value || std::is_signed<Rep>::value,
                  "dates and durations may be negative");
    if constexpr (std::is_floating_point<Rep>::value) {
        return Duration(Seconds64(value.seconds)) + Duration(std::chrono::nanoseconds(value.nanos));
    } else if constexpr (std::ratio_less<Period, std::ratio<1>>::value) {
        constexpr std::int64_t kMost = std::chrono::duration_cast<Seconds64>(Duration::max()).count() - 1;
        if (value.seconds > kMost || value.seconds < -kMost) ThrowNoRoom();
        return std::chrono::duration_cast<Duration>(Seconds64(value.seconds)) +
               std::chrono::floor<Duration>(std::chrono::nanoseconds(value.nanos));
    } else {
        using Wide = std::chrono::duration<std::int64_t, Period>;
        const std::int64_t count = std::chrono::floor<Wide>(Seconds64(value.seconds)).count();
        if (count > std::numeric_limits<Rep>::max() || count < std::numeric_limits<Rep>::min()) ThrowNoRoom();
        return Duration(static_cast<Rep>(count));
    }
}

template <class Rep, class Period>
SplitSeconds Split(const std::chrono::duration<Rep, Period>& value) {
    static_assert(std::is_integral<Rep>::value, "cast it to a duration that counts in integers");
    if constexpr (std::ratio_greater<Period, std::ratio<1>>::value) {
        constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max() / Period::num;
        const auto count = static_cast<std::int64_t>(value.count());
        if (count > kMost || count < -kMost) ThrowNoRoom();
    }
    // Towards zero first: the second below the least value need not be one that the type holds.
    const auto seconds = std::chrono::duration_cast<Seconds64>(value);
    const auto rest = std::chrono::duration_cast<std::chrono::nanoseconds>(value - seconds).count();
    return rest < 0 ? SplitSeconds{seconds.count() - 1, rest + 1000000000}
                    : SplitSeconds{seconds.count(), rest};
}

}  // namespace internal

/// The point in time that a dateTime or date (its first instant) stands for; a value without zone counts as
/// UTC. Other kinds: the error of CDateTime::GetTime.
template <class Duration = std::chrono::system_clock::duration>
std::chrono::time_point<std::chrono::system_clock, Duration> ToTimePoint(const CDateTime& value) {
    internal::SplitSeconds split{value.GetTime(), 0};
    if (value.GetType() == CDateTime::dt_dateTime) {
        split.nanos = value.GetMilliSecond() * std::int64_t{1000000} +
                      value.GetMicroSecond() * std::int64_t{1000} + value.GetNanoSecond();
    }
    return std::chrono::time_point<std::chrono::system_clock, Duration>(
        internal::MakeDuration<Duration>(split));
}

/// The dateTime in UTC, marked "Z", to the nanosecond. CKvInvalidValueException for years that CDateTime can
/// not hold.
template <class Duration>
CDateTime ToDateTime(const std::chrono::time_point<std::chrono::system_clock, Duration>& point) {
    const internal::SplitSeconds split = internal::Split(point.time_since_epoch());
    CDateTime result(split.seconds);
    result.SetMilliSecond(static_cast<int>(split.nanos / 1000000));
    result.SetMicroSecond(static_cast<int>(split.nanos / 1000 % 1000));
    result.SetNanoSecond(static_cast<int>(split.nanos % 1000));
    result.SetUTC();
    return result;
}

/// The length of a duration. CKvInvalidValueException for one of years or months, whose length is not fixed.
template <class Duration = std::chrono::nanoseconds>
Duration ToDuration(const CDateTimeSpan& span) {
    if (span.GetYears() != 0 || span.GetMonths() != 0)
        throw CKvInvalidValueException("The duration [" + span.ToString() + "] has no fixed length");
    // Together they stay below 2^63.
    if (span.GetMinutes() > 100000000000000000 || span.GetSeconds() > 3000000000000000000)
        internal::ThrowNoRoom();
    const std::uint64_t seconds = std::uint64_t{span.GetDays()} * 86400 +
                                  std::uint64_t{span.GetHours()} * 3600 + span.GetMinutes() * 60 +
                                  span.GetSeconds();
    const std::int64_t nanos = span.GetMilliSeconds() * std::int64_t{1000000} +
                               span.GetMicroSeconds() * std::int64_t{1000} + span.GetNanoSeconds();
    const auto length = internal::MakeDuration<Duration>(
        {static_cast<std::int64_t>(seconds) + nanos / 1000000000, nanos % 1000000000});
    return span.IsNegative() ? -length : length;
}

/// In days, hours, minutes, seconds and fractions down to nanoseconds.
template <class Rep, class Period>
CDateTimeSpan ToDateTimeSpan(const std::chrono::duration<Rep, Period>& duration) {
    internal::SplitSeconds split = internal::Split(duration);
    constexpr std::int64_t kMost = std::int64_t{std::numeric_limits<std::uint32_t>::max()} * 86400;
    if (split.seconds > kMost || split.seconds < -kMost) internal::ThrowNoRoom();
    const bool isNegative = split.seconds < 0;
    if (isNegative) {
        split.seconds = -split.seconds - (split.nanos == 0 ? 0 : 1);
        split.nanos = split.nanos == 0 ? 0 : 1000000000 - split.nanos;
    }
    const auto seconds = static_cast<std::uint64_t>(split.seconds);
    CDateTimeSpan span(0, 0, static_cast<std::uint32_t>(seconds / 86400),
                       static_cast<std::uint32_t>(seconds / 3600 % 24), seconds / 60 % 60, seconds % 60,
                       static_cast<std::uint16_t>(split.nanos / 1000000),
                       static_cast<std::uint16_t>(split.nanos / 1000 % 1000),
                       static_cast<std::uint16_t>(split.nanos % 1000));
    if (isNegative) span.Negate();
    return span;
}

#if defined(KVXML_HAS_CALENDAR)
/// The date of a dateTime or date as it is written, its zone passed over. Years keep their number.
inline std::chrono::year_month_day ToYearMonthDay(const CDateTime& value) {
    return std::chrono::year_month_day(std::chrono::year(value.GetYear()),
                                       std::chrono::month(value.GetMonth()),
                                       std::chrono::day(value.GetDay()));
}

/// A date without zone, checked as by CDateTime::SetDate.
inline CDateTime ToDate(const std::chrono::year_month_day& date) {
    return {static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day()))};
}
#endif

}  // namespace KvXmlLib16
