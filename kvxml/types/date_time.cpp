#include "kvxml/types/date_time.h"

#include <cstring>
#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/platform/clock.h"
#include "kvxml/types/date_time_span.h"
#include "kvxml/types/format_string.h"
#include "kvxml/types/internal/calendar.h"
#include "kvxml/types/internal/date_time_numbers.h"
#include "kvxml/types/internal/value_hash.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace KvXmlLib16 {

using namespace internal;

static_assert(sizeof(CDateTime) == 24);

namespace {

// What a value without year or month is filled with to give it a place on the time line: a leap year, and a
// month of 31 days.
constexpr int kReferenceYear = 1972;
constexpr int kReferenceMonth = 1;

constexpr std::int32_t kFourteenHours = 14 * 3600;

[[noreturn]] void ThrowInvalidYear(std::int64_t year) {
    throw CKvInvalidValueException(FormatString("Invalid Year [%lld] (%d <= year <= %d && year != 0)",
                                                static_cast<long long>(year), kMaxYear, kMinYear));
}

void CheckYear(std::int64_t year) {
    if (year < kMinYear || year > kMaxYear || year == 0) ThrowInvalidYear(year);
}

CDateTime::DTCompareResult ToResult(int order) noexcept {
    if (order == 0) return CDateTime::DTCompare_Equal;
    return order < 0 ? CDateTime::DTCompare_Less : CDateTime::DTCompare_Greater;
}

}  // namespace

// --- construction -----------------------------------------------------------------------------------------

CDateTime::CDateTime(DTType type) noexcept {
    SetType(type);
}

CDateTime::CDateTime(const char* text) {
    ParseXSDDateTime(text);
}

CDateTime::CDateTime(std::string_view text) {
    ParseXSDDateTime(text);
}

CDateTime::CDateTime(const SYSTEMTIME& time) {
    *this = time;
}

CDateTime::CDateTime(const FILETIME& time) {
    *this = time;
}

CDateTime::CDateTime(int year, int month, int day) {
    SetDate(year, month, day);
}

CDateTime::CDateTime(int year, int month, int day, int hour, int minute, int second) {
    SetDateTime(year, month, day, hour, minute, second);
}

CDateTime::CDateTime(int year, int month, int day, int hour, int minute, int second, int milli, int micro,
                     int nano) {
    SetDateTime(year, month, day, hour, minute, second, milli, micro, nano);
}

CDateTime& CDateTime::operator=(const SYSTEMTIME& time) {
    Clear();
    SetDateTime(dt_dateTime, {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond,
                              time.wMilliseconds});
    return *this;
}

CDateTime& CDateTime::operator=(const FILETIME& time) {
    constexpr std::int64_t kTicksPerSecond = 10000000;
    constexpr std::int64_t kSecondsFrom1601 = 11644473600;
    const std::uint64_t ticks = std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    if (ticks >> 63 != 0) throw CKvInvalidValueException("Failed to convert FILETIME to SYSTEMTIME");
    const std::int64_t count = static_cast<std::int64_t>(ticks);
    SetSeconds(count / kTicksPerSecond - kSecondsFrom1601);
    m_fields.milli = static_cast<std::uint16_t>(count % kTicksPerSecond / 10000);
    return *this;
}

CDateTime CDateTime::GetTickCount() {
    const LocalTime now = GetLocalTime();
    return {now.year, now.month, now.day, now.hour, now.minute, now.second, now.milli, 0, 0};
}

void CDateTime::SetSeconds(std::int64_t secondsSince1970) {
    CDateTime result(dt_dateTime);
    result.StoreInstant(MakeInstant(0, secondsSince1970, 0));
    *this = result;
}

// --- kind and checks --------------------------------------------------------------------------------------

std::string CDateTime::GetTypeAsString(DTType type) {
    return TypeName(type);
}

