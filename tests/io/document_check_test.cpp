/// Documents that are judged by a schema in the pass that reads them, in every format and way of reading.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>

#include "examples/orders/class_factory.h"
#include "examples/orders/orders_type.h"
#include "kvxml/kvxml.h"
#include "kvxml/schema/schema.h"
#include "kvxml/types/internal/compression.h"
#include "tests/support/error_of.h"

namespace KvXmlLib16 {
namespace {

using Orders::COrdersType;

std::string ReadFile(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::shared_ptr<const CDocumentCheck> CheckOf(const std::string& schema) {
    CSchemaLoader loader;
    loader.AddText(schema, "s.xsd");
    return MakeDocumentCheck(loader.Load());
}

/// The schema of the orders, with a rule that the classes do not know.
std::shared_ptr<const CDocumentCheck> CheckOfOrders() {
    std::string schema = ReadFile(KVXML_SOURCE_DIR "/examples/orders/orders.xsd");
    const std::string zip = R"(name="zip" type="xs:string")";
    schema.replace(schema.find(zip), zip.size(), R"(name="zip" type="SkuType")");
    return CheckOf(schema);
}

TEST(DocumentCheck, EveryWayOfReadingRefuses) {
    const std::string xml = ReadFile(KVXML_SOURCE_DIR "/examples/orders/sample.xml");
    const std::string before = xml.substr(0, xml.find("<zip>"));
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    const std::string place =
        "at line " + std::to_string(line) + ", column " + std::to_string(before.size() - before.rfind('\n'));
    CSerializationContext writing;
    writing.SetDefaultNamespaceURI(Orders::kNamespace);
    const CSmartPtr<COrdersType> good(new COrdersType());
    good->FromXml(xml);
    const std::string json = good->ToJson(true, EOLType_LF, writing);
    const CBinaryData infoset = good->ToFastInfosetStream(FInfoDecl_None, writing);
    CBinaryData gzip(xml);
    internal::Compress(gzip, CompressionType_GZip);
    const std::string file = "/tmp/kvxml-check-" + std::to_string(getpid()) + ".xml";
    std::ofstream(file, std::ios::binary) << xml;

    const struct {
        const char* name;
        bool hasLines;
        std::function<void(COrdersType&, const CSerializationContext&)> read;
    } ways[] = {
        {"text", true, [&](auto& to, auto& context) { to.FromXml(xml.c_str(), context); }},
        {"wide", true,
         [&](auto& to, auto& context) { to.FromXml(std::wstring(xml.begin(), xml.end()).c_str(), context); }},
        {"bytes", true, [&](auto& to, auto& context) { to.FromXmlStream(CBinaryData(xml), context); }},
        {"gzip", true, [&](auto& to, auto& context) { to.FromXmlStream(gzip, context); }},
        {"stream", true,
         [&](auto& to, auto& context) {
             std::istringstream in(xml);
             to.FromXmlStream(in, context);
         }},
        {"file", true, [&](auto& to, auto& context) { to.FromXmlFile(file.c_str(), context); }},
        {"chunks", true,
         [&](auto& to, auto& context) {
             AsyncFromXmlFile(true);
             to.FromXmlFile(file.c_str(), context);
         }},
        {"infoset", false, [&](auto& to, auto& context) { to.FromXmlStream(infoset, context); }},
        {"json", false, [&](auto& to, auto& context) { to.FromJson(json, context); }},
    };
    for (const auto& way : ways) {
        SCOPED_TRACE(way.name);
        CSerializationContext context;
        const CSmartPtr<COrdersType> orders(new COrdersType());
        way.read(*orders, context);
        const std::string rendered = orders->ToXml();
        context.SetDocumentCheck(CheckOfOrders());
        const std::string error = ErrorOf<CKvSchemaValidationException>([&] { way.read(*orders, context); });
        AsyncFromXmlFile(false);
        EXPECT_EQ(error.find("The element [zip] is not valid: "), 0u) << error;
        EXPECT_EQ(error.find(place) != std::string::npos, way.hasLines) << error << "\n" << place;
        EXPECT_NE(error.find("/customer/address/zip"), std::string::npos) << error;
        EXPECT_EQ(orders->ToXml(), rendered);
    }
    std::remove(file.c_str());
}

TEST(DocumentCheck, TreesAreJudgedAsTheyAreRead) {
    const auto check = CheckOf(
        "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:s' xmlns='urn:s' "
        "elementFormDefault='qualified'><xs:element name='s'><xs:complexType><xs:sequence>"
        "<xs:element name='n' type='xs:int' minOccurs='0' nillable='true'/>"
        "<xs:element name='v' type='N' minOccurs='0' maxOccurs='2'/>"
        "<xs:element name='q' type='xs:QName' minOccurs='0'/></xs:sequence>"
        "<xs:attribute name='id' type='xs:int' use='required'/><xs:attribute name='r' type='xs:IDREF'/>"
        "</xs:complexType></xs:element>"
        "<xs:simpleType name='N'><xs:restriction base='xs:string'><xs:pattern value='[0-9]+'/>"
        "</xs:restriction></xs:simpleType></xs:schema>");
    CSerializationContext plain;
    plain.SetDocumentCheck(check);
    CSerializationContext keepsCData(plain);
    keepsCData.SetStripCDATA(false);
    CSerializationContext local(plain);
    local.GetJsonContext().SetSupportRoundtrip(JsonRoundTrip_NoNamespaces);
    CSerializationContext noNamespaces(plain);
    noNamespaces.SetSchemaType(SchemaType_NoNamespaces);
    const struct {
        const CSerializationContext& context;
        const char* text;
        const char* error;  // its beginning; null: none
    } rows[] = {
        {plain, "<s xmlns='urn:s' id='1'><v>1<!-- -->2</v>\n<v>3</v></s>", nullptr},
        {plain, "<s xmlns='urn:s' id='1'><v>1</v><v>2</v><v>3</v></s>", "The element [v] of the namespace"},
        {plain, "<s xmlns='urn:s' id='1'>x</s>", "The element [s] may have elements, but no text."},
        {plain, "<s xmlns='urn:s' id='1' r='x'/>", "There is no element with the ID [x]."},
        {plain, "<p:s xmlns:p='urn:s' id='1'><p:q xmlns:p='urn:s' xmlns:i='urn:i'>i:x</p:q></p:s>", nullptr},
        {plain, "<p:s xmlns:p='urn:s' id='1'><p:q>i:x</p:q></p:s>", "The element [q] is not valid"},
        {plain, "<s id='1'/>", "There is no declaration"},
        {keepsCData, "<s xmlns='urn:s' id='1'><v><![CDATA[1]]>2<![CDATA[]]></v></s>", nullptr},
        {noNamespaces, "<p:s xmlns:p='urn:s' id='1'><p:n>1</p:n></p:s>", nullptr},
        {noNamespaces,
         "<s id='1' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'><n xsi:nil='true'/></s>", nullptr},
        {local, R"({"s": {"@id": 1, "n": null, "v": ["1", "2"]}})", nullptr},
        {local, R"({"s": {"n": 5, "v": "1", "@id": 1}})", nullptr},  // the attribute comes late
        {local, R"({"s": {"n": 5, "v": "x", "@id": 1}})", "The element [v] is not valid"},
        {local, R"({"s": {"n": 5}})", "The element [s] lacks the attribute [id]."},
        {local, R"({"s": {"@id": 1, "v": null}})", nullptr},  // not there, as for classes
        {local, R"({"s": {"@id": 1, "v": [null]}})", "The element [v] is not valid"},
        {plain, R"({"s": {"@xmlns": "urn:s", "@id": 1}})", nullptr},
        {plain, R"({"s": {"@id": 1}})",
         "There is no declaration of the element [s]; there is one of the namespace [urn:s]."},
        {local, R"({"x": 1})", "There is no declaration of the element [x]."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        CXmlDocument document(row.context);
        const std::string error = ErrorOf<CKvSchemaValidationException>([&] {
            if (row.text[0] == '{') {
                document.BuildFromJson(row.text);
            } else {
                document.LoadXml(row.text);
            }
        });
        EXPECT_EQ(error.find(row.error == nullptr ? "(no error)" : row.error), 0u) << error;
    }
    // What the filter discards has been judged before.
    CXmlDocument filtered([](CXmlElement* element) { return element->GetLocalName() == "v"; }, plain);
    filtered.LoadXml("<s xmlns='urn:s' id='1'><v>1</v><v>2</v></s>");
    EXPECT_EQ(filtered.GetDocumentElement()->GetFirstElement(), nullptr);
    EXPECT_THROW(filtered.LoadXml("<s xmlns='urn:s' id='1'><v>1</v><v>x</v></s>"),
                 CKvSchemaValidationException);
}

}  // namespace
}  // namespace KvXmlLib16
