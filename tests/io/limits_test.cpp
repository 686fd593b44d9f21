#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/fastinfoset/fast_infoset_writer.h"
#include "kvxml/json/json_text_writer.h"
#include "kvxml/objects/xml_tree_writer.h"
#include "kvxml/platform/text_settings.h"
#include "kvxml/settings/serialization_context.h"
#include "kvxml/types/internal/compression.h"
#include "kvxml/xml/text_stream.h"
#include "kvxml/xml/xml_document.h"
#include "kvxml/xml/xml_element.h"
#include "kvxml/xml/xml_text_writer.h"
#include "tests/support/error_of.h"

namespace KvXmlLib16 {
namespace {

using Context = CSerializationContext;

CBinaryData FastInfosetOf(const std::string& xml) {
    Context unlimited;
    unlimited.SetMaxDistinctNames(0);
    unlimited.SetMaxElementDepth(0);
    CXmlDocument document(unlimited);
    document.LoadXml(xml.c_str());
    CFastInfosetWriter writer(unlimited.GetFIContext(), FInfoDecl_None, false);
    writer.BeginOutput();
    WriteXmlTree(*document.GetDocumentElement(), writer, unlimited);
    writer.EndDocument();
    return writer.TakeDocument();
}

class LimitsTest : public testing::Test {
protected:
    ~LimitsTest() override {
        AsyncFromXmlFile(false);
        std::remove(m_path.c_str());
    }

    const char* Save(const CBinaryData& data) {
        std::ofstream(m_path, std::ios::binary)
            .write(reinterpret_cast<const char*>(data.GetData()),
                   static_cast<std::streamsize>(data.GetLength()));
        return m_path.c_str();
    }

    /// What every way of reading XML has to say.
    void ExpectXml(const Context& context, const std::string& text, const std::string& error) {
        const std::string xml = text + std::string(100, ' ');  // enough to be compressed
        CXmlDocument document(context);
        const CBinaryData data{std::string_view(xml)};
        CBinaryData compressed(data);
        internal::Compress(compressed, CompressionType_GZip);
        const std::pair<const char*, std::function<void()>> ways[] = {
            {"text", [&] { document.LoadXml(xml.c_str()); }},
            {"wide text", [&] { document.LoadXml(std::wstring(xml.begin(), xml.end()).c_str()); }},
            {"bytes", [&] { document.LoadXmlStream(data.GetData(), data.GetLength()); }},
            {"compressed bytes",
             [&] { document.LoadXmlStream(compressed.GetData(), compressed.GetLength()); }},
            {"file", [&] { document.Load(Save(data)); }},
            {"compressed file", [&] { document.Load(Save(compressed)); }},
            {"chunks",
             [&] {
                 AsyncFromXmlFile(true);
                 document.Load(Save(data));
             }},
        };
        for (const auto& [name, read] : ways) {
            EXPECT_EQ(ErrorOf(read).substr(0, 200), error) << name;
            AsyncFromXmlFile(false);
        }
    }

