#include "kvxml/xml/text_stream.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "kvxml/platform/internal/file.h"
#include "kvxml/platform/text_settings.h"
#include "kvxml/types/binary_data.h"
#include "kvxml/xml/binary_stream.h"
#include "kvxml/xml/file_text_stream.h"
#include "kvxml/xml/xml_text_writer.h"
#include "tests/support/error_of.h"

namespace KvXmlLib16 {
namespace {

std::string BytesOf(const CBinaryData& data) {
    return std::string(reinterpret_cast<const char*>(data.GetData()), data.GetLength());
}

/// UTF-16 little-endian bytes, independent of the library.
std::string Utf16(const std::u16string& text) {
    std::string bytes;
    for (const char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

class TemporaryFile {
public:
    TemporaryFile()
        : m_name(std::filesystem::temp_directory_path() /
                 ("kvxml-stream-" + std::to_string(::getpid()) + ".xml")) {}
    ~TemporaryFile() { std::filesystem::remove(m_name); }
    std::string Name() const { return m_name.string(); }
    std::string Content() const {
        std::ifstream file(m_name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::filesystem::path m_name;
};

/// What a stream and a file stream make of a text.
void ExpectBytes(const std::string& text, XmlEncoding encoding, const std::string& bytes,
                 const std::string& taken) {
    CTextStream stream(encoding);
    stream.Append(text);
    EXPECT_EQ(BytesOf(stream.ToBinaryData()), bytes);
    EXPECT_EQ(stream.TakeText(), taken);
    EXPECT_EQ(stream.GetBufferedLength(), 0u);
    const TemporaryFile file;
    CFileTextStream fileStream(file.Name().c_str(), encoding);
    fileStream.Append("dropped by the beginning");
    fileStream.Begin();
    fileStream.Append(text);
    fileStream.Flush();
    fileStream.End();
    EXPECT_EQ(file.Content(), (encoding == XmlEncoding_UTF8 ? "" : "\xFF\xFE") + bytes);
}

TEST(TextStream, Encodings) {
    // U+FFFD stands for what is ill-formed.
    const struct {
        std::string text;
        std::string utf8;
        std::u16string utf16;
    } rows[] = {
        {"", "", u""},
        {"<a>\xC3\xA4\xE2\x82\xAC\xF0\x9D\x84\x9Ez", "<a>\xC3\xA4\xE2\x82\xAC\xF0\x9D\x84\x9Ez",
         u"<a>\u00E4\u20AC\U0001D11Ez"},
        {"a\x80z", "a\xEF\xBF\xBDz", u"a\uFFFDz"},
        {"a\xC3", "a\xEF\xBF\xBD", u"a\uFFFD"},
        {"\xFFz", "\xEF\xBF\xBDz", u"\uFFFDz"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        ExpectBytes(row.text, XmlEncoding_UTF8, row.utf8, row.utf8);
        ExpectBytes(row.text, XmlEncoding_UTF16, Utf16(row.utf16), row.utf8);
        ExpectBytes(row.text, XmlEncoding_UTF16NoDeclaration, Utf16(row.utf16), row.utf8);
    }
}

TEST(TextStream, CharactersAcrossBlocksStayWhole) {
    // A four-byte character at every position around the end of the first block, and one at the very end.
    const std::string clef = "\xF0\x9D\x84\x9E";
    for (std::size_t before = CStringBuffer::kBlockSize - 5; before <= CStringBuffer::kBlockSize + 1;
         ++before) {
        SCOPED_TRACE(before);
        const std::string text = std::string(before, 'x') + clef + std::string(5000, 'y') + clef;
        const std::u16string wide =
            std::u16string(before, u'x') + u"\U0001D11E" + std::u16string(5000, u'y') + u"\U0001D11E";
        ExpectBytes(text, XmlEncoding_UTF8, text, text);
        ExpectBytes(text, XmlEncoding_UTF16, Utf16(wide), text);

        // In a file the flush may come inside the character.
        TemporaryFile file;
        for (const XmlEncoding encoding : {XmlEncoding_UTF8, XmlEncoding_UTF16NoDeclaration}) {
            CFileTextStream stream(file.Name().c_str(), encoding);
            stream.Begin();
            for (const char byte : text) {
                stream.Append(byte);
                if (stream.GetBufferedLength() % 3 == 0) stream.Flush();
            }
            stream.End();
            EXPECT_EQ(file.Content(), encoding == XmlEncoding_UTF8 ? text : "\xFF\xFE" + Utf16(wide));
        }
    }
}

TEST(TextStream, LocalCodePagesAndRawBytes) {
    SetLocalCharEncoding(1252);
    ExpectBytes("\x80 \xE4", XmlEncoding_UTF8, "\xE2\x82\xAC \xC3\xA4", "\x80 \xE4");
    ExpectBytes("\x80 \xE4", XmlEncoding_UTF16, Utf16(u"\u20AC \u00E4"), "\x80 \xE4");
    SetLocalCharEncoding(932);
    const std::string kanji = std::string(CStringBuffer::kBlockSize - 1, 'x') + "\x8E\x9A";
    ExpectBytes(kanji, XmlEncoding_UTF8, std::string(CStringBuffer::kBlockSize - 1, 'x') + "\xE5\xAD\x97",
                kanji);
    ASCIIOnly(true);
    ExpectBytes("\x80 \xE4", XmlEncoding_UTF8, "\x80 \xE4", "\x80 \xE4");
    ASCIIOnly(false);
    SetLocalCharEncoding(3);
}

TEST(TextStream, UnknownEncodingIsRefused) {
    const std::string message = "Unknown Encoding, select UTF-8 (contact our support team)";
    for (const int encoding : {0, 4, -1}) {
        CTextStream stream(static_cast<XmlEncoding>(encoding));
        stream.Append("text");
        EXPECT_EQ(ErrorOf([&] { stream.ToBinaryData(); }), message);
        EXPECT_EQ(stream.TakeText(), "text");
    }
    TemporaryFile file;
    CFileTextStream stream(file.Name().c_str(), XmlEncoding_None);
    stream.Begin();
    stream.Append("text");
    EXPECT_EQ(ErrorOf([&] { stream.End(); }), message);
}

TEST(FileTextStream, WriterFlushesInBlocks) {
    TemporaryFile file;
    CFileTextStream stream(file.Name().c_str(), XmlEncoding_UTF8);
    CXmlTextWriter writer(&stream);
    writer.BeginOutput();
    writer.WriteStartElement("list", "");
    std::string expected = "<list>\n";
    for (int i = 0; i < 3000; ++i) {
        writer.WriteStartElement("item", "");
        writer.WriteText(std::to_string(i), ItemType_i4, false);
        writer.WriteEndElement();
        ASSERT_LT(stream.GetBufferedLength(), CTextStream::kFlushLength);
        expected += "\t<item>" + std::to_string(i) + "</item>\n";
    }
    EXPECT_GT(std::filesystem::file_size(file.Name()), 50000u);
    writer.WriteEndElement();
    writer.EndDocument();
    EXPECT_EQ(file.Content(), expected + "</list>\n");
}

TEST(FileStreams, FailuresOnTheWay) {
    TemporaryFile file;
    const std::string named = "Failed to write data to the file [" + file.Name() + "] error [0x00000005]";
    const std::string unnamed = "Failed to write data to the file. Error [0x00000005]";
    struct Row {
        const char* operation;
        int after;
        std::string message;
        std::string left;  // in the file
    };
    const std::vector<Row> rows = {
        {"open", 0, named, ""},
        {"write", 0, named, ""},
        {"write", 1, unnamed, "\xFF\xFE"},
        {"write", 2, unnamed, "\xFF\xFE" + Utf16(u"one")},
        {"close", 0, unnamed, "\xFF\xFE" + Utf16(u"onetwo")},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.message + row.left);
        const internal::FileFault fault{row.operation, EIO, row.after};
        CFileTextStream stream(file.Name().c_str(), XmlEncoding_UTF16);
        internal::InjectFileFault(&fault);
        EXPECT_EQ(ErrorOf([&] {
                      stream.Begin();
                      stream.Append("one");
                      stream.Flush();
                      stream.Append("two");
                      stream.End();
                  }),
                  row.message);
        internal::InjectFileFault(nullptr);
        if (row.after > 0) stream.End();  // the file is closed, and nothing is left to write
        EXPECT_EQ(file.Content(), row.left);
    }
    for (const char* operation : {"open", "write", "close"}) {
        const internal::FileFault fault{operation, EIO, 0};
        CFileBinaryStream stream(CBinaryData("ab"), file.Name().c_str(), XmlEncoding_UTF8);
        internal::InjectFileFault(&fault);
        EXPECT_EQ(ErrorOf([&] { stream.Write(); }), named);
        internal::InjectFileFault(nullptr);
    }
}

TEST(FileBinaryStream, MarkAndBytes) {
    TemporaryFile file;
    std::ofstream(file.Name()) << "longer content from before";
    for (const XmlEncoding encoding :
         {XmlEncoding_UTF16, XmlEncoding_UTF16NoDeclaration, XmlEncoding_UTF8, XmlEncoding_None}) {
        const std::string mark = encoding >= XmlEncoding_UTF16 ? "\xFF\xFE" : "";
        CFileBinaryStream(CBinaryData("ab"), file.Name().c_str(), encoding).Write();
        EXPECT_EQ(file.Content(), mark + "ab");
        CFileBinaryStream(CBinaryData(), file.Name().c_str(), encoding).Write();
        EXPECT_EQ(file.Content(), mark);
    }
}

}  // namespace
}  // namespace KvXmlLib16
