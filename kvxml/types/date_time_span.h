/// The XSD duration: separate counts of years, months, days, hours, minutes and seconds, with one sign.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

#include "kvxml/export.h"
#include "kvxml/types/date_time.h"

namespace KvXmlLib16 {

/// A duration. Its components are kept as they are given: 90 minutes stay 90 minutes.
class KVXML_EXPORT CDateTimeSpan {
public:
    /// Bytes that `FormatXsd` may write.
    static constexpr std::size_t kMaxTextLength = 104;

    /// Zero.
    CDateTimeSpan() noexcept = default;
    CDateTimeSpan(std::uint32_t hours, std::uint64_t minutes, std::uint64_t seconds) noexcept;
    CDateTimeSpan(std::uint16_t years, std::uint32_t months, std::uint32_t days, std::uint32_t hours,
                  std::uint64_t minutes, std::uint64_t seconds) noexcept;
    CDateTimeSpan(std::uint16_t years, std::uint32_t months, std::uint32_t days, std::uint32_t hours,
                  std::uint64_t minutes, std::uint64_t seconds, std::uint16_t milli, std::uint16_t micro,
                  std::uint16_t nano) noexcept;
    CDateTimeSpan(const CDateTimeSpan&) noexcept = default;
    CDateTimeSpan(CDateTimeSpan&&) noexcept = default;
    virtual ~CDateTimeSpan() = default;
    CDateTimeSpan& operator=(const CDateTimeSpan&) noexcept = default;
    CDateTimeSpan& operator=(CDateTimeSpan&&) noexcept = default;

    /// Replace all components; the duration becomes positive.
    void SetDateTimeSpan(std::uint32_t hours, std::uint64_t minutes, std::uint64_t seconds) noexcept;
    void SetDateTimeSpan(std::uint16_t years, std::uint32_t months, std::uint32_t days, std::uint32_t hours,
                         std::uint64_t minutes, std::uint64_t seconds) noexcept;
    void SetDateTimeSpan(std::uint16_t years, std::uint32_t months, std::uint32_t days, std::uint32_t hours,
                         std::uint64_t minutes, std::uint64_t seconds, std::uint16_t milli,
                         std::uint16_t micro, std::uint16_t nano) noexcept;

    /// [-]P[nY][nM][nD][T[nH][nM][nS.ff]]; CKvInvalidValueException otherwise. More lenient than XSD: a
    /// designator may lack its number (0), and years may stand anywhere. Numbers are 32 bits wide and wrap,
    /// years 16; minutes and seconds from 2^31 on are sign-extended. Of fraction digits 7 to 9 only the last
    /// counts, as nanoseconds. A failure leaves what was read before the fault.
    void ParseXSDDuration(const char* text);
    void ParseXSDDuration(std::string_view text);
    static CDateTimeSpan FromText(std::string_view text) {
        CDateTimeSpan result;
        result.ParseXSDDuration(text);
        return result;
    }
    /// The XSD form; "P" for zero, which the parser refuses. The fraction has 0, 3, 6 or 9 digits.
    std::string ToString() const;
    /// Writes ToString().
    friend KVXML_EXPORT std::ostream& operator<<(std::ostream& stream, const CDateTimeSpan& value);
    /// Writes the text of `ToString()` without terminator; returns its length, at most `kMaxTextLength`.
    std::size_t FormatXsd(char* buffer) const noexcept;

    std::uint16_t GetYears() const noexcept { return m_years; }
    std::uint32_t GetMonths() const noexcept { return m_months; }
    std::uint32_t GetDays() const noexcept { return m_days; }
    std::uint32_t GetHours() const noexcept { return m_hours; }
    std::uint64_t GetMinutes() const noexcept { return m_minutes; }
    std::uint64_t GetSeconds() const noexcept { return m_seconds; }
    std::uint16_t GetMilliSeconds() const noexcept { return m_milliSeconds; }
    std::uint16_t GetMicroSeconds() const noexcept { return m_microSeconds; }
    std::uint16_t GetNanoSeconds() const noexcept { return m_nanoSeconds; }
    bool IsNegative() const noexcept { return m_negative; }

    /// Store the value as given, without a check of its range.
    void SetYears(std::uint16_t years) noexcept { m_years = years; }
    void SetMonths(std::uint32_t months) noexcept { m_months = months; }
    void SetDays(std::uint32_t days) noexcept { m_days = days; }
    void SetHours(std::uint32_t hours) noexcept { m_hours = hours; }
    void SetMinutes(std::uint64_t minutes) noexcept { m_minutes = minutes; }
    void SetSeconds(std::uint64_t seconds) noexcept { m_seconds = seconds; }
    void SetMilliSeconds(std::uint16_t milli) noexcept { m_milliSeconds = milli; }
    void SetMicroSeconds(std::uint16_t micro) noexcept { m_microSeconds = micro; }
    void SetNanoSeconds(std::uint16_t nano) noexcept { m_nanoSeconds = nano; }

    /// Flips the sign.
    void Negate() noexcept { m_negative = !m_negative; }
    /// A copy with the negative sign, also of a duration that is negative already.
    CDateTimeSpan GetAsNegative() const noexcept {
        CDateTimeSpan result(*this);
        result.m_negative = true;
        return result;
    }

    /// Partial order of W3C XML Schema 1.0 Datatypes, 3.2.6.2: both durations are added to 1696-09-01,
    /// 1697-02-01, 1903-03-01 and 1903-07-01; where the four results do not agree, the order is
    /// indeterminate. Durations of any length are compared; nothing is thrown.
    CDateTime::DTCompareResult CompareTo(const CDateTimeSpan& other) const noexcept;
    /// An indeterminate pair is not equal and neither less nor greater.
    bool operator==(const CDateTimeSpan& other) const noexcept {
        return CompareTo(other) == CDateTime::DTCompare_Equal;
    }
    bool operator!=(const CDateTimeSpan& other) const noexcept {
        return CompareTo(other) != CDateTime::DTCompare_Equal;
    }
    bool operator<(const CDateTimeSpan& other) const noexcept {
        return CompareTo(other) == CDateTime::DTCompare_Less;
    }
    bool operator>(const CDateTimeSpan& other) const noexcept {
        return CompareTo(other) == CDateTime::DTCompare_Greater;
    }
    bool operator<=(const CDateTimeSpan& other) const noexcept {
        const CDateTime::DTCompareResult result = CompareTo(other);
        return result == CDateTime::DTCompare_Less || result == CDateTime::DTCompare_Equal;
    }
    bool operator>=(const CDateTimeSpan& other) const noexcept { return other <= *this; }
    /// Equal durations have equal hashes, whatever they are counted in.
    std::size_t GetHash() const noexcept;

private:
    int StorePart(char designator, std::uint32_t number, int progress) noexcept;
    const char* ParseFraction(std::string_view text, const char* p);

    std::uint64_t m_minutes = 0;
    std::uint64_t m_seconds = 0;
    std::uint32_t m_months = 0;
    std::uint32_t m_days = 0;
    std::uint32_t m_hours = 0;
    std::uint16_t m_years = 0;
    std::uint16_t m_milliSeconds = 0;
    std::uint16_t m_microSeconds = 0;
    std::uint16_t m_nanoSeconds = 0;
    bool m_negative = false;
};

}  // namespace KvXmlLib16

template <>
struct std::hash<KvXmlLib16::CDateTimeSpan> {
    std::size_t operator()(const KvXmlLib16::CDateTimeSpan& value) const noexcept { return value.GetHash(); }
};