    const std::string m_path = testing::TempDir() + "kvxml_limits_" + std::to_string(getpid());
};

TEST_F(LimitsTest, HoldOnEveryWayIn) {
    const std::string many = "<r>\n<a/><b/>\n<c/>\n</r>";
    const std::string deep = "<r>\n<a>\n<b>\n<c/></b></a></r>";
    const std::string defaults =
        "<!DOCTYPE r [<!ATTLIST a x CDATA '" + std::string(20000, 'x') + "'>]>\n<r>\n";
    std::string defaulted = defaults;
    for (int i = 0; i < 2000; ++i)
        defaulted += "<a/>";
    defaulted += "</r>";
    std::string declared = "<!DOCTYPE r [<!ATTLIST r";
    for (int i = 0; i < 1001; ++i)
        declared += " a" + std::to_string(i) + " ID #IMPLIED";
    declared += ">]>\n<r/>";
    std::string entities = "<!DOCTYPE r [<!ENTITY e '" + std::string(1000, 'e') + "'>]>\n<r>";
    for (int i = 0; i < 2000; ++i)
        entities += "&e;";
    entities += "</r>";
    const auto setNone = [](Context& c) {
        c.SetMaxDistinctNames(0);
        c.SetMaxElementDepth(0);
        c.SetMaxExpansion(0);
        c.SetMaxInflatedSize(0);
        c.SetMaxInflationRatio(0);
    };
    std::string elements = "<!DOCTYPE r [<!ENTITY e '";
    for (int i = 0; i < 100; ++i)
        elements += "<a/>";
    elements += "'>]>\n<r>";
    for (int i = 0; i < 3000; ++i)
        elements += "&e;";
    elements += "</r>";
    struct Row {
        const char* what;
        void (*set)(Context& context);
        const std::string& xml;
        const char* error;
    };
    const char* const kFine = "(no error)";
    const Row rows[] = {
        {"names", [](Context& c) { c.SetMaxDistinctNames(3); }, many,
         "there are more distinct names than the limit of 3 at line 3"},
        {"as many names", [](Context& c) { c.SetMaxDistinctNames(4); }, many, kFine},
        {"no limit of names", [](Context& c) { c.SetMaxDistinctNames(0); }, many, kFine},
        {"depth", [](Context& c) { c.SetMaxElementDepth(3); }, deep,
         "elements are nested deeper than the limit of 3 at line 4"},
        {"as deep", [](Context& c) { c.SetMaxElementDepth(4); }, deep, kFine},
        {"no limit of depth", [](Context& c) { c.SetMaxElementDepth(0); }, deep, kFine},
        {"default attributes", [](Context&) {}, defaulted,
         "entities and default attributes add more to the document than the limit of 8388608 bytes at line "
         "3"},
        {"many default attributes", [](Context& c) { c.SetMaxExpansion(50000000); }, defaulted, kFine},
        {"elements in entities", [](Context&) {}, elements,
         "entities and default attributes add more to the document than the limit of 8388608 bytes at line "
         "2"},
        {"few entities", [](Context&) {}, entities, kFine},
        {"entities", [](Context& c) { c.SetMaxExpansion(1000); }, entities,
         "limit on input amplification factor (from DTD and entities) breached at line 2"},
        {"declared attributes", [](Context&) {}, declared,
         "the document type declares more than 1000 attributes for one element at line 1"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Context context;
        row.set(context);
        ExpectXml(context, row.xml, row.error);
    }
    Context none;
    setNone(none);
    ExpectXml(none, defaulted, kFine);
}

TEST_F(LimitsTest, EntitiesAreHeldToTheSameLimit) {
    std::string laughs = "<!DOCTYPE r [<!ENTITY e0 '" + std::string(1000, 'e') + "'>";
    for (int i = 1; i <= 4; ++i) {
        laughs += "<!ENTITY e" + std::to_string(i) + " '";
        for (int k = 0; k < 10; ++k)
            laughs += "&e" + std::to_string(i - 1) + ";";
        laughs += "'>";
    }
    laughs += "]><r>&e4;</r>";
    Context context;
    const std::string refused =
        "limit on input amplification factor (from DTD and entities) breached at line 1";
    ExpectXml(context, laughs, refused);
    context.SetMaxExpansion(50000000);
    ExpectXml(context, laughs, "(no error)");
    context.SetMaxExpansion(0);
    ExpectXml(context, laughs, "(no error)");
    laughs.replace(laughs.find("&e4;"), 4, "&e2;");
    context.SetMaxExpansion(10000);
    ExpectXml(context, laughs, "(no error)");  // 100,000 bytes, but not 100 times the document
}

TEST_F(LimitsTest, FastInfosetAndJson) {
    const std::string xml = "<r><a/><b><c/></b></r>";
    const char* const json = R"({"r":{"a":null,"b":[{"c":1}]}})";
    const CBinaryData octets = FastInfosetOf(xml);
    struct Row {
        const char* what;
        void (*set)(Context& context);
        const char* octetsError;
        const char* jsonError;
    };
    const Row rows[] = {
        {"names", [](Context& c) { c.SetMaxDistinctNames(3); },
         "Failed to parse FastInfoset. There are more distinct names than the limit of 3 at octet 15",
         "there are more distinct names than the limit of 3 at $.r.b[0].c"},
        {"depth", [](Context& c) { c.SetMaxElementDepth(2); },
         "Failed to parse FastInfoset. Elements are nested deeper than the limit of 2 at octet 15",
         "elements are nested deeper than the limit of 2 at $.r.b[0].c"},
        {"fits",
         [](Context& c) {
             c.SetMaxElementDepth(3);
             c.SetMaxDistinctNames(4);
         },
         "(no error)", "(no error)"},
        {"none",
         [](Context& c) {
             c.SetMaxElementDepth(0);
             c.SetMaxDistinctNames(0);
         },
         "(no error)", "(no error)"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Context context;
        row.set(context);
        CXmlDocument document(context);
        EXPECT_EQ(ErrorOf([&] { document.LoadXmlStream(octets.GetData(), octets.GetLength()); }),
                  row.octetsError);
        EXPECT_EQ(ErrorOf([&] { document.BuildFromJson(json); }), row.jsonError);
        if (row.what == std::string("names")) continue;  // text has no table of them
        EXPECT_EQ(ErrorOf([&] { document.LoadJson(json); }), row.jsonError);
    }
}

TEST_F(LimitsTest, TableEntriesOfFastInfosetAreExpansion) {
    std::string xml = "<r>";
    for (int i = 0; i < 2000; ++i)
        xml += "<a>" + std::string(30, 'x') + "</a>";
    const CBinaryData octets = FastInfosetOf(xml + "</r>");
    Context context;
    CXmlDocument document(context);
    const auto load = [&] { document.LoadXmlStream(octets.GetData(), octets.GetLength()); };
    context.SetMaxExpansion(1);  // and 100 times the document
    EXPECT_EQ(ErrorOf(load), "(no error)");
    context.SetMaxInflatedSize(1);  // for what is compressed
    EXPECT_EQ(ErrorOf(load), "(no error)");
}

TEST_F(LimitsTest, Inflation) {
    const std::string blanks(16U << 20, ' ');
    struct Input {
        const char* what;
        std::string text;
        std::function<void(CXmlDocument&, const CBinaryData&)> read;
    };
    const auto load = [](CXmlDocument& document, const CBinaryData& data) {
        document.LoadXmlStream(data.GetData(), data.GetLength());
    };
    const CBinaryData octets = FastInfosetOf("<r>" + blanks + "</r>");
    const Input inputs[] = {
        {"XML", "<r>" + blanks + "</r>", load},
        {"XML file", "<r>" + blanks + "</r>",
         [this](CXmlDocument& document, const CBinaryData& data) { document.Load(Save(data)); }},
        {"Fast Infoset", std::string(reinterpret_cast<const char*>(octets.GetData()), octets.GetLength()),
         load},
        {"JSON", "{\"r\":1" + blanks + "}",
         [](CXmlDocument& document, const CBinaryData& data) {
             document.BuildFromJsonStream(data.GetData(), data.GetLength());
         }},
        {"JSON text", "{\"r\":1" + blanks + "}",
         [](CXmlDocument& document, const CBinaryData& data) {
             document.LoadJsonStream(data.GetData(), data.GetLength());
         }},
    };
    for (const Input& input : inputs) {
        SCOPED_TRACE(input.what);
        CBinaryData data{std::string_view(input.text)};
        internal::Compress(data, CompressionType_GZip);
        Context context;
        const auto error = [&] {
            CXmlDocument document(context);
            return ErrorOf([&] { input.read(document, data); });
        };
        EXPECT_EQ(error(), "(no error)");  // 229 times its size
        context.SetMaxInflationRatio(100);
        EXPECT_EQ(error().substr(0, 83),
                  "The compressed data inflates to more than the limit of 100 times its size: its firs");
        context.SetMaxInflationRatio(0);
        context.SetMaxInflatedSize(input.text.size() - 1);
        EXPECT_EQ(error(), "The compressed data inflates to more than the limit of " +
                               std::to_string(input.text.size() - 1) + " bytes.");
        context.SetMaxInflatedSize(0);
        EXPECT_EQ(error(), "(no error)");
    }
    // A small document may be as regular as it likes.
    CBinaryData small{std::string_view("<r>" + blanks.substr(0, 8000000) + "</r>")};
    internal::Compress(small, CompressionType_GZip);
    Context context;
    context.SetMaxInflationRatio(1);
    CXmlDocument document(context);
    EXPECT_EQ(ErrorOf([&] { load(document, small); }), "(no error)");
}

TEST_F(LimitsTest, IndentationDoesNotGrowWithTheSquareOfTheDepth) {
    Context context;
    context.SetMaxElementDepth(0);
    for (const bool isJson : {false, true}) {
        const auto sizeAt = [&](std::size_t depth) {
            std::string xml;
            for (std::size_t i = 0; i < depth; ++i)
                xml += "<a>";
            for (std::size_t i = 0; i < depth; ++i)
                xml += "</a>";
            CXmlDocument document(context);
            document.LoadXml(xml.c_str());
            CTextStream stream(XmlEncoding_UTF8);
            CXmlTextWriter text(&stream);
            CJsonTextWriter json(&stream);
            CXmlWriter& writer = isJson ? static_cast<CXmlWriter&>(json) : text;
            writer.BeginOutput();
            WriteXmlTree(*document.GetDocumentElement(), writer, context);
            writer.EndDocument();
            return stream.TakeText().size();
        };
        EXPECT_EQ(sizeAt(1000) - sizeAt(999), isJson ? 2008U : 2006U);  // about two tabs per level
        EXPECT_LT(sizeAt(16000), 5 * sizeAt(4000));
    }
}

}  // namespace
}  // namespace KvXmlLib16
