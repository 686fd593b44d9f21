/// One value class for the XSD kinds dateTime, date, time, gYearMonth, gYear, gMonthDay, gMonth and gDay.
///
///     CDateTime start("2007-10-14T10:09:57Z");
///     start += CDateTimeSpan(48, 0, 0);
///     std::string text = start.ToString();  // "2007-10-16T10:09:57Z"
///
/// Include "kvxml/types/date_time_span.h" to calculate with durations, and "kvxml/types/date_time_chrono.h"
/// for conversions from and to the types of <chrono>.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

#include "kvxml/export.h"
#include "kvxml/types/platform_time.h"

namespace KvXmlLib16 {

class CDateTimeSpan;

namespace internal {
struct Instant;
}

/// A date, a time of day, or both, with an optional zone.
///
/// The kind decides which fields a value has. A field accessor or per-field setter of a field that the kind
/// lacks throws CKvInvalidStateException "Failed to GetYear. Invalid Date Type: %s." (the setter too says
/// "Get", and the field's name stands for "Year"). Text and range errors are CKvInvalidValueException.
///
/// Years run from -9999 to 9999 without a year 0; leap years follow the number as it is written. Arithmetic
/// counts years as whole numbers, as W3C XML Schema 1.0 does, and throws the year error where the result
/// would be 0 or out of bounds.
///
/// Numbers are taken as `int`; where a field is narrower, a setter that does not check its value keeps the
/// low bits.
class KVXML_EXPORT CDateTime {
public:
    enum DTType : std::int32_t {
        dt_none = 0,  ///< not set
        dt_dateTime = 1,
        dt_date = 2,
        dt_gYearMonth = 3,
        dt_gYear = 4,
        dt_time = 5,
        dt_gDay = 6,
        dt_gMonth = 7,
        dt_gMonthDay = 8,
    };

    /// Order of two values; also used for durations.
    enum DTCompareResult : std::int32_t {
        DTCompare_Equal = 0,
        DTCompare_Less = 1,
        DTCompare_Greater = 2,
        DTCompare_Indeterminate = 3,
    };

    /// Bytes that `FormatXsd` may write. Valid values need 35; fields set unchecked may be longer.
    static constexpr std::size_t kMaxTextLength = 48;

    /// Not set.
    CDateTime() noexcept = default;
    /// Of that kind, with all fields zero.
    CDateTime(DTType type) noexcept;
    /// Reads a dateTime, as `ParseXSDDateTime`.
    CDateTime(const char* text);
    explicit CDateTime(std::string_view text);
    CDateTime(const CDateTime&) noexcept = default;
    CDateTime(CDateTime&&) noexcept = default;
    /// The dateTime that lies so many seconds after 1970-01-01T00:00:00 UTC, in UTC but without a zone mark.
    template <
        class Integer,
        std::enable_if_t<std::is_integral<Integer>::value && !std::is_same<Integer, bool>::value, int> = 0>
    CDateTime(Integer secondsSince1970) {
        SetSeconds(ToSeconds(secondsSince1970));
    }
    /// A dateTime to the millisecond, without zone.
    CDateTime(const SYSTEMTIME& time);
    /// The dateTime in UTC, to the millisecond, without a zone mark. CKvInvalidValueException "Failed to
    /// convert FILETIME to SYSTEMTIME" when the count has its highest bit set.
    CDateTime(const FILETIME& time);
    /// A date.
    CDateTime(int year, int month, int day);
    /// A dateTime.
    CDateTime(int year, int month, int day, int hour, int minute, int second);
    CDateTime(int year, int month, int day, int hour, int minute, int second, int milli, int micro, int nano);
    virtual ~CDateTime() = default;

    CDateTime& operator=(const CDateTime&) noexcept = default;
    CDateTime& operator=(CDateTime&&) noexcept = default;
    template <
        class Integer,
        std::enable_if_t<std::is_integral<Integer>::value && !std::is_same<Integer, bool>::value, int> = 0>
    CDateTime& operator=(Integer secondsSince1970) {
        SetSeconds(ToSeconds(secondsSince1970));
        return *this;
    }
    CDateTime& operator=(const SYSTEMTIME& time);
    CDateTime& operator=(const FILETIME& time);

