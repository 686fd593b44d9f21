#include "kvxml/fastinfoset/fast_infoset_writer.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <set>
#include <string>

#include "kvxml/fastinfoset/internal/octet_buffer.h"
#include "kvxml/kvxml.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_all_kinds.h"
#include "tests/support/xml_tree_dump.h"

namespace KvXmlLib16 {

namespace {

using testsupport::Dump;
using Actions = std::function<void(CFastInfosetWriter&)>;

std::string_view View(const CBinaryData& data) {
    return {reinterpret_cast<const char*>(data.GetData()), data.GetLength()};
}

std::string Hex(std::string_view octets) {
    std::string text;
    for (const char c : octets) {
        char two[4];
        std::snprintf(two, sizeof(two), "%02X ", static_cast<unsigned>(static_cast<unsigned char>(c)));
        text += two;
    }
    if (!text.empty()) text.pop_back();
    return text;
}

std::string Write(const Actions& actions, const CFastInfosetContext& settings = CFastInfosetContext(),
                  FInfoDecl decl = FInfoDecl_None) {
    CFastInfosetWriter writer(settings, decl);
    writer.BeginOutput();
    actions(writer);
    writer.EndDocument();
    const CBinaryData document = writer.TakeDocument();
    return std::string(View(document));
}

/// The tree of the XML text, written.
std::string FromXml(const std::string& xml, const CSerializationContext& context = {}) {
    CXmlDocument document(context);
    document.LoadXmlStream(reinterpret_cast<const unsigned char*>(xml.data()), xml.size());
    return Write(
        [&](CFastInfosetWriter& writer) { WriteXmlTree(*document.GetDocumentElement(), writer, context); },
        context.GetFIContext());
}

/// The tree of a document, XML text or octets.
std::string DumpOf(std::string_view document) {
    CXmlDocument tree;
    tree.LoadXmlStream(reinterpret_cast<const unsigned char*>(document.data()), document.size());
    return Dump(tree);
}

TEST(FastInfosetWriterTest, OctetsOfSmallDocuments) {
    const struct {
        const char* xml;
        std::string octets;  // behind the five of the start
    } kCases[] = {
        {"<a/>", "3C 00 61 FF"},
        {"<a>x</a>", "3C 00 61 90 78 FF"},
        {"<a><b/></a>", "3C 00 61 3C 00 62 FF F0"},
        {"<a x=''/>", "7C 00 61 78 00 78 FF FF F0"},
        {"<item id='17' name='bolt' finish='zinc' "
         "note='this attribute has a value too long to be indexed ...'><sub id='17' name='nut' finish='zinc' "
         "empty=''/></item>",
         "7C 03 69 74 65 6D 78 01 69 64 41 31 37 78 03 6E 61 6D 65 43 62 6F 6C 74 78 05 66 69 6E 69 73 68 "
         "43 7A 69 6E 63 78 03 6E 6F 74 65 08 2C " +
             Hex("this attribute has a value too long to be indexed ...") +
             " F0 7C 02 73 75 62 00 80 01 42 6E 75 74 02 82 78 04 65 6D 70 74 79 FF FF FF"},
        {"<p:root xmlns:p='urn:example:one' xmlns:q='urn:example:two'><p:a q:flag='on'/><q:b p:flag='off'/>"
         "<p:a q:flag='on'/></p:root>",
         "38 CF 00 70 0E " + Hex("urn:example:one") + " CF 00 71 0E " + Hex("urn:example:two") +
             " F0 3F 81 81 03 72 6F 6F 74 7F 81 81 00 61 7B 82 82 03 66 6C 61 67 41 6F 6E FF 7F 82 82 00 62 "
             "7B 81 81 82 42 6F 66 66 FF 41 00 80 FF FF"},
        {"<a xmlns='u'><b xmlns=''/><c/></a>",
         "38 CD 00 75 F0 3D 81 00 61 38 CC F0 3C 00 62 F0 3D 81 00 63 FF F0"},
        {"<a xml:lang='en'/>", "7C 00 61 7B 80 80 03 6C 61 6E 67 41 65 6E FF F0"},
        {"<a><b xmlns='u'/><b xmlns='u'/></a>",
         "3C 00 61 38 CD 00 75 F0 3D 81 00 62 F0 38 CD 81 F0 01 FF F0"},
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.xml);
        const std::string octets = FromXml(row.xml);
        EXPECT_EQ(Hex(octets), "E0 00 00 01 00 " + row.octets);
        EXPECT_EQ(DumpOf(octets), DumpOf(row.xml));
    }
}

/// What is behind the start and the element "a", up to its end.
std::string InElement(const Actions& actions, const CFastInfosetContext& settings = CFastInfosetContext()) {
    const std::string octets = Write(
        [&](CFastInfosetWriter& writer) {
            writer.WriteStartElement("a", "");
            actions(writer);
            writer.WriteEndElement();
        },
        settings);
    return octets.substr(8);
}

// --- forms -----------------------------------------------------------------------------------------------

/// Beyond what a document of reasonable size needs.
TEST(FastInfosetWriterTest, FormsOfLargeNumbersAndLengths) {
    using namespace internal::form;
    const struct {
        unsigned char* (*put)(unsigned char*, unsigned, std::uint32_t);
        unsigned lead;
        std::uint32_t number;
        const char* octets;
    } kNumbers[] = {
        {Number2, 0, 1048576, "6F DF BF"},   {Number3, 0, 526368, "2F FF FF"},
        {Number3, 0, 526369, "30 00 00 00"}, {Number3, 0x40, 1048576, "70 07 F7 DF"},
        {Number4, 0xA0, 263184, "B7 FF FF"}, {Number4, 0xA0, 263185, "B8 00 00 00"},
    };
    unsigned char octets[8];
    const auto hexTo = [&](const unsigned char* end) {
        return Hex({reinterpret_cast<const char*>(octets), static_cast<std::size_t>(end - octets)});
    };
    for (const auto& row : kNumbers)
        EXPECT_EQ(hexTo(row.put(octets, row.lead, row.number)), row.octets);
    EXPECT_EQ(hexTo(Length7(octets, 0, 259 + 0x1020304)), "03 01 02 03 04");
}

TEST(FastInfosetWriterTest, StringsOfAllLengthsAndTablesOfAllSizes) {
    CFastInfosetContext settings;
    settings.SetMaxTableEntries(CFastInfosetContext::kMaxTableEntries);
    std::string expected = "a";
    const std::string octets = Write(
        [&](CFastInfosetWriter& writer) {
            writer.WriteStartElement("a", "");
            const char* separator = "(";
            const auto element = [&](const std::string& name, const std::string& attribute,
                                     const std::string& value, const std::string& text) {
                writer.WriteStartElement(name, "urn:n");
                writer.WriteAttribute(attribute, "", value, ItemType_string);
                writer.WriteText(text, ItemType_string, false);
                writer.WriteEndElement();
                expected +=
                    separator + ("{urn:n}" + name) + '@' + attribute + '=' + value + '\'' + text + '\'';
                separator = " ";
            };
            for (const std::uint32_t length :
                 {1U, 2U, 3U, 8U, 9U, 32U, 33U, 64U, 65U, 258U, 259U, 264U, 265U, 320U, 321U, 70000U}) {
                const std::string text(length, 'x');
                element(text, text, text, text);
                element(text, text, text, text);
            }
            for (int round = 0; round < 2; ++round) {
                for (int i = 0; i < 9000; ++i) {
                    const std::string n = std::to_string(i);
                    element("e" + n, "b" + n, "v" + n, "t" + n);
                }
            }
            writer.WriteEndElement();
        },
        settings);
    EXPECT_EQ(DumpOf(octets), expected + ")");
    EXPECT_EQ(octets.size(), 830794U);  // by number what has one, each number and length in its shortest form
}

// --- settings --------------------------------------------------------------------------------------------

TEST(FastInfosetWriterTest, TablesAreAsLargeAsSet) {
    const auto texts = [](CFastInfosetWriter& writer) {
        for (const char* text : {"aa", "bb", "cc", "ccc", "aa", "cc"})
            writer.WriteText(text, ItemType_string, false);
    };
    CFastInfosetContext settings;
    settings.SetMaxTableEntries(2);
    EXPECT_EQ(Hex(InElement(texts, settings)), "91 61 61 91 62 62 81 63 63 82 00 63 63 63 A0 81 63 63 FF");
    settings = {};
    settings.SetMaxIndexedLength(2);
    EXPECT_EQ(Hex(InElement(texts, settings)), "91 61 61 91 62 62 91 63 63 82 00 63 63 63 A0 A2 FF");
    settings.SetMaxIndexedLength(0);
    EXPECT_EQ(Hex(InElement(texts, settings)),
              "81 61 61 81 62 62 81 63 63 82 00 63 63 63 81 61 61 81 63 63 FF");
}

TEST(FastInfosetWriterTest, Declarations) {
    const auto root = [](CFastInfosetWriter& writer) {
        writer.WriteStartElement("a", "");
        writer.WriteEndElement();
    };
    std::set<std::string> all;
    for (int decl = FInfoDecl_None; decl <= FInfoDecl_Version11StandaloneYes; ++decl) {
        const std::string octets = Write(root, {}, static_cast<FInfoDecl>(decl));
        EXPECT_EQ(DumpOf(octets), "a") << decl;
        all.insert(octets);
    }
    EXPECT_EQ(all.size(), 10U);
    EXPECT_EQ(Write(root, {}, FInfoDecl_Write).substr(0, 37), "<?xml version='1.0' encoding='finf'?>");
    EXPECT_EQ(ErrorOf([&] { Write(root, {}, static_cast<FInfoDecl>(10)); }),
              "Failed to write FastInfoset. There is no such declaration.");
}

TEST(FastInfosetWriterTest, TypedValues) {
    const struct {
        ItemType type;
        const char* text;
        std::string octets;
    } kCases[] = {
        {ItemType_i4, "7", "8C 09 00 07"},
        {ItemType_i8, "-32768", "8C 09 80 00"},
        {ItemType_integer, "-9223372036854775808", "8C 12 05 80 00 00 00 00 00 00 00"},
        {ItemType_boolean, "true", "8C 14 38"},
        {ItemType_r4, "1.5", "8C 1A 01 3F C0 00 00"},
        {ItemType_r8, "0.1", "8C 1E 05 3F B9 99 99 99 99 99 9A"},
        {ItemType_r8, "-INF", "8C 1E 05 FF F0 00 00 00 00 00 00"},
        {ItemType_hexBinary, "00FF10AB", "8C 02 01 00 FF 10 AB"},
        {ItemType_base64Binary, "AP8Q", "8C 06 00 00 FF 10"},
        // Texts that would not come back as they are
        {ItemType_i4, "007", ""},
        {ItemType_i4, "7 ", ""},
        {ItemType_integer, "9223372036854775808", ""},
        {ItemType_boolean, "1", ""},
        {ItemType_r8, "0.10000000000000001", ""},
        {ItemType_r8, "1e400", ""},
        {ItemType_r8, "0x1p3", ""},
        {ItemType_hexBinary, "00ff", ""},
        {ItemType_hexBinary, "0", ""},
        {ItemType_base64Binary, "AP8", ""},
        {ItemType_base64Binary, "AP9=", ""},
        {ItemType_string, "7", ""},
    };
    CFastInfosetContext settings;
    settings.SetWriteTypedValues(true);
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.text);
        const auto text = [&](CFastInfosetWriter& writer) { writer.WriteText(row.text, row.type, false); };
        const std::string octets = InElement(text, settings);
        EXPECT_EQ(Hex(octets), row.octets.empty() ? Hex(InElement(text)) : row.octets + " FF");
        const auto both = [&](CFastInfosetWriter& writer) {
            writer.WriteStartElement("a", "");
            writer.WriteAttribute("b", "", row.text, row.type);
            text(writer);
            writer.WriteEndElement();
        };
        EXPECT_EQ(DumpOf(Write(both, settings)), DumpOf(Write(both)));
    }
}