void CDateTime::CheckConversion(DTType source, DTType target) {
    if ((FieldsOf(target) & ~FieldsOf(source)) == 0) return;
    throw CKvInvalidValueException(
        FormatString("Attempting to set a CDateTime of type %s using an XmlDateTime of type %s. The source "
                     "CDateTime does not contian enough data to allow the conversion.",
                     TypeName(target), TypeName(source)));
}

void CDateTime::RequireField(unsigned fields, const char* name) const {
    if ((FieldsOf(GetType()) & fields) == fields) return;
    throw CKvInvalidStateException(
        FormatString("Failed to Get%s. Invalid Date Type: %s.", name, TypeName(GetType())));
}

void CDateTime::Validate(DTType type, const Numbers& n) {
    const unsigned fields = FieldsOf(type);
    const auto refuse = [](const char* format, int value) {
        throw CKvInvalidValueException(FormatString(format, value));
    };
    const auto refuseForType = [type](const char* format, int value) {
        throw CKvInvalidValueException(FormatString(format, value, TypeName(type)));
    };

    if (type == dt_none) throw CKvInvalidValueException("Invalid Year Zero");
    if ((fields & kMonth) != 0) {
        if (n.month < 1 || n.month > 12) refuse("Invalid Month [%d] (1 <= month <= 12)", n.month);
    } else if (n.month != 0) {
        refuseForType("Invalid Month [%d] for type %s", n.month);
    }
    if ((fields & kYear) != 0) {
        CheckYear(n.year);
    } else if (n.year != 0) {
        refuseForType("Invalid Year [%d] for type %s", n.year);
    }
    if ((fields & kDay) == 0) {
        if (n.day != 0) refuseForType("Invalid Day [%d] for type %s", n.day);
    } else if ((fields & kMonth) == 0) {
        if (n.day < 1 || n.day > 31) refuse("Invalid Day [%d] (1 <= day <= 31)", n.day);
    } else if ((fields & kYear) == 0) {
        if (n.day < 1 || n.day > kDaysInMonth[n.month - 1]) {
            refuse("Invalid Day [%d] (1 <= day <= days in month)", n.day);
        }
    } else if (n.day < 1 || n.day > DaysInMonth(n.year, n.month)) {
        refuse("Invalid Day [%d] (1 <= day <= days in month", n.day);
    }
    const auto outside = [](int value, int limit) { return value < 0 || value > limit; };
    if ((fields & kTime) != 0) {
        if (outside(n.hour, 23)) refuse("Invalid Hour [%d] (0 <= hour <= 23)", n.hour);
        if (outside(n.minute, 59)) refuse("Invalid Minute [%d] (0 <= minute <= 59)", n.minute);
        if (outside(n.second, 59)) refuse("Invalid Second [%d] (0 <= second <= 59)", n.second);
        if (outside(n.milli, 999)) refuse("Invalid Milli-Second [%d] (0 <= milli <= 999)", n.milli);
        if (outside(n.micro, 999)) refuse("Invalid Micro-Second [%d] (0 <= micro <= 999)", n.micro);
        if (outside(n.nano, 999)) refuse("Invalid Nano-Second [%d] (0 <= nano <= 999)", n.nano);
    } else {
        if (n.hour != 0) refuseForType("Invalid Hour [%d] for type %s", n.hour);
        if (n.minute != 0) refuseForType("Invalid Minute [%d] for type %s", n.minute);
        if (n.second != 0) refuseForType("Invalid Second [%d] for type %s", n.second);
        if (n.milli != 0) refuseForType("Invalid Milli-Second [%d] for type %s", n.milli);
        if (n.micro != 0) refuseForType("Invalid Micro-Second [%d] for type %s", n.micro);
        if (n.nano != 0) refuseForType("Invalid Nano-Second [%d] for type %s", n.nano);
    }
}

// --- setting whole values ---------------------------------------------------------------------------------

