// Lexical forms of CDateTime.
#include <string>

#include "kvxml/base/exceptions.h"
#include "kvxml/types/date_time.h"
#include "kvxml/types/format_string.h"
#include "kvxml/types/internal/calendar.h"
#include "kvxml/types/internal/date_time_numbers.h"
#include "kvxml/types/internal/digits.h"

namespace KvXmlLib16 {

using namespace internal;

namespace {

constexpr char kNotSet[] = "Error: Date Not Set";

/// Puts the text in the place of the format's "%s"; zero bytes in the text are kept.
[[noreturn]] void Refuse(std::string_view format, std::string_view text) {
    const std::size_t place = format.find("%s");
    std::string message(format.substr(0, place));
    message.append(text).append(format.substr(place + 2));
    throw CKvInvalidValueException(std::move(message));
}

[[noreturn]] void RefuseDate(std::string_view text) {
    Refuse("Invalid XSD Date [%s] expected CCYY-MM-DD[Z|[+|-]hh:mm]", text);
}

/// Eight characters of a fixed form, in which "0" stands for any digit, as a number.
struct PairPattern {
    consteval explicit PairPattern(const char* form) {
        for (int i = 7; i >= 0; --i) {
            const bool isDigit = form[i] == '0';
            text = text << 8 | static_cast<unsigned char>(form[i]);
            fixed = fixed << 8 | (isDigit ? 0xf0 : 0xff);
            digits = digits << 8 | (isDigit ? 0xf0 : 0);
        }
    }
    std::uint64_t text = 0;
    std::uint64_t fixed = 0;
    std::uint64_t digits = 0;
};

constexpr PairPattern kYearAndMonth("0000-00-");
constexpr PairPattern kDayAndTime("00T00:00");
constexpr PairPattern kTimeOfDay("00:00:00");

/// The numbers of two digits in such a text, all at once.
class PairsOfDigits {
public:
    PairsOfDigits(const char* text, const PairPattern& pattern) noexcept {
        const std::uint64_t values = LoadEight(text) ^ pattern.text;
        m_isValid = ((values & pattern.fixed) | ((values + 0x0606060606060606) & pattern.digits)) == 0;
        m_pairs = values * 10 + (values >> 8);
    }
    bool IsValid() const noexcept { return m_isValid; }
    /// The number that begins at character `place`.
    unsigned At(int place) const noexcept { return static_cast<unsigned>(m_pairs >> (8 * place)) & 0xff; }

private:
    std::uint64_t m_pairs;
    bool m_isValid;
};

/// CCYY-MM-DD at `p`.
bool ReadDate(const char* p, int& year, int& month, int& day) noexcept {
    return p[4] == '-' && p[7] == '-' && ReadFourDigits(p, year) && ReadTwoDigits(p + 5, month) &&
           ReadTwoDigits(p + 8, day);
}

struct DateNumbers {
    int year = 0;
    int month = 0;
    int day = 0;
};

// Length of "Z" or "+hh:mm" at the end of a form without a time.
std::size_t ZoneLength(std::string_view text) {
    const bool hasColon = text.find(':') != std::string_view::npos;
    if (text.back() == 'Z') {
        if (hasColon) throw CKvInvalidValueException("Invalid Date (Bad Zone value)");
        return 1;
    }
    if (!hasColon) return 0;
    if (text.size() < 6) RefuseDate(text);
    return 6;
}

// --MM, ---DD or --MM-DD; dt_none for anything else.
CDateTime::DTType ReadFormWithoutYear(std::string_view body, DateNumbers& date) noexcept {
    const char* const p = body.data();
    switch (body.size()) {
        case 4:
            return ReadTwoDigits(p + 2, date.month) ? CDateTime::dt_gMonth : CDateTime::dt_none;
        case 5:
            return p[2] == '-' && ReadTwoDigits(p + 3, date.day) ? CDateTime::dt_gDay : CDateTime::dt_none;
        case 6:  // the obsolete form --MM--, whose end does not matter
            return ReadTwoDigits(p + 2, date.month) ? CDateTime::dt_gMonth : CDateTime::dt_none;
        case 7:
            return p[4] == '-' && ReadTwoDigits(p + 2, date.month) && ReadTwoDigits(p + 5, date.day)
                       ? CDateTime::dt_gMonthDay
                       : CDateTime::dt_none;
        default:
            return CDateTime::dt_none;
    }
}

// [-]CCYY, [-]CCYY-MM or [-]CCYY-MM-DD; dt_none for anything else.
CDateTime::DTType ReadFormWithYear(std::string_view body, DateNumbers& date) noexcept {
    const bool negative = !body.empty() && body[0] == '-';
    if (negative) body.remove_prefix(1);
    const char* const p = body.data();
    CDateTime::DTType type = CDateTime::dt_none;
    if (body.size() == 4 && ReadFourDigits(p, date.year)) {
        type = CDateTime::dt_gYear;
    } else if (body.size() == 7 && p[4] == '-' && ReadFourDigits(p, date.year) &&
               ReadTwoDigits(p + 5, date.month)) {
        type = CDateTime::dt_gYearMonth;
    } else if (body.size() == 10 && ReadDate(p, date.year, date.month, date.day)) {
        type = CDateTime::dt_date;
    }
    if (negative) date.year = -date.year;
    return type;
}

}  // namespace

// --- reading ----------------------------------------------------------------------------------------------

void CDateTime::ParseXSDDateTime(const char* text) {
    if (text == nullptr) throw CKvInvalidValueException("Invalid DateTime (Null String)");
    ParseXSDDateTime(std::string_view(text));
}

// Changes nothing when it fails.
bool CDateTime::ParsePlainDateTime(std::string_view text) noexcept {
    const bool isUtc = text.size() == 20 && text[19] == 'Z';
    if (text.size() != 19 && !isUtc) return false;
    const PairsOfDigits date(text.data(), kYearAndMonth);
    const PairsOfDigits dayAndTime(text.data() + 8, kDayAndTime);
    const PairsOfDigits time(text.data() + 11, kTimeOfDay);
    if (!date.IsValid() || !dayAndTime.IsValid() || !time.IsValid()) return false;
    const unsigned year = date.At(0) * 100 + date.At(2);
    const unsigned month = date.At(5);
    const unsigned day = dayAndTime.At(0);
    Fields fields;
    fields.year = static_cast<std::int16_t>(year);
    fields.month = static_cast<std::uint8_t>(month);
    fields.day = static_cast<std::uint8_t>(day);
    fields.hour = static_cast<std::uint8_t>(time.At(0));
    fields.minute = static_cast<std::uint8_t>(time.At(3));
    fields.second = static_cast<std::uint8_t>(time.At(6));
    fields.kind = static_cast<std::uint8_t>(dt_dateTime | (isUtc ? kUtcFlag : 0));
    if (year == 0 || month < 1 || month > 12 || day < 1 || fields.hour > 23 || fields.minute > 59 ||
        fields.second > 59 ||
        (day > 28 && day > static_cast<unsigned>(DaysInMonth(static_cast<std::int32_t>(year),
                                                             static_cast<std::int32_t>(month))))) {
        return false;
    }
    m_fields = fields;
    return true;
}

void CDateTime::ParseXSDDateTime(std::string_view text) {
    if (ParsePlainDateTime(text)) return;
    Fields date;
    int year = 0;
    int month = 0;
    int day = 0;
    if (text.size() > 10 && text[10] == 'T' && ReadDate(text.data(), year, month, day)) {
        date.year = static_cast<std::int16_t>(year);
        date.month = static_cast<std::uint8_t>(month);
        date.day = static_cast<std::uint8_t>(day);
        date.kind = dt_date;  // what is left of the value when the time is refused
        m_fields = date;
        SetXSDTime(text.substr(11));
    } else {
        const std::size_t separator = text.find('T');
        if (separator == std::string_view::npos) Refuse("Invalid XSD DateTime [%s].", text);
        Clear();
        SetXSDDate(text.substr(0, separator));
        if (GetType() != dt_date) {
            Refuse("Invalid XSD DateTime [%s] expected CCYY-MM-DDThh:mm:ss[.ff]", text);
        }
        SetXSDTime(text.substr(separator + 1));
    }
    SetType(dt_dateTime);
    Validate();
}

void CDateTime::ParseXSDDate(const char* text) {
    if (text == nullptr) {
        Clear();
        throw CKvInvalidValueException("Invalid Date (Null String)");
    }
    ParseXSDDate(std::string_view(text));
}

void CDateTime::ParseXSDDate(std::string_view text) {
    Clear();
    SetXSDDate(text);
    Validate();
}

void CDateTime::ParseXSDTime(const char* text) {
    if (text == nullptr) {
        Clear();
        throw CKvInvalidValueException("Invalid Time (Null String)");
    }
    ParseXSDTime(std::string_view(text));
}

void CDateTime::ParseXSDTime(std::string_view text) {
    Clear();
    SetXSDTime(text);
    Validate();
}

CDateTime CDateTime::FromText(std::string_view text) {
    CDateTime result;
    if (text.find('T') != std::string_view::npos) {
        result.ParseXSDDateTime(text);
    } else if (text.size() > 2 && text[2] == ':') {
        result.ParseXSDTime(text);
    } else {
        result.ParseXSDDate(text);
    }
    return result;
}

void CDateTime::SetXSDDate(std::string_view text) {
    DateNumbers date;
    if (text.size() == 10 && ReadDate(text.data(), date.year, date.month, date.day)) {
        StoreDate(dt_date, date.year, date.month, date.day);
        return;
    }
    if (text.empty()) throw CKvInvalidValueException("Invalid Date (Empty String)");
    if (text.find('T') != std::string_view::npos) {
        throw CKvInvalidValueException("Invalid Date ('T' not allowed)");
    }
    const std::size_t zoneLength = ZoneLength(text);
    const std::string_view body = text.substr(0, text.size() - zoneLength);
    date = DateNumbers();
    const DTType type =
        body.substr(0, 2) == "--" ? ReadFormWithoutYear(body, date) : ReadFormWithYear(body, date);
    if (type == dt_none) RefuseDate(text);
    StoreDate(type, date.year, date.month, date.day);
    if (zoneLength != 0) SetZone(text.substr(text.size() - zoneLength));
}

void CDateTime::StoreDate(DTType type, int year, int month, int day) noexcept {
    m_fields.year = static_cast<std::int16_t>(year);
    m_fields.month = static_cast<std::uint8_t>(month);
    m_fields.day = static_cast<std::uint8_t>(day);
    SetType(type);
}

void CDateTime::SetXSDTime(std::string_view text) {
    if (text.empty()) throw CKvInvalidValueException("Invalid XSD Time (Empty String)");
    int hour = 0;
    int minute = 0;
    int second = 0;
    const char* p = text.data();
    if (text.size() < 8 || p[2] != ':' || p[5] != ':' || !ReadTwoDigits(p, hour) ||
        !ReadTwoDigits(p + 3, minute) || !ReadTwoDigits(p + 6, second) || hour > 23 || minute > 59 ||
        second > 59) {
        Refuse("Invalid XSD Time [%s] expected hh:mm:ss[.ff]", text);
    }
    m_fields.hour = static_cast<std::uint8_t>(hour);
    m_fields.minute = static_cast<std::uint8_t>(minute);
    m_fields.second = static_cast<std::uint8_t>(second);

    std::size_t end = 8;
    if (end < text.size() && p[end] == '.') {
        unsigned digits[9] = {};
        std::size_t count = 0;
        for (++end; end < text.size() && DigitValue(p[end]) <= 9; ++end, ++count) {
            if (count == 9) Refuse("Invalid XSD Time [%s] Fraction part too long", text);
            digits[count] = DigitValue(p[end]);
        }
        const auto group = [&digits](std::size_t first) {
            return static_cast<std::uint16_t>(digits[first] * 100 + digits[first + 1] * 10 +
                                              digits[first + 2]);
        };
        m_fields.milli = group(0);
        m_fields.micro = group(3);
        m_fields.nano = group(6);
    }
    if (end < text.size()) SetZone(text.substr(end));
    SetType(dt_time);
}

void CDateTime::SetZone(std::string_view text) {
    if (text[0] == 'Z') {
        SetUTC();
    } else if (text[0] == '+' || text[0] == '-') {
        int hour = 0;
        int minute = 0;
        if (text.size() != 6 || text[3] != ':' || !ReadTwoDigits(text.data() + 1, hour) ||
            !ReadTwoDigits(text.data() + 4, minute)) {
            Refuse("Invalid XSD Time Zone [%s].", text);
        }
        if (hour == 24) hour = 0;
        SetTimeZone(text[0] == '-' ? -hour : hour, minute);
    }
}

void CDateTime::Validate() const {
    const Fields& f = m_fields;
    Validate(GetType(), {f.year, f.month, f.day, f.hour, f.minute, f.second, f.milli, f.micro, f.nano});
}

// --- writing ----------------------------------------------------------------------------------------------

std::string CDateTime::ToString() const {
    char buffer[kMaxTextLength];
    return std::string(buffer, FormatXsd(buffer));
}

std::string CDateTime::ToString(const char* format) const {
    char buffer[kMaxTextLength];
    const std::string_view text(buffer, FormatXsd(buffer));
    const std::string_view form = format == nullptr ? std::string_view() : format;
    if (form == "s" || text == kNotSet) return std::string(text);
    if (form.empty() || form == "G") return std::string();
    return "Unknown Format: " + std::string(form);
}

std::size_t CDateTime::FormatXsd(char* buffer) const noexcept {
    const Fields& f = m_fields;
    const DTType type = GetType();
    if (!IsSet()) {
        std::memcpy(buffer, kNotSet, sizeof(kNotSet) - 1);
        return sizeof(kNotSet) - 1;
    }
    const unsigned fields = FieldsOf(type);
    const auto two = [](char* out, unsigned value) {
        return value < 100 ? WriteTwoDigits(out, value) : WritePadded(out, value, 2);
    };
    char* out = buffer;
    if ((fields & kYear) != 0) {
        const unsigned magnitude = static_cast<unsigned>(f.year < 0 ? -f.year : f.year);
        if (f.year < 0) *out++ = '-';
        if (magnitude < 10000) {
            out = WriteTwoDigits(WriteTwoDigits(out, magnitude / 100), magnitude % 100);
        } else {
            out = WritePadded(out, magnitude, 4);
        }
        if ((fields & kMonth) != 0) *out++ = '-';
    } else if ((fields & (kMonth | kDay)) != 0) {
        *out++ = '-';
        *out++ = '-';
    }
    if ((fields & kMonth) != 0) out = two(out, f.month);
    if ((fields & kDay) != 0) {
        *out++ = '-';
        out = two(out, f.day);
    }
    if (type == dt_dateTime) *out++ = 'T';
    if ((fields & kTime) != 0) {
        out = two(out, f.hour);
        *out++ = ':';
        out = two(out, f.minute);
        *out++ = ':';
        out = two(out, f.second);
        out = WriteFraction(out, f.milli, f.micro, f.nano);
    }
    if (HasTimeZone()) {
        *out++ = f.zoneHour < 0 ? '-' : '+';
        out = WriteTwoDigits(out, static_cast<unsigned>(f.zoneHour < 0 ? -f.zoneHour : f.zoneHour));
        *out++ = ':';
        out = WriteTwoDigits(out, f.zoneMinute);
    } else if (IsUTC()) {
        *out++ = 'Z';
    }
    return static_cast<std::size_t>(out - buffer);
}

}  // namespace KvXmlLib16
