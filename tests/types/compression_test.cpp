#include "kvxml/types/internal/compression.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <string>
#include <string_view>

#include "kvxml/types/internal/encoded_text.h"
#include "tests/support/error_of.h"

using namespace KvXmlLib16;
using namespace KvXmlLib16::internal;

namespace {

std::string TextOf(const CBinaryData& data) {
    return std::string(reinterpret_cast<const char*>(data.GetData()), data.GetLength());
}

std::string Compressed(std::string_view text, CompressionType type) {
    CBinaryData data(text);
    Compress(data, type);
    return TextOf(data);
}

bool InflateText(std::string_view bytes, std::size_t maxSize, std::string& text) {
    CBinaryData out("old");
    const bool inflated =
        Inflate(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), {maxSize, 0}, out);
    text = TextOf(out);
    return inflated;
}

std::string SomeXml(std::size_t items) {
    std::string text = "<list>";
    for (std::size_t i = 0; i < items; ++i)
        text += "<item id=\"" + std::to_string(i * 7919) + "\"/>";
    return text + "</list>";
}

const CompressionType kTypes[] = {CompressionType_GZip, CompressionType_ZLib};

TEST(Compression, WhatDoesNotShrinkIsRefusedAndKept) {
    for (const CompressionType type : kTypes) {
        CBinaryData data("abc");
        EXPECT_EQ(ErrorOf([&] { Compress(data, type); }).substr(0, 37),
                  "Failed to compress data. [Error Code:");
        EXPECT_EQ(TextOf(data), "abc");
    }
    EXPECT_EQ(Compressed("abc", CompressionType_None), "abc");
    EXPECT_EQ(Compressed("abc", static_cast<CompressionType>(3)), "abc");
    EXPECT_EQ(Compressed("", CompressionType_GZip), "");
}

TEST(Compression, MembersOfAGZipFileAreJoined) {
    const std::string first = SomeXml(500);
    const std::string second = SomeXml(9000);
    const std::string bytes =
        Compressed(first, CompressionType_GZip) + Compressed(second, CompressionType_GZip);
    std::string text;
    ASSERT_TRUE(InflateText(bytes, 0, text));
    EXPECT_TRUE(text == first + second);
    EXPECT_FALSE(InflateText(std::string_view(bytes).substr(0, bytes.size() - 1), 0, text));
}

TEST(Compression, OtherInputIsToldApart) {
    const std::string gzip = Compressed(SomeXml(200), CompressionType_GZip);
    const std::string zlib = Compressed(SomeXml(200), CompressionType_ZLib);
    std::string damaged = gzip;
    damaged[damaged.size() - 6] ^= 1;  // checksum
    const std::string inputs[] = {"",
                                  "\x1f\x8b\x08",
                                  "\x78\x9c",
                                  "<?xml version='1.0'?><a/>",
                                  "8\x1d not a stream",                // passes the test of a zlib header
                                  std::string("\x78\xbb\0\0\0\0", 6),  // wants a dictionary
                                  damaged};
    std::string text;
    for (const std::string& input : inputs) {
        EXPECT_FALSE(InflateText(input, 0, text)) << input;
        EXPECT_EQ(text, "");
    }
    for (const std::string& whole : {gzip, zlib}) {
        for (std::size_t length = 0; length < whole.size(); ++length) {
            ASSERT_FALSE(InflateText(std::string_view(whole).substr(0, length), 0, text)) << length;
        }
    }
}

TEST(EncodedText, WideToUtf8AndLocalToUtf16) {
    EXPECT_EQ(TextOf(Utf8FromWide(L"\u00e9\u20ac")), "\xc3\xa9\xe2\x82\xac");
    EXPECT_EQ(TextOf(Utf16LeFromLocal("a\xe2\x82\xac")), std::string("a\0\xac\x20", 4));
    EXPECT_EQ(Utf8FromWide(L"").GetData(), nullptr);
    EXPECT_EQ(Utf16LeFromLocal("").GetData(), nullptr);
}

}  // namespace
