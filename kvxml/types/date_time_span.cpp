#include "kvxml/types/date_time_span.h"

#include <charconv>

#include "kvxml/base/exceptions.h"
#include "kvxml/types/internal/calendar.h"
#include "kvxml/types/internal/digits.h"

namespace KvXmlLib16 {

using namespace internal;

static_assert(sizeof(CDateTimeSpan) <= 56);

namespace {

/// What has been read of a duration, in the order of its parts.
enum class Progress { Nothing, Years, Months, Days, TimeMark, Hours, Minutes, Seconds, Fraction };

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

    Progress progress = Progress::Nothing;
    bool inTime = false;
    const auto expect = [text](bool condition) {
        if (!condition) RefuseDuration(text);
    };
    while (p != end) {
        std::uint32_t number = 0;
        for (; p != end && DigitValue(*p) <= 9; ++p)
            number = number * 10 + DigitValue(*p);
        if (p == end) RefuseDuration(text);
        switch (*p++) {
            case 'Y':
                m_years = static_cast<std::uint16_t>(number);
                progress = Progress::Years;
                break;
            case 'M':
                if (progress <= Progress::Years) {
                    m_months = number;
                    progress = Progress::Months;
                } else {
                    expect(progress == Progress::TimeMark || progress == Progress::Hours);
                    m_minutes = SignExtend(number);
                    progress = Progress::Minutes;
                }
                break;
            case 'D':
                expect(progress <= Progress::Months);
                m_days = number;
                progress = Progress::Days;
                break;
            case 'T':
                expect(progress <= Progress::Days && !inTime);
                inTime = true;
                progress = Progress::TimeMark;
                break;
            case 'H':
                expect(progress == Progress::TimeMark);
                m_hours = number;
                progress = Progress::Hours;
                break;
            case 'S':
                expect(progress >= Progress::TimeMark && progress <= Progress::Minutes);
                m_seconds = SignExtend(number);
                progress = Progress::Seconds;
                break;
            case '.': {
                expect(progress >= Progress::TimeMark && progress <= Progress::Minutes);
                m_seconds = SignExtend(number);
                constexpr unsigned kWeights[3] = {100, 10, 1};
                for (int count = 0; p != end && DigitValue(*p) <= 9; ++p, ++count) {
                    const unsigned digit = DigitValue(*p);
                    if (count == 9) RefuseDuration(text, "Fraction part too long");
                    if (count < 3) {
                        m_milliSeconds = static_cast<std::uint16_t>(m_milliSeconds + digit * kWeights[count]);
                    } else if (count < 6) {
                        m_microSeconds =
                            static_cast<std::uint16_t>(m_microSeconds + digit * kWeights[count - 3]);
                    } else {
                        m_nanoSeconds =
                            static_cast<std::uint16_t>(digit);  // unweighted: the last digit stays
                    }
                }
                expect(p != end && *p == 'S');
                ++p;
                progress = Progress::Fraction;
                break;
            }
            default:
                RefuseDuration(text);
        }
    }
    expect(progress != Progress::Nothing && progress != Progress::TimeMark);
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
    constexpr Instant kStarts[] = {{DaysFromCivil(1696, 9, 1)},
                                   {DaysFromCivil(1697, 2, 1)},
                                   {DaysFromCivil(1903, 3, 1)},
                                   {DaysFromCivil(1903, 7, 1)}};
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

}  // namespace KvXmlLib16
