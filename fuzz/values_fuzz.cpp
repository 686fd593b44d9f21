/// Any text as a value of any kind. What is read must write back as a text that reads as the same value,
/// whitespace rules must do what a plain loop does, and facets must answer in bounded time.
///
/// The first byte chooses the kind (1 to 26 as in ItemType) or another topic, the second the whitespace rule
/// or an option; the rest is text.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/variant.h"
#include "kvxml/types/conversions.h"
#include "kvxml/types/item_type.h"
#include "kvxml/types/primitive_restrictions.h"

using namespace KvXmlLib16;

namespace {

using Rule = CWhitespaceUtils::WhitespaceRule;
using C = CConversions;

constexpr Rule kNone = CWhitespaceUtils::WhitespaceRule_None;

std::size_t g_touched = 0;

void Check(bool condition) {
    if (!condition) std::abort();
}

// --- values ------------------------------------------------------------------------------------------------

/// Reads `text`; what can be read is written, read again and written again. `canReadBack` tells whether the
/// written form is one of the kind at all.
template <class Value, class Write, class CanReadBack>
void RoundTrip(Value (*read)(std::string_view, Rule), Write write, std::string_view text, Rule rule,
               CanReadBack canReadBack) {
    Value value{};
    try {
        value = read(text, rule);
    } catch (const CKvException& e) {
        g_touched += e.GetFullMessage().size();
        return;
    }
    const std::string written = write(value);
    if (!canReadBack(value)) return;
    const Value again = read(written, kNone);
    Check(write(again) == written);
    if constexpr (!std::is_floating_point_v<Value> && !std::is_same_v<Value, CBinaryData>) {
        Check(again == value);
    }
}

template <class Value, class Write>
void RoundTrip(Value (*read)(std::string_view, Rule), Write write, std::string_view text, Rule rule) {
    RoundTrip(read, write, text, rule, [](const Value&) { return true; });
}

/// The default form has fewer digits than the value, so only the long form gives the value back exactly.
template <class Value>
void RoundTripReal(Value (*read)(std::string_view, Rule), std::string (*write)(Value, std::string_view),
                   const char* exactFormat, double defaultError, std::string_view text, Rule rule) {
    const auto exact = [&](Value value) { return write(value, exactFormat); };
    const auto nearValue = [&](Value value) {
        const Value rounded = read(write(value, {}), kNone);
        if (std::isnan(value)) {
            Check(std::isnan(rounded));
        } else if (!std::isinf(rounded)) {  // the largest numbers may be rounded up to infinity
            const auto wide = static_cast<double>(value);
            const double error = std::fabs(static_cast<double>(rounded) - wide);
            Check(error <= std::fabs(wide) * defaultError || std::fabs(wide) < 1e-30);
        }
        return true;
    };
    RoundTrip(read, exact, text, rule, nearValue);
}

void RoundTripKind(ItemType kind, std::string_view text, Rule rule) {
    switch (kind) {
        case ItemType_hexBinary:
            return RoundTrip(C::hexBinaryFromString, C::hexBinaryToString, text, rule);
        case ItemType_base64Binary:
            return RoundTrip(C::base64BinaryFromString, C::base64BinaryToString, text, rule);
        case ItemType_i1:
            return RoundTrip(C::i1FromString, C::i1ToString, text, rule);
        case ItemType_i2:
            return RoundTrip(C::i2FromString, C::i2ToString, text, rule);
        case ItemType_i4:
            return RoundTrip(C::i4FromString, C::i4ToString, text, rule);
        case ItemType_i8:
            return RoundTrip(C::i8FromString, C::i8ToString, text, rule);
        case ItemType_ui1:
            return RoundTrip(C::ui1FromString, C::ui1ToString, text, rule);
        case ItemType_ui2:
            return RoundTrip(C::ui2FromString, C::ui2ToString, text, rule);
        case ItemType_ui4:
            return RoundTrip(C::ui4FromString, C::ui4ToString, text, rule);
        case ItemType_ui8:
            return RoundTrip(C::ui8FromString, C::ui8ToString, text, rule);
        case ItemType_r4:
            return RoundTripReal<float>(C::r4FromString, C::r4ToString, "%.9g", 1e-6, text, rule);
        case ItemType_r8:
            return RoundTripReal<double>(C::r8FromString, C::r8ToString, "%.17g", 1e-15, text, rule);
        case ItemType_duration:
            // Zero writes "P" or "-P", which is no duration.
            return RoundTrip(C::durationFromString, C::durationToString, text, rule,
                             [](const CDateTimeSpan& value) { return value.ToString().back() != 'P'; });
        case ItemType_yearMonth:
            return RoundTrip(C::yearMonthFromString, C::yearMonthToString, text, rule);
        case ItemType_monthDay:
            return RoundTrip(C::monthDayFromString, C::monthDayToString, text, rule);
        case ItemType_year:
            // A year is written without padding, and a negative one modulo 65536.
            return RoundTrip(C::yearFromString, C::yearToString, text, rule,
                             [](std::uint16_t year) { return year >= 1000 && year <= 9999; });
        case ItemType_month:
            return RoundTrip(C::monthFromString, C::monthToString, text, rule);
        case ItemType_day:
            return RoundTrip(C::dayFromString, C::dayToString, text, rule);
        case ItemType_date:
            return RoundTrip(C::dateFromString, C::dateToString, text, rule);
        case ItemType_datetime:
            return RoundTrip(C::datetimeFromString, C::datetimeToString, text, rule);
        case ItemType_time:
            return RoundTrip(C::timeFromString, C::timeToString, text, rule);
        case ItemType_char:
            // The zero character is written as nothing.
            return RoundTrip(C::charFromString, C::charToString, text, rule,
                             [](char value) { return value != '\0'; });
        case ItemType_string:
            return RoundTrip(C::stringFromString, C::stringToString, text, rule);
        case ItemType_boolean:
            return RoundTrip(C::booleanFromString, C::booleanToString, text, rule);
        case ItemType_decimal:
            return RoundTrip(
                C::decimalFromString, [](const CDecimal& value) { return C::decimalToString(value); }, text,
                rule);
        case ItemType_integer:
            return RoundTrip(C::integerFromString, C::integerToString, text, rule);
        default:
            std::abort();
    }
}

// --- other topics ------------------------------------------------------------------------------------------

/// The rules once more, byte by byte.
std::string ExpectedText(Rule rule, std::string_view text) {
    const auto isBlank = [](char c) { return std::string_view(" \t\n\r").find(c) != std::string_view::npos; };
    if (rule == kNone) return std::string(text);
    const bool preserve = rule == CWhitespaceUtils::WhitespaceRule_Preserve;
    if (preserve && text.find('\r') == std::string_view::npos) return std::string(text);
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (preserve) {
            if (c == '\0') break;
            out += c == '\r' ? '\n' : c;
        } else if (rule == CWhitespaceUtils::WhitespaceRule_Replace || !isBlank(c)) {
            out += isBlank(c) ? ' ' : c;
        } else if (!out.empty() && out.back() != ' ') {
            out += ' ';
        }
        const bool pairIsOne = rule != CWhitespaceUtils::WhitespaceRule_Collapse;
        if (pairIsOne && c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
    }
    if (rule == CWhitespaceUtils::WhitespaceRule_Collapse && !out.empty() && out.back() == ' ')
        out.pop_back();
    return out;
}

/// Lines of the input, the last one with everything that is left.
std::vector<std::string> Lines(std::string_view text, std::size_t count) {
    std::vector<std::string> lines(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t end = i + 1 < count ? std::min(text.find('\n'), text.size()) : text.size();
        lines[i] = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

void CheckArithmetic(std::string_view text) {
    const std::vector<std::string> numbers = Lines(text, 2);
    try {
        const CBigInteger a(numbers[0]);
        const CBigInteger b(numbers[1]);
        Check(a + b - b == a && a - b + b == a);
        Check((a + b) * (a - b) == a * a - b * b);
        if (b.GetSign() != 0) {
            const CBigInteger quotient = a / b;
            const CBigInteger rest = a % b;
            Check(quotient * b + rest == a);
            Check(rest.GetAbs() < b.GetAbs() && rest.GetSign() * a.GetSign() >= 0);
            Check(a * b / b == a);
        }
        const CBigInteger root = a.GetAbs().SquareRoot();
        Check(root * root <= a.GetAbs() && (root + 1) * (root + 1) > a.GetAbs());
        const CDecimal x(numbers[0]);
        const CDecimal y(numbers[1]);
        Check(x + y - y == x && (x < y) == ((y - x).GetSign() > 0));
        Check((x + y) * (x - y) == x * x - y * y);
        const int digits = static_cast<int>(text.size() % 40);
        const CDecimal error = (x.Round(digits) - x) * 2;
        const CDecimal unit = CDecimal("1E-" + std::to_string(digits));
        Check(error <= unit && -error <= unit && x.Round(digits).ToString(digits) == x.ToString(digits));
        if (y.GetSign() != 0) {
            const CDecimal missing = (x.Divide(y, digits) * y - x) * 2;
            const CDecimal bound = y.GetSign() < 0 ? -(y * unit) : y * unit;
            Check(missing <= bound && -missing <= bound);
        }
    } catch (const CKvException& e) {
        g_touched += e.GetFullMessage().size();
    }
}

/// Pattern, bound, enumeration and value, one per line.
void CheckFacets(unsigned option, std::string_view text) {
    const std::vector<std::string> lines = Lines(text, 4);
    const auto kind = static_cast<ItemType>(option % 27);
    const auto number = [](const std::string& line) { return static_cast<std::int32_t>(line.size() % 50); };
    const bool isUpper = option >= 128;
    const char* const bound = lines[1].c_str();
    const CPrimitiveRestrictions restrictions(lines[0].c_str(), -1, isUpper ? number(lines[1]) : -1,
                                              isUpper ? nullptr : bound, isUpper ? bound : nullptr, nullptr,
                                              nullptr, -1, isUpper ? number(lines[2]) : -1, -1,
                                              CWhitespaceUtils::WhitespaceRule_Collapse, lines[2].c_str());
    std::string first;
    for (int round = 0; round < 2; ++round) {
        std::string answer;
        try {
            restrictions.Check("value", kind, lines[3]);
        } catch (const CKvException& e) {
            answer = e.GetFullMessage();
        }
        if (round == 0) first = answer;
        Check(answer == first);
    }
}

/// A variant reads and writes as the conversions do, also when it held something else before.
void CheckVariant(unsigned option, std::string_view text, Rule rule) {
    const auto kind = static_cast<ItemType>(option % 28);
    KvVariant value;
    value.SetString("before");
    try {
        value.FromString(text, kind, rule);
        Check(value.GetTypeAsEnum() == kind);
        KvVariant copy(value);
        Check(copy.ToString(nullptr) == value.ToString(""));
        const KvVariant moved(std::move(copy));
        Check(moved.ToString(nullptr) == value.ToString(nullptr));
        Check(!copy.IsValid());  // NOLINT(bugprone-use-after-move): a moved variant holds nothing
    } catch (const CKvException& e) {
        g_touched += e.GetFullMessage().size();
        Check(value.GetTypeAsEnum() == ItemType_string && value.StringValue() == "before");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const unsigned topic = data[0] % 31;
    const unsigned option = data[1];
    // A copy of its own, so that reading beyond the text is noticed at either end.
    const std::vector<char> bytes(data + 2, data + size);
    const std::string_view text(bytes.data(), bytes.size());
    const auto rule = static_cast<Rule>(option % 4);
    if (topic == 0) {
        for (std::int32_t i = 0; i < 4; ++i)
            Check(CWhitespaceUtils::ApplyRule(static_cast<Rule>(i), text) ==
                  ExpectedText(static_cast<Rule>(i), text));
    } else if (topic <= ItemType_integer) {
        RoundTripKind(static_cast<ItemType>(topic), text, rule);
    } else if (topic == 27) {
        CheckArithmetic(text);
    } else if (topic == 28) {
        CheckVariant(option / 4, text, rule);
    } else {
        CheckFacets(option, text);
    }
    return 0;
}
