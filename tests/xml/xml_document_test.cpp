#include "kvxml/xml/xml_document.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kvxml/platform/text_settings.h"
#include "kvxml/xml/xml_element.h"
#include "tests/support/error_of.h"
#include "tests/support/xml_tree_dump.h"

namespace KvXmlLib16 {
namespace {

using testsupport::Dump;

/// The children of the document element.
std::vector<const CXmlElement*> Children(const CXmlDocument& document) {
    std::vector<const CXmlElement*> children;
    for (const CXmlElement* e = document.GetDocumentElement()->GetFirstElement(); e != nullptr;
         e = e->GetNextSiblingElement())
        children.push_back(e);
    return children;
}

TEST(XmlDocument, TreeHasNamesAttributesAndOrder) {
    CXmlDocument document;
    EXPECT_EQ(document.GetDocumentElement(), nullptr);
    EXPECT_EQ(document.LookupAliasFromNamespace("urn:n"), "");
    document.LoadXml(
        "<?xml version='1.0'?><!-- c --><a xmlns='urn:n' xmlns:p='urn:p' p:x='1' y='&lt;&#13;2'><p:b/>"
        "<?pi?><c xmlns=''><d e=''/></c></a>");
    EXPECT_EQ(Dump(document), "{urn:n}a@{urn:p}x=1@y=<\r2({urn:p}b c(d@e=))");
    const CXmlElement* const a = document.GetDocumentElement();
    EXPECT_EQ(a->GetDocument(), &document);
    EXPECT_EQ(a->GetParentElm(), nullptr);
    EXPECT_EQ(a->GetAttribute("x", "urn:p"), "1");
    EXPECT_EQ(a->GetAttribute("x", ""), "");
    EXPECT_EQ(a->GetAttributes()[1]->GetElement(), a);
}

TEST(XmlDocument, TextOfTheDocumentElement) {
    struct Row {
        const char* xml;
        std::string_view stripped;
        std::string_view kept;
    };
    const Row rows[] = {
        {"<a/>", "", ""},
        {"<a>x&#13;y</a>", "xy", "xy"},
        {"<a>&#xD;</a>", "", ""},
        {"<a>one<b>two</b>three<c/> <c/>four</a>", "onethree four", "onethree four"},
        {"<a>\n <b/>\n <b/>\n</a>", "\n \n \n", "\n \n \n"},
        {"<a><![CDATA[<]]></a>", "<", "<![CDATA[<]]>"},
        {"<a>p<![CDATA[]]>q<![CDATA[ ]]><b/>r</a>", "pq r", "p<![CDATA[]]>q<![CDATA[ ]]>r"},
        {"<a><![CDATA[x]]]]><![CDATA[>]]></a>", "x]]>", "<![CDATA[x]]]]><![CDATA[>]]>"},
        {"<!DOCTYPE a [<!ENTITY e '<b>in</b>out&#38;#13;!'>]><a>&e;&amp;</a>", "out!&", "out!&"},
        {"<!DOCTYPE a [<!ENTITY e 'x&#13;y&#13;&#10;&#13;'>]><a>&e;&e;z\r\n&#13;</a>", "xy\nxy\nz\n",
         "xy\nxy\nz\n"},
        {"<!DOCTYPE a [<!ENTITY e '<![CDATA[&#13;x&#13;]]>'>]><a>&e;</a>", "x", "<![CDATA[x]]>"},
    };
    CSerializationContext keep;
    keep.SetStripCDATA(false);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.xml);
        CXmlDocument document;
        document.LoadXml(row.xml);
        EXPECT_EQ(document.GetDocumentElement()->GetTextView(), row.stripped);
        EXPECT_EQ(document.GetDocumentElement()->GetText(), row.stripped);
        CXmlDocument other(keep);
        other.LoadXml(row.xml);
        EXPECT_EQ(other.GetDocumentElement()->GetText(), row.kept);
    }
}