    /// Reads any of the forms below: one with "T" is a dateTime, one with a colon at its third place a time,
    /// any other a form without a time.
    static CDateTime FromText(std::string_view text);

    /// The present local time to the millisecond, a dateTime without zone.
    static CDateTime GetTickCount();

    // --- text ---------------------------------------------------------------------------------------------
    // A parse that fails leaves what it read before the fault, never a mix with the value before.

    /// [-]CCYY-MM-DDThh:mm:ss[.f][zone], with at most nine fraction digits; zone is "Z" or "+hh:mm" or
    /// "-hh:mm". Null and text without "T" are refused first of all, and then the value stays as it was.
    void ParseXSDDateTime(const char* text);
    void ParseXSDDateTime(std::string_view text);
    /// Any of the forms without a time: date, gYearMonth, gYear, gMonthDay, gMonth, gDay.
    void ParseXSDDate(const char* text);
    void ParseXSDDate(std::string_view text);
    /// hh:mm:ss[.f][zone]. Text after the seconds that does not begin like a zone is passed over.
    void ParseXSDTime(const char* text);
    void ParseXSDTime(std::string_view text);

    /// The XSD form; "Error: Date Not Set" for a value that is not set. The fraction has 0, 3, 6 or 9 digits.
    std::string ToString() const;
    /// "s": the XSD form. Null, "" and "G": the empty text. Others: "Unknown Format: " and the format.
    std::string ToString(const char* format) const;
    /// Writes ToString().
    friend KVXML_EXPORT std::ostream& operator<<(std::ostream& stream, const CDateTime& value);
    /// Writes the text of `ToString()` without terminator; returns its length, at most `kMaxTextLength`.
    std::size_t FormatXsd(char* buffer) const noexcept;

    // --- setting whole values -----------------------------------------------------------------------------
    //
    // Each makes the value one of the kind named, checks it and clears the zone. A value that already is of
    // another kind stays as it is: CKvInvalidStateException "Failed to copy CDateTime. Invalid Date Type: %s,
    // expected: %s."

    void SetDateTime(int year, int month, int day, int hour, int minute, int second);
    void SetDateTime(int year, int month, int day, int hour, int minute, int second, int milli, int micro,
                     int nano);
    /// Becomes a value of kind `target`, whatever it was, with the fields of `source` that this kind has, and
    /// its zone; then it is checked. CKvInvalidValueException, with the value as it was, when `source` lacks
    /// one of the fields.
    void SetDateTime(const CDateTime& source, DTType target);
    void SetDate(int year, int month, int day);
    void SetTime(int hour, int minute, int second);
    void SetTime(int hour, int minute, int second, int milli, int micro, int nano);
    /// A time of day in the first second after midnight.
    void SetFracTime(int milli, int micro, int nano);
    void SetGYear(int year);
    void SetGYearMonth(int year, int month);
    void SetGMonth(int month);
    void SetGMonthDay(int month, int day);
    void SetGDay(int day);

    // --- zone ---------------------------------------------------------------------------------------------

    /// Gives the value an offset from UTC: hour -23 to 23, minute 0 to 59 counting in the hour's direction.
    void SetTimeZone(int hour, int minute);
    /// Marks the value as UTC ("Z").
    void SetUTC() noexcept;
    /// The value has a zone, "Z" or an offset.
    bool IsUTC() const noexcept { return (m_fields.kind & kUtcFlag) != 0; }
    /// The value has an explicit offset.
    bool HasTimeZone() const noexcept { return (m_fields.kind & kZoneFlag) != 0; }
    /// CKvInvalidStateException "TimeZone is not been used" without an explicit offset.
    std::int16_t GetZoneHour() const;
    std::uint8_t GetZoneMinute() const;

    // --- fields: setters store the value without checking it ----------------------------------------------