void CDateTime::SetDateTime(DTType type, const Numbers& numbers) {
    const DTType current = GetType();
    if (current != dt_none && current != type) {
        throw CKvInvalidStateException(
            FormatString("Failed to copy CDateTime. Invalid Date Type: %s, expected: %s.", TypeName(type),
                         TypeName(current)));
    }
    Clear();
    SetType(type);
    m_fields.year = static_cast<std::int16_t>(numbers.year);
    m_fields.month = static_cast<std::uint8_t>(numbers.month);
    m_fields.day = static_cast<std::uint8_t>(numbers.day);
    m_fields.hour = static_cast<std::uint8_t>(numbers.hour);
    m_fields.minute = static_cast<std::uint8_t>(numbers.minute);
    m_fields.second = static_cast<std::uint8_t>(numbers.second);
    m_fields.milli = static_cast<std::uint16_t>(numbers.milli);
    m_fields.micro = static_cast<std::uint16_t>(numbers.micro);
    m_fields.nano = static_cast<std::uint16_t>(numbers.nano);
    Validate(type, numbers);
}

void CDateTime::SetDateTime(int year, int month, int day, int hour, int minute, int second) {
    SetDateTime(dt_dateTime, {year, month, day, hour, minute, second});
}

void CDateTime::SetDateTime(int year, int month, int day, int hour, int minute, int second, int milli,
                            int micro, int nano) {
    SetDateTime(dt_dateTime, {year, month, day, hour, minute, second, milli, micro, nano});
}

void CDateTime::SetDateTime(const CDateTime& source, DTType target) {
    CheckConversion(source.GetType(), target);
    const unsigned fields = FieldsOf(target);
    Fields result = source.m_fields;
    if ((fields & kYear) == 0) result.year = 0;
    if ((fields & kMonth) == 0) result.month = 0;
    if ((fields & kDay) == 0) result.day = 0;
    if ((fields & kTime) == 0) {
        result.hour = result.minute = result.second = 0;
        result.milli = result.micro = result.nano = 0;
    }
    m_fields = result;
    SetType(target);
    Validate();
}

void CDateTime::SetDate(int year, int month, int day) {
    SetDateTime(dt_date, {year, month, day});
}

void CDateTime::SetTime(int hour, int minute, int second) {
    SetDateTime(dt_time, {0, 0, 0, hour, minute, second});
}

void CDateTime::SetTime(int hour, int minute, int second, int milli, int micro, int nano) {
    SetDateTime(dt_time, {0, 0, 0, hour, minute, second, milli, micro, nano});
}

void CDateTime::SetFracTime(int milli, int micro, int nano) {
    SetDateTime(dt_time, {0, 0, 0, 0, 0, 0, milli, micro, nano});
}

void CDateTime::SetGYear(int year) {
    SetDateTime(dt_gYear, {year});
}

void CDateTime::SetGYearMonth(int year, int month) {
    SetDateTime(dt_gYearMonth, {year, month});
}

void CDateTime::SetGMonth(int month) {
    SetDateTime(dt_gMonth, {0, month});
}

void CDateTime::SetGMonthDay(int month, int day) {
    SetDateTime(dt_gMonthDay, {0, month, day});
}

void CDateTime::SetGDay(int day) {
    SetDateTime(dt_gDay, {0, 0, day});
}

// --- zone -------------------------------------------------------------------------------------------------

void CDateTime::SetTimeZone(int hour, int minute) {
    if (hour < -23 || hour > 23 || minute < 0 || minute > 59) {
        throw CKvInvalidValueException(FormatString("Invalid TimeZone [%d:%d]", hour, minute));
    }
    m_fields.zoneHour = static_cast<std::int8_t>(hour);
    m_fields.zoneMinute = static_cast<std::uint8_t>(minute);
    m_fields.kind |= kUtcFlag | kZoneFlag;
}

void CDateTime::SetUTC() noexcept {
    m_fields.zoneHour = 0;
    m_fields.zoneMinute = 0;
    m_fields.kind = static_cast<std::uint8_t>((m_fields.kind & kTypeMask) | kUtcFlag);
}

