#include "kvxml/metadata/element.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "kvxml/xml/xml_document.h"
#include "kvxml/xml/xml_element.h"
#include "kvxml/xml/xml_text_writer.h"
#include "kvxml/xml/xml_tree_writer.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_classes.h"

namespace KvXmlLib16 {
namespace {

std::string WriteTree(const std::string& xml, bool formatted = false,
                      const CSerializationContext& context = CSerializationContext()) {
    CXmlDocument document(context);
    document.LoadXml(xml.c_str());
    CTextStream stream(XmlEncoding_UTF8);
    CXmlTextWriter writer(&stream);
    writer.SetFormatted(formatted);
    writer.BeginOutput();
    WriteXmlTree(*document.GetDocumentElement(), writer, context);
    writer.EndDocument();
    return stream.TakeText();
}

std::string WriteObject(const std::string& xml, bool formatted = false,
                        const CSerializationContext& context = CSerializationContext()) {
    CElement element;
    element.FromXml(xml.c_str(), context);
    return element.ToXml(false, formatted, EOLType_LF, context);
}

// --- round trips -------------------------------------------------------------------------------------------

constexpr const char* kXsi = " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"";

struct RoundTrip {
    const char* name;
    std::string in;
    std::string out;  // empty: as the input
};

const RoundTrip kRoundTrips[] = {
    {"texts and attributes", "<a x=\"1\" y=\"&lt;&quot;&#xA;&amp;\">t &amp; u</a>", ""},
    {"blanks are the only text", "<a> <b>  </b>\n</a>", "<a><b>  </b></a>"},
    {"text comes first", "<a>x<b/>y<c>z</c> </a>", "<a>xy <b/><c>z</c></a>"},
    {"blanks preserved", "<a xml:space=\"preserve\"> <b> <c/></b><d xml:space=\"default\"> <e/></d></a>",
     "<a xml:space=\"preserve\"> <b> <c/></b><d xml:space=\"default\"><e/></d></a>"},
    {"prefixes", "<p:a xmlns:p=\"urn:1\" xmlns:q=\"urn:2\" q:x=\"1\"><q:b/><p:c p:y=\"2\"/></p:a>", ""},
    {"prefixes declared inside", "<a><p:b xmlns:p=\"urn:1\" p:x=\"\"/></a>",
     "<a xmlns:p=\"urn:1\"><p:b p:x=\"\"/></a>"},
    {"default namespace", "<a xmlns=\"urn:1\" xmlns:p=\"urn:2\" p:x=\"\"><b/><p:c/></a>", ""},
    {"prefixed root, default children", "<p:a xmlns=\"urn:1\" xmlns:p=\"urn:2\"><b/></p:a>", ""},
    {"no namespace inside a default one", "<a xmlns=\"urn:1\"><b xmlns=\"\" c=\"\"><d/><e/></b><f/></a>", ""},
    {"default namespace inside none", "<a><b xmlns=\"urn:1\"><c/></b><d/></a>", ""},
    {"two default namespaces", "<a xmlns=\"urn:1\"><b xmlns=\"urn:2\"><c/></b><d/></a>", ""},
    {"a prefix for two namespaces", "<p:a xmlns:p=\"urn:1\"><p:b xmlns:p=\"urn:2\"><p:c/></p:b></p:a>",
     "<a xmlns=\"urn:1\" xmlns:p=\"urn:2\"><p:b><p:c/></p:b></a>"},
    {"two prefixes for a namespace", "<p:a xmlns:p=\"urn:1\" xmlns:q=\"urn:1\"><q:b>q:x</q:b></p:a>",
     "<p:a xmlns:p=\"urn:1\" xmlns:q=\"urn:1\"><p:b>q:x</p:b></p:a>"},
    {"prefixes in texts", "<a xmlns:p=\"urn:1\">p:x</a>", ""},
    {"namespaces that need escaping",
     "<p:a xmlns:p=\"a&amp;b&quot;\"><c xmlns=\"&lt;\" p:x=\"\"><d/></c></p:a>", ""},
    {"xml:lang", "<a xml:lang=\"de\" xml:base=\"b\"/>", ""},
    {"instance attributes",
     std::string("<a xmlns=\"urn:1\"") + kXsi +
         " xsi:schemaLocation=\"u v\" xsi:noNamespaceSchemaLocation=\"w\"><b xsi:nil=\"true\"/></a>",
     ""},
    {"types", std::string("<a") + kXsi + " xmlns:t=\"urn:t\" xsi:type=\"t:T\"><b xsi:type=\" U \"/></a>"},
    {"type in the default namespace", std::string("<a xmlns=\"urn:1\"") + kXsi + " xsi:type=\"T\"/>", ""},
    {"type with an unknown prefix", std::string("<a") + kXsi + " xsi:type=\"q:T\"/>", ""},
    {"type by a second prefix",
     std::string("<a") + kXsi + " xmlns:t=\"urn:t\" xmlns:s=\"urn:t\" xsi:type=\"t:T\"/>",
     std::string("<a") + kXsi + " xmlns:s=\"urn:t\" xsi:type=\"s:T\" xmlns:t=\"urn:t\"/>"},
};

TEST(ElementTest, RoundTrips) {
    for (const RoundTrip& row : kRoundTrips) {
        SCOPED_TRACE(row.name);
        const std::string& expected = row.out.empty() ? row.in : row.out;
        EXPECT_EQ(WriteObject(row.in), expected);
        EXPECT_EQ(WriteTree(row.in), expected);
        EXPECT_EQ(WriteObject(expected), expected);
        // Formatting changes no text, so it can be repeated.
        const std::string formatted = WriteObject(row.in, true);
        EXPECT_EQ(WriteTree(row.in, true), formatted);
        EXPECT_EQ(WriteObject(formatted), expected);
        EXPECT_EQ(WriteObject(formatted, true), formatted);
    }
}

}  // namespace
}  // namespace KvXmlLib16
