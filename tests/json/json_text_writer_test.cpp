#include "kvxml/json/json_text_writer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/kvxml.h"
#include "kvxml/objects/element.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_model.h"

namespace KvXmlLib16 {
namespace {

/// A writer and its sink, with short forms for what most documents need.
class Output {
public:
    explicit Output(JsonRoundTrip mode = JsonRoundTrip_Full, bool escaped = false, bool formatted = false)
        : writer(&m_stream) {
        writer.SetSupportRoundtrip(mode);
        writer.SetEscapeStrings(escaped);
        writer.SetFormatted(formatted);
        writer.BeginOutput();
    }
    Output& Start(std::string_view name, std::string_view uri = {}) {
        writer.WriteStartElement(name, uri);
        return *this;
    }
    Output& Text(std::string_view text, ItemType type = ItemType_string) {
        writer.WriteText(text, type, false);
        return *this;
    }
    Output& Attribute(std::string_view name, std::string_view value, ItemType type = ItemType_string) {
        writer.WriteAttribute(name, "", value, type);
        return *this;
    }
    Output& End(int count = 1) {
        for (; count > 0; --count)
            writer.WriteEndElement();
        return *this;
    }
    Output& Item(std::string_view name, std::string_view text) {
        return Start(name).Text(text, ItemType_i4).End();
    }
    Output& Begin() { return writer.BeginArray(), *this; }
    Output& EndItems() { return writer.EndArray(), *this; }
    std::string Finish() {
        writer.EndDocument();
        return m_stream.TakeText();
    }

private:
    CTextStream m_stream;

public:
    CJsonTextWriter writer;
};

CSerializationContext Context(bool escaped = true, JsonRoundTrip mode = JsonRoundTrip_Full) {
    CSerializationContext context;
    context.GetJsonContext().SetSupportRoundtrip(mode);
    context.GetJsonContext().SetEscapeStrings(escaped);
    context.GetNamespaceAliases().Add("at", fixture::kAttributeNamespace);
    return context;
}

// --- structure -------------------------------------------------------------------------------------------

TEST(JsonTextWriter, Shapes) {
    struct Row {
        const char* what;
        std::function<void(Output&)> write;
        std::string expected;
    };
    const std::string n(100, 'n');
    const std::vector<Row> rows = {
        {"no element", [](Output&) {}, "{}"},
        {"empty root", [](Output& o) { o.Start("a").End(); }, R"({"a": {}})"},
        {"empty strings and other empty texts",
         [](Output& o) {
             o.Start("a").Start("s").Text("").End().Start("i").Text("", ItemType_i4).End();
             o.Start("u").Text("", ItemType_Unknown).End(2);
         },
         R"({"a": {"s": "","i": {},"u": {}}})"},
        {"text around children and before attributes",
         [](Output& o) {
             o.Start("a").Text("x").Attribute("b", "y").Start("c").End().Text("z").Start("d").Text("w");
             o.Text("1", ItemType_i4).End(2);
         },
         R"({"a": {"@b": "y","#text": "x","c": {},"#text": "z","d": "w1"}})"},
        {"nil", [](Output& o) { o.Start("a").writer.WriteNilAttribute(), o.End(); }, R"({"a": null})"},
        {"raw text", [](Output& o) { o.writer.WriteRaw("<?x?>"), o.writer.WriteRawAfterSpace("y"); }, "{}"},
        {"two roots", [](Output& o) { o.Start("a").End().Start("b").End(); }, R"({"a": {},"b": {}})"},
        {"several collections and what stands between",
         [](Output& o) {
             o.Start("r").Begin().Item("a", "1").Item("a", "2").EndItems().Begin().Item("b", "3").EndItems();
             o.Item("c", "4").Begin().Item("d", "5").EndItems().Item("e", "6").End();
         },
         R"({"r": {"a": [1,2],"b": [3],"c": 4,"d": [5],"e": 6}})"},
        {"names that change within one collection",
         [](Output& o) {
             o.Start("r").Begin().Item("a", "1").Item("ab", "2").Item("ab", "3").Item("a", "4").EndItems();
             o.Item("a", "5").Item("b", "6").End();
         },
         R"({"r": {"a": [1],"ab": [2,3],"a": [4,5],"b": 6}})"},
        {"collections in collections",
         [](Output& o) {
             o.Start("r").Begin().Start("a").Begin().Item("a", "1").EndItems().End().Start("a").End();
             o.Start("a").Attribute("x", "y").End().EndItems().End();
         },
         R"({"r": {"a": [{"a": [1]},{},{"@x": "y"}]}})"},
        {"a collection begun within another, as by members without a tag",
         [](Output& o) {
             o.Start("r").Begin().Item("a", "1").Begin().Item("b", "2").Item("b", "3").EndItems();
             o.Item("a", "4").Begin().Item("b", "5").EndItems().EndItems().End();
         },
         R"({"r": {"a": [1],"b": [2,3],"a": 4,"b": [5]}})"},
        {"attributes and text behind a collection",
         [](Output& o) {
             o.Start("r").Begin().Item("a", "1").EndItems().Attribute("b", "c").Text("d").End();
         },
         R"({"r": {"a": [1],"@b": "c","#text": "d"}})"},
        {"long names",
         [&](Output& o) {
             o.Start("r").Begin().Item(n, "1").Item(n, "2").Item(n + "m", "3").EndItems().End();
         },
         R"({"r": {")" + n + R"(": [1,2],")" + n + R"(m": [3]}})"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Output passing;
        row.write(passing);
        EXPECT_EQ(passing.Finish(), row.expected);
        Output escaped(JsonRoundTrip_Full, true, true);
        row.write(escaped);
        // The layout changes nothing else.
        EXPECT_EQ(nlohmann::json::parse(escaped.Finish()), nlohmann::json::parse(row.expected));
    }
}

TEST(JsonTextWriter, Layout) {
    const auto write = [](bool formatted, EOLType eol, const char* indent) {
        Output out(JsonRoundTrip_Full, true, formatted);
        out.writer.SetEOL(eol);
        out.writer.SetIndentChars(indent);
        out.Start("r").Attribute("x", "1").Begin().Item("a", "1").Start("a").Attribute("y", "2");
        out.Begin().Item("b", "2").EndItems().End().EndItems().Start("c").Text("z").End(2);
        return out.Finish();
    };
    EXPECT_EQ(write(false, EOLType_LF, "  "), R"({"r": {"@x": "1","a": [1,{"@y": "2","b": [2]}],"c": "z"}})");
    const std::string lines = R"({
  "r": {
    "@x": "1",
    "a": [
      1,
      {
        "@y": "2",
        "b": [
          2
        ]
      }
    ],
    "c": "z"
  }
})";
    std::string crlf;
    for (const char c : lines)
        crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
    EXPECT_EQ(write(true, EOLType_LF, "  "), lines);
    EXPECT_EQ(write(true, EOLType_CRLF, "  "), crlf);
    EXPECT_EQ(ErrorOf([&] { write(true, static_cast<EOLType>(2), ""); }), "Invalid EOL type.");

    EXPECT_EQ(write(true, EOLType_LF, "- \"x "), lines);  // only blanks may stand between tokens
}

TEST(JsonTextWriter, Namespaces) {
    const auto write = [](JsonRoundTrip mode) {
        Output out(mode);
        out.writer.SetDefaultNamespace("urn:d");
        out.writer.AddNamespaceAlias("p", "urn:p");
        out.writer.AddNamespaceAlias("xsi", "http://www.w3.org/2001/XMLSchema-instance");
        out.Start("r", "urn:r");
        out.writer.WriteAttribute("a", "urn:p", "1", ItemType_string);
        out.writer.WriteAttribute("lang", "http://www.w3.org/XML/1998/namespace", "de", ItemType_string);
        out.Begin().Start("d", "urn:d").Start("e", "urn:p").End(2);
        out.Start("d", "urn:p").End().EndItems().Start("t", "urn:d");
        out.writer.WriteTypeAttribute("urn:p", "T", ItemType_string);
        return out.End(2).Finish();
    };
    EXPECT_EQ(write(JsonRoundTrip_Full),
              R"({"AA:r": {"@xmlns": "urn:d","@xmlns:xsi": "http://www.w3.org/2001/XMLSchema-instance",)"
              R"("@xmlns:p": "urn:p","@xmlns:AA": "urn:r","@p:a": "1","@xml:lang": "de",)"
              R"("d": [{"p:e": {}}],"p:d": [{}],"t": {"@xsi:type": "p:T"}}})");
    EXPECT_EQ(write(JsonRoundTrip_NoNamespaces),
              R"({"r": {"@a": "1","@lang": "de","d": [{"e": {}},{}],"t": {}}})");
    EXPECT_EQ(write(JsonRoundTrip_None), R"({"r": {"a": "1","lang": "de","d": [{"e": {}},{}],"t": {}}})");

    Output out;
    out.Start("r", "urn:r");
    EXPECT_EQ(ErrorOf([&] { out.Start("c", "urn:c"); }), "Unknown Namespace: urn:c.");
    EXPECT_EQ(ErrorOf([&] { out.writer.WriteAttribute("a", "urn:a", "", ItemType_string); }),
              "Unknown Namespace: urn:a.");
    EXPECT_EQ(ErrorOf([&] { out.writer.WriteTypeAttribute("urn:t", "T", ItemType_string); }),
              "Unknown Namespace: urn:t.");
    EXPECT_EQ(ErrorOf([&] { out.Finish(); }), "An Element has not been closed.");
    for (const auto& misuse : {std::function<void(Output&)>([](Output& o) { o.Text("x"); }),
                               std::function<void(Output&)>([](Output& o) { o.Attribute("x", "y"); }),
                               std::function<void(Output&)>([](Output& o) { o.End(); })}) {
        Output empty;
        EXPECT_EQ(ErrorOf([&] { misuse(empty); }), "No element is open.");
    }
}

// --- values ----------------------------------------------------------------------------------------------

TEST(JsonTextWriter, QuotationFollowsTheKind) {
    std::string bare;
    for (int type = ItemType_Unknown; type <= ItemType_integer; ++type) {
        const auto kind = static_cast<ItemType>(type);
        const std::string json = Output().Start("a").Text("1", kind).End().Finish();
        if (json == R"({"a": 1})")
            bare += std::to_string(type) + " ";
        else
            EXPECT_EQ(json, R"({"a": "1"})");
    }
    EXPECT_EQ(bare, "3 4 5 6 7 8 9 10 11 12 24 25 26 ");

    // Where strings are escaped, only what JSON knows stays without quotation marks.
    const std::pair<ItemType, std::vector<const char*>> bareOnes[] = {
        {ItemType_r8, {"0", "-0", "0.5", "-1.25e+10", "1E5"}},
        {ItemType_integer, {"123456789012345678901234567890"}},
        {ItemType_boolean, {"true", "false", "1"}}};
    for (const auto& [type, texts] : bareOnes)
        for (const char* text : texts)
            EXPECT_EQ(Output(JsonRoundTrip_Full, true).Start("a").Text(text, type).End().Finish(),
                      std::string(R"({"a": )") + text + "}");
    for (const char* text : {"NaN", "-INF", "+1", "01", "-01", ".5", "5.", "-", "1e", "1e+", "1.e5", "0x1p3",
                             " 1", "TRUE", "1}"}) {
        EXPECT_EQ(Output(JsonRoundTrip_Full, true).Start("a").Text(text, ItemType_r8).End().Finish(),
                  std::string(R"({"a": ")") + text + "\"}");
        EXPECT_EQ(Output().Start("a").Text(text, ItemType_r8).End().Finish(),
                  std::string(R"({"a": )") + text + "}");
    }
}

TEST(JsonTextWriter, CharactersOfStrings) {
    struct Row {
        std::string text;
        std::string passed;
        std::string escaped;
    };
    const std::vector<Row> rows = {
        {"\"", "\"", "\\\""},
        {"\\", "\\", "\\\\"},
        {"/\x7F", "/\x7F", "/\x7F"},
        {"\b\t\f", "\b\t\f", "\\b\\t\\f"},
        {"a\r\nb", "a\r\nb", "a\\r\\nb"},  // dropped, and a line end
        {"\x01\x0B\x1F", "\\u0001\\u000B\\u001F", "\\u0001\\u000B\\u001F"},
        {std::string(1, '\0'), "\\u0000", "\\u0000"},
        {"\xC3\xA4\xF0\x9F\x8D\x9F", "\xC3\xA4\xF0\x9F\x8D\x9F", "\xC3\xA4\xF0\x9F\x8D\x9F"},
    };
    for (const Row& row : rows) {
        // At every place of strings short and long.
        for (const std::size_t before : {0u, 1u, 7u, 8u, 17u, 5000u}) {
            for (const std::size_t after : {0u, 1u, 9u}) {
                const std::string lead(before, 'x');
                const std::string rest(after, 'y');
                for (const bool escaped : {false, true}) {
                    Output out(JsonRoundTrip_Full, escaped);
                    out.writer.SetEOL(EOLType_CRLF);
                    out.Start("a").Text(lead + row.text + rest).End();
                    EXPECT_EQ(out.Finish(),
                              R"({"a": ")" + lead + (escaped ? row.escaped : row.passed) + rest + "\"}");
                }
            }
        }
    }
    EXPECT_EQ(Output().Start("a").Text("x\ny\r").End().Finish(), "{\"a\": \"x\ny\"}");

    Output out;
    out.Start("a");
    out.writer.WriteComment("x */ y\n\x01**/");
    EXPECT_EQ(out.End().Finish(), "{\"a\": /* x * / y\n\\u0001** / */\n{}}");
    Output none(JsonRoundTrip_Full, true);
    none.writer.WriteComment("x");
    EXPECT_EQ(none.Finish(), "{}");
}

TEST(JsonTextWriter, EscapedDocumentsAreAlwaysValid) {
    const std::string replacement = "\xEF\xBF\xBD";
    const auto valueOf = [](const std::string& text) {
        Output out(JsonRoundTrip_Full, true);
        // Names and prefixes that are none must not break out of their quotation marks either.
        out.writer.AddNamespaceAlias("\"p\\", "urn:\"\n");
        out.Start("n\"\\\n", "urn:\"\n").Attribute("@\"", text).Text(text).End();
        const auto json = nlohmann::json::parse(out.Finish()).front();
        EXPECT_EQ(json.at("@@\""), json.at("#text"));
        return json.at("#text").get<std::string>();
    };
    const std::pair<std::string, std::string> rows[] = {
        {"\x80", replacement},
        {"a\xC3", "a" + replacement},
        {"\xF0\x9F\x8D\"", replacement + "\""},
        {"\xED\xA0\x80", replacement + replacement + replacement},
        {"\xC0\xAF\\", replacement + replacement + "\\"},
        {"\xEF\xBF\xBF\xE2\x80\xA8", "\xEF\xBF\xBF\xE2\x80\xA8"},
        {"\xC3\xA4\xF0\x9F\x8D\x9F\x1F\x7F\xF4\x8F\xBF\xBF",
         "\xC3\xA4\xF0\x9F\x8D\x9F\x1F\x7F\xF4\x8F\xBF\xBF"},
    };
    for (const bool asciiOnly : {false, true}) {
        ASCIIOnly(asciiOnly);
        for (const auto& [text, expected] : rows)
            EXPECT_EQ(valueOf(text), expected) << asciiOnly;
    }
    ASCIIOnly(false);
    SetLocalCharEncoding(932);  // the second byte of the character is that of a backslash
    EXPECT_EQ(valueOf("\x95\x5C\"\\"), "\xE8\xA1\xA8\"\\");
    SetLocalCharEncoding(3);
}

// --- objects ---------------------------------------------------------------------------------------------

TEST(JsonTextWriter, UntypedContentDeclaresItsNamespaces) {
    const char* const xml =
        "<r xmlns='urn:r' xmlns:x='urn:x' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'>"
        "<x:a k='1' x:l='2' xsi:type='x:T'/><x:a>t</x:a><b xmlns='' xmlns:y='urn:y' "
        "y:m='3'/>"
        "<y:c xmlns:y='urn:y'>text<y:d/></y:c><z:c xmlns:z='urn:z'/></r>";
    const CSmartPtr<CElement> element(new CElement());
    element->FromXml(xml);
    EXPECT_EQ(element->ToJson(false, EOLType_LF, Context(true, JsonRoundTrip_NoNamespaces)),
              R"({"r": {"a": [{"@k": "1","@l": "2"},"t"],"b": {"@m": "3"},"c": {"#text": "text","d": {}},)"
              R"("c": {}}})");
    const CSmartPtr<CElement> read(new CElement());
    read->FromJson(element->ToJson(true, EOLType_LF, Context()).c_str());
    EXPECT_EQ(read->ToXml(false, false), element->ToXml(false, false, EOLType_LF, Context()));
}

const fixture::Model& MeasureModel() {
    static const fixture::Model& model =
        fixture::Model::New("Measure")
            .Text(ItemType_r8, "%.3f")
            .Attribute("unit", ItemType_string)
            .Attribute("lang", ItemType_string, true, nullptr, {}, fixture::kAttributeNamespace);
    return model;
}
using Measure = fixture::TypedNillable<MeasureModel>;

TEST(JsonTextWriter, ObjectsInEveryMode) {
    const auto measure = fixture::Make<Measure>();
    measure->Set("text", "1").Set("unit", "\"m\"");
    const char* const expected[] = {
        R"({"Measure": {"unit": ""m"","": 1.000}})",
        R"({"Measure": {"@unit": ""m"","#text": 1.000}})",
        R"({"AA:Measure": {"@xmlns:at": "urn:fixture:attributes","@xmlns:AA": "urn:fixture","@unit": ""m"",)"
        R"("#text": 1.000}})",
    };
    for (const JsonRoundTrip mode : {JsonRoundTrip_None, JsonRoundTrip_NoNamespaces, JsonRoundTrip_Full})
        EXPECT_EQ(measure->ToJson(false, EOLType_LF, Context(false, mode)), expected[mode]);
    measure->Set("lang", "en");
    EXPECT_EQ(ErrorOf([&] { measure->ToJson(); }),
              "Failed to convert the element [Measure] to XML\nPath: /Measure/@lang\n"
              "Failed to convert attributes to XML\nUnknown Namespace: urn:fixture:attributes.");

    // Default values are written; nil comes out as null.
    const fixture::Model& model = fixture::Model::New("Box")
                                      .EnumAttribute("level")
                                      .Attribute("size", ItemType_i4, true, "10")
                                      .Prim("Price", fixture::kMnd, ItemType_decimal, "2", "1.50")
                                      .Enum("Color", fixture::kMnd, "green")
                                      .Enum("Shade", fixture::kOpt)
                                      .Cls<Measure>("Length", fixture::kOpt)
                                      .ClsCol<Measure>("Point", 1, 3);
    const CSmartPtr<fixture::Object> box(new fixture::Object(model));
    box->Set("level", "0").Set("Price", "1.5").Set("Color", "1");
    (*box)["Shade"].SetNil();
    dynamic_cast<Measure&>(box->Create("Length")).SetNil(true);
    box->Add("Point").Set("text", "1");
    EXPECT_EQ(box->ToJson(false, EOLType_LF, Context(true, JsonRoundTrip_NoNamespaces)),
              R"({"Box": {"@level": "red","@size": 10,"Price": 1.50,"Color": "green","Shade": null,)"
              R"("Length": null,"Point": [1.000]}})");
}

TEST(JsonTextWriter, StreamsAndFiles) {
    const CSmartPtr<CElement> root(new CElement("r"));
    for (int i = 0; i < 500; ++i)
        root->AddElement("n", nullptr, ("n\xC3\xA4me " + std::to_string(i)).c_str());
    const auto context = Context();
    const std::string json = root->ToJson(true, EOLType_CRLF, context);
    const std::string path = testing::TempDir() + "kvxml_streams_and_files.json";
    const auto check = [&](const CBinaryData& data, CompressionType compression) {
        EXPECT_EQ(data.GetLength() < json.size() / 4, compression != CompressionType_None);
        const CSmartPtr<CElement> read(new CElement());
        read->FromJsonStream(data, context);
        EXPECT_EQ(read->ToJson(true, EOLType_CRLF, context), json);
    };
    for (const auto compression : {CompressionType_None, CompressionType_GZip, CompressionType_ZLib}) {
        check(root->ToJsonStream(true, XmlEncoding_UTF8, EOLType_CRLF, context, compression), compression);
        if (compression == CompressionType_ZLib) continue;  // not for files
        for (const XmlEncoding encoding : {XmlEncoding_UTF8, XmlEncoding_UTF16}) {
            for (const bool async : {false, true}) {
                AsyncToXmlFile(async);
                root->ToJsonFile(path.c_str(), true, encoding, EOLType_CRLF, context, compression);
                AsyncToXmlFile(false);
                std::ifstream in(path, std::ios::binary);
                check(CBinaryData(std::string(std::istreambuf_iterator<char>(in), {})), compression);
            }
        }
    }
    const CBinaryData wide = root->ToJsonStream(true, XmlEncoding_UTF16, EOLType_CRLF, context);
    EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(wide.GetData()), 8),
              std::string_view("{\0\r\0\n\0\t\0", 8));  // no mark
    std::filesystem::remove(path);
    EXPECT_EQ(ErrorOf([&] { root->ToJsonStream(true, XmlEncoding_None); }),
              "Unknown Encoding, select UTF-8 (contact our support team)");
}

}  // namespace
}  // namespace KvXmlLib16