std::int16_t CDateTime::GetZoneHour() const {
    if (!HasTimeZone()) throw CKvInvalidStateException("TimeZone is not been used");
    return m_fields.zoneHour;
}

std::uint8_t CDateTime::GetZoneMinute() const {
    if (!HasTimeZone()) throw CKvInvalidStateException("TimeZone is not been used");
    return m_fields.zoneMinute;
}

std::int32_t CDateTime::ZoneOffsetSeconds() const noexcept {
    const std::int32_t minutes = m_fields.zoneHour < 0 ? -m_fields.zoneMinute : m_fields.zoneMinute;
    return (m_fields.zoneHour * 60 + minutes) * 60;
}

// --- fields -----------------------------------------------------------------------------------------------

/// Getter and setter of one field.
#define KVXML_DATE_FIELD(Name, member, type, fields) \
    type CDateTime::Get##Name() const {              \
        RequireField(fields, #Name);                 \
        return m_fields.member;                      \
    }                                                \
    void CDateTime::Set##Name(int value) {           \
        RequireField(fields, #Name);                 \
        m_fields.member = static_cast<type>(value);  \
    }

KVXML_DATE_FIELD(Year, year, std::int16_t, kYear)
KVXML_DATE_FIELD(Month, month, std::uint8_t, kMonth)
KVXML_DATE_FIELD(Day, day, std::uint8_t, kDay)
KVXML_DATE_FIELD(Hour, hour, std::uint8_t, kTime)
KVXML_DATE_FIELD(Minute, minute, std::uint8_t, kTime)
KVXML_DATE_FIELD(Second, second, std::uint8_t, kTime)
KVXML_DATE_FIELD(MilliSecond, milli, std::uint16_t, kTime)
KVXML_DATE_FIELD(MicroSecond, micro, std::uint16_t, kTime)
KVXML_DATE_FIELD(NanoSecond, nano, std::uint16_t, kTime)

#undef KVXML_DATE_FIELD

double CDateTime::GetRealSecond() const {
    RequireField(kTime, "RealSecond");
    // One division of a whole number gives the double that is nearest to the written seconds.
    return (m_fields.second * 1e9 + m_fields.milli * 1e6 + m_fields.micro * 1e3 + m_fields.nano) / 1e9;
}

std::int32_t CDateTime::GetDayOfWeek() const {
    RequireField(kYear | kMonth | kDay, "DayOfWeek");
    constexpr std::int64_t kThursday = 4;  // 1970-01-01, counted from Sunday as 0
    return static_cast<std::int32_t>(FloorModulo(FirstInstant().days + kThursday, 7)) + 1;
}

std::int32_t CDateTime::GetDayOfYear() const {
    RequireField(kYear | kMonth | kDay, "DayOfYear");
    return static_cast<std::int32_t>(FirstInstant().days - DaysFromCivil(m_fields.year, 1, 1)) + 1;
}

std::int64_t CDateTime::GetTime() const {
    const DTType type = GetType();
    if (type != dt_dateTime && type != dt_date) {
        throw CKvInvalidValueException(
            FormatString("Failed to GetTime, Date Status must be dateTime or date. Invalid Date Type: %s.",
                         TypeName(type)));
    }
    const Instant instant = FirstInstantUtc();
    return instant.days * kSecondsPerDay + (type == dt_date ? 0 : instant.second);
}

SYSTEMTIME CDateTime::GetAsSystemTime() const {
    if (GetType() != dt_dateTime) {
        throw CKvInvalidValueException(
            FormatString("Failed to GetAsSystemTime, Date Status must be dateTime. Invalid Date Type: %s.",
                         TypeName(GetType())));
    }
    SYSTEMTIME result{};
    result.wYear = static_cast<std::uint16_t>(m_fields.year);
    result.wMonth = m_fields.month;
    result.wDayOfWeek = static_cast<std::uint16_t>(GetDayOfWeek() - 1);
    result.wDay = m_fields.day;
    result.wHour = m_fields.hour;
    result.wMinute = m_fields.minute;
    result.wSecond = m_fields.second;
    result.wMilliseconds = m_fields.milli;
    return result;
}

