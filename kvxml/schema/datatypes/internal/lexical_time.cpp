// Dates, times and durations.
#include <algorithm>

#include "kvxml/base/internal/ascii.h"
#include "kvxml/schema/datatypes/internal/lexical.h"
#include "kvxml/types/internal/calendar.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::int32_t kMaxZoneMinutes = 14 * 60;

/// Takes pieces off the front of a text.
class Cursor {
public:
    explicit Cursor(std::string_view text) noexcept : m_rest(text) {}

    bool IsAtEnd() const noexcept { return m_rest.empty(); }
    bool Take(char c) noexcept {
        if (m_rest.empty() || m_rest.front() != c) return false;
        m_rest.remove_prefix(1);
        return true;
    }
    bool TakeTwoDigits(std::int32_t least, std::int32_t most, std::int32_t& value) noexcept {
        if (m_rest.size() < 2 || !IsDigit(m_rest[0]) || !IsDigit(m_rest[1])) return false;
        value = (m_rest[0] - '0') * 10 + (m_rest[1] - '0');
        m_rest.remove_prefix(2);
        return value >= least && value <= most;
    }
    std::string_view TakeDigits() noexcept {
        std::size_t count = 0;
        while (count < m_rest.size() && IsDigit(m_rest[count]))
            ++count;
        const std::string_view digits = m_rest.substr(0, count);
        m_rest.remove_prefix(count);
        return digits;
    }
    bool StartsWith(std::string_view text) const noexcept { return m_rest.substr(0, text.size()) == text; }
    void Skip(std::size_t count) noexcept { m_rest.remove_prefix(count); }
    char Next() noexcept {
        const char c = m_rest.front();
        m_rest.remove_prefix(1);
        return c;
    }

private:
    std::string_view m_rest;
};

/// At most `most` digits count; a longer number is that of `most` nines.
std::int64_t Number(std::string_view digits, std::size_t most) noexcept {
    while (!digits.empty() && digits.front() == '0')
        digits.remove_prefix(1);
    std::int64_t number = 0;
    for (std::size_t i = 0; i < std::min(digits.size(), most); ++i)
        number = number * 10 + (digits.size() > most ? 9 : digits[i] - '0');
    return number;
}

std::string_view TrimTrailingZeros(std::string_view digits) noexcept {
    while (!digits.empty() && digits.back() == '0')
        digits.remove_suffix(1);
    return digits;
}

/// An optional sign and at least four digits, more only without a zero in front; not the year 0.
bool TakeYear(Cursor& in, std::int64_t& year) noexcept {
    const bool isNegative = in.Take('-');
    const std::string_view digits = in.TakeDigits();
    if (digits.size() < 4 || (digits.size() > 4 && digits.front() == '0')) return false;
    year = Number(digits, 16);
    if (year == 0) return false;
    if (isNegative) year = -year;
    return true;
}

/// Nothing, "Z", or hours and minutes up to 14:00.
bool TakeZone(Cursor& in, bool& hasZone, std::int32_t& minutes) noexcept {
    hasZone = !in.IsAtEnd();
    minutes = 0;
    if (!hasZone || in.Take('Z')) return true;
    const bool isNegative = in.Take('-');
    if (!isNegative && !in.Take('+')) return false;
    std::int32_t hour = 0;
    std::int32_t minute = 0;
    if (!in.TakeTwoDigits(0, 14, hour) || !in.Take(':') || !in.TakeTwoDigits(0, 59, minute)) return false;
    minutes = hour * 60 + minute;
    if (minutes > kMaxZoneMinutes) return false;
    if (isNegative) minutes = -minutes;
    return true;
}

/// "hh:mm:ss.s"; 24:00:00 is the end of the day.
bool TakeClock(Cursor& in, std::int32_t& second, std::string_view& fraction) noexcept {
    std::int32_t hour = 0;
    std::int32_t minute = 0;
    std::int32_t rest = 0;
    if (!in.TakeTwoDigits(0, 24, hour) || !in.Take(':') || !in.TakeTwoDigits(0, 59, minute) ||
        !in.Take(':') || !in.TakeTwoDigits(0, 59, rest)) {
        return false;
    }
    if (in.Take('.')) {
        const std::string_view digits = in.TakeDigits();
        if (digits.empty()) return false;
        fraction = TrimTrailingZeros(digits);
    }
    second = hour * 3600 + minute * 60 + rest;
    return hour < 24 || (second == kSecondsPerDay && fraction.empty());
}

struct Fields {
    std::int64_t year = 1972;  // a leap year, and the reference of 3.2.11 and its like
    std::int32_t month = 12;
    std::int32_t day = 31;
};

bool TakeDate(BuiltInType type, Cursor& in, Fields& date) noexcept {
    switch (type) {
        case BuiltInType::DateTime:
        case BuiltInType::Date:
            return TakeYear(in, date.year) && in.Take('-') && in.TakeTwoDigits(1, 12, date.month) &&
                   in.Take('-') && in.TakeTwoDigits(1, 31, date.day) &&
                   date.day <= DaysInMonth(date.year, date.month);
        case BuiltInType::GYearMonth:
            date.day = 1;
            return TakeYear(in, date.year) && in.Take('-') && in.TakeTwoDigits(1, 12, date.month);
        case BuiltInType::GYear:
            date.month = date.day = 1;
            return TakeYear(in, date.year);
        case BuiltInType::GMonthDay:
            return in.Take('-') && in.Take('-') && in.TakeTwoDigits(1, 12, date.month) && in.Take('-') &&
                   in.TakeTwoDigits(1, 31, date.day) && date.day <= DaysInMonth(date.year, date.month);
        case BuiltInType::GDay:
            return in.Take('-') && in.Take('-') && in.Take('-') && in.TakeTwoDigits(1, 31, date.day);
        case BuiltInType::GMonth:
            date.day = 1;
            return in.Take('-') && in.Take('-') && in.TakeTwoDigits(1, 12, date.month);
        default:
            return true;
    }
}

