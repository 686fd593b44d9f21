// What stands beside the entry points: texts of known length, named options, streams of the standard library.
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/kvxml.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_all_kinds.h"

namespace KvXmlLib16 {
namespace {

std::string TextOf(const CBinaryData& data) {
    return {reinterpret_cast<const char*>(data.GetData()), data.GetLength()};
}

/// Enough text for several flushes, with characters of two to four bytes wherever a flush may fall.
void FillLong(CElement& element) {
    element.SetName("long");
    for (int i = 0; i < 700; ++i)
        element.AddElement("e", nullptr,
                           std::string(static_cast<std::size_t>(i % 7), 'x').append("äß€🍟").c_str());
}

/// Takes so many bytes and then fails; by an exception if that is asked for.
class FullBuffer final : public std::streambuf {
public:
    explicit FullBuffer(std::size_t room, bool throws = false) : m_room(room), m_throws(throws) {}
    std::size_t calls = 0;
    std::size_t largest = 0;

protected:
    std::streamsize xsputn(const char*, std::streamsize count) override {
        const auto length = static_cast<std::size_t>(count);
        ++calls;
        largest = std::max(largest, length);
        if (length <= m_room) return m_room -= length, count;
        if (m_throws) throw 1;
        return 0;
    }

private:
    std::size_t m_room;
    bool m_throws;
};

/// Gives some bytes and then fails.
class BrokenBuffer final : public std::streambuf {
public:
    explicit BrokenBuffer(std::string bytes) : m_bytes(std::move(bytes)) {
        setg(m_bytes.data(), m_bytes.data(), m_bytes.data() + m_bytes.size());
    }

protected:
    int_type underflow() override { throw 1; }

private:
    std::string m_bytes;
};

// --- texts -------------------------------------------------------------------------------------------------

/// Goes by its zero-terminated text wherever that will do.
struct BothTexts {
    operator const char*() const { return "<a>terminated</a>"; }
    operator std::string_view() const { return "<a>view</a>"; }
};

/// Overrides one form and brings in the others.
struct Overriding : CElement {
    using CXmlObjectBase::FromXml;
    void FromXml(const char* xml, const CSerializationContext& context) override {
        CElement::FromXml(xml, context);
        SetAttribute("by", nullptr, "override");
    }
};

TEST(EntryPointsTest, EveryFormOfText) {
    CElement e;
    const std::string text = "<a>text</a>";
    char array[] = "<a>array</a>";
    const auto read = [&e](const auto& xml) {
        e.FromXml(xml);
        return e.GetValue();
    };
    EXPECT_EQ(read("<a>literal</a>"), "literal");
    EXPECT_EQ(read(array), "array");
    EXPECT_EQ(read(L"<a>wide</a>"), "wide");
    EXPECT_EQ(read(text), "text");
    EXPECT_EQ(read(std::string_view("<a>view</a>...").substr(0, 11)), "view");
    EXPECT_EQ(read(BothTexts()), "terminated");
    EXPECT_EQ(ErrorOf([&] { read(std::string_view()); }), "XML String is empty!");
    EXPECT_NE(ErrorOf([&] { read(std::string("<a/>\0<b/>", 9)); }), "(no error)");
    e.FromXml(text, CSerializationContext());

    e.FromJson(std::string(R"({"a":"json"})"));
    EXPECT_EQ(e.GetValue(), "json");
    e.FromJson(R"({"a":"literal"})");
    e.FromJson(L"{\"a\":\"wide\"}");
    EXPECT_EQ(e.GetValue(), "wide");
    EXPECT_NE(ErrorOf([&] { e.FromJson(std::string_view()); }).find("JSON String is empty!"),
              std::string::npos);

    Overriding overriding;
    static_cast<CXmlObjectBase&>(overriding).FromXml("<a/>");
    EXPECT_TRUE(overriding.HasAttribute("by"));
    overriding.FromXml(text);
    EXPECT_EQ(overriding.GetValue(), "text");
}

TEST(EntryPointsTest, ADocumentKeepsATemporaryContext) {
    CSerializationContext context;
    context.SetMaxElementDepth(2);
    CXmlDocument copied{CSerializationContext(context)};
    CXmlDocument filtered(nullptr, CSerializationContext(context));
    CXmlDocument referring(context);
    CXmlDocument moved(std::move(copied));
    context.SetMaxElementDepth(1);
    const auto isRefused = [](CXmlDocument& document, const char* xml) {
        return ErrorOf([&] { document.LoadXml(xml); }) != "(no error)";
    };
    for (CXmlDocument* document : {&moved, &copied, &filtered}) {
        EXPECT_FALSE(isRefused(*document, "<a><b/></a>"));
        EXPECT_TRUE(isRefused(*document, "<a><b><c/></b></a>"));
    }
    EXPECT_TRUE(isRefused(referring, "<a><b/></a>"));
}

// --- options -----------------------------------------------------------------------------------------------

TEST(EntryPointsTest, NamedOptionsAreThePositionalOnes) {
    CElement e("a");
    e.AddElement("b", nullptr, "ä");
    EXPECT_EQ(e.ToXml(CWriteOptions()), e.ToXml());
    EXPECT_EQ(e.ToXml({.declaration = false, .eol = EOLType_CRLF}), e.ToXml(false, true, EOLType_CRLF));
    EXPECT_EQ(e.ToXml({.formatted = false}), e.ToXml(true, false));
    EXPECT_EQ(e.ToXml({}), e.ToXml(false));  // as ever: braces are the first flag
    EXPECT_EQ(e.ToJson({.formatted = false}), e.ToJson(false));
    CSerializationContext context;
    context.SetIndentChars("  ");
    const CWriteOptions options = {.formatted = true,
                                   .encoding = XmlEncoding_UTF16,
                                   .eol = EOLType_CRLF,
                                   .compression = CompressionType_ZLib,
                                   .fastInfosetDeclaration = FInfoDecl_Write};
    for (int i = 0; i < 100; ++i)
        e.AddElement("b", nullptr, "long enough to shrink");
    EXPECT_EQ(e.ToXmlStream(options, context),
              e.ToXmlStream(true, true, XmlEncoding_UTF16, EOLType_CRLF, context, CompressionType_ZLib));
    EXPECT_EQ(e.ToJsonStream(options, context),
              e.ToJsonStream(true, XmlEncoding_UTF16, EOLType_CRLF, context, CompressionType_ZLib));
    EXPECT_EQ(e.ToFastInfosetStream(options, context),
              e.ToFastInfosetStream(FInfoDecl_Write, context, CompressionType_ZLib));
    const std::string path = testing::TempDir() + "kvxml_options.xml";
    const auto refusal = [&](auto write) {
        return ErrorOf([&] { (e.*write)(path.c_str(), options, context); });
    };
    using Write =
        void (CXmlObjectBase::*)(const char*, const CWriteOptions&, const CSerializationContext&) const;
    for (const Write write : {Write(&CXmlObjectBase::ToXmlFile), Write(&CXmlObjectBase::ToJsonFile),
                              Write(&CXmlObjectBase::ToFastInfosetFile)})
        EXPECT_EQ(refusal(write), "ZLIB Compression only available for To Stream methods.");
    e.ToXmlFile(path.c_str(), {.formatted = false, .compression = CompressionType_GZip});
    CElement again;
    again.FromXmlFile(path.c_str());
    EXPECT_EQ(again.ToXml({.formatted = false}), e.ToXml({.formatted = false}));
}

// --- streams -----------------------------------------------------------------------------------------------

TEST(EntryPointsTest, StreamsCarryTheBytesOfTheOtherOperations) {
    CElement element;
    FillLong(element);
    const CSerializationContext context;
    for (const XmlEncoding encoding : {XmlEncoding_UTF8, XmlEncoding_UTF16}) {
        for (const CompressionType compression : {CompressionType_None, CompressionType_GZip}) {
            CWriteOptions options;
            options.encoding = encoding;
            options.compression = compression;
            std::stringstream xml;
            element.ToXmlStream(xml, options);
            EXPECT_EQ(xml.str(), TextOf(element.ToXmlStream(options)));
            std::stringstream json;
            element.ToJsonStream(json, options);
            EXPECT_EQ(json.str(), TextOf(element.ToJsonStream(options)));
            std::stringstream fast;
            element.ToFastInfosetStream(fast, options);
            EXPECT_EQ(fast.str(), TextOf(element.ToFastInfosetStream(options)));

            CElement read;
            read.FromXmlStream(xml);
            EXPECT_EQ(read.ToXml(), element.ToXml());
            EXPECT_EQ(xml.rdstate(), std::ios::eofbit);
            read.FromXmlStream(fast);
            EXPECT_EQ(read.ToXml(), element.ToXml());
            read.FromJsonStream(json);
            EXPECT_EQ(read.ToJson(), element.ToJson());
        }
    }
    const CSmartPtr<fixture::AllKinds> object(new fixture::AllKinds());
    fixture::Fill(*object);
    std::stringstream xml;
    object->ToXmlStream(xml);
    const CSmartPtr<fixture::AllKinds> again(new fixture::AllKinds());
    again->FromXmlStream(xml);
    fixture::Check(*again);
}

TEST(EntryPointsTest, TextIsPassedOnWhileItIsWritten) {
    CElement element;
    FillLong(element);
    for (const auto& write :
         {std::function<void(std::ostream&)>([&](std::ostream& out) { element.ToXmlStream(out); }),
          std::function<void(std::ostream&)>([&](std::ostream& out) { element.ToJsonStream(out); })}) {
        FullBuffer buffer(1 << 20);
        std::ostream out(&buffer);
        write(out);
        EXPECT_GT(buffer.calls, 3U);
        EXPECT_LT(buffer.largest, 6000U);
    }
}

TEST(EntryPointsTest, FailingStreams) {
    CElement element;
    FillLong(element);
    using Write =
        void (CXmlObjectBase::*)(std::ostream&, const CWriteOptions&, const CSerializationContext&) const;
    const CSerializationContext context;
    const std::string failure = "Failed to write to the stream.";
    for (const Write write : {Write(&CXmlObjectBase::ToXmlStream), Write(&CXmlObjectBase::ToJsonStream),
                              Write(&CXmlObjectBase::ToFastInfosetStream)}) {
        for (const CompressionType compression : {CompressionType_None, CompressionType_GZip}) {
            CWriteOptions options;
            options.compression = compression;
            const auto errorWith = [&](std::ostream& out) {
                return ErrorOf([&] { (element.*write)(out, options, context); });
            };
            for (const bool throws : {false, true}) {
                FullBuffer full(100, throws);
                std::ostream out(&full);
                EXPECT_EQ(errorWith(out), failure);
                EXPECT_TRUE(out.bad());
                EXPECT_EQ(errorWith(out), failure) << "it has failed before";
                std::ostream throwing(&full);
                throwing.exceptions(std::ios::badbit | std::ios::failbit);
                EXPECT_EQ(errorWith(throwing), failure);
                EXPECT_EQ(throwing.exceptions(), std::ios::badbit | std::ios::failbit);
            }
            std::ofstream device("/dev/full");  // takes all until it is flushed
            if (device.is_open()) {
                EXPECT_EQ(errorWith(device), failure);
            }
            std::ofstream nowhere("/nonexistent/file");
            EXPECT_EQ(errorWith(nowhere), failure);
        }
    }
    // What was written before the object's own failure stays.
    element.GetElements()->back()->SetValue("\x01");
    std::ostringstream out;
    EXPECT_EQ(ErrorOf([&] { element.ToXmlStream(out); }).find(failure), std::string::npos);
    EXPECT_GT(out.str().size(), 4000U);
    EXPECT_TRUE(out.good());
}

TEST(EntryPointsTest, StreamsThatCanNotBeRead) {
    CElement element;
    const auto errorWith = [&](std::istream& in) {
        const std::string error = ErrorOf([&] { element.FromXmlStream(in); });
        EXPECT_EQ(ErrorOf([&] { element.FromJsonStream(in); }), "Failed to read from the stream.");
        return error;
    };
    std::ifstream nowhere("/nonexistent/file");
    EXPECT_EQ(errorWith(nowhere), "Failed to read from the stream.");
    for (const auto mask : {std::ios::goodbit, std::ios::badbit | std::ios::failbit}) {
        BrokenBuffer buffer("<a/>");
        std::istream broken(&buffer);
        broken.exceptions(mask);
        EXPECT_EQ(errorWith(broken), "Failed to read from the stream.");
        EXPECT_TRUE(broken.bad());
        EXPECT_EQ(broken.exceptions(), mask);
    }
    std::istringstream empty;
    EXPECT_EQ(errorWith(empty), "XML Stream is empty!");
    std::istringstream whole("<a>x</a>");
    whole.exceptions(std::ios::badbit | std::ios::failbit | std::ios::eofbit);
    EXPECT_EQ(errorWith(whole), "(no error)");
    EXPECT_EQ(element.GetValue(), "x");
}

}  // namespace
}  // namespace KvXmlLib16
