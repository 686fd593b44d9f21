/// Conversions between values and their XSD text forms, one pair of functions per primitive kind.
///
///     CConversions::i4FromString(" 12 ", CWhitespaceUtils::WhitespaceRule_Collapse) == 12
///     CConversions::r8ToString(0.1) == "0.1"
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kvxml/export.h"
#include "kvxml/types/big_integer.h"
#include "kvxml/types/binary_data.h"
#include "kvxml/types/date_time.h"
#include "kvxml/types/date_time_span.h"
#include "kvxml/types/decimal.h"
#include "kvxml/types/whitespace_utils.h"

namespace KvXmlLib16 {

/// Pure, static functions; any number of threads may use them.
///
/// `...FromString` applies the whitespace rule first (CKvException "Unknown WhitespaceRule" for a value
/// outside the enumeration) and throws CKvInvalidValueException when the text is no value of the kind.
///
/// `Append...` is `...ToString` at the end of a string that exists, without temporaries.
class KVXML_EXPORT CConversions {
public:
    using WhitespaceRule = CWhitespaceUtils::WhitespaceRule;

    // --- integers -----------------------------------------------------------------------------------------
    //
    // Blanks and a sign in front are accepted, nothing after the digits. Negative text for an unsigned kind
    // is taken modulo 2^32 or 2^64 ("-1" is 4294967295 for ui4).

    static std::string i1ToString(std::int8_t value);
    static std::string i2ToString(std::int16_t value);
    static std::string i4ToString(std::int32_t value);
    static std::string i8ToString(std::int64_t value);
    static std::string ui1ToString(std::uint8_t value);
    static std::string ui2ToString(std::uint16_t value);
    static std::string ui4ToString(std::uint32_t value);
    static std::string ui8ToString(std::uint64_t value);
    static std::int8_t i1FromString(std::string_view text, WhitespaceRule rule);
    static std::int16_t i2FromString(std::string_view text, WhitespaceRule rule);
    static std::int32_t i4FromString(std::string_view text, WhitespaceRule rule);
    static std::int64_t i8FromString(std::string_view text, WhitespaceRule rule);
    static std::uint8_t ui1FromString(std::string_view text, WhitespaceRule rule);
    static std::uint16_t ui2FromString(std::string_view text, WhitespaceRule rule);
    static std::uint32_t ui4FromString(std::string_view text, WhitespaceRule rule);
    static std::uint64_t ui8FromString(std::string_view text, WhitespaceRule rule);

    // --- floating point -----------------------------------------------------------------------------------
    //
    // "NaN", "INF" and "-INF", otherwise 7 (r4) or 16 (r8) significant digits or the caller's printf format.
    // Reading accepts what C's strtod does ("0x1p3", "inf"), with values beyond the range becoming infinite
    // or 0.

    static std::string r4ToString(float value);
    /// `format` (empty: the default) is a printf format with at most one conversion, of e, f, g or a;
    /// anything else throws CKvInvalidParamException.
    static std::string r4ToString(float value, std::string_view format);
    static std::string r8ToString(double value);
    static std::string r8ToString(double value, std::string_view format);
    static float r4FromString(std::string_view text, WhitespaceRule rule);
    static double r8FromString(std::string_view text, WhitespaceRule rule);

    // --- text and boolean
    static std::string booleanToString(bool value);
    /// "true", "false", "1" or "0", in any case.
    static bool booleanFromString(std::string_view text, WhitespaceRule rule);
    /// Empty for the zero character.
    static std::string charToString(char value);
    /// Exactly one byte.
    static char charFromString(std::string_view text, WhitespaceRule rule);
    static std::string stringToString(std::string_view value);
    static std::string stringFromString(std::string_view text, WhitespaceRule rule);

    // --- dates and durations ------------------------------------------------------------------------------
    //
    // Reading a year, month or day accepts every date form that has one, otherwise CKvInvalidStateException;
    // the kind of the other results is that of the text, whatever function is used.

    static std::string yearToString(std::uint16_t value);
    static std::string monthToString(std::uint8_t value);
    static std::string dayToString(std::uint8_t value);
    static std::string dateToString(const CDateTime& value);
    static std::string datetimeToString(const CDateTime& value);
    static std::string timeToString(const CDateTime& value);
    static std::string yearMonthToString(const CDateTime& value);
    static std::string monthDayToString(const CDateTime& value);
    static std::string durationToString(const CDateTimeSpan& value);
    static std::uint16_t yearFromString(std::string_view text, WhitespaceRule rule);
    static std::uint8_t monthFromString(std::string_view text, WhitespaceRule rule);
    static std::uint8_t dayFromString(std::string_view text, WhitespaceRule rule);
    static CDateTime dateFromString(std::string_view text, WhitespaceRule rule);
    static CDateTime datetimeFromString(std::string_view text, WhitespaceRule rule);
    static CDateTime timeFromString(std::string_view text, WhitespaceRule rule);
    static CDateTime yearMonthFromString(std::string_view text, WhitespaceRule rule);
    static CDateTime monthDayFromString(std::string_view text, WhitespaceRule rule);
    static CDateTimeSpan durationFromString(std::string_view text, WhitespaceRule rule);

    // --- unbounded numbers
    static std::string decimalToString(const CDecimal& value);
    /// `format` (empty: the shortest form) is the number of fraction digits.
    static std::string decimalToString(const CDecimal& value, std::string_view format);
    static std::string integerToString(const CBigInteger& value);
    static CDecimal decimalFromString(std::string_view text, WhitespaceRule rule);
    static CBigInteger integerFromString(std::string_view text, WhitespaceRule rule);

    // --- binary
    static std::string hexBinaryToString(const CBinaryData& value);
    static std::string base64BinaryToString(const CBinaryData& value);
    static CBinaryData hexBinaryFromString(std::string_view text, WhitespaceRule rule);
    static CBinaryData base64BinaryFromString(std::string_view text, WhitespaceRule rule);

    // --- the appending forms
    static void AppendI1(std::string& out, std::int8_t value);
    static void AppendI2(std::string& out, std::int16_t value);
    static void AppendI4(std::string& out, std::int32_t value);
    static void AppendI8(std::string& out, std::int64_t value);
    static void AppendUI1(std::string& out, std::uint8_t value);
    static void AppendUI2(std::string& out, std::uint16_t value);
    static void AppendUI4(std::string& out, std::uint32_t value);
    static void AppendUI8(std::string& out, std::uint64_t value);
    static void AppendR4(std::string& out, float value, std::string_view format = {});
    static void AppendR8(std::string& out, double value, std::string_view format = {});
    static void AppendBoolean(std::string& out, bool value);
    static void AppendChar(std::string& out, char value);
    static void AppendString(std::string& out, std::string_view value);
    static void AppendYear(std::string& out, std::uint16_t value);
    static void AppendMonth(std::string& out, std::uint8_t value);
    static void AppendDay(std::string& out, std::uint8_t value);
    /// All kinds of CDateTime.
    static void AppendDateTime(std::string& out, const CDateTime& value);
    static void AppendDuration(std::string& out, const CDateTimeSpan& value);
    static void AppendDecimal(std::string& out, const CDecimal& value, std::string_view format = {});
    static void AppendInteger(std::string& out, const CBigInteger& value);
    static void AppendHexBinary(std::string& out, const CBinaryData& value);
    static void AppendBase64Binary(std::string& out, const CBinaryData& value);
};

}  // namespace KvXmlLib16