TEST(XmlDocument, StringsStayWithTheirNodes) {
    CXmlDocument document;
    document.LoadXml("<a v='value'>one<b/>two</a>");
    const CXmlElement& a = *document.GetDocumentElement();
    const std::string& text = a.GetText();
    const std::string& value = a.GetAttributes()[0]->GetValue();
    EXPECT_EQ(&a.GetText(), &text);
    EXPECT_EQ(a.GetTextView().data(), text.data());
    EXPECT_EQ(&a.GetAttribute("v", ""), &value);
    CXmlDocument moved(std::move(document));
    EXPECT_EQ(moved.GetDocumentElement(), &a);
    EXPECT_EQ(a.GetDocument(), &moved);
    EXPECT_EQ(text, "onetwo");
    EXPECT_EQ(document.GetDocumentElement(), nullptr);  // NOLINT: usable after a move
    document.LoadXml("<again/>");
    moved = std::move(document);
    EXPECT_EQ(moved.GetDocumentElement()->GetDocument(), &moved);
    EXPECT_EQ(Dump(moved), "again");
}

TEST(XmlDocument, AttributeListLooksLikeAVector) {
    CXmlDocument document;
    document.LoadXml("<a x='1' y='2' z='3'><b/></a>");
    const auto attributes = document.GetDocumentElement()->GetAttributes();
    EXPECT_EQ(attributes.size(), 3U);
    EXPECT_EQ(attributes.at(2)->GetValue(), "3");
    EXPECT_EQ(attributes.back(), attributes[2]);
    EXPECT_EQ(attributes.end() - attributes.begin(), 3);
    EXPECT_EQ(ErrorOf<CKvInvalidParamException>([&] { attributes.at(3); }), "Index out of range");
    EXPECT_TRUE(document.GetDocumentElement()->GetFirstElement()->GetAttributes().empty());
}

TEST(XmlDocument, PathsOfElementsAndAttributes) {
    CXmlDocument document;
    document.LoadXml(
        "<r xmlns:p='urn:p' xmlns:q='urn:q' xmlns:o='urn:o'><b/><b><one p:at='' plain=''/></b><p:b/>"
        "<q:b q:at=''/><o:b/><x/><b/></r>");
    const auto paths = [&document] {
        std::string all;
        for (const CXmlElement* child : Children(document))
            all += child->GetXPath() + ' ';
        return all;
    };
    EXPECT_EQ(paths(), "/r/b[1] /r/b[2] /r/p:b /r/q:b /r/o:b /r/x /r/b[3] ");
    const CXmlElement* const one = Children(document)[1]->GetFirstElement();
    EXPECT_EQ(one->GetXPath(), "/r/b[2]/one");
    EXPECT_EQ(one->GetAttributes()[0]->GetXPath(), "/r/b[2]/one/p:@at");
    EXPECT_EQ(one->GetAttributes()[1]->GetXPath(), "/r/b[2]/one/@plain");

    // Namespaces whose prefix is gone, and those that are the default, read like none.
    document.LoadXml("<r><p:b xmlns:p='urn:1'/><p:b xmlns:p='urn:2'/><b xmlns='urn:3'/><b/></r>");
    EXPECT_EQ(paths(), "/r/b[1] /r/p:b /r/b[2] /r/b[3] ");
}

TEST(XmlDocument, PathsAmongManyNamespaces) {
    // Each sibling has a namespace of its own: looking their prefixes up one by one would take minutes.
    constexpr int kCount = 30000;
    std::string xml = "<r";
    for (int i = 0; i < kCount; ++i) {
        const std::string number = std::to_string(i);
        xml += " xmlns:p" + number + "='urn:" + number + '\'';
    }
    xml += '>';
    for (int i = 0; i < kCount; ++i)
        xml += "<p" + std::to_string(i) + ":a/>";
    CXmlDocument document;
    document.LoadXml((xml + "<p7:a/></r>").c_str());
    const std::vector<const CXmlElement*> children = Children(document);
    EXPECT_EQ(children[7]->GetXPath(), "/r/p7:a[1]");
    EXPECT_EQ(children[kCount]->GetXPath(), "/r/p7:a[2]");
}