TEST(FastInfosetWriterTest, RestrictedAlphabets) {
    CFastInfosetContext settings;
    settings.SetUseRestrictedAlphabets(true);
    const struct {
        const char* text;
        const char* octets;
    } kCases[] = {{"-12.5", "98 02 00 A1 2C 5F"},
                  {"2026-11-21T08:00", "98 06 05 20 26 A1 1A 21 C0 8B 00"},
                  {"1E5", "92 00 31 45 35"},
                  {"12 45x", "92 03 31 32 20 34 35 78"}};
    for (const auto& row : kCases) {
        const auto text = [&](CFastInfosetWriter& writer) {
            writer.WriteText(row.text, ItemType_string, false);
            writer.WriteText(row.text, ItemType_string, false);
        };
        EXPECT_EQ(Hex(InElement(text, settings)), std::string(row.octets) + " A0 FF");
    }
}

TEST(FastInfosetWriterTest, ExternalVocabulary) {
    const auto vocabulary = std::make_shared<CFastInfosetVocabulary>("urn:v");
    vocabulary->AddElementName("o", "urn:orders", "order");
    vocabulary->AddElementName("", "", "line");
    vocabulary->AddElementName("", "", "line");
    vocabulary->AddAttributeName("", "", "sku");
    vocabulary->AddAttributeValue("A1");
    vocabulary->AddText("EUR");
    CSerializationContext context;
    context.GetFIContext().SetExternalVocabulary(vocabulary);
    const std::string xml =
        "<o:order xmlns:o='urn:orders'><line sku='A1'>EUR</line><x sku='A2'>USD</x></o:order>";
    const std::string octets = FromXml(xml, context);
    EXPECT_EQ(Hex(octets),
              "E0 00 00 01 20 10 00 04 75 72 6E 3A 76 38 CF 81 81 F0 00 41 00 80 F0 A0 F0 "
              "7C 00 78 00 41 41 32 F0 92 00 55 53 44 FF F0");
    EXPECT_EQ(ErrorOf([&] { vocabulary->AddElementName("p", "", "x"); }),
              "A name with a prefix needs a namespace");
}

