#include "kvxml/xml/xml_text_writer.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/error_of.h"

namespace KvXmlLib16 {
namespace {

constexpr const char* kXsi = "http://www.w3.org/2001/XMLSchema-instance";
constexpr const char* kXml = "http://www.w3.org/XML/1998/namespace";

/// A writer and its sink, with short forms for what most documents need.
class Output {
public:
    explicit Output(bool formatted = false, XmlEncoding encoding = XmlEncoding_UTF8)
        : m_stream(encoding), writer(&m_stream) {
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
    Output& Attribute(std::string_view name, std::string_view uri, std::string_view value) {
        writer.WriteAttribute(name, uri, value, ItemType_string);
        return *this;
    }
    Output& End(int count = 1) {
        for (; count > 0; --count)
            writer.WriteEndElement();
        return *this;
    }
    std::string Finish() {
        writer.EndDocument();
        return m_stream.TakeText();
    }
    std::string SoFar() { return std::string(m_stream.GetBuffer().GetText()); }

private:
    CTextStream m_stream;

public:
    CXmlTextWriter writer;
};

// --- layout ----------------------------------------------------------------------------------------------

std::string Layout(Output& out) {
    out.Start("a").Start("b").Text("x").End().Start("c").End().Start("d").Start("e").End(2);
    out.Start("f").Text("mixed").Start("g").End(2);
    out.Start("h").Text("").End(2);
    return out.Finish();
}

TEST(XmlTextWriter, Layout) {
    Output flat;
    EXPECT_EQ(Layout(flat), "<a><b>x</b><c/><d><e/></d><f>mixed<g/></f><h/></a>");
    Output formatted(true);
    EXPECT_EQ(Layout(formatted),
              "<a>\n\t<b>x</b>\n\t<c/>\n\t<d>\n\t\t<e/>\n\t</d>\n"
              "\t<f>mixed\t\t<g/>\n\t</f>\n\t<h/>\n</a>\n");
    Output other(true);
    other.writer.SetEOL(EOLType_CRLF);
    other.writer.SetIndentChars("   ");
    EXPECT_EQ(Layout(other),
              "<a>\r\n   <b>x</b>\r\n   <c/>\r\n   <d>\r\n      <e/>\r\n   </d>\r\n"
              "   <f>mixed      <g/>\r\n   </f>\r\n   <h/>\r\n</a>\r\n");
    Output unindented(true);
    unindented.writer.SetIndentChars("");
    EXPECT_EQ(Layout(unindented), "<a>\n<b>x</b>\n<c/>\n<d>\n<e/>\n</d>\n<f>mixed<g/>\n</f>\n<h/>\n</a>\n");
}

TEST(XmlTextWriter, NamesOfEveryLength) {
    std::string expected;
    Output out(true);
    out.Start("r");
    for (std::size_t length = 1; length < 80; ++length) {
        std::string name;
        while (name.size() < length)
            name += static_cast<char>('a' + name.size() % 26);
        out.Start(name).Text(name).End();
        expected += "\t<" + name + ">" + name + "</" + name + ">\n";
    }
    out.Start(std::string(10000, 'n')).Text("x").End();
    expected += "\t<" + std::string(10000, 'n') + ">x</" + std::string(10000, 'n') + ">\n";
    EXPECT_EQ(out.End().Finish(), "<r>\n" + expected + "</r>\n");
}

TEST(XmlTextWriter, DeepDocuments) {
    constexpr int kDepth = 300;
    Output formatted(true);
    std::string expected;
    for (int depth = 0; depth < kDepth; ++depth) {
        formatted.Start("e");
        expected +=
            std::string(static_cast<std::size_t>(depth), '\t') + (depth + 1 < kDepth ? "<e>\n" : "<e/>\n");
    }
    for (int depth = kDepth - 2; depth >= 0; --depth)
        expected += std::string(static_cast<std::size_t>(depth), '\t') + "</e>\n";
    EXPECT_EQ(formatted.End(kDepth).Finish(), expected);

    Output open;  // destroyed with a million elements open
    for (int depth = 0; depth < 1000000; ++depth)
        open.Start("e");
}

TEST(XmlTextWriter, DeclarationCommentAndRaw) {
    const std::vector<std::pair<XmlEncoding, const char*>> declarations = {
        {XmlEncoding_None, "<?xml version=\"1.0\"?>\n"},
        {XmlEncoding_UTF8, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"},
        {XmlEncoding_UTF16, "<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n"},
        {XmlEncoding_UTF16NoDeclaration, "<?xml version=\"1.0\"?>\n"},
    };
    for (const auto& [encoding, text] : declarations) {
        Output out(false, encoding);
        out.writer.WriteDeclaration();
        EXPECT_EQ(out.Finish(), text);
    }
    const std::vector<std::pair<const char*, const char*>> comments = {
        {" a < b ", "<!-- a &lt; b -->\r\n"}, {"", "<!---->\r\n"},          {"a-b", "<!--a-b-->\r\n"},
        {"a--b", "<!--a- -b-->\r\n"},         {"---", "<!--- - - -->\r\n"}, {"a\nb", "<!--a\r\nb-->\r\n"},
    };
    for (const auto& [text, expected] : comments) {
        Output out;
        out.writer.SetEOL(EOLType_CRLF);
        out.writer.WriteComment(text);
        EXPECT_EQ(out.Finish(), expected);
    }
    Output out;
    out.writer.WriteRaw("<?style & sheet?>");
    out.Start("a");
    out.writer.WriteRawAfterSpace("b=\"c\"");
    EXPECT_EQ(out.End().Finish(), "<?style & sheet?>\n\n<a \nb=\"c\"\n/>");
}

// --- text ------------------------------------------------------------------------------------------------

struct EscapeCase {
    std::string text;
    std::string asText;
    std::string asAttribute;
};

TEST(XmlTextWriter, Escaping) {
    const std::vector<EscapeCase> table = {
        {">", "&gt;", "&gt;"},
        {"\"", "\"", "&quot;"},
        {"\t", "\t", "\t"},
        {"\n", "\r\n", "&#xA;"},
        {"\r\n", "\r\n", "&#xA;"},
        {"\x7F\xC3\xA4", "\x7F\xC3\xA4", "\x7F\xC3\xA4"},
        {"\xEF\xBF\xBD\xEF\xBC\xA1", "\xEF\xBF\xBD\xEF\xBC\xA1", "\xEF\xBF\xBD\xEF\xBC\xA1"},
        {"&&&&&&&&&&", "&amp;&amp;&amp;&amp;&amp;&amp;&amp;&amp;&amp;&amp;",
         "&amp;&amp;&amp;&amp;&amp;&amp;&amp;&amp;&amp;&amp;"},
        {"a <![CDATA[x]]>", "a &lt;![CDATA[x]]&gt;", "a &lt;![CDATA[x]]&gt;"},
    };
    // Every row alone and at every place of texts that are looked at in words, and in pieces.
    for (const EscapeCase& row : table) {
        for (const std::size_t length : {0u, 1u, 2u, 3u, 5u, 7u, 8u, 15u, 16u, 17u, 40u, 1023u, 5000u}) {
            for (const std::size_t before : {std::size_t{0}, length / 2, length}) {
                const std::string head(before, 'h');
                const std::string tail(length - before, 't');
                Output out;
                out.writer.SetEOL(EOLType_CRLF);
                out.Start("e").Attribute("a", "", head + row.text + tail).Text(head + row.text + tail);
                ASSERT_EQ(out.End().Finish(), "<e a=\"" + head + row.asAttribute + tail + "\">" + head +
                                                  row.asText + tail + "</e>")
                    << row.text << " at " << before << " of " << length;
            }
        }
    }
}

TEST(XmlTextWriter, CharactersThatXmlExcludes) {
    const auto refused = [](std::string_view text, const char* code) {
        for (const bool attribute : {false, true}) {
            Output out;
            out.Start("e");
            EXPECT_EQ(
                ErrorOf<CKvInvalidValueException>(
                    [&] { attribute ? out.Attribute("a", "", text) : out.Text(text); }),
                std::string("The text contains the character 0x") + code + ", which XML can not represent");
        }
    };
    for (int code = 0; code < 0x20; ++code) {
        if (code == '\t' || code == '\n' || code == '\r') continue;
        char digits[3];
        std::snprintf(digits, sizeof(digits), "%02X", static_cast<unsigned>(code));
        const std::string character(1, static_cast<char>(code));
        refused(character, digits);
        refused("<![CDATA[" + character + "]]>", digits);
    }
    refused("\xEF\xBF\xBE", "FFFE");
    refused("some text \xEF\xBF\xBF", "FFFF");
    // Types whose text should not need escaping are no way around it.
    Output out;
    out.Start("e").Text("1<2", ItemType_i4);
    EXPECT_EQ(out.End().Finish(), "<e>1&lt;2</e>");
}

TEST(XmlTextWriter, CdataSections) {
    const std::vector<std::pair<const char*, const char*>> table = {
        {"<![CDATA[a<b]]>", "<![CDATA[a<b]]>"},
        {"<![CDATA[l\nm\"]]>", "<![CDATA[l\nm\"]]>"},
        {"<![CDATA[a]]><![CDATA[&]]>", "<![CDATA[a]]><![CDATA[&]]>"},
        // text beside sections, which a reader delivers unescaped
        {"<![CDATA[a]]>x & y<![CDATA[&]]>\n>", "<![CDATA[a]]>x &amp; y<![CDATA[&]]>\r\n&gt;"},
        // no section at all
        {"<![CDATA[a<b", "&lt;![CDATA[a&lt;b"},
        {"<![CDATA", "&lt;![CDATA"},
    };
    for (const auto& [text, expected] : table) {
        Output out;
        out.writer.SetEOL(EOLType_CRLF);
        EXPECT_EQ(out.Start("e").Text(text).End().Finish(), std::string("<e>") + expected + "</e>");
    }
}

// --- namespaces ------------------------------------------------------------------------------------------

TEST(XmlTextWriter, DocumentElementDeclares) {
    Output out;
    out.writer.AddNamespaceAlias("z", "urn:a");
    out.writer.AddNamespaceAlias("old", "urn:c");
    out.writer.AddNamespaceAlias("y", "urn:b");
    out.writer.AddNamespaceAlias("x", "urn:c");
    out.writer.SetDefaultNamespace("urn:default");
    out.Start("r", "urn:c").Attribute("p", "urn:b", "1").Attribute("q", "urn:default", "2");
    out.Start("n", "urn:default").Attribute("lang", kXml, "en").Start("m").End();
    out.Start("a", "urn:a").End(3);
    EXPECT_EQ(out.Finish(),
              "<x:r xmlns=\"urn:default\" xmlns:z=\"urn:a\" xmlns:y=\"urn:b\" xmlns:x=\"urn:c\" y:p=\"1\" "
              "xmlns:AA=\"urn:default\" AA:q=\"2\"><n xml:lang=\"en\"><m/><z:a/></n></x:r>");
}

TEST(XmlTextWriter, InventedPrefixesEndWithTheirElement) {
    Output out;
    out.writer.AddNamespaceAlias("AB", "urn:taken");
    out.Start("r", "urn:r");
    out.Start("a", "urn:x").Start("b", "urn:x").Start("c", "urn:y").End(3);
    out.Start("a", "urn:x").End();
    out.Start("a", "urn:y").Text("t").End();
    out.Start("r", "urn:r").End(2);
    EXPECT_EQ(out.Finish(),
              "<AA:r xmlns:AA=\"urn:r\" xmlns:AB=\"urn:taken\"><AC:a xmlns:AC=\"urn:x\"><AC:b>"
              "<AD:c xmlns:AD=\"urn:y\"/></AC:b></AC:a><AC:a xmlns:AC=\"urn:x\"/>"
              "<AC:a xmlns:AC=\"urn:y\">t</AC:a><AA:r/></AA:r>");
}

TEST(XmlTextWriter, ManyInventedPrefixes) {
    Output out;
    out.Start("r");
    for (int i = 0; i < 1600; ++i)
        out.Attribute("a", "urn:" + std::to_string(i), "");
    const std::string text = out.End().Finish();
    // Beyond all pairs of characters there still is a prefix for everyone.
    for (const auto& [n, prefix] :
         {std::pair(25, "AZ"), {26, "BA"}, {675, "ZZ"}, {676, "_A"}, {702, "aA"}, {1599, "N1599"}}) {
        const std::string name = prefix;
        EXPECT_NE(text.find(" xmlns:" + name + "=\"urn:" + std::to_string(n) + "\" " + name + ":a=\"\""),
                  text.npos)
            << n;
    }
}

TEST(XmlTextWriter, ChangesInsideAnElement) {
    Output out;
    out.writer.AddNamespaceAlias("p", "urn:p");
    out.Start("r");
    out.writer.AddNamespaceAlias("q", "urn:q");
    out.Start("a", "urn:q");
    out.writer.AddNamespaceAlias("s", "urn:p");
    out.writer.SetDefaultNamespace("urn:q");
    out.Start("b", "urn:p").Start("c", "urn:q").Text("t").End(2);
    out.End();  // as it was started, whatever holds inside it now
    out.Start("d", "urn:q").Start("e", "urn:p").End(3);
    EXPECT_EQ(out.Finish(), "<r xmlns:p=\"urn:p\"><q:a><s:b><c>t</c></s:b></q:a><q:d><p:e/></q:d></r>");
}

TEST(XmlTextWriter, PrefixesThatCanNotBeDeclared) {
    Output out;
    out.writer.AddNamespaceAlias("", "urn:empty");
    out.writer.AddNamespaceAlias("p", "");
    out.writer.AddNamespaceAlias("p", "urn:1");
    out.writer.AddNamespaceAlias("p", "urn:2");
    out.writer.AddNamespaceAlias("xml", "urn:3");
    out.writer.AddNamespaceAlias("xmlns", "urn:4");
    out.writer.AddNamespaceAlias("x", kXml);
    out.writer.SetDefaultNamespace(kXml);
    out.Start("r").Attribute("lang", kXml, "en");
    out.writer.AddNamespaceAlias("", kXml);
    out.Start("a", "urn:empty").End().Start("b", "urn:2").End();
    out.Start("c", "urn:1").Attribute("lang", kXml, "").End(2);
    EXPECT_EQ(out.Finish(),
              "<r xmlns:p=\"urn:1\" xmlns:AA=\"urn:empty\" xml:lang=\"en\"><AA:a/><AB:b xmlns:AB=\"urn:2\"/>"
              "<p:c xml:lang=\"\"/></r>");
}

TEST(XmlTextWriter, TypeAndNil) {
    Output out;
    out.writer.AddNamespaceAlias("t", "urn:t");
    out.Start("r");
    out.writer.WriteTypeAttribute("urn:t", "Known", ItemType_string);
    out.Start("a");
    out.writer.WriteTypeAttribute("urn:new", "New", ItemType_string);
    out.End().Start("b");
    out.writer.SetDefaultNamespace("urn:d");
    out.writer.WriteTypeAttribute("urn:d", "Default", ItemType_string);
    out.writer.WriteNilAttribute();
    out.End().Start("c");
    out.writer.WriteTypeAttribute("", "None", ItemType_string);
    const std::string xsi = std::string(" xmlns:AA=\"") + kXsi + "\"";
    EXPECT_EQ(out.End(2).Finish(), "<r xmlns:t=\"urn:t\"" + xsi +
                                       " AA:type=\"t:Known\"><a xmlns:AB=\"urn:new\"  AA:type=\"AB:New\"/>"
                                       "<b AA:type=\"Default\" AA:nil=\"true\"/><c AA:type=\"None\"/></r>");
}

// --- misuse ----------------------------------------------------------------------------------------------

TEST(XmlTextWriter, Misuse) {
    const std::string late = "Attributes must be added before elements";
    const std::vector<std::function<void(Output&)>> closers = {
        [](Output& out) { out.Start("child").End(); }, [](Output& out) { out.Text("text"); },
        [](Output& out) { out.End(); },  // no element at all
    };
    for (const auto& close : closers) {
        Output out;
        close(out.Start("e"));
        const std::string before = out.SoFar();
        EXPECT_EQ(ErrorOf([&] { out.Attribute("a", "urn:a", "1"); }), late);
        EXPECT_EQ(ErrorOf([&] { out.writer.WriteNilAttribute(); }), late);
        EXPECT_EQ(ErrorOf([&] { out.writer.WriteTypeAttribute("urn:a", "T", ItemType_string); }), late);
        EXPECT_EQ(out.SoFar(), before);
    }
    Output open;
    open.Start("a");
    EXPECT_EQ(ErrorOf([&] { open.Finish(); }), "An Element has not been closed.");
    EXPECT_EQ(open.End().Finish(), "<a/>");

    Output none;
    for (const int eol : {2, -1})
        EXPECT_EQ(ErrorOf([&] { none.writer.SetEOL(static_cast<EOLType>(eol)); }), "Invalid EOL type.");
    EXPECT_EQ(ErrorOf<CKvInvalidStateException>([&] { none.End(); }), "No element is open.");
    EXPECT_EQ(ErrorOf<CKvInvalidStateException>([&] { none.Text("x"); }), "No element is open.");
    none.writer.BeginArray();  // without an element: no effect
    EXPECT_EQ(none.Finish(), "");
}

}  // namespace
}  // namespace KvXmlLib16