CDateTime CDateTime::GetNormalized() const {
    if (!HasTimeZone()) return *this;
    CDateTime result(*this);
    result.StoreInstant(FirstInstantUtc());
    result.SetUTC();
    return result;
}

// --- the time line ----------------------------------------------------------------------------------------

Instant CDateTime::FirstInstant() const noexcept {
    const unsigned fields = FieldsOf(GetType());
    const int year = (fields & kYear) != 0 ? m_fields.year : kReferenceYear;
    const int month = (fields & kMonth) != 0 ? m_fields.month : kReferenceMonth;
    const int day = (fields & kDay) != 0 ? m_fields.day : 1;
    const std::int64_t days = DaysFromCivil(year, month, day);
    if ((fields & kTime) == 0) return {days, 0, 0};
    return MakeInstant(days, m_fields.hour * 3600 + m_fields.minute * 60 + m_fields.second,
                       m_fields.milli * std::int64_t{1000000} + m_fields.micro * 1000 + m_fields.nano);
}

Instant CDateTime::FirstInstantUtc() const noexcept {
    return ShiftSeconds(FirstInstant(), -ZoneOffsetSeconds());
}

void CDateTime::StoreInstant(const Instant& instant) {
    const unsigned fields = FieldsOf(GetType());
    const CivilDate date = CivilFromDays(instant.days);
    if ((fields & kYear) != 0) {
        CheckYear(date.year);
        m_fields.year = static_cast<std::int16_t>(date.year);
    }
    if ((fields & kMonth) != 0) m_fields.month = static_cast<std::uint8_t>(date.month);
    if ((fields & kDay) != 0) m_fields.day = static_cast<std::uint8_t>(date.day);
    if ((fields & kTime) != 0) {
        m_fields.hour = static_cast<std::uint8_t>(instant.second / 3600);
        m_fields.minute = static_cast<std::uint8_t>(instant.second / 60 % 60);
        m_fields.second = static_cast<std::uint8_t>(instant.second % 60);
        m_fields.milli = static_cast<std::uint16_t>(instant.nano / 1000000);
        m_fields.micro = static_cast<std::uint16_t>(instant.nano / 1000 % 1000);
        m_fields.nano = static_cast<std::uint16_t>(instant.nano % 1000);
    }
}

// --- order and arithmetic ---------------------------------------------------------------------------------

CDateTime::DTCompareResult CDateTime::Compare(DTType typeA, const Instant& a, DTType typeB,
                                              const Instant& b) noexcept {
    if (typeA == typeB) return ToResult(CompareInstants(a, b));

    const CivilDate dateA = CivilFromDays(a.days);
    const CivilDate dateB = CivilFromDays(b.days);
    const struct {
        unsigned field;
        std::int64_t a;
        std::int64_t b;
    } steps[] = {{kYear, dateA.year, dateB.year},
                 {kMonth, dateA.month, dateB.month},
                 {kDay, dateA.day, dateB.day},
                 {kTime, a.second, b.second},
                 {kTime, a.nano, b.nano}};
    const unsigned both = FieldsOf(typeA) & FieldsOf(typeB);
    const unsigned either = FieldsOf(typeA) | FieldsOf(typeB);
    for (const auto& step : steps) {
        if ((either & step.field) == 0) continue;
        if ((both & step.field) == 0) return DTCompare_Indeterminate;
        if (step.a != step.b) return step.a < step.b ? DTCompare_Less : DTCompare_Greater;
    }
    return DTCompare_Equal;
}

