#include <gtest/gtest.h>
#include <zlib.h>

#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include "kvxml/base/exceptions.h"
#include "kvxml/json/json_reader_to_xml_handler.h"
#include "kvxml/platform/text_settings.h"
#include "kvxml/settings/json_context.h"
#include "kvxml/types/internal/compression.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_model.h"
#include "tests/support/xml_tree_dump.h"

namespace KvXmlLib16 {
namespace {

std::string Text(const CBinaryData& data) {
    return {reinterpret_cast<const char*>(data.GetData()), data.GetLength()};
}

CSerializationContext Context(JsonRoundTrip mode = JsonRoundTrip_Full) {
    CSerializationContext context;
    context.GetJsonContext().SetSupportRoundtrip(mode);
    return context;
}

/// Takes what FromJson reads as text.
class CDump final : public CXmlObjectBase {
public:
    CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override { return std::string(); }
    std::string GetNamespace() const override { return std::string(); }

    std::string text;
    const CSerializationContext* callers = nullptr;  // a context that must not change

protected:
    void ToXml_Int(CXmlWriter*, bool, const char*, const CSerializationContext&, bool) const override {}
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement*, const CSerializationContext& context,
                             bool) override {
        text = (context.GetIgnoreNamespaces() ? "ignoring " : "") + testsupport::Dump(element);
        if (callers != nullptr && callers->GetIgnoreNamespaces()) text += " changed";
        return nullptr;
    }
};

std::string Direct(const std::string& json, const CSerializationContext& context) {
    CDump dump;
    dump.FromJson(json.c_str(), context);
    return dump.text;
}

/// The tree of the XML text; blanks between elements are left out.
std::string ThroughXml(const std::string& json, const CSerializationContext& context) {
    const std::string xml = Text(CXmlDocument(context).LoadJson(json.c_str()));
    std::string flat;
    for (std::size_t i = 0; i < xml.size(); ++i) {
        flat += xml[i];
        if (xml[i] == '>')
            while (i + 1 < xml.size() && (xml[i + 1] == '\n' || xml[i + 1] == '\t'))
                ++i;
    }
    CXmlDocument document(context);
    document.LoadXml(flat.c_str());
    return testsupport::Dump(document);
}

struct MappingRow {
    std::string json;
    std::string_view tree;
};

void Check(const MappingRow& row, const CSerializationContext& context) {
    SCOPED_TRACE(row.json);
    const bool isIgnoring =
        context.GetJsonContext().GetSupportRoundtrip() != JsonRoundTrip_Full || context.GetIgnoreNamespaces();
    EXPECT_EQ(Direct(row.json, context), (isIgnoring ? "ignoring " : "") + std::string(row.tree));
    EXPECT_EQ(ThroughXml(row.json, context), row.tree);
}

TEST(JsonToXml, Mapping) {
    const MappingRow rows[] = {
        {R"({"a":null})", "a"},
        {R"({"a":{}})", "a"},
        {R"({"a":[-1.50e3]})", "a'-1.50e3'"},
        {R"({"a":123456789012345678901234567890.5e-999})", "a'123456789012345678901234567890.5e-999'"},
        {R"({"a":{"b":[1,"x",true,false,null,{"c":2}],"d":[],"b":9}})",
         "a(b'1' b'x' b'true' b'false' b b(c'2') b'9')"},
        {R"({"a":{"@x":1,"@y":true,"@z":null,"@xmlns":null,"#text":"t"}})", "a@x=1@y=true't'"},
        {R"({"a":{"#text":null,"b":{"@x":null}}})", "a(b)"},
        {R"({"a":{"#text":1.5,"@x":"late"}})", "a@x=late'1.5'"},
        {R"({"a":{"#text":"one","b":{},"#text":"two"}})", "a'onetwo'(b)"},
        {R"({"a":{"b":{"c":"\u0041","@y":"\u0042"},"@w":3,"d":[{"e":1,"@f":2},5]}})",
         "a@w=3(b@y=B(c'A') d@f=2(e'1') d'5')"},
        // values
        {R"({"a":"<&>\"'\u00e4\u20ac\ud83d\ude00\\"})", "a'<&>\"'\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\\'"},
        {R"({"a":{"@x":"1\r2\t3\n4 <&\"5","b":"1\r2\t3\n4"}})", "a@x=12 3\n4 <&\"5(b'12\t3\n4')"},
        {R"({"a":"<![CDATA[<x>]]>y<![CDATA[]]>]]>z"})", "a'<x>y]]>z'"},
        {R"({"a":"<![CDATA[open"})", "a'<![CDATA[open'"},
        {"{\"\xC3\xA4\":1}", "\xC3\xA4'1'"},
        // namespaces
        {R"({"a":{"@xmlns":"urn:n","b":{"@xmlns":"","c":1},"d":2}})", "{urn:n}a(b(c'1') {urn:n}d'2')"},
        {R"({"p:a":{"@xmlns:p":"urn:p","@p:x":1,"@xmlns":"urn:n","@y":2,"b":[{"p:c":3}]}})",
         "{urn:p}a@{urn:p}x=1@y=2({urn:n}b({urn:p}c'3'))"},
        {R"({"p:a":{"b":{"p:c":1,"@xmlns:p":"urn:inner"},"@p:x":1,"@xmlns:p":"urn:p"}})",
         "{urn:p}a@{urn:p}x=1(b({urn:inner}c'1'))"},
        {R"({"a":{"b":[{"@xmlns:q":"urn:1","q:c":1},{"@xmlns:q":"urn:2","q:c":2}],"@xml:lang":"de"}})",
         "a@{http://www.w3.org/XML/1998/namespace}lang=de(b({urn:1}c'1') b({urn:2}c'2'))"},
    };
    for (const MappingRow& row : rows)
        Check(row, Context());
}

TEST(JsonToXml, Settings) {
    Check({R"({"a":{"@x":1,"b":{"#text":"t","@y":2}}})", "a@x=1(b@y=2't')"},
          Context(JsonRoundTrip_NoNamespaces));
    Check({R"({"a":{"x":1,"b":{"y":2}}})", "a(x'1' b(y'2'))"}, Context(JsonRoundTrip_None));

    CSerializationContext noNamespaces = Context();
    noNamespaces.SetSchemaType(SchemaType_NoNamespaces);
    Check({R"({"p:a":{"b":1,"@xmlns:p":"urn:p","@p:x":2}})", "p:a@xmlns:p=urn:p@p:x=2(b'1')"}, noNamespaces);

    CSerializationContext keeping = Context();
    keeping.SetStripCDATA(false);
    Check({R"({"a":"<![CDATA[<x>]]>y"})", "a'<![CDATA[<x>]]>y'"}, keeping);

    CSerializationContext exact = Context();
    exact.GetJsonContext().SetExactStrings(true);
    Check({R"({"a":{"@x":"1\r2\t3\n4","#text":"<![CDATA[<x>]]>y\r"}})", "a@x=1\r2\t3\n4'<![CDATA[<x>]]>y'"},
          exact);

    CSerializationContext named = Context();
    named.GetJsonContext().SetRootElementName("root");
    for (const MappingRow& row :
         {MappingRow{"12", "root'12'"}, MappingRow{"{\"a\":1,\"b\":[2]}", "root(a'1' b'2')"},
          MappingRow{"[{\"@a\":1}]", "root@a=1"}, MappingRow{"null", "root"}})
        Check(row, named);
    named.GetJsonContext().SetArrayItemName("item");
    for (const MappingRow& row :
         {MappingRow{" /**/ [1,{\"a\":2},null]", "root(item'1' item(a'2') item)"}, MappingRow{"[]", "root"},
          MappingRow{"[{\"a\":1,\"@b\":2}]", "root(item@b=2(a'1'))"}, MappingRow{"{\"a\":[1]}", "root(a'1')"},
          MappingRow{"12", "root'12'"}})
        Check(row, named);
    EXPECT_EQ(ErrorOf([&] { Direct("[1,[2]]", named); })
                  .find("Error converting JSON to XML:\nJSON Array has no "
                        "Name.\nPath: $.root.item[1]"),
              0U);
}

TEST(JsonToXml, XmlText) {
    EXPECT_EQ(
        Text(CXmlDocument().LoadJson(
            R"({"p:a":{"@xmlns:p":"urn:p&","p:b":[1,{"c":"\u00e4<"}],"@p:x":"\""}})")),
        "<p:a xmlns:p=\"urn:p&amp;\" p:x=\"&quot;\">\n\t<p:b>1</p:b>\n\t<p:b>\n\t\t<c>\xC3\xA4&lt;</c>\n"
        "\t</p:b>\n</p:a>\n");
}

TEST(JsonToXml, Errors) {
    struct Row {
        std::string json;
        const char* error;
    };
    const Row rows[] = {
        {"{\"a\":{\"b\":[1,{\"\":2}]}}", "JSON item has an empty Name.\nPath: $.a.b[1]"},
        {"[1]", "JSON Array has no Name.\nPath: $"},
        {"12", "JSON Value has no Name.\nPath: $"},
        {" // nothing", "JSON text has no root element.\nPath: $"},
        {"{\"a\":[]}", "JSON text has no root element.\nPath: $"},
        {"{\"a\":1,\"b\":2}", "JSON text has more than one root element.\nPath: $.b"},
        {"{\"a\":[1,2]}", "JSON text has more than one root element.\nPath: $.a[1]"},
        {"{\"1a\":1}", "Failed to convert name '1a' to Element name in XML.\nPath: $.1a"},
        {"{\"a\":{\"b\":1,\"b>\":{\"c\":1}}}",
         "Failed to convert name 'b>' to Element name in XML.\nPath: $.a.b>.c"},
        {"{\"a:b:c\":1}", "Failed to convert name 'a:b:c' to Element name in XML.\nPath: $.a:b:c"},
        {"{\"\xE2\x82\xAC\":1}",
         "Failed to convert name '\xE2\x82\xAC' to Element name in XML.\nPath: $.\xE2\x82\xAC"},
        {"{\"a\":{\"@\":1}}", "Failed to convert name '' to Attribute name in XML.\nPath: $.a.@"},
        {"{\"a\":{\"@q:x\":1}}", "Failed to convert name 'q:x' to Attribute name in XML.\nPath: $.a.@q:x"},
        {"{\"a\":{\"@x\":1,\"@x\":2}}", "Failed to convert name 'x' to Attribute name in XML.\nPath: $.a.@x"},
        {"{\"a\":{\"b\":1,\"@x\":{}}}",
         "Failed to convert value '{' to Attribute string value in XML.\n"
         "Only strings, numbers, true, false and null can be values here\nPath: $.a.@x"},
        {"{\"a\":{\"#text\":[1]}}",
         "Failed to convert value '[' to Element string value in XML.\n"
         "Only strings, numbers, true, false and null can be values here\nPath: $.a.#text"},
        {"{\"a\":[\"x\\u0001\"]}",
         "Failed to convert value 'x\x01' to Element string value in XML.\n"
         "The text contains the character 0x01, which XML can not represent\nPath: $.a[0]"},
        {"{\"a\":{\"@x\":\"\xEF\xBF\xBF\"}}",
         "Failed to convert value '\xEF\xBF\xBF' to Attribute string value in XML.\n"
         "The text contains the character 0xFFFF, which XML can not represent\nPath: $.a.@x"},
        {"{\"a\":{\"@xmlns:p\":\"\"}}",
         "Failed to convert value '' to Attribute string value in XML.\n"
         "The namespace can not be declared so\nPath: $.a.@xmlns:p"},
        {"{\"a\":{\"b\":[1,2,{\"c\":[3,x",
         "Expected Value '{', '[', '\"', '0-9', '-', 'true', 'false' or 'null', found 'x' at line 1, "
         "position "
         "24.\nPath: $.a.b[2].c[1]"},
        {"{\"a\":{\"b\":1,\"@x\":2,\"d\":[{\"e\":1},{\"e\":",
         "Unexpected End of File. Expected Object Value at line 1, position 37.\nPath: $.a.d[1].e"},
    };
    const CSerializationContext context = Context();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.json);
        EXPECT_EQ(ErrorOf([&] { CXmlDocument().LoadJson(row.json.c_str()); }), row.error);
        const std::string direct = ErrorOf([&] { Direct(row.json, context); });
        EXPECT_EQ(direct.substr(0, 30), "Error converting JSON to XML:\n");
        EXPECT_EQ(direct.substr(direct.size() - std::string_view(row.error).size()), row.error);
    }
}