std::function<void(const CXmlElement&)> g_askForPrefix;

TEST(XmlDocument, OneTableOfPrefixes) {
    CXmlDocument document;
    document.LoadXml(
        "<a xmlns:z='urn:1' xmlns:b='urn:1' xmlns='urn:d' xmlns:d='urn:d'><c xmlns:z='urn:2'/></a>");
    EXPECT_EQ(document.LookupNamespaceFromAlias("z"), "urn:2");
    EXPECT_EQ(document.LookupNamespaceFromAlias(nullptr), "urn:d");
    EXPECT_EQ(document.LookupAliasFromNamespace("urn:1"), "b");
    EXPECT_EQ(document.LookupAliasFromNamespace("urn:d"), "");
    // What was asked for before a change does not stay.
    std::string prefixes;
    g_askForPrefix = [&](const CXmlElement& element) {
        prefixes += '[' + element.GetDocument()->LookupAliasFromNamespace("urn:1") + ']';
    };
    CXmlDocument filtered([](CXmlElement* element) {
        g_askForPrefix(*element);
        return true;
    });
    filtered.LoadXml(
        "<a><b/><b xmlns:z='urn:1'/><b xmlns:c='urn:1'/><b xmlns:c='urn:2'/><b xmlns='urn:1'/></a>");
    EXPECT_EQ(prefixes, "[][z][c][z][][]");
    document.LoadXml("<a/>");
    EXPECT_EQ(document.LookupNamespaceFromAlias("z"), "");
}

TEST(XmlDocument, AttributesThatCarryNoData) {
    CXmlDocument document;
    document.LoadXml(
        "<a xmlns:x='http://www.w3.org/2001/XMLSchema-instance' xmlns:y='urn:y' x:type='' x:schemaLocation=''"
        " x:noNamespaceSchemaLocation='' x:xmlns='' x:nil='' x:other='' y:type='' type='' nil=''/>");
    std::string kinds;
    for (const auto* attribute : document.GetDocumentElement()->GetAttributes())
        kinds += attribute->IsNamespaceAttribute() ? 'n' : attribute->IsNilAttribute() ? '0' : '-';
    EXPECT_EQ(kinds, "nnnn0----");
}

TEST(XmlDocument, NarrowTextIsInTheLocalCodePage) {
    SetLocalCharEncoding(1252);
    const std::string xml =
        "<\xC3\xA9 \xC3\xA4='\xC3\xB6' xmlns='urn:\xC3\xBC'>\xE2\x82\xAC<b/>\xD0\x96<b/> \xC3\xA9</\xC3\xA9>";
    CXmlDocument document;
    document.LoadXml(xml.c_str());
    EXPECT_EQ(Dump(document), "{urn:\xFC}\xE9@\xE4=\xF6'\x80? \xE9'({urn:\xFC}b {urn:\xFC}b)");
    ASCIIOnly(true);
    document.LoadXml(xml.c_str());
    ASCIIOnly(false);
    SetLocalCharEncoding(3);
    EXPECT_EQ(document.GetDocumentElement()->GetLocalName(), "\xC3\xA9");
}

// --- the element filter -----------------------------------------------------------------------------------

std::vector<std::string> g_seen;

TEST(XmlDocumentFilter, DiscardsElementsAtTheirEnd) {
    g_seen.clear();
    CXmlDocument document([](CXmlElement* element) {
        g_seen.push_back(element->GetXPath() + Dump(element));
        return element->GetLocalName() == "x";
    });
    document.LoadXml("<x><x a='1'>t<b/></x><b/>m<x/><c>d<x/>e<x/></c><x><x/></x></x>");
    EXPECT_EQ(Dump(document), "x'm'(b c'de')");
    EXPECT_EQ(document.GetDocumentElement()->GetTextView(), "m");
    EXPECT_EQ(g_seen,
              (std::vector<std::string>{"/x/x/bb", "/x/xx@a=1't'(b)", "/x/bb", "/x/xx", "/x/c/xx", "/x/c/xx",
                                        "/x/cc'de'", "/x/x/xx", "/x/xx", "/xx'm'(b c'de')"}));
}

