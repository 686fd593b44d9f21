#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <cerrno>
#include <fstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/platform/internal/file.h"
#include "kvxml/platform/text_settings.h"
#include "kvxml/types/binary_data.h"
#include "kvxml/xml/internal/expat_reader.h"
#include "kvxml/xml/xml_document.h"
#include "kvxml/xml/xml_element.h"
#include "tests/support/error_of.h"
#include "tests/support/xml_tree_dump.h"

namespace KvXmlLib16 {
namespace {

using testsupport::Dump;

const unsigned char* Bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

void LoadStream(CXmlDocument& document, std::string_view text) {
    document.LoadXmlStream(Bytes(text), text.size());
}

std::string DumpOfStream(std::string_view text) {
    CXmlDocument document;
    LoadStream(document, text);
    return Dump(document);
}

/// `windowBits` as for deflateInit2: 31 makes gzip, 15 zlib.
std::string Compressed(std::string_view text, int windowBits) {
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, 6, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string out(deflateBound(&stream, static_cast<uLong>(text.size())) + 64, '\0');
    stream.next_in = const_cast<Bytef*>(Bytes(text));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

class TemporaryFile {
public:
    explicit TemporaryFile(std::string_view content)
        : m_name("/tmp/kvxml-reading-" + std::to_string(::getpid()) + ".xml") {
        std::ofstream file(m_name, std::ios::binary);
        file.write(content.data(), static_cast<std::streamsize>(content.size()));
    }
    ~TemporaryFile() { ::unlink(m_name.c_str()); }
    const char* Name() const { return m_name.c_str(); }

private:
    std::string m_name;
};

/// Reads files in chunks for as long as it lives.
struct Chunked {
    Chunked() { AsyncFromXmlFile(true); }
    ~Chunked() { AsyncFromXmlFile(false); }
};

/// Takes large texts to be those beyond `limit` for as long as it lives.
struct WholeLimit {
    explicit WholeLimit(std::size_t limit) { internal::SetWholeLimit(limit); }
    ~WholeLimit() { internal::SetWholeLimit(0); }
};

struct Fault {
    explicit Fault(internal::FileFault fault) : m_fault(fault) { internal::InjectFileFault(&m_fault); }
    ~Fault() { internal::InjectFileFault(nullptr); }
    internal::FileFault m_fault;
};

/// A document with all kinds of content, about `size` bytes long.
std::string MakeDocument(std::size_t size) {
    std::string xml = "<?xml version='1.0' encoding='UTF-8'?>\r\n<r xmlns='urn:r' xmlns:p='urn:p'>\n";
    for (int i = 0; xml.size() < size; ++i) {
        xml += "  <item p:n='" + std::to_string(i) + "' q='&quot;'>\n    <v>caf\xC3\xA9 &amp; " +
               std::to_string(i) + "</v>\n    <![CDATA[<]]>&#x20AC;\n  </item>\n";
    }
    return xml + "</r>\n";
}

TEST(XmlReading, EverySourceGivesTheSameTree) {
    const std::string xml = MakeDocument(400000);
    const std::wstring wide = internal::Utf8ToWide(xml);
    CXmlDocument document;
    document.LoadXml(xml.c_str());
    const std::string expected = Dump(document);
    EXPECT_NE(expected.find(
                  "{urn:r}item@{urn:p}n=7@q=\"'\n    \n    <\xE2\x82\xAC\n  '({urn:r}v'caf\xC3\xA9 & 7')"),
              std::string::npos);
    const auto check = [&](const char* source, const auto& load) {
        CXmlDocument other;
        load(other);
        EXPECT_TRUE(Dump(other) == expected) << source;
    };
    const std::string gzip = Compressed(xml, 31);
    const std::string zlib = Compressed(xml, 15);
    check("wide text", [&](CXmlDocument& d) { d.LoadXml(wide.c_str()); });
    check("bytes", [&](CXmlDocument& d) { LoadStream(d, xml); });
    check("gzip bytes", [&](CXmlDocument& d) { LoadStream(d, gzip); });
    check("zlib bytes", [&](CXmlDocument& d) { LoadStream(d, zlib); });
    const auto checkFiles = [&](const char* how) {
        for (const std::string* content : {&xml, &gzip, &zlib}) {
            const TemporaryFile file(*content);
            check(how, [&](CXmlDocument& d) { d.Load(file.Name()); });
        }
    };
    checkFiles("file");
    {
        const WholeLimit limit(1000);
        check("bytes in pieces", [&](CXmlDocument& d) { LoadStream(d, xml); });
        checkFiles("file in pieces");
    }
    {
        const Chunked chunked;
        const TemporaryFile file(xml);
        check("chunked file", [&](CXmlDocument& d) { d.Load(file.Name()); });
        const Fault shortTransfer({"read", internal::kFaultShortTransfer, 0});
        check("chunked file in short reads", [&](CXmlDocument& d) { d.Load(file.Name()); });
    }
    // A file without a size, as pipes are.
    const TemporaryFile pipe("");
    ::unlink(pipe.Name());
    ASSERT_EQ(::mkfifo(pipe.Name(), 0600), 0);
    for (const std::string* content : {&xml, &gzip}) {
        std::thread writer([&] { std::ofstream(pipe.Name(), std::ios::binary) << *content; });
        check("pipe", [&](CXmlDocument& d) { d.Load(pipe.Name()); });
        writer.join();
    }
}

TEST(XmlReading, ChunkedFilesOfSizesAroundTheChunk) {
    const Chunked chunked;
    for (const std::size_t size : {131071U, 131072U, 131073U, 262143U, 262144U, 262145U, 393216U}) {
        SCOPED_TRACE(size);
        std::string xml = MakeDocument(size - 500);
        xml.insert(xml.size() - 5, size - xml.size(), 'x');
        ASSERT_EQ(xml.size(), size);
        CXmlDocument whole;
        LoadStream(whole, xml);
        const TemporaryFile file(xml);
        CXmlDocument document;
        document.Load(file.Name());
        EXPECT_TRUE(Dump(document) == Dump(whole));
    }
}

TEST(XmlReading, Encodings) {
    using namespace std::string_literals;
    struct Row {
        std::string document;
        std::string text;
    };
    const std::vector<Row> rows = {
        {"\xEF\xBB\xBF<a>\xC3\xA9</a>", "\xC3\xA9"},
        {"\xFF\xFE<\0a\0>\0\xAC\x20=\xD8\0\xDE<\0/\0a\0>\0"s, "\xE2\x82\xAC\xF0\x9F\x98\x80"},
        {"\xFE\xFF\0<\0a\0>\x20\xAC\0<\0/\0a\0>"s, "\xE2\x82\xAC"},
        {"<?xml version='1.0' encoding='windows-1252'?><a>\x80\x92</a>", "\xE2\x82\xAC\xE2\x80\x99"},
        {"<?xml version='1.0' encoding='Shift_JIS'?><a>\x93\xFA\x96\x7B\xB1</a>",
         "\xE6\x97\xA5\xE6\x9C\xAC\xEF\xBD\xB1"},
        // Those that only whole texts can be converted from.
        {"<?xml version='1.0' encoding='GB18030'?><a>\xD6\xD0\x81\x30\x81\x30</a>", "\xE4\xB8\xAD\xC2\x80"},
        {"<?xml version='1.0' encoding='ISO-2022-JP'?><a>\x1B$BF|\x1B(B</a>", "\xE6\x97\xA5"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.document.substr(0, 60));
        const std::string expected = "a'" + row.text + "'";
        EXPECT_EQ(DumpOfStream(row.document), expected);
        EXPECT_EQ(DumpOfStream(Compressed(row.document, 31)), expected);
        const TemporaryFile file(row.document);
        CXmlDocument document;
        document.Load(file.Name());
        EXPECT_EQ(Dump(document), expected);
        const Chunked chunked;
        const bool isForWholeTexts = row.document.find("GB18030") != std::string::npos ||
                                     row.document.find("2022") != std::string::npos;
        EXPECT_EQ(ErrorOf([&] { document.Load(file.Name()); }),
                  isForWholeTexts ? "unknown encoding at line 1" : "(no error)");
        EXPECT_EQ(Dump(document), isForWholeTexts ? "" : expected);
    }
    EXPECT_EQ(ErrorOf([] { DumpOfStream("<?xml version='1.0' encoding='Shift_JIS'?>\n<a>\x93</a>"); }),
              "not well-formed (invalid token) at line 2");
    EXPECT_EQ(ErrorOf([] { DumpOfStream("<?xml version='1.0' encoding='GB18030'?>\n<a>\xFF\xFF</a>"); }),
              "unknown encoding at line 1");
}

TEST(XmlReading, WideTextIsReadWhateverItDeclares) {
    const auto dump = [](const std::wstring& text) {
        CXmlDocument document;
        document.LoadXml(text.c_str());
        return Dump(document);
    };
    for (const wchar_t* encoding : {L"UTF-16", L"ISO-8859-1", L"Shift_JIS", L"no-such"}) {
        EXPECT_EQ(dump(L"<?xml version='1.0' encoding='" + std::wstring(encoding) +
                       L"'?><\u00E9>\u20AC\U0001F600</\u00E9>"),
                  "\xC3\xA9'\xE2\x82\xAC\xF0\x9F\x98\x80'");
    }
    EXPECT_EQ(dump(L"\uFEFF<a/>"), "a");
    EXPECT_EQ(ErrorOf([&] { CXmlDocument().LoadXml(static_cast<const wchar_t*>(nullptr)); }),
              "no element found at line 1");
}

TEST(XmlReading, IllFormedTextIsRefusedWithItsLine) {
    struct Row {
        const char* xml;
        const char* message;
        const char* kept;
    };
    const Row rows[] = {
        {"<a>\n<b>\n</a>", "mismatched tag at line 3", "a'\n'(b'\n')"},
        {"<a>text", "no element found at line 1", "a'text'"},
        {"<p:a/>", "unbound prefix at line 1", ""},
        {"<a>&none;</a>", "undefined entity at line 1", "a"},
        {"<a>\r\r\r]]></a>", "not well-formed (invalid token) at line 4", "a'\n\n\n'"},
        {"<a>\xFF</a>", "not well-formed (invalid token) at line 1", "a"},
    };
    CXmlDocument document;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.xml);
        EXPECT_EQ(ErrorOf([&] { document.LoadXml(row.xml); }), row.message);
        EXPECT_EQ(Dump(document), row.kept);
        const TemporaryFile file(row.xml);
        const Chunked chunked;
        EXPECT_EQ(ErrorOf([&] { document.Load(file.Name()); }), row.message);
        EXPECT_EQ(document.GetDocumentElement(), nullptr);
    }
    document.LoadXml("<fine/>");
    EXPECT_EQ(Dump(document), "fine");
}

TEST(XmlReading, CompressedInput) {
    const std::string gzip = Compressed("<a>" + std::string(100000, 'x') + "</a>", 31);
    EXPECT_EQ(DumpOfStream(gzip).size(), 100003U);
    // What does not inflate to its end is read as it stands.
    const std::string cut = gzip.substr(0, gzip.size() / 2);
    EXPECT_EQ(ErrorOf([&] { DumpOfStream(cut); }), "not well-formed (invalid token) at line 1");
    const TemporaryFile file(gzip);
    CSerializationContext context;
    CXmlDocument document(context);
    context.SetMaxInflatedSize(100007);
    document.Load(file.Name());
    EXPECT_EQ(document.GetDocumentElement()->GetTextView().size(), 100000U);
    context.SetMaxInflatedSize(100006);
    const char* const tooLarge = "The compressed data inflates to more than the limit of 100006 bytes.";
    EXPECT_EQ(ErrorOf([&] { document.Load(file.Name()); }), tooLarge);
    EXPECT_EQ(ErrorOf([&] { LoadStream(document, gzip); }), tooLarge);
    EXPECT_EQ(document.GetDocumentElement(), nullptr);
    const Chunked chunked;
    EXPECT_EQ(ErrorOf([&] { document.Load(file.Name()); }), "not well-formed (invalid token) at line 1");
}

TEST(XmlReading, FileErrors) {
    const std::string xml = MakeDocument(300000);
    const TemporaryFile file(xml);
    const std::string name = file.Name();
    struct Row {
        bool isChunked;
        internal::FileFault fault;
        std::string message;
    };
    const std::string failedToRead = "Failed to read the contents of the file [" + name + "] Error [0x";
    const std::string chunkFailed = "Failed to read the contents of the file. Error [0x00000005]";
    const std::vector<Row> rows = {
        {false, {"open", EACCES, 0}, "Failed to open the file [" + name + "] Error [0x0000000d]"},
        {false, {"size", EIO, 0}, "Failed to get the size of the file [" + name + "] Error [0x00000005]"},
        {false, {"read", EIO, 0}, failedToRead + "00000005]"},
        {false, {"read", internal::kFaultEndOfFile, 0}, failedToRead + "00000026]"},
        {true, {"read", EIO, 2}, chunkFailed},
        {true, {"read", internal::kFaultEndOfFile, 0}, failedToRead + "00000026]"},
        {true, {"read", internal::kFaultEndOfFile, 1}, "unclosed token at line "},
    };
    CXmlDocument document;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fault.operation);
        {
            const Fault fault(row.fault);
            AsyncFromXmlFile(row.isChunked);
            const std::string message = ErrorOf([&] { document.Load(file.Name()); });
            AsyncFromXmlFile(false);
            EXPECT_EQ(message.substr(0, row.message.size()), row.message);
        }
        EXPECT_EQ(document.GetDocumentElement(), nullptr);
        document.Load(file.Name());
        EXPECT_NE(document.GetDocumentElement(), nullptr);
    }
    EXPECT_EQ(ErrorOf([&] { document.Load(nullptr); }), "Failed to open the file [] Error [0x00000002]");
    const TemporaryFile empty("");
    EXPECT_EQ(ErrorOf([&] { document.Load(empty.Name()); }), "no element found at line 1");
    EXPECT_EQ(ErrorOf([&] { document.Load("/"); }), "Failed to open the file [/] Error [0x00000015]");
    const Chunked chunked;
    EXPECT_EQ(ErrorOf([&] { document.Load("/"); }), "Failed to open the file [/] Error [0x00000015]");
    EXPECT_EQ(ErrorOf([&] { document.Load(empty.Name()); }), failedToRead + "00000026]");
}