std::int32_t CompareTimes(const CTimeView& a, const CTimeView& b, std::int32_t shiftB) noexcept {
    const Instant first{a.days, a.second, 0};
    const Instant second = ShiftSeconds({b.days, b.second, 0}, shiftB);
    const int order = CompareInstants(first, second);
    return order != 0 ? order : a.fraction.compare(b.fraction);
}

}  // namespace

bool ParseTime(BuiltInType type, std::string_view text, CTimeView& value) noexcept {
    value = {};
    Cursor in(text);
    Fields date;
    if (!TakeDate(type, in, date)) return false;
    std::int32_t second = 0;
    if (type == BuiltInType::DateTime && !in.Take('T')) return false;
    if ((type == BuiltInType::DateTime || type == BuiltInType::Time) &&
        !TakeClock(in, second, value.fraction))
        return false;
    if (type == BuiltInType::Time && second == kSecondsPerDay) second = 0;
    std::int32_t zone = 0;
    if (!TakeZone(in, value.hasZone, zone) || !in.IsAtEnd()) return false;
    const Instant instant =
        MakeInstant(DaysFromCivil(date.year, date.month, date.day), std::int64_t{second} - zone * 60, 0);
    value.days = instant.days;
    value.second = instant.second;
    return true;
}

Order Compare(const CTimeView& a, const CTimeView& b) noexcept {
    if (a.hasZone == b.hasZone) {
        const std::int32_t order = CompareTimes(a, b, 0);
        return order < 0 ? Order::Less : order > 0 ? Order::Greater : Order::Equal;
    }
    // The one without zone may be up to fourteen hours earlier or later.
    if (!a.hasZone) {
        const Order order = Compare(b, a);
        return order == Order::Less ? Order::Greater : order == Order::Greater ? Order::Less : order;
    }
    constexpr std::int32_t kShift = kMaxZoneMinutes * 60;
    if (CompareTimes(a, b, -kShift) < 0) return Order::Less;
    if (CompareTimes(a, b, kShift) > 0) return Order::Greater;
    return Order::Unordered;
}

// --- durations ---------------------------------------------------------------------------------------------

bool ParseDuration(std::string_view text, CDurationView& value) noexcept {
    value = {};
    Cursor in(text);
    value.isNegative = in.Take('-');
    if (!in.Take('P') || in.IsAtEnd()) return false;
    constexpr std::size_t kDigits = 15;
    // The designators in their order; those after T begin at the fourth.
    constexpr std::string_view kDesignators = "YMDHMS";
    constexpr std::int64_t kFactors[] = {12, 1, 86400, 3600, 60, 1};
    std::size_t next = 0;
    bool isTime = false;
    bool needsPart = true;
    while (!in.IsAtEnd()) {
        if (!isTime && in.Take('T')) {
            isTime = true;
            needsPart = true;
            next = 3;
            continue;
        }
        const std::string_view digits = in.TakeDigits();
        bool hasFraction = false;
        if (digits.empty() || in.IsAtEnd()) return false;
        if (in.Take('.')) {
            const std::string_view fraction = in.TakeDigits();
            if (fraction.empty() || in.IsAtEnd()) return false;
            value.fraction = TrimTrailingZeros(fraction);
            hasFraction = true;
        }
        const char designator = in.Next();
        const std::size_t last = isTime ? 6 : 3;
        while (next < last && kDesignators[next] != designator)
            ++next;
        if (next == last || (hasFraction && next != 5)) return false;
        const std::int64_t part = Number(digits, kDigits) * kFactors[next];
        (next < 2 ? value.months : value.seconds) += part;
        ++next;
        needsPart = false;
    }
    if (needsPart) return false;
    if (value.months == 0 && value.seconds == 0 && value.fraction.empty()) value.isNegative = false;
    return true;
}

Order Compare(const CDurationView& a, const CDurationView& b) noexcept {
    constexpr CivilDate kStarts[] = {{1696, 9, 1}, {1697, 2, 1}, {1903, 3, 1}, {1903, 7, 1}};
    Order result = Order::Unordered;
    for (const CivilDate& start : kStarts) {
        const auto add = [&](const CDurationView& span) {
            const std::int64_t months = span.isNegative ? -span.months : span.months;
            const std::int64_t seconds = span.isNegative ? -span.seconds : span.seconds;
            const std::int64_t days = DaysFromCivil(start.year, start.month + months, start.day);
            return std::pair<std::int64_t, std::int64_t>(days + FloorDivide(seconds, kSecondsPerDay),
                                                         FloorModulo(seconds, kSecondsPerDay));
        };
        const auto first = add(a);
        const auto second = add(b);
        int order = first < second ? -1 : first > second ? 1 : 0;
        if (order == 0) {
            if (a.isNegative == b.isNegative) {
                order = a.fraction.compare(b.fraction);
                if (a.isNegative) order = -order;
            } else if (!a.fraction.empty() || !b.fraction.empty()) {
                order = a.isNegative ? -1 : 1;
            }
        }
        const Order here = order < 0 ? Order::Less : order > 0 ? Order::Greater : Order::Equal;
        if (&start == kStarts) {
            result = here;
        } else if (here != result) {
            return Order::Unordered;
        }
    }
    return result;
}

}  // namespace KvXmlLib16::internal
