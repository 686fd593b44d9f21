#include "kvxml/types/binary_data.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/support/error_of.h"

using namespace KvXmlLib16;

namespace {

std::string TextOf(const CBinaryData& data) {
    return std::string(reinterpret_cast<const char*>(data.GetData()), data.GetLength());
}

std::string SomeBytes(std::size_t length) {
    std::string bytes(length, '\0');
    std::uint32_t state = 12345;
    for (char& c : bytes) {
        state = state * 1664525 + 1013904223;
        c = static_cast<char>(state >> 24);
    }
    return bytes;
}

TEST(BinaryData, EmptyInEveryWay) {
    unsigned char byte = 7;
    const CBinaryData empties[] = {CBinaryData(), CBinaryData(""), CBinaryData(std::string_view()),
                                   CBinaryData(&byte, 0, true), CBinaryData(&byte, 0, false)};
    for (const CBinaryData& empty : empties) {
        EXPECT_EQ(empty.GetData(), nullptr);
        EXPECT_EQ(empty.GetAsBase64(), "");
        EXPECT_EQ(empty.GetAsHexString(), "");
        EXPECT_TRUE(empty == empties[0]);
    }
    EXPECT_EQ(ErrorOf([&] { (void)empties[0][0]; }), "Index Out of range [0]");
}

TEST(BinaryData, AppendForms) {
    CBinaryData data;
    data.Append(static_cast<const char*>(nullptr));
    data.Append(CBinaryData());
    EXPECT_EQ(data.GetData(), nullptr);
    data.Append('a');
    data.Append(std::string("bcde\0f", 6));  // up to the zero byte
    data.Append(CBinaryData("fghi"));
    data.Append(0x6a);
    EXPECT_EQ(TextOf(data), "abcdefghij");
    std::string expected = "abcdefghij";
    for (int i = 0; i < 14; ++i) {  // from its own bytes
        data.Append(data);
        expected += expected;
    }
    data.Append(data.GetData() + 1, 3);
    EXPECT_EQ(TextOf(data), expected + "bcd");
    data.SetBuffer(data.GetData() + 1, 3);
    EXPECT_EQ(TextOf(data), "bcd");
}

TEST(BinaryData, ChangesOfOneCopyLeaveTheOthersAlone) {
    const CBinaryData original("abc");
    CBinaryData copy = original;
    EXPECT_EQ(copy.GetData(), original.GetData());
    copy.Append(copy);
    EXPECT_EQ(TextOf(copy), "abcabc");

    copy = original;
    copy[1] = 'X';
    EXPECT_EQ(TextOf(copy), "aXc");

    copy = original;
    unsigned char* released = copy.ReleaseData();
    EXPECT_NE(released, original.GetData());
    EXPECT_EQ(std::memcmp(released, "abc", 3), 0);

    CBinaryData adopted(released, 3, true);
    EXPECT_EQ(adopted.GetData(), released);
    CBinaryData::FreeData(adopted.ReleaseData());

    CBinaryData& self = copy;
    copy = CBinaryData("kept");
    copy = self;
    EXPECT_EQ(TextOf(copy), "kept");
    EXPECT_EQ(TextOf(original), "abc");
}

TEST(BinaryData, IndexMayReachTheLength) {
    CBinaryData data("ab");
    const CBinaryData& reader = data;
    EXPECT_EQ(reader[1], 'b');
    EXPECT_EQ(reader[2], 0);
    data[2] = 'z';
    EXPECT_EQ(TextOf(data), "ab");
    EXPECT_EQ(ErrorOf([&] { (void)reader[3]; }), "Index Out of range [3]");
    EXPECT_EQ(ErrorOf([&] { data[static_cast<std::size_t>(-1)] = 1; }), "Index Out of range [-1]");
}

TEST(BinaryData, Base64OfEveryLength) {
    const struct {
        const char* bytes;
        const char* text;
    } rows[] = {{"", ""}, {"M", "TQ=="}, {"\xff\xfe\xfd\xfb", "//79+w=="}};
    for (const auto& row : rows) {
        EXPECT_EQ(CBinaryData(row.bytes).GetAsBase64(), row.text);
    }
    // Lengths around the eight characters and six bytes that are handled at once.
    for (std::size_t length = 0; length < 200; ++length) {
        const CBinaryData data{std::string_view(SomeBytes(length))};
        CBinaryData back;
        back.SetAsBase64(data.GetAsBase64());
        EXPECT_TRUE(back == data) << length;
        CBinaryData fromHex;
        fromHex.SetAsHexString(data.GetAsHexString());
        EXPECT_TRUE(fromHex == data) << length;
    }
}

TEST(BinaryData, Base64Reading) {
    const std::string bytes = SomeBytes(300);
    const std::string text = CBinaryData{std::string_view(bytes)}.GetAsBase64();
    // A character that is passed over may stand anywhere, alone or in a row.
    for (const char* filler : {" ", "\r\n", "= \r\n\t"}) {
        for (std::size_t step = 1; step < 80; ++step) {
            std::string filled;
            for (std::size_t i = 0; i < text.size(); i += step)
                filled += text.substr(i, step) + filler;
            CBinaryData data;
            data.SetAsBase64(filled);
            ASSERT_EQ(TextOf(data), bytes) << "after each " << step;
        }
    }
    // An invalid one makes the result empty wherever it stands.
    for (std::size_t i = 0; i <= text.size(); i += 7) {
        for (const char invalid : {'*', '-', '_', '\0', '\xbf', '\x7f'}) {
            CBinaryData data("old");
            data.SetAsBase64(std::string(text).insert(i, 1, invalid));
            ASSERT_EQ(data.GetLength(), 0U) << i << ' ' << static_cast<int>(invalid);
        }
    }

    // Every character means in a long text what it means in a short one, which is read another way.
    for (int c = 0; c < 256; ++c) {
        for (std::size_t place = 0; place < 4; ++place) {
            const std::string group = std::string("TWFu").replace(place, 1, 1, static_cast<char>(c));
            CBinaryData alone;
            alone.SetAsBase64(group);
            CBinaryData data;
            data.SetAsBase64(group + std::string(80, 'A'));
            ASSERT_EQ(TextOf(data).substr(0, alone.GetLength()), TextOf(alone)) << c;
            ASSERT_EQ(data.GetLength() == 0, alone.GetLength() == 0) << c;
        }
    }

    const struct {
        std::string_view text;
        std::string_view bytes;
    } rows[] = {
        {"\xd4\xd7\xc6\xf5", "Man"},  // only seven bits count
        {"TWE", "Ma"},                // padding may lack
        {"T", ""},
        {" \r\n", ""},
    };
    for (const auto& row : rows) {
        CBinaryData data("old");
        data.SetAsBase64(row.text);
        EXPECT_EQ(TextOf(data), row.bytes) << row.text;
    }
    CBinaryData data("old");
    data.SetAsBase64(nullptr);
    EXPECT_EQ(data.GetLength(), 0U);
    data = CBinaryData("TWFu");
    data.SetAsBase64(std::string_view(reinterpret_cast<const char*>(data.GetData()), 4));
    EXPECT_EQ(TextOf(data), "Man");
}

TEST(BinaryData, Hex) {
    CBinaryData data;
    data.SetAsHexString("0aFf");
    EXPECT_EQ(TextOf(data), "\x0a\xff");
    EXPECT_EQ(data.GetAsHexString(), "0AFF");
    EXPECT_EQ(CBinaryData::GetAsHexString(nullptr, 5), "");

    const struct {
        const char* text;
        const char* message;
    } rows[] = {{"abc", "Invalid length in hex string"},
                {"0g", "Invalid char in hex string [g]"},
                {"00 1", "Invalid char in hex string [ ]"}};
    for (const auto& row : rows) {
        data.SetBuffer("old");
        EXPECT_EQ(ErrorOf([&] { data.SetAsHexString(row.text); }), row.message);
        EXPECT_EQ(data.GetLength(), 0U);
    }
    data.SetBuffer("414243");
    data.SetAsHexString(std::string_view(reinterpret_cast<const char*>(data.GetData()), 6));
    EXPECT_EQ(TextOf(data), "ABC");
}

TEST(BinaryData, ThreadsShareOneBlock) {
    const CBinaryData shared{std::string_view(SomeBytes(5000))};
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&shared, &wrong, t] {
            for (int i = 0; i < 2000; ++i) {
                CBinaryData copy = shared;
                const CBinaryData second = copy;
                if (i % 3 == 0) copy.Append(static_cast<char>('a' + t));
                if (i % 5 == 0) copy[0] = static_cast<unsigned char>(t);
                if (second != shared) ++wrong;
                if (copy.GetLength() != shared.GetLength() + (i % 3 == 0 ? 1U : 0U)) ++wrong;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST(BinaryData, CopyingWhileAnotherThreadAppends) {
    // The copy is made before or after the append, never in the middle; a copy that comes between the test
    // for sharing and the append makes the append fail.
    const std::string more(20000, 'y');
    for (int round = 0; round < 200; ++round) {
        CBinaryData data("x");
        CBinaryData copy;
        std::atomic<bool> go{false};
        std::thread copier([&] {
            while (!go)
                std::this_thread::yield();
            copy = data;
        });
        go = true;
        const std::string message = ErrorOf([&] { data.Append(more); });
        copier.join();
        const bool appended = message == "(no error)";
        ASSERT_EQ(message, appended ? message : "Failed to append. [RefCount=2]");
        ASSERT_EQ(TextOf(data), appended ? "x" + more : "x");
        ASSERT_TRUE(TextOf(copy) == "x" || (appended && TextOf(copy) == "x" + more));
    }
}

}  // namespace