std::string Nested(std::size_t depth, std::string_view separator = "") {
    std::string xml;
    for (std::size_t i = 0; i < depth; ++i)
        xml.append("<a>").append(separator);
    for (std::size_t i = 0; i < depth; ++i)
        xml += "</a>";
    return xml;
}

TEST(XmlReading, NestingIsBoundedAndNeverRecursive) {
    CSerializationContext context;
    CXmlDocument document(context);
    LoadStream(document, Nested(1000));
    EXPECT_EQ(ErrorOf([&] { LoadStream(document, Nested(1001, "\n")); }),
              "elements are nested deeper than the limit of 1000 at line 1001");
    context.SetMaxElementDepth(100000);
    LoadStream(document, Nested(100000, "\n"));
    const CXmlElement* deepest = document.GetDocumentElement();
    while (deepest->GetFirstElement() != nullptr)
        deepest = deepest->GetFirstElement();
    EXPECT_EQ(deepest->GetXPath().size(), 200000U);
    EXPECT_EQ(deepest->GetText(), "\n");
    EXPECT_EQ(Dump(document).size(), 100000U * 6 - 2);
}

TEST(XmlReading, LongTextsAndManyAttributes) {
    CXmlDocument document;
    std::string lines;
    while (lines.size() < 20000000)
        lines += "a line of text, and the next\n";
    // Values longer than a chunk, with more behind them.
    const std::string value(7000000, 'v');
    const TemporaryFile file("<a><b c='" + value + "'/>" + lines + "<b c='" + value + "'/></a>");
    AsyncFromXmlFile(true);
    document.Load(file.Name());
    AsyncFromXmlFile(false);
    EXPECT_TRUE(document.GetDocumentElement()->GetText() == lines);
    const CXmlElement* const b = document.GetDocumentElement()->GetFirstElement();
    EXPECT_TRUE(b->GetAttribute("c", "") == value);
    EXPECT_TRUE(b->GetNextSiblingElement()->GetAttribute("c", "") == value);
    std::string attributes = "<a";
    for (int i = 0; i < 20000; ++i)
        attributes += " n" + std::to_string(i) + "='" + std::to_string(i) + '\'';
    document.LoadXml((attributes + "/>").c_str());
    ASSERT_EQ(document.GetDocumentElement()->GetAttributes().size(), 20000U);
    for (const auto* attribute : document.GetDocumentElement()->GetAttributes())
        ASSERT_EQ(attribute->GetLocalName(), "n" + std::string(attribute->GetValueView()));
}

