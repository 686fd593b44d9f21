#include "kvxml/types/date_time_span.h"

#include <charconv>
#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/types/internal/calendar.h"
#include "kvxml/types/internal/digits.h"
#include "kvxml/types/internal/value_hash.h"

namespace KvXmlLib16 {

using namespace internal;

static_assert(sizeof(CDateTimeSpan) <= 56);

namespace {

// The dates from which durations are compared.
constexpr Instant kStarts[] = {{DaysFromCivil(1696, 9, 1)},
                               {DaysFromCivil(1697, 2, 1)},
                               {DaysFromCivil(1903, 3, 1)},
                               {DaysFromCivil(1903, 7, 1)}};

/// What has been read of a duration, in the order of its parts.
enum Progress : int {
    kNothing,
    kYears,
    kMonths,
    kDays,
    kTimeMark,
    kHours,
    kMinutes,
    kSeconds,
    kFraction,
    kRefused
};

[[noreturn]] void RefuseDuration(std::string_view text, const char* reason) {
    throw CKvInvalidValueException("Invalid XSD Duration [" + std::string(text) + "] " + reason);
}

[[noreturn]] void RefuseDuration(std::string_view text) {
    RefuseDuration(text, "expected [-]P[nY][nM][nD][T[nH][nM][nS.ff]]");
}

std::uint64_t SignExtend(std::uint32_t value) noexcept {
    return static_cast<std::uint64_t>(std::int64_t{static_cast<std::int32_t>(value)});
}

/// A number and its designator; nothing for zero.
template <class Number>
char* WritePart(char* out, Number value, char designator) noexcept {
    if (value == 0) return out;
    out = std::to_chars(out, out + 20, value).ptr;
    *out++ = designator;
    return out;
}

}  // namespace

CDateTimeSpan::CDateTimeSpan(std::uint32_t hours, std::uint64_t minutes, std::uint64_t seconds) noexcept {
    SetDateTimeSpan(0, 0, 0, hours, minutes, seconds, 0, 0, 0);
}

CDateTimeSpan::CDateTimeSpan(std::uint16_t years, std::uint32_t months, std::uint32_t days,
                             std::uint32_t hours, std::uint64_t minutes, std::uint64_t seconds) noexcept {
    SetDateTimeSpan(years, months, days, hours, minutes, seconds, 0, 0, 0);
}

CDateTimeSpan::CDateTimeSpan(std::uint16_t years, std::uint32_t months, std::uint32_t days,
                             std::uint32_t hours, std::uint64_t minutes, std::uint64_t seconds,
                             std::uint16_t milli, std::uint16_t micro, std::uint16_t nano) noexcept {
    SetDateTimeSpan(years, months, days, hours, minutes, seconds, milli, micro, nano);
}

void CDateTimeSpan::SetDateTimeSpan(std::uint32_t hours, std::uint64_t minutes,
                                    std::uint64_t seconds) noexcept {
    SetDateTimeSpan(0, 0, 0, hours, minutes, seconds, 0, 0, 0);
}

void CDateTimeSpan::SetDateTimeSpan(std::uint16_t years, std::uint32_t months, std::uint32_t days,
                                    std::uint32_t hours, std::uint64_t minutes,
                                    std::uint64_t seconds) noexcept {
    SetDateTimeSpan(years, months, days, hours, minutes, seconds, 0, 0, 0);
}

void CDateTimeSpan::SetDateTimeSpan(std::uint16_t years, std::uint32_t months, std::uint32_t days,
                                    std::uint32_t hours, std::uint64_t minutes, std::uint64_t seconds,
                                    std::uint16_t milli, std::uint16_t micro, std::uint16_t nano) noexcept {
    m_years = years;
    m_months = months;
    m_days = days;
    m_hours = hours;
    m_minutes = minutes;
    m_seconds = seconds;
    m_milliSeconds = milli;
    m_microSeconds = micro;
    m_nanoSeconds = nano;
    m_negative = false;
}

void CDateTimeSpan::ParseXSDDuration(const char* text) {
    if (text == nullptr) {
        *this = CDateTimeSpan();
        throw CKvInvalidValueException("Invalid XSD Duration (Null String)");
    }
    ParseXSDDuration(std::string_view(text));
}

void CDateTimeSpan::ParseXSDDuration(std::string_view text) {
    *this = CDateTimeSpan();
    if (text.empty()) throw CKvInvalidValueException("Invalid XSD Duration (Empty String)");
    const char* p = text.data();
    const char* const end = p + text.size();
    if (*p == '-') {
        m_negative = true;
        ++p;
    }
    if (p == end || *p != 'P') RefuseDuration(text);
    ++p;

    int progress = kNothing;
    bool inTime = false;
    while (p != end) {
        std::uint32_t number = 0;
        for (; p != end && DigitValue(*p) <= 9; ++p)
            number = number * 10 + DigitValue(*p);
        if (p == end) RefuseDuration(text);
        const char designator = *p++;
        if (designator == 'T' && std::exchange(inTime, true)) RefuseDuration(text);
        progress = StorePart(designator, number, progress);
        if (progress == kRefused) RefuseDuration(text);
        if (designator == '.') p = ParseFraction(text, p);
    }
    if (progress == kNothing || progress == kTimeMark) RefuseDuration(text);
}

// Returns the progress after the part, kRefused when it may not stand there.
int CDateTimeSpan::StorePart(char designator, std::uint32_t number, int progress) noexcept {
    const bool isBeforeSeconds = progress >= kTimeMark && progress <= kMinutes;
    switch (designator) {
        case 'Y':
            m_years = static_cast<std::uint16_t>(number);
            return kYears;
        case 'M':
            if (progress <= kYears) {
                m_months = number;
                return kMonths;
            }
            if (progress != kTimeMark && progress != kHours) return kRefused;
            m_minutes = SignExtend(number);
            return kMinutes;
        case 'D':
            if (progress > kMonths) return kRefused;
            m_days = number;
            return kDays;
        case 'T':
            return progress <= kDays ? kTimeMark : kRefused;
        case 'H':
            if (progress != kTimeMark) return kRefused;
            m_hours = number;
            return kHours;
        case 'S':
        case '.':
            if (!isBeforeSeconds) return kRefused;
            m_seconds = SignExtend(number);
            return designator == 'S' ? kSeconds : kFraction;
        default:
            return kRefused;
    }
}

// Reads the digits after the point, at `p` in `text`, and the "S" after them; returns the end.
const char* CDateTimeSpan::ParseFraction(std::string_view text, const char* p) {
    const char* const end = text.data() + text.size();
    constexpr unsigned kWeights[3] = {100, 10, 1};
    for (int count = 0; p != end && DigitValue(*p) <= 9; ++p, ++count) {
        const unsigned digit = DigitValue(*p);
        if (count == 9) RefuseDuration(text, "Fraction part too long");
        if (count < 3) {
            m_milliSeconds = static_cast<std::uint16_t>(m_milliSeconds + digit * kWeights[count]);
        } else if (count < 6) {
            m_microSeconds = static_cast<std::uint16_t>(m_microSeconds + digit * kWeights[count - 3]);
        } else {
            m_nanoSeconds = static_cast<std::uint16_t>(digit);  // unweighted: the last digit stays
        }
    }
    if (p == end || *p != 'S') RefuseDuration(text);
    return p + 1;
}

std::string CDateTimeSpan::ToString() const {
    char buffer[kMaxTextLength];
    return std::string(buffer, FormatXsd(buffer));
}

std::size_t CDateTimeSpan::FormatXsd(char* buffer) const noexcept {
    char* out = buffer;
    if (m_negative) *out++ = '-';
    *out++ = 'P';
    out = WritePart(out, m_years, 'Y');
    out = WritePart(out, m_months, 'M');
    out = WritePart(out, m_days, 'D');
    const bool hasSeconds = m_seconds != 0 || (m_milliSeconds | m_microSeconds | m_nanoSeconds) != 0;
    if (m_hours != 0 || m_minutes != 0 || hasSeconds) {
        *out++ = 'T';
        out = WritePart(out, m_hours, 'H');
        out = WritePart(out, m_minutes, 'M');
        if (hasSeconds) {
            out = std::to_chars(out, out + 20, m_seconds).ptr;
            out = WriteFraction(out, m_milliSeconds, m_microSeconds, m_nanoSeconds);
            *out++ = 'S';
        }
    }
    return static_cast<std::size_t>(out - buffer);
}

CDateTime::DTCompareResult CDateTimeSpan::CompareTo(const CDateTimeSpan& other) const noexcept {
    const auto compareFrom = [&](const Instant& start) {
        return CompareInstants(AddSpan(start, *this, false), AddSpan(start, other, false));
    };
    const int order = compareFrom(kStarts[0]);
    for (const Instant& start : kStarts) {
        if (compareFrom(start) != order) return CDateTime::DTCompare_Indeterminate;
    }
    if (order == 0) return CDateTime::DTCompare_Equal;
    return order < 0 ? CDateTime::DTCompare_Less : CDateTime::DTCompare_Greater;
}

std::size_t CDateTimeSpan::GetHash() const noexcept {
    // Where two durations are equal, they lead to the same dates.
    const Instant a = AddSpan(kStarts[0], *this, false);
    const Instant b = AddSpan(kStarts[1], *this, false);
    return HashOf(a.days, b.days, a.second, a.nano);
}

}  // namespace KvXmlLib16