const std::string* g_rootText = nullptr;
std::vector<std::string> g_rootTexts;

TEST(XmlDocumentFilter, StringsOfDiscardedElementsGoAndThoseOfAncestorsStay) {
    g_rootTexts.clear();
    CXmlDocument document([](CXmlElement* element) {
        const CXmlElement* const parent = element->GetParentElm();
        if (parent == nullptr) return false;
        element->GetText();
        element->GetAttribute("v", "");
        if (parent->GetParentElm() == nullptr) {
            g_rootText = &parent->GetText();
            g_rootTexts.push_back(*g_rootText + parent->GetAttribute("v", ""));
        }
        return element->GetLocalName() != "keep";
    });
    document.LoadXml(
        "<r v='R'>1<keep v='a'>k<i>x</i></keep>2<gone v='b'>g<i v='c'>y</i></gone>3<gone/>4</r>");
    EXPECT_EQ(g_rootTexts, (std::vector<std::string>{"1R", "12R", "123R"}));
    EXPECT_EQ(g_rootText, &document.GetDocumentElement()->GetText());
    EXPECT_EQ(Dump(document), "r@v=R'1234'(keep@v=a'k')");
}

TEST(XmlDocumentFilter, ExceptionsLeaveTheLoad) {
    CXmlDocument document([](CXmlElement* element) -> bool {
        if (element->GetLocalName() == "bad") throw std::out_of_range("bad");
        return false;
    });
    EXPECT_THROW(document.LoadXml("<a><ok/><bad>why</bad><more/></a>"), std::out_of_range);
    EXPECT_EQ(Dump(document), "a(ok bad'why')");
    document.LoadXml("<a/>");
    EXPECT_EQ(Dump(document), "a");
}

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KVXML_HAS_ASAN
#endif
#endif

std::size_t ResidentBytes() {
    std::size_t all = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> all >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

std::size_t g_records = 0;
std::size_t g_afterSome = 0;
std::size_t g_largest = 0;

TEST(XmlDocumentFilter, DiscardedRecordsGiveTheirMemoryBack) {
    const std::string name = "/tmp/kvxml-filter-" + std::to_string(::getpid()) + ".xml";
    constexpr std::size_t kRecords = 150000;
    {
        std::ofstream file(name, std::ios::binary);
        file << "<all>";
        for (std::size_t i = 0; i < kRecords; ++i)
            file << "\n  <record id='" << i << "'>\n"
                 << std::string(i % 7, ' ') << "<v>" << i * 977 << "</v> mixed " << i
                 << "<w a='b'/>\n    <v>some more text</v>\n  </record>";
        file << "\n</all>";
    }
    g_records = g_largest = 0;
    CXmlDocument document([](CXmlElement* element) {
        if (element->GetLocalName() != "record") return false;
        element->GetText();
        if (++g_records == 1000) g_afterSome = ResidentBytes();
        if (g_records % 1000 == 0) g_largest = std::max(g_largest, ResidentBytes());
        return true;
    });
    AsyncFromXmlFile(true);
    document.Load(name.c_str());
    AsyncFromXmlFile(false);
    ::unlink(name.c_str());
    EXPECT_EQ(g_records, kRecords);
    EXPECT_EQ(document.GetDocumentElement()->GetFirstElement(), nullptr);
    EXPECT_EQ(document.GetDocumentElement()->GetText().size(), kRecords * 3 + 1);
#if defined(__SANITIZE_ADDRESS__) || defined(KVXML_HAS_ASAN)
    constexpr std::size_t kAllowed = 35U << 20;  // freed strings are held back for a while
#else
    constexpr std::size_t kAllowed = 3U << 20;
#endif
    EXPECT_LT(g_largest - g_afterSome, kAllowed);
}

}  // namespace
}  // namespace KvXmlLib16
