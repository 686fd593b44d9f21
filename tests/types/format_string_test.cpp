#include "kvxml/types/format_string.h"

#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cstdint>
#include <limits>
#include <string>

#include "kvxml/platform/text_settings.h"

namespace KvXmlLib16 {
namespace {

TEST(FormatString, Integers) {
    EXPECT_EQ(FormatString("%d|%i|%u|%x|%X|%o", -7, 42, 4000000000U, 0xbeefU, 0xBEEFU, 8U),
              "-7|42|4000000000|beef|BEEF|10");
    EXPECT_EQ(FormatString("[0x%08x] [0x%08X]", 0xabU, 0xabU), "[0x000000ab] [0x000000AB]");
    EXPECT_EQ(FormatString("%+d|% d|%-5d|%05d|%#x|%.3d", 1, 1, 1, 1, 1, 1), "+1| 1|1    |00001|0x1|001");
    EXPECT_EQ(FormatString("%*d|%*d|%.*d|%.*d", 4, 1, -4, 1, 3, 1, -1, 1), "   1|1   |001|1");
    EXPECT_EQ(FormatString("%hd|%hhd|%hu", 65537, 257, -1), "1|1|65535");
    EXPECT_EQ(FormatString("%ld|%lu", LONG_MIN, ULONG_MAX),
              std::to_string(LONG_MIN) + "|" + std::to_string(ULONG_MAX));
    EXPECT_EQ(FormatString("%I64d|%lld|%I64u|%I64x", INT64_MIN, INT64_MIN, UINT64_MAX, UINT64_MAX),
              "-9223372036854775808|-9223372036854775808|18446744073709551615|ffffffffffffffff");
    EXPECT_EQ(FormatString("%I32d|%Id|%zu|%jd|%td", -1, std::size_t{5}, std::size_t{6}, std::intmax_t{7},
                           std::ptrdiff_t{8}),
              "-1|5|6|7|8");
    // Arguments behind a 64-bit one are found.
    EXPECT_EQ(FormatString("%I64d %s %c", std::int64_t{1} << 40, "x", 'y'), "1099511627776 x y");
}

TEST(FormatString, FloatingPoint) {
    const std::string locale = std::setlocale(LC_ALL, nullptr);
    EXPECT_EQ(FormatString("%f|%.2f|%8.1f|%-8.1f|%e|%g|%G", 1.5, 1.005, 2.25, 2.25, 12345.678, 1e-10, 1e-10),
              "1.500000|1.00|     2.2|2.2     |1.234568e+04|1e-10|1E-10");
    EXPECT_EQ(FormatString("%.1Lf %d", 1.25L, 3), "1.2 3");
    const std::string largest = FormatString("%.3f", std::numeric_limits<double>::max());
    EXPECT_EQ(largest.size(), 309U + 4U);
    EXPECT_EQ(largest.substr(0, 6), "179769");
    EXPECT_EQ(FormatString("%a", 1.0), "0x1p+0");
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), locale);  // the caller's is back, whichever it is
}

TEST(FormatString, Strings) {
    const char unterminated[] = {'a', 'b', 'c', 'd'};
    EXPECT_EQ(FormatString("[%s] [%5s] [%-5s] [%.2s] [%5.1s]", "abc", "abc", "abc", "abc", "abc"),
              "[abc] [  abc] [abc  ] [ab] [    a]");
    EXPECT_EQ(FormatString("%.4s|%.*s|%*s", unterminated, 2, unterminated, -3, "x"), "abcd|ab|x  ");
    const char* null = nullptr;
    EXPECT_EQ(FormatString("[%s] [%8s] [%.3s] [%S]", null, null, null, null),
              "[(null)] [  (null)] [(nu] [(null)]");
    EXPECT_EQ(FormatString("%c%3c%-3c|", 'a', 'b', 'c'), "a  bc  |");
    EXPECT_EQ(FormatString("%c", '\0'), std::string(1, '\0'));
    EXPECT_EQ(FormatString(nullptr), "");
    EXPECT_EQ(FormatString(""), "");
}

TEST(FormatString, ResultsOfAnyLength) {
    const std::string text(100000, 'x');
    EXPECT_EQ(FormatString("<%s>", text.c_str()), "<" + text + ">");
    EXPECT_EQ(FormatString("%200d", 5), std::string(199, ' ') + "5");
    for (int width = 120; width < 136; ++width)
        EXPECT_EQ(FormatString("%0*d.", width, 5),
                  std::string(static_cast<std::size_t>(width - 1), '0') + "5.");
}

TEST(FormatString, WideTextBecomesLocalText) {
    const wchar_t* text = L"h\u00E9 \u20AC \U0001F600";
    EXPECT_EQ(FormatString("%S|%ls|%C|%lc|%hS", text, text, L'\u20AC', L'z', "narrow"),
              "h\u00E9 \u20AC \U0001F600|h\u00E9 \u20AC \U0001F600|\u20AC|z|narrow");
    // A precision counts bytes and leaves out what would not fit as a whole.
    EXPECT_EQ(FormatString("[%.2S] [%.3S] [%6.3S]", text, text, text), "[h] [h\u00E9] [   h\u00E9]");
    SetLocalCharEncoding(1252);
    const std::string western = FormatString("%S %C", text, L'\u20AC');
    SetLocalCharEncoding(3);
    EXPECT_EQ(western, "h\xE9 \x80 ? \x80");
}

TEST(FormatString, PercentSignsAndUnknownConversions) {
    EXPECT_EQ(FormatString("100%% %5%"), "100% %");
    EXPECT_EQ(FormatString("%y %d", 1), "%y 1");
    EXPECT_EQ(FormatString("%*y %.2k %lq%d", 1), "%*y %.2k %lq1");
    EXPECT_EQ(FormatString("end %"), "end %");
    EXPECT_EQ(FormatString("end %-5.3l"), "end %-5.3l");
    EXPECT_EQ(FormatString("%99999999999d%d", 1), "%99999999999d1");
    EXPECT_EQ(FormatString("caf\xC3\xA9 %s", "\xE2\x82\xAC"), "caf\xC3\xA9 \xE2\x82\xAC");
}

TEST(FormatString, CountIsStored) {
    int count = -1;
    short shortCount = -1;
    long long longCount = -1;
    EXPECT_EQ(FormatString("ab%n%3d%hn%s%I64n", &count, 1, &shortCount, "xyz", &longCount), "ab  1xyz");
    EXPECT_EQ(count, 2);
    EXPECT_EQ(shortCount, 5);
    EXPECT_EQ(longCount, 8);
}

}  // namespace
}  // namespace KvXmlLib16
