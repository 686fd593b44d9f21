#include "kvxml/xml/string_buffer.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace KvXmlLib16 {
namespace {

std::string Text(std::size_t length, std::size_t seed = 0) {
    std::string text(length, '\0');
    for (std::size_t i = 0; i < length; ++i)
        text[i] = static_cast<char>('a' + (i * 7 + seed) % 26);
    return text;
}

/// Every way to get the text out gives the same.
void ExpectText(CStringBuffer& buffer, const std::string& expected) {
    EXPECT_EQ(buffer.GetLength(), expected.size());
    std::string joined;
    buffer.ForEachBlock([&joined](std::string_view block) {
        EXPECT_FALSE(block.empty());
        joined += block;
    });
    EXPECT_EQ(joined, expected);
    std::string copy = "before";
    EXPECT_TRUE(buffer.CopyTo(copy));
    EXPECT_EQ(copy, expected);
    const std::string_view text = buffer.GetText();
    EXPECT_EQ(text, expected);
    EXPECT_EQ(text.data()[text.size()], '\0');
}

TEST(StringBuffer, AppendsOfEveryLength) {
    // Lengths around the fixed-width copies and around one and several blocks, at every small offset.
    for (const std::size_t blockSize : {std::size_t{1}, std::size_t{7}, CStringBuffer::kBlockSize}) {
        CStringBuffer buffer(blockSize);
        std::string expected;
        for (std::size_t length = 0; length < 40; ++length) {
            buffer.Append(Text(length, length));
            expected += Text(length, length);
        }
        for (const std::size_t length : {4094u, 4095u, 4096u, 8190u, 20000u}) {
            buffer.Append(Text(length));
            buffer.Append('|');
            expected += Text(length) + '|';
        }
        ExpectText(buffer, expected);
        // The joined text goes on growing.
        buffer.Append("more");
        ExpectText(buffer, expected + "more");
    }
}

TEST(StringBuffer, EmptyBeforeAndAfterReset) {
    CStringBuffer buffer;
    ExpectText(buffer, "");
    for (int i = 0; i < 10000; ++i)
        buffer.Append(static_cast<char>('0' + i % 10));
    EXPECT_EQ(buffer.GetText().substr(9990), "0123456789");
    buffer.Append(Text(200000));
    buffer.Reset();
    EXPECT_TRUE(buffer.IsEmpty());
    ExpectText(buffer, "");
}

}  // namespace
}  // namespace KvXmlLib16