// --- names and namespaces ----------------------------------------------------------------------------------

TEST(FastInfosetWriterTest, TreesAreTheSameAsXml) {
    std::string manyNamespaces = "<a";
    for (int i = 0; i < 300; ++i)
        manyNamespaces += " p" + std::to_string(i) + ":x='' xmlns:p" + std::to_string(i) +
                          "='urn:" + std::to_string(i) + "'";
    manyNamespaces += "><b xmlns:q='urn:q' q:y=''/></a>";
    const std::string kCases[] = {
        "<a xmlns='u'><b xmlns='v'><c xmlns=''/><d xmlns='u'/></b><e/></a>",
        "<p:a xmlns:p='u' p:x='1' x='2'><p:b xmlns:p='v'/><p:b/></p:a>",
        "<a><p:b xmlns:p='u'/><p:b xmlns:p='v'/><p:b xmlns:p='u'/><q:b xmlns:q='u'/></a>",
        "<a xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xmlns:t='urn:t' xsi:type='t:T'><b "
        "xsi:nil='true'/></a>",
        "<a>x<b>y</b>z<b/>w</a>",
        "<a x='&#9;&#10;&#13; &lt;'> \n<b> </b>\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80</a>",
        "<\xC3\xA9l\xC3\xA9ment \xC3\xA0='\xC3\xA0'/>",
        manyNamespaces,
        // Declarations may follow what needs them.
        "<p:a p:x='1' y='2' xmlns:p='u'><p:b xmlns:p='v' p:x='1'/><p:b p:x='3'/></p:a>",
        "<a x='1' xmlns='u'><b/><b y='' xmlns=''/><c xmlns='v'><b/></c></a>",
        "<a xml:lang='de'><b xml:lang='en'/></a>",
    };
    CSerializationContext byName;
    byName.SetSchemaType(SchemaType_NoNamespaces);
    for (const std::string& xml : kCases) {
        SCOPED_TRACE(xml);
        EXPECT_EQ(DumpOf(FromXml(xml)), DumpOf(xml));
        EXPECT_EQ(DumpOf(FromXml(xml, byName)), DumpOf(xml));
    }
}