    void SetYear(int year);
    void SetMonth(int month);
    void SetDay(int day);
    void SetHour(int hour);
    void SetMinute(int minute);
    void SetSecond(int second);
    void SetMilliSecond(int milli);
    void SetMicroSecond(int micro);
    void SetNanoSecond(int nano);

    std::int16_t GetYear() const;
    std::uint8_t GetMonth() const;
    std::uint8_t GetDay() const;
    std::uint8_t GetHour() const;
    std::uint8_t GetMinute() const;
    std::uint8_t GetSecond() const;
    /// Seconds with their fraction.
    double GetRealSecond() const;
    /// Fraction digits 1 to 3, 4 to 6 and 7 to 9.
    std::uint16_t GetMilliSecond() const;
    std::uint16_t GetMicroSecond() const;
    std::uint16_t GetNanoSecond() const;
    /// 1 is Sunday, 7 is Saturday.
    std::int32_t GetDayOfWeek() const;
    /// 1 is January 1.
    std::int32_t GetDayOfYear() const;

    /// False for a value without kind, and for one of any kind but time whose fields are all zero.
    bool IsSet() const noexcept {
        const Fields& f = m_fields;
        const bool allZero =
            (f.year | f.month | f.day | f.hour | f.minute | f.second | f.milli | f.micro | f.nano) == 0;
        return GetType() != dt_none && (!allZero || GetType() == dt_time);
    }
    DTType GetType() const noexcept { return static_cast<DTType>(m_fields.kind & kTypeMask); }
    /// "dateTime", "date", ...; "yearZero" for a value that is not set.
    std::string GetTypeAsString() const { return GetTypeAsString(GetType()); }

    /// Seconds from 1970-01-01T00:00:00 UTC to this dateTime or date in UTC, fractions dropped. A value
    /// without zone counts as UTC, whatever the host's own zone is; a zoned date counts as midnight UTC of
    /// the date that `GetNormalized` gives.
    std::int64_t GetTime() const;
    /// Of a dateTime: its fields as they are, the zone ignored.
    SYSTEMTIME GetAsSystemTime() const;
    /// The value in UTC: one with an offset is shifted and marked "Z", others are returned as they are. Kinds
    /// without a time of day stand for their first instant and lose what their kind cannot hold.
    CDateTime GetNormalized() const;

    // --- order and arithmetic -----------------------------------------------------------------------------

    /// Order of W3C XML Schema 1.0 Datatypes, 3.2.7.3: zoned values are compared in UTC; a zoned and an
    /// unzoned value are comparable only when every offset up to 14 hours leads to the same order; fields
    /// that only one of the kinds has make the result indeterminate unless an earlier field decides. Never
    /// throws.
    DTCompareResult CompareTo(const CDateTime& other) const noexcept;
    bool operator==(const CDateTime& other) const noexcept { return CompareTo(other) == DTCompare_Equal; }
    bool operator!=(const CDateTime& other) const noexcept { return CompareTo(other) != DTCompare_Equal; }
    bool operator<(const CDateTime& other) const noexcept { return CompareTo(other) == DTCompare_Less; }
    bool operator>(const CDateTime& other) const noexcept { return CompareTo(other) == DTCompare_Greater; }
    bool operator<=(const CDateTime& other) const noexcept {
        const DTCompareResult result = CompareTo(other);
        return result == DTCompare_Less || result == DTCompare_Equal;
    }
    bool operator>=(const CDateTime& other) const noexcept {
        const DTCompareResult result = CompareTo(other);
        return result == DTCompare_Greater || result == DTCompare_Equal;
    }

    /// Equal values have equal hashes.
    std::size_t GetHash() const noexcept;

    /// Adds a duration by the algorithm of W3C XML Schema 1.0 Datatypes, Appendix E: months first (the day is
    /// cut to the length of the month reached), then days and time. Kind and zone stay. Kinds without a time
    /// of day stand for their first instant; kinds without a year wrap around.
    CDateTime& operator+=(const CDateTimeSpan& span);
    CDateTime& operator-=(const CDateTimeSpan& span);
    CDateTime operator+(const CDateTimeSpan& span) const;
    CDateTime operator-(const CDateTimeSpan& span) const;
    /// The time from `other` to this value in days, hours, minutes, seconds and fractions, negative when this
    /// value is the earlier one. Zoned values are taken in UTC; an unzoned value counts as UTC beside a zoned
    /// one.
    CDateTimeSpan operator-(const CDateTime& other) const;

private:
    friend class CConversions;