TEST(JsonToXml, LongNamesAndValuesAreShortenedInMessages) {
    const std::string name(1 << 20, ' ');
    EXPECT_LT(ErrorOf([&] { CXmlDocument().LoadJson(("{\"" + name + "\":1}").c_str()); }).size(), 600U);
}

TEST(JsonToXml, ManyMembersTakeLinearTime) {
    std::string attributes = "{\"a\":{";
    std::string late = "{\"a\":{\"b\":1";
    for (int i = 0; i < 20000; ++i) {
        const std::string number = std::to_string(i);
        attributes += "\"@xmlns:p" + number + "\":\"urn:" + number + "\",\"@p" + number + ":x\":1,";
        late += ",\"@x" + number + "\":{}";
        late.erase(late.size() - 2, 2) += "2,\"n" + number + "\":[1]";
    }
    EXPECT_EQ(ErrorOf([&] { Direct(attributes + "\"b\":1}}", Context()); }), "(no error)");
    EXPECT_EQ(ErrorOf([&] { Direct(late + "}}", Context()); }), "(no error)");
    EXPECT_EQ(ErrorOf([&] {
                  Direct(attributes + "\"@p7:x\":1}}", Context());
              }).find("Error converting JSON to XML:\nFailed to convert name 'urn:7|x'"),
              0U);
}

