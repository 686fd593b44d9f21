/// Elements and attributes in one call mean what they mean in several, whatever the writer remembers of
/// names.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <type_traits>

#include "kvxml/kvxml.h"

namespace KvXmlLib16 {
namespace {

/// Writes by the one call, or by the calls that it stands for.
template <class Writer>
class Output {
public:
    explicit Output(bool atOnce) : writer(&stream), m_atOnce(atOnce) {}

    void Element(std::uint32_t id, std::string_view name, std::string_view uri, std::string_view text,
                 ItemType type = ItemType_string, bool isDefault = false) {
        const CXmlWriter::SimpleName simple{id, type, name, uri};
        if (m_atOnce)
            writer.WriteSimpleElement(simple, text, isDefault, false);
        else
            writer.CXmlWriter::WriteSimpleElement(simple, text, isDefault, false);
    }
    void Attribute(std::uint32_t id, std::string_view name, std::string_view uri, std::string_view value) {
        const CXmlWriter::SimpleName simple{id, ItemType_string, name, uri};
        if (m_atOnce)
            writer.WriteSimpleAttribute(simple, value, false);
        else
            writer.CXmlWriter::WriteSimpleAttribute(simple, value, false);
    }

    CTextStream stream{XmlEncoding_UTF8};
    Writer writer;

private:
    bool m_atOnce;
};

template <class Writer>
std::string Write(bool atOnce, bool formatted, const std::function<void(Output<Writer>&)>& setUp) {
    static const std::uint32_t plain = CXmlWriter::NewNameId();
    static const std::uint32_t prefixed = CXmlWriter::NewNameId();
    static const std::uint32_t unknown = CXmlWriter::NewNameId();
    static const std::uint32_t odd = CXmlWriter::NewNameId();
    static const std::uint32_t attribute = CXmlWriter::NewNameId();
    static const std::uint32_t item = CXmlWriter::NewNameId();
    const std::string longText = std::string(3000, 'x') + "<\"\n\\&" + std::string(20, 'y');
    const std::string longName(200, 'n');

    Output<Writer> out(atOnce);
    out.writer.SetFormatted(formatted);
    setUp(out);
    out.writer.SetDefaultNamespace("urn:d");
    out.writer.AddNamespaceAlias("p", "urn:p");
    out.writer.BeginOutput();
    out.writer.WriteStartElement("root", "urn:d");
    out.Attribute(attribute, "at", "", "1\"2");
    out.Attribute(attribute, "at", "", longText);
    const auto elements = [&] {
        for (const std::string_view text :
             {std::string_view("t"), std::string_view(), std::string_view("a<b\n"),
              std::string_view("<![CDATA[x]]>"), std::string_view(longText)})
            out.Element(plain, "plain", "urn:d", text);
        out.Element(prefixed, "prefixed", "urn:p", "1", ItemType_i4);
        out.Element(prefixed, "prefixed", "urn:p", "", ItemType_i4);
        out.Element(prefixed, "prefixed", "urn:p", "no number", ItemType_i4);
        out.Element(odd, longName, "urn:d", "NaN", ItemType_r8);
        out.Element(plain, "plain", "urn:d", "default", ItemType_string, true);
    };
    elements();
    out.writer.WriteStartElement("child", "urn:d");
    out.Attribute(attribute, "at", "", "deeper");
    elements();
    // The same numbers stand for other text from here on, and from here on once more.
    out.writer.AddNamespaceAlias("q", "urn:p");
    elements();
    out.writer.AddNamespaceAlias("r", "urn:p");
    out.writer.SetDefaultNamespace("urn:other");
    out.writer.AddNamespaceAlias("d", "urn:d");
    elements();
    out.writer.SetFormatted(false);
    elements();
    out.writer.SetFormatted(formatted);
    out.writer.WriteEndElement();
    elements();
    out.writer.BeginArray();
    for (const char* const text : {"1", "2", "<"})
        out.Element(item, "item", "urn:d", text);
    out.Element(plain, "plain", "urn:d", "another array");
    out.Element(0, "plain", "urn:d", "without number");
    out.writer.EndArray();
    out.Element(plain, "plain", "urn:d", "goes on");
    out.Element(item, "item", "urn:d", "alone");
    if constexpr (std::is_same_v<Writer, CXmlTextWriter>)
        out.Element(unknown, "unknown", "urn:u", "invented");
    out.writer.WriteEndElement();
    out.writer.EndDocument();
    return out.stream.TakeText();
}

template <class Writer>
void ExpectSame(const std::function<void(Output<Writer>&)>& setUp = [](Output<Writer>&) {}) {
    for (const bool formatted : {true, false}) {
        SCOPED_TRACE(formatted);
        EXPECT_EQ(Write<Writer>(true, formatted, setUp), Write<Writer>(false, formatted, setUp));
    }
}

TEST(SimpleElement, InXml) {
    ExpectSame<CXmlTextWriter>();
    ExpectSame<CXmlTextWriter>([](auto& out) { out.writer.SetWriteDefaultValues(true); });
    ExpectSame<CXmlTextWriter>([](auto& out) {
        out.writer.SetIndentChars("        ");
        out.writer.SetEOL(EOLType_CRLF);
    });
}

TEST(SimpleElement, InJson) {
    for (const JsonRoundTrip mode : {JsonRoundTrip_None, JsonRoundTrip_NoNamespaces, JsonRoundTrip_Full}) {
        SCOPED_TRACE(mode);
        for (const bool escaped : {false, true}) {
            ExpectSame<CJsonTextWriter>([=](auto& out) {
                out.writer.SetSupportRoundtrip(mode);
                out.writer.SetEscapeStrings(escaped);
            });
        }
    }
}

}  // namespace
}  // namespace KvXmlLib16
