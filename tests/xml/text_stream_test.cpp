#include "kvxml/xml/text_stream.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "kvxml/platform/internal/file.h"
#include "kvxml/runtime/exceptions.h"
#include "kvxml/runtime/text_settings.h"
#include "kvxml/types/binary_data.h"
#include "kvxml/xml/binary_stream.h"
#include "kvxml/xml/file_text_stream.h"
#include "kvxml/xml/xml_text_writer.h"

namespace KvXmlLib16 {
namespace {

std::string BytesOf(const CBinaryData& data) {
    return data.GetLength() == 0
               ? std::string()
               : std::string(reinterpret_cast<const char*>(data.GetData()), data.GetLength());
}

std::string MessageOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const CKvException& e) {
        return e.GetMessage();
    }
    return "nothing thrown";
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

std::string ReadFile(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class TemporaryFile {
public:
    TemporaryFile()
        : m_name(std::filesystem::temp_directory_path() /
                 ("kvxml-stream-" + std::to_string(::getpid()) + ".xml")) {}
    ~TemporaryFile() { std::filesystem::remove(m_name); }
    std::string Name() const { return m_name.string(); }
    std::string Content() const { return ReadFile(Name()); }

private:
    std::filesystem::path m_name;
};

/// What goes in, and what comes out in UTF-8 and in UTF-16. U+FFFD stands for what is ill-formed.
struct EncodingCase {
    const char* trace;
    std::string text;
    std::string utf8;
    std::u16string utf16;
};

std::vector<EncodingCase> EncodingCases() {
    return {
        {"empty", "", "", u""},
        {"ASCII", "plain text <a/>", "plain text <a/>", u"plain text <a/>"},
        {"two, three and four bytes", "\xC3\xA4\xE2\x82\xAC\xF0\x9D\x84\x9Ez",
         "\xC3\xA4\xE2\x82\xAC\xF0\x9D\x84\x9Ez", u"\u00E4\u20AC\U0001D11Ez"},
        {"stray continuation", "a\x80z", "a\xEF\xBF\xBDz", u"a\uFFFDz"},
        {"cut at the end", "a\xC3", "a\xEF\xBF\xBD", u"a\uFFFD"},
        {"byte that never occurs", "\xFFz", "\xEF\xBF\xBDz", u"\uFFFDz"},
    };
}

TEST(TextStream, Encodings) {
    for (const EncodingCase& row : EncodingCases()) {
        SCOPED_TRACE(row.trace);
        for (const XmlEncoding encoding :
             {XmlEncoding_UTF8, XmlEncoding_UTF16, XmlEncoding_UTF16NoDeclaration}) {
            CTextStream stream(encoding);
            stream.Append(row.text);
            EXPECT_EQ(BytesOf(stream.ToBinaryData()),
                      encoding == XmlEncoding_UTF8 ? row.utf8 : Utf16(row.utf16));
            EXPECT_EQ(stream.TakeText(), row.utf8);
            EXPECT_EQ(stream.GetBufferedLength(), 0u);
        }
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
        CTextStream utf8(XmlEncoding_UTF8);
        utf8.Append(text);
        EXPECT_EQ(BytesOf(utf8.ToBinaryData()), text);
        CTextStream utf16(XmlEncoding_UTF16);
        utf16.Append(text);
        EXPECT_EQ(BytesOf(utf16.ToBinaryData()), Utf16(wide));
        EXPECT_EQ(utf16.TakeText(), text);

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
    TemporaryFile file;
    const auto expect = [&file](const std::string& text, XmlEncoding encoding, const std::string& bytes) {
        CTextStream stream(encoding);
        stream.Append(text);
        EXPECT_EQ(BytesOf(stream.ToBinaryData()), bytes);
        EXPECT_EQ(stream.TakeText(), text);
        CFileTextStream fileStream(file.Name().c_str(), encoding);
        fileStream.Begin();
        fileStream.Append(text);
        fileStream.Flush();
        fileStream.End();
        EXPECT_EQ(file.Content(), (encoding == XmlEncoding_UTF8 ? "" : "\xFF\xFE") + bytes);
    };
    SetLocalCharEncoding(1252);
    expect("\x80 \xE4", XmlEncoding_UTF8, "\xE2\x82\xAC \xC3\xA4");
    expect("\x80 \xE4", XmlEncoding_UTF16, Utf16(u"\u20AC \u00E4"));
    SetLocalCharEncoding(932);
    const std::string kanji = std::string(CStringBuffer::kBlockSize - 1, 'x') + "\x8E\x9A";
    expect(kanji, XmlEncoding_UTF8, std::string(CStringBuffer::kBlockSize - 1, 'x') + "\xE5\xAD\x97");
    ASCIIOnly(true);
    expect("\x80 \xE4", XmlEncoding_UTF8, "\x80 \xE4");
    ASCIIOnly(false);
    SetLocalCharEncoding(3);
}

TEST(TextStream, UnknownEncodingIsRefused) {
    const std::string message = "Unknown Encoding, select UTF-8 (contact our support team)";
    for (const int encoding : {0, 4, -1}) {
        CTextStream stream(static_cast<XmlEncoding>(encoding));
        stream.Append("text");
        EXPECT_EQ(MessageOf([&] { stream.ToBinaryData(); }), message);
        EXPECT_EQ(stream.TakeText(), "text");
    }
    TemporaryFile file;
    CFileTextStream stream(file.Name().c_str(), XmlEncoding_None);
    stream.Begin();
    stream.Append("text");
    EXPECT_EQ(MessageOf([&] { stream.End(); }), message);
}

TEST(FileTextStream, EndToEnd) {
    TemporaryFile file;
    for (const EncodingCase& row : EncodingCases()) {
        SCOPED_TRACE(row.trace);
        for (const XmlEncoding encoding :
             {XmlEncoding_UTF8, XmlEncoding_UTF16, XmlEncoding_UTF16NoDeclaration}) {
            CFileTextStream stream(file.Name().c_str(), encoding);
            stream.Append("dropped by the beginning");
            stream.Begin();
            stream.Append(row.text);
            stream.End();
            EXPECT_EQ(file.Content(),
                      encoding == XmlEncoding_UTF8 ? row.utf8 : "\xFF\xFE" + Utf16(row.utf16));
        }
    }
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

TEST(FileTextStream, DerivedStreamsAreFlushedToo) {
    class CCounting : public CTextStream {
    public:
        void Flush() override {
            CTextStream::Flush();
            ++flushes;
            GetBuffer().Reset();
        }
        int flushes = 0;
    };
    CCounting stream;
    CXmlTextWriter writer(&stream);
    for (int i = 0; i < 3; ++i)
        writer.WriteRaw(std::string(4094, 'x'));  // and two line ends
    writer.WriteRaw("short");
    EXPECT_EQ(stream.flushes, 3);
    EXPECT_EQ(stream.GetBufferedLength(), 7u);
}

TEST(FileStreams, Failures) {
    const std::string missing = "/nonexistent-directory/out.xml";
    const std::string named = "Failed to write data to the file [";
    const CBinaryData bytes("content");
    static_assert(ENOENT == 2 && ENOSPC == 28);

    CFileTextStream absent(missing.c_str(), XmlEncoding_UTF8);
    EXPECT_EQ(MessageOf([&] { absent.Begin(); }), named + missing + "] error [0x00000002]");
    CFileBinaryStream absentBytes(bytes, missing.c_str(), XmlEncoding_UTF8);
    EXPECT_EQ(MessageOf([&] { absentBytes.Write(); }), named + missing + "] error [0x00000002]");

    // A disk that is full from the first byte: the mark of UTF-16 fails, or the first flush.
    CFileTextStream fullAtMark("/dev/full", XmlEncoding_UTF16);
    EXPECT_EQ(MessageOf([&] { fullAtMark.Begin(); }), named + "/dev/full] error [0x0000001C]");
    for (const bool atEnd : {false, true}) {
        CFileTextStream full("/dev/full", XmlEncoding_UTF8);
        full.Begin();
        full.Append("content");
        EXPECT_EQ(MessageOf([&] { atEnd ? full.End() : full.Flush(); }),
                  "Failed to write data to the file. Error [0x0000001C]");
        full.End();  // the file is closed, and nothing is left to write
    }
    for (const XmlEncoding encoding : {XmlEncoding_None, XmlEncoding_UTF8, XmlEncoding_UTF16}) {
        CFileBinaryStream full(bytes, "/dev/full", encoding);
        EXPECT_EQ(MessageOf([&] { full.Write(); }), named + "/dev/full] error [0x0000001C]");
    }
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
        EXPECT_EQ(MessageOf([&] {
                      stream.Begin();
                      stream.Append("one");
                      stream.Flush();
                      stream.Append("two");
                      stream.End();
                  }),
                  row.message);
        internal::InjectFileFault(nullptr);
        EXPECT_EQ(file.Content(), row.left);
    }
    for (const char* operation : {"open", "write", "close"}) {
        const internal::FileFault fault{operation, EIO, 0};
        CFileBinaryStream stream(CBinaryData("ab"), file.Name().c_str(), XmlEncoding_UTF8);
        internal::InjectFileFault(&fault);
        EXPECT_EQ(MessageOf([&] { stream.Write(); }), named);
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