TEST(JsonToXml, ElementDepth) {
    CSerializationContext context = Context();
    context.SetMaxElementDepth(2);
    EXPECT_EQ(Direct("{\"a\":{\"b\":[1]}}", context), "a(b'1')");
    EXPECT_EQ(ErrorOf([&] { Direct("{\"a\":{\"b\":{\"c\":1}}}", context); }),
              "Error converting JSON to XML:\nelements are nested deeper than the limit of 2 at $.a.b.c\n"
              "elements are nested deeper than the limit of 2 at $.a.b.c");
}

TEST(JsonToXml, HandlerWritesThroughAnyWriter) {
    CTextStream stream;
    CXmlTextWriter writer(&stream);
    writer.SetFormatted(false);
    const auto read = [&](const char* json) {
        writer.BeginOutput();
        CJsonTextReader(std::make_unique<CJsonReaderToXmlHandler>(&writer, JsonRoundTrip_Full)).Read(json);
    };
    read(R"({"a":{"#text":1,"@x":2,"b":[true,null,{"@y":"\u00e4"}]}})");
    EXPECT_EQ(stream.TakeText(), "<a x=\"2\">1<b>true</b><b/><b y=\"\xC3\xA4\"/></a>");
    EXPECT_EQ(ErrorOf([&] { read(R"({"a":{"b":[0,1,{"c":1,"@x":2}]}})"); }),
              "Failed to convert value '2' to Attribute string value in XML.\n"
              "Attributes must be added before elements\nPath: $.a.b[2].@x");
}

TEST(JsonToXml, LocalCodePage) {
    SetLocalCharEncoding(1252);
    const std::string json = "{\"\xE4\":{\"@x\":\"\\u20ac\",\"#text\":\"\xE4\\u4e00\"}}";
    const std::string direct = Direct(json, Context());
    const std::string xml = ThroughXml(json, Context());
    SetLocalCharEncoding(3);
    EXPECT_EQ(direct, "\xE4@x=\x80'\xE4?'");
    EXPECT_EQ(xml, direct);
}

// --- entry points -----------------------------------------------------------------------------------------

class JsonInputTest : public testing::Test {
protected:
    static std::string Stream(std::string_view bytes) {
        CDump dump;
        dump.FromJsonStream(CBinaryData(bytes));
        return dump.text;
    }
};

TEST_F(JsonInputTest, Encodings) {
    using namespace std::string_view_literals;
    EXPECT_EQ(Stream("\xEF\xBB\xBF{\"a\":\"\xC3\xA4\"}"), "a'\xC3\xA4'");
    EXPECT_EQ(Stream("\xFF\xFE{\0\"\0a\0\"\0:\0\"\0\xE4\0\"\0}\0"sv), "a'\xC3\xA4'");
    EXPECT_EQ(Stream("\xFE\xFF\0{\0\"\0a\0\"\0:\0\"\0\xE4\0\"\0}"sv), "a'\xC3\xA4'");
    EXPECT_EQ(Stream("{\0\"\0a\0\"\0:\0\"\0\xE4\0\"\0}\0"sv), "a'\xC3\xA4'");
    EXPECT_EQ(Stream("\0{\0\"\0a\0\"\0:\0\"\0\xE4\0\"\0}"sv), "a'\xC3\xA4'");
    EXPECT_NE(ErrorOf([] { Stream("\xFE\xFF\0{\xD8"sv); }).find("The JSON text is not valid UTF-16."),
              std::string::npos);
    CDump dump;
    dump.FromJson(L"{\"a\":\"\u00e4\u20ac\U0001F41F\"}");
    EXPECT_EQ(dump.text, "a'\xC3\xA4\xE2\x82\xAC\xF0\x9F\x90\x9F'");
    dump.FromJson("\xEF\xBB\xBF{\"a\":1}");
    EXPECT_EQ(dump.text, "a'1'");
    dump.FromJson(L"\uFEFF{\"a\":2}");
    EXPECT_EQ(dump.text, "a'2'");
}

TEST_F(JsonInputTest, CompressedBytesAndFiles) {
    const std::string json = "{\"a\":\"" + std::string(1000, 'x') + "\"}";
    const std::string expected = "a'" + std::string(1000, 'x') + "'";
    const std::string path = testing::TempDir() + "kvxml_json_input.json";
    for (const CompressionType type : {CompressionType_None, CompressionType_GZip, CompressionType_ZLib}) {
        CBinaryData data{std::string_view(json)};
        internal::Compress(data, type);
        EXPECT_EQ(Stream(Text(data)), expected);
        std::ofstream(path, std::ios::binary) << Text(data);
        CDump dump;
        dump.FromJsonFile(path.c_str());
        EXPECT_EQ(dump.text, expected);
        EXPECT_EQ(Text(CXmlDocument().LoadJsonFile(path.c_str())), "<a>" + std::string(1000, 'x') + "</a>\n");
    }
    std::remove(path.c_str());
}

TEST_F(JsonInputTest, EmptyInput) {
    CDump dump;
    CXmlDocument document;
    const std::string wrapped = "Error converting JSON to XML:\n";
    const std::string string = "JSON String is empty!";
    const std::string stream = "JSON Stream is empty!";
    EXPECT_EQ(ErrorOf([&] { document.LoadJson(""); }), string);
    EXPECT_EQ(ErrorOf([&] { document.LoadJson(L""); }), string);
    EXPECT_EQ(ErrorOf([&] { document.LoadJsonStream(nullptr, 5); }), stream);
    EXPECT_EQ(ErrorOf([&] { document.LoadJsonFile("/dev/null"); }), stream);
    EXPECT_EQ(ErrorOf([&] { dump.FromJson(static_cast<const char*>(nullptr)); }),
              wrapped + string + "\n" + string);
    EXPECT_EQ(ErrorOf([&] { dump.FromJsonStream(CBinaryData()); }), wrapped + stream + "\n" + stream);
}

const fixture::Model& MeasureModel() {
    static const fixture::Model& model =
        fixture::Model::New("Measure").Text(ItemType_r8).Attribute("unit", ItemType_string);
    return model;
}
using Measure = fixture::Typed<MeasureModel>;

TEST_F(JsonInputTest, TheContextIsLeftAsItIs) {
    const CSerializationContext none = Context(JsonRoundTrip_None);
    CDump dump;
    dump.callers = &none;
    dump.FromJson("{\"a\":1}", none);
    EXPECT_EQ(dump.text, "ignoring a'1'");
    for (const JsonRoundTrip mode : {JsonRoundTrip_None, JsonRoundTrip_Full}) {
        CSerializationContext context = Context(mode);
        for (const char* json : {"{\"Measure\":1}", "{\"Measure\":\"no number\"}", "{", ""}) {
            for (const bool ignored : {false, true}) {
                SCOPED_TRACE(json);
                context.SetIgnoreNamespaces(ignored);
                const auto measure = fixture::Make<Measure>();
                const std::string error = ErrorOf([&] { measure->FromJson(json, context); });
                const bool fits =
                    json == std::string("{\"Measure\":1}") && (mode == JsonRoundTrip_None || ignored);
                EXPECT_EQ(error == "(no error)", fits) << error;
                EXPECT_EQ(context.GetIgnoreNamespaces(), ignored);
            }
        }
    }
}

}  // namespace
}  // namespace KvXmlLib16