TEST(FastInfosetWriterTest, WhatIsNotDeclaredIsDeclared) {
    const auto write = [](CFastInfosetWriter& writer) {
        writer.SetDefaultNamespace("urn:d");
        writer.WriteStartElement("a", "urn:d");
        writer.WriteStartElement("b", "");
        writer.WriteStartElement("c", "urn:d");
        writer.WriteAttribute("x", "urn:x", "1", ItemType_string);
        writer.WriteTypeAttribute("urn:t", "T", ItemType_string);
        writer.WriteNilAttribute();
        writer.WriteEndElement();
        writer.AddNamespaceAlias("p", "urn:p");
        writer.WriteStartElement("c", "urn:p");
        writer.WriteEndElement();
        writer.WriteEndElement();
        writer.WriteStartElement("c", "urn:d");
        writer.WriteEndElement();
        writer.WriteEndElement();
    };
    EXPECT_EQ(DumpOf(Write(write)),
              "{urn:d}a(b({urn:d}c@{urn:x}x=1@{http://www.w3.org/2001/XMLSchema-instance}type=AB:T"
              "@{http://www.w3.org/2001/XMLSchema-instance}nil=true {urn:p}c) {urn:d}c)");
}

// --- texts -------------------------------------------------------------------------------------------------

TEST(FastInfosetWriterTest, TextsCommentsAndRawText) {
    const auto write = [](CFastInfosetWriter& writer) {
        writer.WriteRaw("<?style a=\"b\"?> <!--c-->\n<?t?>");
        writer.WriteStartElement("a", "");
        writer.WriteRawAfterSpace(
            "<s:s xmlns:s='urn:s' xmlns:t='urn:t'><s:e type='t:x' xml:lang='en'/></s:s>");
        writer.WriteText("<![CDATA[<x>]]>y<![CDATA[]]><![CDATA[z]]>", ItemType_string, false);
        writer.WriteText("default", ItemType_string, true);
        writer.WriteText("bad \xC3(\r", ItemType_string, false);
        writer.WriteComment("a--b-");
        writer.WriteComment("");
        writer.WriteEndElement();
        writer.WriteRaw("<?style a=\"b\"?>");
    };
    EXPECT_EQ(Hex(Write(write)),
              "E0 00 00 01 00 "
              "E1 04 73 74 79 6C 65 44 61 3D 22 62 22 "  // <?style a="b"?>
              "E2 40 63 E1 00 74 FF "                    // <!--c--><?t?>
              "3C 00 61 38 CF 00 73 04 75 72 6E 3A 73 CF 00 74 04 75 72 6E 3A 74 F0 3F 81 81 00 73 "
              "7F 81 81 00 65 78 03 74 79 70 65 42 74 3A 78 7B 80 80 03 6C 61 6E 67 41 65 6E FF F0 "
              "8C 26 00 3C 78 3E 90 79 8C 24 7A "                  // sections, and a text between
              "92 06 62 61 64 20 EF BF BD 28 0D "                  // bad, repaired
              "E2 46 61 2D 20 2D 62 2D 20 E2 FF F0 E1 80 80 F0");  // comments, and the first one again
}

