#include "kvxml/types/conversions.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include "kvxml/base/exceptions.h"

namespace KvXmlLib16 {
namespace {

using C = CConversions;
constexpr auto kNone = CWhitespaceUtils::WhitespaceRule_None;
constexpr auto kReplace = CWhitespaceUtils::WhitespaceRule_Replace;
constexpr auto kCollapse = CWhitespaceUtils::WhitespaceRule_Collapse;

// Reads `text` and gives the value as text, or the message of the failure.
template <class FromString, class ToString>
std::string Read(FromString fromString, ToString toString, std::string_view text, C::WhitespaceRule rule) {
    try {
        return toString(fromString(text, rule));
    } catch (const CKvException& e) {
        return e.GetMessage();
    }
}

std::string ReadInteger(const std::string& kind, std::string_view text, C::WhitespaceRule rule) {
    if (kind == "i1") return Read(C::i1FromString, C::i1ToString, text, rule);
    if (kind == "i2") return Read(C::i2FromString, C::i2ToString, text, rule);
    if (kind == "i4") return Read(C::i4FromString, C::i4ToString, text, rule);
    if (kind == "i8") return Read(C::i8FromString, C::i8ToString, text, rule);
    if (kind == "ui1") return Read(C::ui1FromString, C::ui1ToString, text, rule);
    if (kind == "ui2") return Read(C::ui2FromString, C::ui2ToString, text, rule);
    if (kind == "ui4") return Read(C::ui4FromString, C::ui4ToString, text, rule);
    return Read(C::ui8FromString, C::ui8ToString, text, rule);
}

TEST(Conversions, IntegersAtTheirLimits) {
    const struct {
        const char* kind;
        std::string least;
        std::string below;
        std::string most;
        std::string above;
    } rows[] = {
        {"i1", "-128", "-129", "127", "128"},
        {"i2", "-32768", "-32769", "32767", "32768"},
        {"i4", "-2147483648", "-2147483649", "2147483647", "2147483648"},
        {"i8", "-9223372036854775808", "-9223372036854775809", "9223372036854775807", "9223372036854775808"},
        {"ui1", "0", "-1", "255", "256"},
        {"ui2", "0", "-1", "65535", "65536"},
        {"ui4", "0", "-4294967296", "4294967295", "4294967296"},
        {"ui8", "0", "-18446744073709551616", "18446744073709551615", "18446744073709551616"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.kind);
        EXPECT_EQ(ReadInteger(row.kind, row.least, kNone), row.least);
        EXPECT_EQ(ReadInteger(row.kind, row.most, kNone), row.most);
        for (const std::string& text : {row.below, row.above}) {
            EXPECT_EQ(ReadInteger(row.kind, text, kNone),
                      "The value [" + text + "] is to large to fit in a " + row.kind);
        }
    }
}

TEST(Conversions, IntegerForms) {
    const struct {
        const char* kind;
        const char* text;
        C::WhitespaceRule rule;
        const char* expected;
    } rows[] = {
        {"i4", "\v\f\t\n\r +12", kNone, "12"},
        {"i4", " 12 ", kCollapse, "12"},
        {"i4", "0000000000000000000012", kNone, "12"},
        {"ui4", "-1", kNone, "4294967295"},
        {"ui4", "-4294967295", kNone, "1"},
        {"i4", " 12 ", kNone, "The value [ 12 ] can not be converted to a i4"},
        {"i4", "", kNone, "The value [] can not be converted to a i4"},
        {"i4", "\t12\n", kReplace, "The value [ 12 ] can not be converted to a i4"},
        {"i8", "1.0", kNone, "The value [1.0] can not be converted to a i8"},
        {"i4", "99999999999x", kNone, "The value [99999999999x] is to large to fit in a i4"},
        {"ui8", "-1", kNone, "18446744073709551615"},
        {"ui4", "+-1", kNone, "The value [+-1] can not be converted to a ui4"},
        {"ui8", "0x10", kNone, "The value [0x10] can not be converted to a ui8"},
        {"ui2", "4294967296", kNone, "The value [4294967296] is to large to fit in a ui4"},
        {"i1", "2147483648", kNone, "The value [2147483648] is to large to fit in a i4"},
        {"i4", "1", static_cast<C::WhitespaceRule>(7), "Unknown WhitespaceRule"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(ReadInteger(row.kind, row.text, row.rule), row.expected) << row.text;
}

// What `ask` gives under the "C" locale.
template <class Ask>
auto UnderCLocale(Ask ask) {
    const std::string former = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "C");
    const auto result = ask();
    std::setlocale(LC_ALL, former.c_str());
    return result;
}

std::string Printed(const char* format, double value) {
    return UnderCLocale([&] {
        char buffer[64];
        std::snprintf(buffer, sizeof buffer, format, value);
        return std::string(buffer);
    });
}

// Runs of digits are read several at a time: every length, and the neighbours of the digits at every place.
TEST(Conversions, IntegersOfEveryLength) {
    const std::string digits = "9182736450192837465";
    for (std::size_t length = 1; length <= digits.size(); ++length) {
        for (const std::string sign : {"", "-"}) {
            const std::string text = sign + digits.substr(digits.size() - length);
            const std::string expected = std::to_string(std::stoll(text));
            EXPECT_EQ(ReadInteger("i8", text, kCollapse), expected);
            if (length <= 9) {
                EXPECT_EQ(ReadInteger("i4", text, kCollapse), expected);
            }
            for (std::size_t place = sign.size(); place < text.size(); ++place) {
                for (const char c : {'/', ':', '?', ' ', '-', '\0', '\xB1'}) {
                    std::string wrong = text;
                    wrong[place] = c;
                    // In front, these may stand.
                    if ((c == ' ' || c == '-') && place == 0 && length > 1) continue;
                    EXPECT_THROW(C::i8FromString(wrong, kNone), CKvInvalidValueException) << wrong;
                }
            }
        }
    }
}

TEST(Conversions, RealsAreReadAsByTheCLibrary) {
    // clang-format off
    const char* const texts[] = {
        "0", "-0", "+1.5", "1.", ".5", "1e5", "1E+5", "-1.5e-5", "  7", "\n7", "0x1p3", "-0X1.8P1",
        "0x", "inf", "-inf", "+INF", "Infinity", "nan", "NAN", "-nan", "nan(12)", "1e308", "1e309",
        "-1e309", "4.9e-324", "1e-310", "1e-400", "-1e-400", "1.7976931348623159e308",
        "123456789012345678901234567890", "0.1", "+-1", "-", "+", ".", "e5", "1e", "1e+", "1 ",
        "1,5", "1_0", "--1", "+ 1", "0x1g", "1d", "infx", "1.#QNANx", "+NaN",
    };
    // clang-format on
    for (const char* text : texts) {
        SCOPED_TRACE(text);
        char* stop = nullptr;
        const double expected = UnderCLocale([&] { return std::strtod(text, &stop); });
        if (*stop == '\0') {
            const double value = C::r8FromString(text, kNone);
            EXPECT_TRUE(value == expected || (std::isnan(value) && std::isnan(expected))) << value;
            EXPECT_EQ(std::signbit(value), std::signbit(expected));
        } else {
            EXPECT_EQ(Read(
                          C::r8FromString, [](double) { return std::string("read"); }, text, kNone),
                      std::string("The value [") + text + "] can not be converted to a r8");
        }
    }
    EXPECT_TRUE(std::isnan(C::r8FromString("1.#QNAN", kNone)));
    EXPECT_TRUE(std::isnan(C::r4FromString("-NAN", kNone)));
    EXPECT_EQ(C::r8FromString(" -INF ", kCollapse), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(C::r4FromString("1e39", kNone), std::numeric_limits<float>::infinity());
    EXPECT_EQ(C::r4FromString("3.4028235e38", kNone), std::numeric_limits<float>::max());
    EXPECT_EQ(Read(
                  C::r4FromString, [](float) { return std::string("read"); }, " ", kCollapse),
              "The value [] can not be converted to a r4");
}

TEST(Conversions, RealsAreWrittenAsByPrintf) {
    std::mt19937_64 random(7);
    std::vector<double> values = {0.0,  -0.0,   1,    -1,       0.1,      9.95,      1e15,  999999999999999,
                                  1e16, 123456, 1e-4, 1.25e-05, 1e7,      9999999.5, 1e100, 2.5,
                                  0.3,  1e-320, 1e6,  -7e6,     16777216, 1e300,     100.5, -1e15};
    for (int i = 0; i < 3000; ++i) {
        values.push_back(std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 200) - 130));
        values.push_back(static_cast<double>(random() % 1000000) / 100.0);
        // Few bits lie half-way between two texts as often as not.
        values.push_back(std::ldexp(static_cast<double>(random() >> 44), -static_cast<int>(random() % 40)));
    }
    for (int i = -25; i <= 25; ++i) {
        double above = std::pow(10.0, i);
        double below = above;
        float narrowBelow = static_cast<float>(above);
        for (int step = 0; step < 20; ++step) {
            values.insert(values.end(), {above, -below, static_cast<double>(narrowBelow)});
            above = std::nextafter(above, 1e300);
            below = std::nextafter(below, 0.0);
            narrowBelow = std::nextafter(narrowBelow, 0.0F);
        }
    }
    for (const double value : values) {
        EXPECT_EQ(C::r8ToString(value), Printed("%.16g", value));
        const auto narrow = static_cast<float>(value);
        if (std::isinf(narrow)) continue;
        EXPECT_EQ(C::r4ToString(narrow), Printed("%.7g", static_cast<double>(narrow)));
    }
    EXPECT_EQ(C::r8ToString(std::nan("")), "NaN");
    EXPECT_EQ(C::r8ToString(-std::numeric_limits<double>::infinity(), "%f"), "-INF");
    EXPECT_EQ(C::r4ToString(std::numeric_limits<float>::infinity()), "INF");
}

TEST(Conversions, CallerFormats) {
    EXPECT_EQ(C::r8ToString(1.5, "%.3f"), "1.500");
    EXPECT_EQ(C::r8ToString(1.5, "<%+08.2lf%%>"), "<+0001.50%>");
    EXPECT_EQ(C::r8ToString(1.5, "fixed"), "fixed");
    EXPECT_EQ(C::r8ToString(0.5, "%.300f").size(), 302U);
    for (const char* format : {"%s", "%d", "%n", "%f%f", "%*f", "%.*f", "%Lf", "%", "%.3", "%hf", "%99999f",
                               "%1$f", "%f %", "%.99999999999f", "%q"}) {
        EXPECT_THROW(C::r8ToString(1.5, format), CKvInvalidParamException) << format;
    }
    EXPECT_EQ(C::decimalToString(CDecimal("1.005"), "2"), "1.01");
    EXPECT_EQ(C::decimalToString(CDecimal("1.50"), ""), "1.5");
    EXPECT_EQ(C::decimalToString(CDecimal("1.5"), " +3 digits"), "1.500");
    EXPECT_THROW(C::decimalToString(CDecimal("1.5"), "99999999999"), CKvInvalidParamException);
}

TEST(Conversions, NoResultDependsOnTheLocale) {
    const std::string former = std::setlocale(LC_ALL, nullptr);
    const char* const changed = std::setlocale(LC_ALL, "de_DE.UTF-8");
    EXPECT_EQ(C::r8ToString(1.5), "1.5");
    EXPECT_EQ(C::r8ToString(1.5, "%.2f"), "1.50");
    EXPECT_EQ(C::r8FromString("1.5", kNone), 1.5);
    EXPECT_EQ(C::r8FromString(" 0x1.8p0", kNone), 1.5);
    std::setlocale(LC_ALL, former.c_str());
    if (changed == nullptr) GTEST_SKIP() << "no German locale here: only the present locale was tried";
}

TEST(Conversions, BooleansAndCharacters) {
    const auto noRule = static_cast<C::WhitespaceRule>(4);
    EXPECT_THROW(C::r8FromString("1", noRule), CKvException);
    EXPECT_THROW(C::booleanFromString("1", noRule), CKvException);
    EXPECT_THROW(C::datetimeFromString("2001-01-01T00:00:00Z", noRule), CKvException);
    const auto boolean = [](std::string_view text, C::WhitespaceRule rule) {
        return Read(C::booleanFromString, C::booleanToString, text, rule);
    };
    for (const char* text : {"true", "TRUE", "1"})
        EXPECT_EQ(boolean(text, kNone), "true");
    for (const char* text : {"false", "FALSE", "0"})
        EXPECT_EQ(boolean(text, kNone), "false");
    for (const char* text : {"", " true", "yes", "01", "tru", "truee"}) {
        EXPECT_EQ(boolean(text, kNone),
                  std::string("A Boolean Value read from an XML document was invalid [") + text +
                      "]. Valid values are 'true', 'false', '1', or '0'");
    }
    const auto character = [](std::string_view text, C::WhitespaceRule rule) {
        return Read(C::charFromString, C::charToString, text, rule);
    };
    EXPECT_EQ(character("x", kNone), "x");
    EXPECT_EQ(C::charToString('\0'), "");
    for (const char* text : {"", "xy", "\xC3\xA4"}) {
        EXPECT_EQ(character(text, kNone),
                  std::string("The value [") + text +
                      "] can not be a char as it is either empty of greater than 1 char long");
    }
}

TEST(Conversions, DatesDurationsAndBinary) {
    EXPECT_EQ(C::monthToString(5), "--05");
    EXPECT_EQ(C::monthToString(123), "--123");
    EXPECT_EQ(C::yearFromString(" 2001-05-03 ", kCollapse), 2001);
    EXPECT_EQ(C::monthFromString("--05", kNone), 5);
    EXPECT_EQ(C::dayFromString("--02-29", kNone), 29);
    EXPECT_EQ(Read(C::yearFromString, C::yearToString, "--05", kNone),
              "Failed to GetYear. Invalid Date Type: gMonth.");
    const struct {
        CDateTime (*fromString)(std::string_view, C::WhitespaceRule);
        std::string (*toString)(const CDateTime&);
        const char* text;
    } rows[] = {
        {C::yearMonthFromString, C::yearMonthToString, "2001-05-03Z"},
        {C::monthDayFromString, C::monthDayToString, "--05-03"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.toString(row.fromString(std::string(" ") + row.text, kCollapse)), row.text);
    EXPECT_EQ(Read(C::hexBinaryFromString, C::hexBinaryToString, " 0aFf ", kCollapse), "0AFF");
}

}  // namespace
}  // namespace KvXmlLib16