TEST(XmlReading, EntityAttacksAreRefused) {
    std::string laughs = "<!DOCTYPE a [<!ENTITY e0 'ha'>\n";
    for (int i = 1; i < 12; ++i) {
        const std::string inner = "&e" + std::to_string(i - 1) + ';';
        laughs += "<!ENTITY e" + std::to_string(i) + " '";
        for (int k = 0; k < 10; ++k)
            laughs += inner;
        laughs += "'>\n";
    }
    const auto messageOf = [](const std::string& xml) {
        return ErrorOf([&] { CXmlDocument().LoadXml(xml.c_str()); });
    };
    const std::string breached =
        "limit on input amplification factor (from DTD and entities) breached at line ";
    EXPECT_EQ(messageOf(laughs + "]><a>&e11;</a>").substr(0, breached.size()), breached);
    EXPECT_EQ(messageOf("<!DOCTYPE a [<!ENTITY e '&f;'><!ENTITY f '&e;'>]><a>&e;</a>"),
              "recursive entity reference at line 1");
    // A chain that is long instead of wide: each link takes stack in the parser.
    std::string chain = "<!DOCTYPE a [<!ENTITY e0 'end'>\n";
    for (int i = 1; i <= 100000; ++i)
        chain += "<!ENTITY e" + std::to_string(i) + " '&e" + std::to_string(i - 1) + ";'>\n";
    EXPECT_EQ(messageOf(chain + "]><a>&e100000;</a>"),
              "too many entities refer to other entities at line 1002");

    // External entities are passed over, whatever they point to.
    const TemporaryFile secret("secret");
    CXmlDocument document;
    document.LoadXml((std::string("<!DOCTYPE a SYSTEM 'none.dtd' [<!ENTITY s SYSTEM '") + secret.Name() +
                      "'>]><a>[&s;]</a>")
                         .c_str());
    EXPECT_EQ(Dump(document), "a'[]'");
    // Defaults from the document's own declarations count as attributes.
    document.LoadXml("<!DOCTYPE a [<!ATTLIST a b CDATA 'default' c CDATA #IMPLIED>]><a/>");
    EXPECT_EQ(Dump(document), "a@b=default");
}

}  // namespace
}  // namespace KvXmlLib16