TEST(FastInfosetWriterTest, Failures) {
    const auto start = [](CFastInfosetWriter& writer) { writer.WriteStartElement("a", "urn:n"); };
    const struct {
        Actions actions;
        const char* message;
    } kCases[] = {
        {[](auto& w) { w.WriteStartElement("1a", "u"); }, "[1a] is not a valid XML name."},
        {[](auto& w) { w.WriteStartElement("p:a", ""), w.WriteEndElement(); },
         "The prefix [p] is not declared."},
        {[&](auto& w) { start(w), w.WriteAttribute("b c", "", "", ItemType_string); },
         "[b c] is not a valid XML name."},
        {[&](auto& w) { start(w), w.WriteAttribute("p:b", "", "", ItemType_string), w.WriteEndElement(); },
         "The prefix [p] is not declared."},
        {[&](auto& w) { start(w), w.WriteAttribute("xmlns:p", "", "", ItemType_string); },
         "The prefix [p] can not be undeclared."},
        {[&](auto& w) { start(w), w.WriteAttribute("xmlns:xmlns", "", "u", ItemType_string); },
         "The prefix [xmlns] can not be declared."},
        {[&](auto& w) {
             start(w), w.WriteAttribute("xmlns", "", "http://www.w3.org/2000/xmlns/", ItemType_string);
         },
         "The prefix [] can not be declared."},
        {[&](auto& w) {
             start(w), w.WriteAttribute("xmlns:p", "", "u", ItemType_string),
                 w.WriteAttribute("xmlns:p", "", "v", ItemType_string);
         },
         "The prefix [p] is declared twice."},
        {[&](auto& w) { start(w), w.WriteAttribute("xmlns:1", "", "u", ItemType_string); },
         "[1] is not a valid XML name."},
        {[&](auto& w) {
             start(w), w.WriteAttribute("b", "u", "", ItemType_string),
                 w.WriteAttribute("b", "u", "", ItemType_string);
         },
         "The attribute [b] is written twice."},
        {[&](auto& w) { start(w), w.WriteText("x\x01", ItemType_string, false); },
         "The text contains the character 0x01, which XML can not represent"},
        {[&](auto& w) { start(w), w.WriteAttribute("b", "", "\xEF\xBF\xBF", ItemType_string); },
         "The text contains the character 0xFFFF, which XML can not represent"},
        {[](auto& w) { w.WriteRaw("<?x y"); }, "Raw text must be processing instructions and comments."},
        {[](auto& w) { w.WriteRaw("<?XML y?>"); },
         "[XML] is not a valid target of a processing instruction."},
        {[](auto&) {}, "The document has no element."},
        {[&](auto& w) { start(w), w.WriteEndElement(), start(w); }, "The document has an element already."},
    };
    for (const auto& row : kCases) {
        EXPECT_EQ(ErrorOf([&] { Write(row.actions); }),
                  std::string("Failed to write FastInfoset. ") + row.message);
    }
    EXPECT_EQ(ErrorOf([&] { Write(start); }), "An Element has not been closed.");
    EXPECT_EQ(ErrorOf([&] {
                  Write([&](CFastInfosetWriter& w) {
                      start(w), w.WriteText("x", ItemType_string, false), w.WriteNilAttribute();
                  });
              }),
              "Attributes must be added before elements");
    CFastInfosetWriter writer{CFastInfosetContext()};
    EXPECT_EQ(ErrorOf([&] { writer.WriteStartElement("a", ""); }), "The output has not begun.");
    EXPECT_EQ(ErrorOf([&] { writer.WriteNilAttribute(); }), "Attributes must be added before elements");
}