CDateTime::DTCompareResult CDateTime::CompareTo(const CDateTime& other) const noexcept {
    if (std::memcmp(&m_fields, &other.m_fields, sizeof(m_fields)) == 0) return DTCompare_Equal;

    // The same kind in the same zone: the fields decide. (What a kind lacks is zero.)
    if (m_fields.kind == other.m_fields.kind && !HasTimeZone()) {
        const auto compare = [](auto x, auto y) { return x < y ? DTCompare_Less : DTCompare_Greater; };
        if (m_fields.year != other.m_fields.year) return compare(m_fields.year, other.m_fields.year);
        const std::uint64_t a = m_fields.WholeSeconds();
        const std::uint64_t b = other.m_fields.WholeSeconds();
        return a != b ? compare(a, b) : compare(m_fields.Fraction(), other.m_fields.Fraction());
    }

    const DTType typeA = GetType();
    const DTType typeB = other.GetType();
    const Instant a = FirstInstantUtc();
    const Instant b = other.FirstInstantUtc();
    if (IsUTC() == other.IsUTC()) return Compare(typeA, a, typeB, b);

    // The unzoned one may lie up to 14 hours to either side; only what holds at both ends is certain.
    const Instant& unzoned = IsUTC() ? b : a;
    const Instant earliest = ShiftSeconds(unzoned, -kFourteenHours);
    const Instant latest = ShiftSeconds(unzoned, kFourteenHours);
    if (IsUTC()) {
        if (Compare(typeA, a, typeB, earliest) == DTCompare_Less) return DTCompare_Less;
        if (Compare(typeA, a, typeB, latest) == DTCompare_Greater) return DTCompare_Greater;
    } else {
        if (Compare(typeA, latest, typeB, b) == DTCompare_Less) return DTCompare_Less;
        if (Compare(typeA, earliest, typeB, b) == DTCompare_Greater) return DTCompare_Greater;
    }
    return DTCompare_Indeterminate;
}

std::size_t CDateTime::GetHash() const noexcept {
    const Instant instant = FirstInstantUtc();
    return HashOf(FieldsOf(GetType()), IsUTC(), instant.days, instant.second, instant.nano);
}

void CDateTime::AddDateTimeSpan(const CDateTimeSpan& span, bool subtract) {
    if (GetType() == dt_none) throw CKvInvalidValueException("Invalid Year Zero");
    StoreInstant(AddSpan(FirstInstant(), span, subtract));
}

CDateTime& CDateTime::operator+=(const CDateTimeSpan& span) {
    AddDateTimeSpan(span, false);
    return *this;
}

CDateTime& CDateTime::operator-=(const CDateTimeSpan& span) {
    AddDateTimeSpan(span, true);
    return *this;
}

CDateTime CDateTime::operator+(const CDateTimeSpan& span) const {
    CDateTime result(*this);
    result += span;
    return result;
}

CDateTime CDateTime::operator-(const CDateTimeSpan& span) const {
    CDateTime result(*this);
    result -= span;
    return result;
}

CDateTimeSpan CDateTime::operator-(const CDateTime& other) const {
    if (GetType() == dt_none || other.GetType() == dt_none)
        throw CKvInvalidValueException("Invalid Year Zero");
    Instant later = FirstInstantUtc();
    Instant earlier = other.FirstInstantUtc();
    const bool negative = CompareInstants(later, earlier) < 0;
    if (negative) std::swap(later, earlier);
    const Instant distance =
        MakeInstant(later.days - earlier.days, std::int64_t{later.second} - earlier.second,
                    std::int64_t{later.nano} - earlier.nano);
    const auto seconds = static_cast<std::uint32_t>(distance.second);
    CDateTimeSpan span(0, 0, static_cast<std::uint32_t>(distance.days), seconds / 3600, seconds / 60 % 60,
                       seconds % 60, static_cast<std::uint16_t>(distance.nano / 1000000),
                       static_cast<std::uint16_t>(distance.nano / 1000 % 1000),
                       static_cast<std::uint16_t>(distance.nano % 1000));
    if (negative) span.Negate();
    return span;
}

}  // namespace KvXmlLib16
