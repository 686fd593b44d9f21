#include "kvxml/types/internal/calendar.h"

#include <algorithm>

#include "kvxml/types/date_time_span.h"

namespace KvXmlLib16::internal {

Instant AddSpan(const Instant& start, const CDateTimeSpan& span, bool subtract) noexcept {
    // Whole days are taken out of the 64-bit minutes and seconds first, so that no sum overflows.
    constexpr std::uint64_t kMinutesPerDay = 1440;
    constexpr std::uint64_t kSeconds = kSecondsPerDay;
    const std::uint64_t wholeDays = span.GetDays() + span.GetHours() / 24 +
                                    span.GetMinutes() / kMinutesPerDay + span.GetSeconds() / kSeconds;
    const std::uint64_t restSeconds = std::uint64_t{span.GetHours() % 24} * 3600 +
                                      span.GetMinutes() % kMinutesPerDay * 60 + span.GetSeconds() % kSeconds;
    const std::int64_t sign = span.IsNegative() != subtract ? -1 : 1;
    const std::int64_t nanos = std::int64_t{span.GetMilliSeconds()} * 1000000 +
                               std::int64_t{span.GetMicroSeconds()} * 1000 + span.GetNanoSeconds();
    const std::int64_t spanMonths = std::int64_t{span.GetYears()} * 12 + span.GetMonths();

    std::int64_t days = start.days;
    if (spanMonths != 0) {
        const CivilDate date = CivilFromDays(start.days);
        const std::int64_t months = date.year * 12 + (date.month - 1) + sign * spanMonths;
        const std::int64_t year = FloorDivide(months, 12);
        const std::int32_t month = static_cast<std::int32_t>(FloorModulo(months, 12)) + 1;
        days = DaysFromCivil(year, month, std::min(date.day, DaysInMonth(year, month)));
    }
    return MakeInstant(days + sign * static_cast<std::int64_t>(wholeDays),
                       start.second + sign * static_cast<std::int64_t>(restSeconds),
                       start.nano + sign * nanos);
}

}  // namespace KvXmlLib16::internal