TEST(FastInfosetWriterTest, DeepAndWideDocumentsTakeNoStackAndLittleTime) {
    constexpr int kCount = 100000;
    const auto write = [](CFastInfosetWriter& writer) {
        for (int i = 0; i < kCount; ++i)
            writer.WriteStartElement("a", "");
        for (int i = 0; i < kCount; ++i) {
            writer.WriteAttribute("b" + std::to_string(i), "", "", ItemType_string);
            writer.WriteAttribute("xmlns:b" + std::to_string(i), "", "u", ItemType_string);
        }
        for (int i = 0; i < kCount; ++i)
            writer.WriteEndElement();
    };
    EXPECT_GT(Write(write).size(), std::size_t{kCount} * 4);
}

// --- objects ---------------------------------------------------------------------------------------------

TEST(FastInfosetWriterTest, CompressionAndFiles) {
    const CSmartPtr<fixture::AllKinds> object(new fixture::AllKinds());
    fixture::Fill(*object);
    const auto& context = CSerializationContext::GetDefaultContext();
    const std::string name = testing::TempDir() + "kvxml_fast_infoset_writer_test.finf";
    const CSmartPtr<fixture::AllKinds> read(new fixture::AllKinds());
    for (const CompressionType type : {CompressionType_None, CompressionType_GZip}) {
        object->ToFastInfosetFile(name.c_str(), FInfoDecl_Write, context, type);
        std::ifstream file(name, std::ios::binary);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}),
                  View(object->ToFastInfosetStream(FInfoDecl_Write, context, type)));
        read->FromXmlFile(name.c_str());
        fixture::Check(*read);
    }
    std::remove(name.c_str());
    const CBinaryData data = object->ToFastInfosetStream(FInfoDecl_Write, context, CompressionType_ZLib);
    EXPECT_LT(data.GetLength(), object->ToFastInfosetStream().GetLength());
    read->FromXmlStream(data);
    fixture::Check(*read);
}

}  // namespace

}  // namespace KvXmlLib16
