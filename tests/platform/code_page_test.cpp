#include "kvxml/platform/internal/code_page.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/error_of.h"
#include "tests/support/scoped_environment.h"

namespace KvXmlLib16::internal {
namespace {

using std::string_literals::operator""s;

const std::string kBad = "\xEF\xBF\xBD";

struct Utf8Row {
    const char* name;
    std::string text;
    std::size_t wellFormed;
    std::string repaired;
};

const Utf8Row kUtf8Rows[] = {
    {"empty", "", 0, ""},
    {"all lengths", "a\u00E9\u20AC\U0001F600\x7F", 11, "a\u00E9\u20AC\U0001F600\x7F"},
    {"zero bytes are text", "a\0b"s, 3, "a\0b"s},
    {"limits",
     "\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", 24,
     "\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
    {"lone trail", "a\x80z", 1, "a" + kBad + "z"},
    {"overlong 2", "\xC0\xAF\xC1\xBF", 0, kBad + kBad + kBad + kBad},
    {"overlong 3", "\xE0\x9F\xBF", 0, kBad + kBad + kBad},
    {"overlong 4", "\xF0\x8F\xBF\xBF", 0, kBad + kBad + kBad + kBad},
    {"surrogate", "x\xED\xA0\x80", 1, "x" + kBad + kBad + kBad},
    {"beyond U+10FFFF", "\xF4\x90\x80\x80", 0, kBad + kBad + kBad + kBad},
    {"never a lead", "\xF5\xFE\xFF", 0, kBad + kBad + kBad},
    {"cut by ASCII", "\xE2\x82!\xF0\x9F\x98!\xC3!", 0, kBad + "!" + kBad + "!" + kBad + "!"},
    {"cut by a lead", "\xF0\x9F\xE2\x82\xAC", 0, kBad + "\u20AC"},
    {"cut by the end", "ab\xF0\x9F\x98", 2, "ab" + kBad},
};

TEST(CodePage, Utf8IsCheckedAndRepaired) {
    for (const Utf8Row& row : kUtf8Rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(WellFormedUtf8Length(row.text), row.wellFormed);
        EXPECT_EQ(RepairUtf8(row.text), row.repaired);
        EXPECT_EQ(WellFormedUtf8Length(row.repaired), row.repaired.size());
        // What reads characters one by one agrees.
        EXPECT_EQ(WideToUtf8(Utf8ToWide(row.text)), row.repaired);
        EXPECT_EQ(Utf8ToUtf16Le(row.text), Utf8ToUtf16Le(row.repaired));
    }
}

TEST(CodePage, FaultsAreFoundAtEveryPlaceOfALongText) {
    for (std::size_t length = 0; length < 100; ++length) {
        const std::string ascii(length, 'x');
        EXPECT_TRUE(IsAllAscii(ascii));
        EXPECT_EQ(WellFormedUtf8Length(ascii), length);
        for (std::size_t at = 0; at < length; ++at) {
            std::string broken = ascii;
            broken[at] = '\xFF';
            ASSERT_FALSE(IsAllAscii(broken));
            ASSERT_EQ(WellFormedUtf8Length(broken), at);
        }
    }
}

TEST(CodePage, WideText) {
    for (std::uint32_t c = 1; c <= 0x10FFFF; c += c < 0x3000 ? 1 : 97) {
        if (c >= 0xD800 && c <= 0xDFFF) continue;
        const std::wstring wide(1, static_cast<wchar_t>(c));
        const std::string utf8 = WideToUtf8(wide);
        ASSERT_EQ(WellFormedUtf8Length(utf8), utf8.size()) << c;
        ASSERT_EQ(Utf8ToWide(utf8), wide) << c;
    }
    const wchar_t unpaired[] = {L'a', static_cast<wchar_t>(0xD83D), L'b', static_cast<wchar_t>(0xDE00)};
    EXPECT_EQ(WideToUtf8(std::wstring_view(unpaired, 4)), "a" + kBad + "b" + kBad);
    if constexpr (sizeof(wchar_t) == 4) {
        const wchar_t beyond = static_cast<wchar_t>(0x110000);
        EXPECT_EQ(WideToUtf8(std::wstring_view(&beyond, 1)), kBad);
    }
    EXPECT_EQ(Utf8ToUtf16Le("a\u00E9\u20AC\U0001F600z"), "a\0\xE9\0\xAC\x20\x3D\xD8\x00\xDEz\0"s);
}

class LocalCodePageTest : public testing::Test {
protected:
    ~LocalCodePageTest() override {
        SetAsciiOnly(false);
        SetLocalCodePage(kThreadCodePage);
    }
};

TEST_F(LocalCodePageTest, TextGoesBothWays) {
    const struct {
        unsigned int codePage;
        std::string utf8;
        std::string local;
    } rows[] = {
        {65001, "\u00E9\u20AC\U0001F600", "\u00E9\u20AC\U0001F600"},
        {1252, "caf\u00E9 \u20AC\u2122", "caf\xE9 \x80\x99"},
        {28605, "\u00E9\u20AC", "\xE9\xA4"},
        {932, "\u65E5\u672C\uFF71\\~", "\x93\xFA\x96{\xB1\\~"},
        {54936, "\U0001F600", "\x94\x39\xFC\x36"},
        {50220, "a\u65E5b", "a\x1B$BF|\x1B(Bb"},
        {1255, "\u05D0", "\xE0"},
        {500, "A1", "\xC1\xF1"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.codePage);
        SetLocalCodePage(row.codePage);
        EXPECT_EQ(IsLocalUtf8(), row.codePage == 65001);
        EXPECT_EQ(Utf8ToLocal(row.utf8), row.local);
        EXPECT_EQ(LocalToUtf8(row.local), row.utf8);
    }
}

TEST_F(LocalCodePageTest, WhatCannotBeConvertedIsReplaced) {
    SetLocalCodePage(1252);
    EXPECT_EQ(Utf8ToLocal("\u65E5=\U0001F600\u00E9"), "?=?\xE9");
    EXPECT_EQ(LocalToUtf8("a\x81z"), "a" + kBad + "z");  // 0x81 has no meaning
    SetLocalCodePage(932);
    EXPECT_EQ(Utf8ToLocal("\u65E5\u00E9\u65E5"), "\x93\xFA?\x93\xFA");
    EXPECT_EQ(LocalToUtf8("\x93\xFA\xFF-"), "\u65E5" + kBad + "-");
    SetLocalCodePage(50220);
    EXPECT_EQ(Utf8ToLocal("\u65E5\U0001F600"), "\x1B$BF|\x1B(B?");
    SetLocalCodePage(65001);
    EXPECT_EQ(LocalToUtf8("a\xFFz"), "a" + kBad + "z");
}

TEST_F(LocalCodePageTest, LongTextThatCannotBeConverted) {
    // Each character stops the converter: minutes, if it looked at all of the rest each time.
    constexpr std::size_t kCount = 1000000;
    SetLocalCodePage(1252);
    std::string text;
    for (std::size_t i = 0; i < kCount; ++i)
        text += "\u65E5";
    EXPECT_TRUE(Utf8ToLocal(text) == std::string(kCount, '?'));
    text.clear();
    for (std::size_t i = 0; i < kCount; ++i)
        text += kBad;
    EXPECT_TRUE(LocalToUtf8(std::string(kCount, '\x81')) == text);
    // What is converted at one go is longer than the converter's room.
    text.clear();
    for (std::size_t i = 0; i < kCount; ++i)
        text += "x\u20AC";
    EXPECT_TRUE(LocalToUtf8(Utf8ToLocal(text)) == text);
}

TEST_F(LocalCodePageTest, AsciiOnlyPassesBytesThrough) {
    SetLocalCodePage(1252);
    SetAsciiOnly(true);
    EXPECT_TRUE(IsLocalUtf8());
    EXPECT_EQ(Utf8ToLocal("\xFF\xC3\xA9"), "\xFF\xC3\xA9");
    EXPECT_EQ(LocalToUtf8("\xFF\xE9"), "\xFF\xE9");
}

TEST_F(LocalCodePageTest, UnknownCodePageFailsOnUseOnly) {
    SetLocalCodePage(12345);
    EXPECT_FALSE(IsLocalUtf8());
    EXPECT_EQ(Utf8ToLocal(""), "");
    EXPECT_EQ(ErrorOf([] { Utf8ToLocal("x"); }), "Unknown code page [CP12345]");
    EXPECT_THROW(LocalToUtf8("x"), CKvException);
}

TEST_F(LocalCodePageTest, DefaultIsTheLocaleOfTheThread) {
    for (const unsigned int codePage : {0U, 3U}) {
        SetLocalCodePage(codePage);
        EXPECT_TRUE(IsLocalUtf8());
        EXPECT_EQ(LocalToUtf8("\u00E9\xE9"), "\u00E9" + kBad);
    }
    const std::string directory = testing::TempDir() + "kvxml_latin1_locale";
    std::filesystem::create_directories(directory);
    const std::string command = "localedef -i de_DE -f ISO-8859-15 '" + directory + "/latin' >/dev/null 2>&1";
    static_cast<void>(std::system(command.c_str()));
    const std::string former = std::setlocale(LC_ALL, nullptr);
    const bool isInstalled = [&] {
        const ScopedEnvironment path("LOCPATH", directory);
        return std::setlocale(LC_ALL, "latin") != nullptr;
    }();
    const locale_t latin = duplocale(LC_GLOBAL_LOCALE);
    std::setlocale(LC_ALL, former.c_str());
    std::error_code ignored;
    std::filesystem::remove_all(directory, ignored);
    if (!isInstalled) {
        freelocale(latin);
        GTEST_SKIP() << "no locale with another code set can be had on this host";
    }
    std::thread([&] {
        uselocale(latin);
        EXPECT_FALSE(IsLocalUtf8());
        EXPECT_EQ(Utf8ToLocal("\u20AC"), "\xA4");
        EXPECT_EQ(LocalToUtf8("\xA4"), "\u20AC");
        uselocale(LC_GLOBAL_LOCALE);
    }).join();
    freelocale(latin);
    EXPECT_TRUE(IsLocalUtf8());
}

struct EncodingRow {
    const char* name;
    bool readByParser;
    std::string bytes;  // the text "A" and one character, none for an unknown encoding
    std::string utf8;
    int length;  // of the character's bytes
};

const EncodingRow kEncodings[] = {
    {"windows-1252", true, "A\x80", "A\u20AC", 1},
    {"ISO-8859-15", true, "A\xA4", "A\u20AC", 1},
    {"Shift_JIS", true, "A\x93\xFA", "A\u65E5", 2},
    {"EUC-JP", true, "A\x8F\xB0\xA1", "A\u4E02", 3},
    {"GBK", true, "A\xD6\xD0", "A\u4E2D", 2},
    {"GB18030", false, "A\x94\x39\xFC\x36", "A\U0001F600", 4},
    {"ISO-2022-JP", false, "A\x1B$BF|\x1B(B", "A\u65E5", 8},
    {"IBM037", false, "\xC1\xC2", "AB", 1},
    {"UTF-16LE", false, "A\0\xE5\x65"s, "A\u65E5", 2},
    {"utf8", false, "A\u65E5", "A\u65E5", 3},
    {"x-no-such-encoding", false, "", "", 0},
    {"", false, "", "", 0},
    {"windows-1252//IGNORE", false, "", "", 0},
};

TEST(DocumentEncoding, DescribedAndConverted) {
    for (int pass = 0; pass < 2; ++pass) {
        for (const EncodingRow& row : kEncodings) {
            SCOPED_TRACE(row.name);
            int map[256];
            EXPECT_EQ(DescribeEncoding(row.name, map), row.readByParser);
            std::string utf8 = "unchanged";
            EXPECT_EQ(EncodingToUtf8(row.name, row.bytes, utf8), !row.bytes.empty());
            EXPECT_EQ(utf8, row.bytes.empty() ? "unchanged" : row.utf8);
            if (!row.readByParser) continue;

            for (int c : {'\t', '\n', '\r', ' ', '<', '&', '/', 'z', '"', '#', ']'})
                EXPECT_EQ(map[c], c);
            const auto expected = static_cast<int>(Utf8ToWide(row.utf8)[1]);
            const int entry = map[static_cast<unsigned char>(row.bytes[1])];
            if (row.length == 1) {
                EXPECT_EQ(entry, expected);
                continue;
            }
            EXPECT_EQ(entry, -row.length);
            void* cache = nullptr;
            EXPECT_EQ(DecodeMultiByte(row.name, row.bytes.data() + 1, row.length, cache), expected);
            EXPECT_EQ(DecodeMultiByte(row.name, "A ", 2, cache), -1);
            std::string broken = row.bytes.substr(1);
            broken[1] = ' ';
            EXPECT_EQ(DecodeMultiByte(row.name, broken.data(), row.length, cache), -1);
            CloseDecoder(cache);
        }
    }
    int map[256];
    EXPECT_FALSE(DescribeEncoding(nullptr, map));
    ASSERT_TRUE(DescribeEncoding("windows-1252", map));
    EXPECT_EQ(map[0x81], -1);
    ASSERT_TRUE(DescribeEncoding("Shift_JIS", map));
    EXPECT_EQ(map[0xFF], -1);
}

TEST(DocumentEncoding, IllFormedTextIsRefusedAsAWhole) {
    std::string utf8 = "unchanged";
    EXPECT_FALSE(EncodingToUtf8("windows-1252", "ok\x81", utf8));
    EXPECT_FALSE(EncodingToUtf8("Shift_JIS", "ok\x93", utf8));
    EXPECT_EQ(utf8, "unchanged");
    EXPECT_TRUE(EncodingToUtf8("windows-1252", std::string(100000, '\x80'), utf8));
    EXPECT_EQ(utf8.size(), 300000U);
    EXPECT_EQ(WellFormedUtf8Length(utf8), utf8.size());
}

TEST(DocumentEncoding, ManyThreadsAndEncodings) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            int map[256];
            for (int round = 0; round < 3; ++round) {
                for (int number = 1250; number <= 1258; ++number)
                    EXPECT_TRUE(DescribeEncoding(("windows-" + std::to_string(number)).c_str(), map));
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

}  // namespace
}  // namespace KvXmlLib16::internal