    static constexpr std::uint8_t kTypeMask = 0x0f;
    static constexpr std::uint8_t kUtcFlag = 0x10;
    static constexpr std::uint8_t kZoneFlag = 0x20;

    struct Fields {
        std::int16_t year = 0;
        std::uint16_t milli = 0;
        std::uint16_t micro = 0;
        std::uint16_t nano = 0;
        std::uint8_t month = 0;
        std::uint8_t day = 0;
        std::uint8_t hour = 0;
        std::uint8_t minute = 0;
        std::uint8_t second = 0;
        std::int8_t zoneHour = 0;
        std::uint8_t zoneMinute = 0;
        std::uint8_t kind = 0;  // DTType and flags

        /// Month to second as one number, most significant field first; and the fraction likewise.
        std::uint64_t WholeSeconds() const noexcept {
            return std::uint64_t{month} << 32 | std::uint64_t{day} << 24 | std::uint64_t{hour} << 16 |
                   std::uint64_t{minute} << 8 | second;
        }
        std::uint64_t Fraction() const noexcept {
            return std::uint64_t{milli} << 32 | std::uint64_t{micro} << 16 | nano;
        }
    };
    struct Numbers;

    template <class Integer>
    static constexpr std::int64_t ToSeconds(Integer value) noexcept {
        if constexpr (sizeof(Integer) >= sizeof(std::int64_t) && std::is_unsigned<Integer>::value) {
            constexpr auto kLimit = std::numeric_limits<std::int64_t>::max();
            return value > static_cast<Integer>(kLimit) ? kLimit : static_cast<std::int64_t>(value);
        } else {
            return static_cast<std::int64_t>(value);
        }
    }

    static std::string GetTypeAsString(DTType type);
    static void CheckConversion(DTType source, DTType target);
    void Clear() noexcept { m_fields = Fields(); }
    void SetType(DTType type) noexcept {
        const int bits = type >= dt_none && type <= dt_gMonthDay ? static_cast<int>(type) : kTypeMask;
        m_fields.kind = static_cast<std::uint8_t>((m_fields.kind & ~kTypeMask) | bits);
    }
    void SetSeconds(std::int64_t secondsSince1970);
    void SetDateTime(DTType type, const Numbers& numbers);
    static void Validate(DTType type, const Numbers& numbers);
    void Validate() const;
    void RequireField(unsigned fields, const char* name) const;

    /// Reads CCYY-MM-DDThh:mm:ss with or without "Z" and with every number in its range.
    bool ParsePlainDateTime(std::string_view text) noexcept;
    void SetXSDDate(std::string_view text);
    void StoreDate(DTType type, int year, int month, int day) noexcept;
    void SetXSDTime(std::string_view text);
    void SetZone(std::string_view text);

    std::int32_t ZoneOffsetSeconds() const noexcept;
    /// First instant of the value on its own clock; fields that the kind lacks are filled from a leap year.
    internal::Instant FirstInstant() const noexcept;
    /// The same in UTC.
    internal::Instant FirstInstantUtc() const noexcept;
    /// Takes the fields that the kind has. Throws the year error and changes nothing when the year is none.
    void StoreInstant(const internal::Instant& instant);
    static DTCompareResult Compare(DTType typeA, const internal::Instant& a, DTType typeB,
                                   const internal::Instant& b) noexcept;
    void AddDateTimeSpan(const CDateTimeSpan& span, bool subtract);

    Fields m_fields;
};

}  // namespace KvXmlLib16

template <>
struct std::hash<KvXmlLib16::CDateTime> {
    std::size_t operator()(const KvXmlLib16::CDateTime& value) const noexcept { return value.GetHash(); }
};
