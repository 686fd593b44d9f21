/// Events of documents and their places, whatever the encoding and wherever the input is cut.
#include <gtest/gtest.h>
#include <zlib.h>

#include <functional>
#include <sstream>
#include <string>
#include <string_view>

#include "kvxml/base/exceptions.h"
#include "kvxml/settings/serialization_context.h"
#include "kvxml/xml/xml_document.h"
#include "kvxml/xml/xml_reader.h"
#include "tests/support/error_of.h"
#include "tests/support/xml_tree_dump.h"

namespace KvXmlLib16 {
namespace {

using std::string_literals::operator""s;

/// The current event in one word or two.
std::string Event(const CXmlReader& reader) {
    const auto name = [&] {
        std::string text;
        if (!reader.GetNamespaceUri().empty()) text += "{" + std::string(reader.GetNamespaceUri()) + "}";
        if (!reader.GetPrefix().empty()) text += std::string(reader.GetPrefix()) + ":";
        return text + std::string(reader.GetLocalName());
    };
    std::string text;
    switch (reader.GetEvent()) {
        case XmlEvent::StartElement:
            text = "<" + name();
            for (std::size_t i = 0; i < reader.GetAttributeCount(); ++i) {
                const CXmlReaderAttribute& attribute = reader.GetAttributeAt(i);
                text += " ";
                if (!attribute.namespaceUri.empty()) text += "{" + std::string(attribute.namespaceUri) + "}";
                if (!attribute.prefix.empty()) text += std::string(attribute.prefix) + ":";
                text += std::string(attribute.localName) + (attribute.isDefaulted ? "=!" : "=") +
                        std::string(attribute.value);
            }
            return text + ">";
        case XmlEvent::EndElement:
            return "</" + name() + ">";
        case XmlEvent::Text:
            return "'" + std::string(reader.GetText()) + "'";
        case XmlEvent::CData:
            return "[" + std::string(reader.GetText()) + "]";
        case XmlEvent::Comment:
            return "#" + std::string(reader.GetText());
        case XmlEvent::ProcessingInstruction:
            return "?" + std::string(reader.GetLocalName()) + "?" + std::string(reader.GetText());
        case XmlEvent::DocumentType:
            return "!" + std::string(reader.GetLocalName());
        case XmlEvent::None:
            break;
    }
    return "none";
}

/// All events, one after another; what is thrown at last too.
std::string Events(CXmlReader& reader, const std::function<std::string(const CXmlReader&)>& show = Event) {
    std::string all;
    const std::string error = ErrorOf([&] {
        while (reader.Read())
            all += (all.empty() ? "" : " ") + show(reader);
    });
    return error == "(no error)" ? all : all + " ! " + error;
}

std::string EventsOf(std::string_view xml) {
    CXmlReader reader;
    reader.OpenText(xml);
    return Events(reader);
}

std::string Place(const CXmlReader& reader) {
    return std::to_string(reader.GetLine()) + ":" + std::to_string(reader.GetColumn()) + "@" +
           std::to_string(reader.GetOffset());
}

std::string PlacesOf(std::string_view xml) {
    CXmlReader reader;
    reader.OpenText(xml);
    return Events(reader, Place);
}

std::string Compressed(std::string_view text) {
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, 6, Z_DEFLATED, 31, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string out(deflateBound(&stream, static_cast<uLong>(text.size())) + 64, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

std::string Utf16(std::string_view ascii, bool isBigEndian) {
    std::string text;
    for (const char c : ascii)
        text += isBigEndian ? std::string{'\0', c} : std::string{c, '\0'};
    return text;
}

TEST(XmlReader, GivesEvents) {
    const struct {
        const char* xml;
        const char* events;
    } rows[] = {
        {"<?xml version='1.0'?><!-- c --><?t  d ?><a/>", "# c  ?t?d  <a> </a>"},
        {"<a x='1' y='&lt;&#9;'>t&amp;u<![CDATA[<b>]]><![CDATA[]]>v</a>\n",
         "<a x=1 y=<\t> 't&u' [<b>] [] 'v' </a>"},
        {"<a xmlns='urn:d' xmlns:p='urn:p' p:x='1' x='2'><p:b xmlns=''><c/></p:b></a>",
         "<{urn:d}a {urn:p}p:x=1 x=2> <{urn:p}p:b> <c> </c> </{urn:p}p:b> </{urn:d}a>"},
        {"<!DOCTYPE a [<!ATTLIST a d CDATA 'v'><!ENTITY e 'x<b/>y'>]><a xml:lang='en'>&e;</a>",
         "!a <a {http://www.w3.org/XML/1998/namespace}xml:lang=en d=!v> 'x' <b> </b> 'y' </a>"},
        {"<a><b>1</b>", "<a> <b> '1' </b> ! no element found at line 1"},
        {"<a><b></a>", "<a> <b> ! mismatched tag at line 1"},
        {"<a>\n<p:b/></a>", "<a> '\n' ! unbound prefix at line 2"},
        {"<a/><b/>", "<a> </a> ! junk after document element at line 1"},
        {"", " ! no element found at line 1"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(EventsOf(row.xml), row.events) << row.xml;

    CXmlReader reader;
    EXPECT_FALSE(reader.Read());  // nothing is open
    reader.OpenText("<a><b></a>");
    EXPECT_NE(ErrorOf([&] {
                  while (reader.Read()) {
                  }
              }),
              "(no error)");
    EXPECT_FALSE(reader.Read());
    EXPECT_EQ(reader.GetEvent(), XmlEvent::None);
    reader.OpenText("<c/>");
    EXPECT_EQ(Events(reader), "<c> </c>");
    EXPECT_NE(ErrorOf([&] { reader.OpenFile("/nowhere.xml"); }).find("[/nowhere.xml]"), std::string::npos);
}

TEST(XmlReader, KnowsPrefixesInScope) {
    CXmlReader reader;
    reader.OpenText("<a xmlns:p='1'><b xmlns:p='2' xmlns='3'/><c/><d xmlns:q='4'><e xmlns=''/></d></a>");
    const auto lookup = [&](std::string_view prefix) {
        std::string_view uri;
        return reader.LookupNamespace(prefix, uri) ? std::string(uri) : "(none)";
    };
    std::string found;
    std::uint64_t ofA = 0;
    while (reader.Read()) {
        if (reader.GetEvent() == XmlEvent::StartElement)
            found += Event(reader) + lookup("p") + "," + lookup("q") + "," + lookup("") + "," +
                     std::to_string(reader.GetScope().size()) + " ";
        if (reader.IsStart("a")) ofA = reader.GetScopeNumber();
        // The prefixes of an element hold at its end too.
        if (reader.GetEvent() == XmlEvent::EndElement && reader.GetLocalName() == "b") {
            EXPECT_EQ(lookup("p"), "2");
            EXPECT_NE(reader.GetScopeNumber(), ofA);
        }
        if (reader.IsStart("c")) {
            EXPECT_EQ(reader.GetScopeNumber(), ofA);
        }
    }
    EXPECT_EQ(found,
              "<a>1,(none),(none),1 <{3}b>2,(none),3,2 <c>1,(none),(none),1 <d>1,4,(none),2 <e>1,4,,3 ");
    EXPECT_EQ(lookup("xml"), "http://www.w3.org/XML/1998/namespace");
}

TEST(XmlReader, TellsDepthAndPathAndSkips) {
    CXmlReader reader;
    reader.OpenText("<r><a/><b><a>t</a></b><a><a/><a><c/></a></a></r>");
    const auto show = [](const CXmlReader& at) {
        return at.GetEvent() == XmlEvent::EndElement ? std::to_string(at.GetDepth())
                                                     : at.GetPath() + std::to_string(at.GetDepth());
    };
    EXPECT_EQ(
        Events(reader, show),
        "/r1 /r/a2 2 /r/b2 /r/b/a3 /r/b/a3 3 2 /r/a[2]2 /r/a[2]/a3 3 /r/a[2]/a[2]3 /r/a[2]/a[2]/c4 4 3 2 "
        "1");
    reader.OpenText("<r><a><a/>x</a><b/></r>");
    while (!reader.IsStart("a"))
        ASSERT_TRUE(reader.Read());
    reader.SkipSubtree();
    EXPECT_EQ(Event(reader), "</a>");
    EXPECT_EQ(Events(reader), "<b> </b> </r>");
}

/// The same as a document that holds the element alone, with the prefixes of its place.
TEST(XmlReader, ReadsSubtrees) {
    const char* const xml =
        "<r xmlns='urn:d' xmlns:p='urn:p'><x/><s p:a='1'>t<p:b "
        "xmlns=''><c/></p:b><![CDATA[<]]></s><s/>\n<e/></r>";
    CXmlReader reader;
    reader.OpenText(xml);
    while (!reader.IsStart("s"))
        ASSERT_TRUE(reader.Read());
    CXmlDocument document;
    reader.ReadSubtree(document);
    EXPECT_EQ(Event(reader), "</{urn:d}s>");
    CXmlDocument alone;
    alone.LoadXml("<s xmlns='urn:d' xmlns:p='urn:p' p:a='1'>t<p:b xmlns=''><c/></p:b><![CDATA[<]]></s>");
    EXPECT_EQ(testsupport::Dump(document), testsupport::Dump(alone));
    ASSERT_TRUE(reader.Read());
    reader.ReadSubtree(document);
    EXPECT_EQ(testsupport::Dump(document), "{urn:d}s");
    EXPECT_EQ(Events(reader), "'\n' <{urn:d}e> </{urn:d}e> </{urn:d}r>");

    reader.OpenText("<r><s><b></s></r>");
    while (!reader.IsStart("s"))
        ASSERT_TRUE(reader.Read());
    EXPECT_EQ(ErrorOf([&] { reader.ReadSubtree(document); }), "mismatched tag at line 1");
}

TEST(XmlReader, CountsPlacesInCharacters) {
    const struct {
        const char* what;
        std::string xml;
        const char* places;  // of <a>, text, <b>, </b>, </a>
    } rows[] = {
        {"line feed", "<a>\nx<b/>\n</a>", "1:1@0 1:4@3 2:2@5 2:6@9 2:6@9 3:1@10"},
        {"carriage return and line feed", "<a>\r\nx<b/>\r\n</a>", "1:1@0 1:4@3 2:2@6 2:6@10 2:6@10 3:1@12"},
        {"carriage return", "<a>\rx<b/>\r</a>", "1:1@0 1:4@3 2:2@5 2:6@9 2:6@9 3:1@10"},
        {"several bytes", "<a>\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80<b/></a>",
         "1:1@0 1:4@3 1:7@12 1:11@16 1:11@16"},
        {"byte-order mark", "\xEF\xBB\xBF<a>x<b/></a>", "1:1@3 1:4@6 1:5@7 1:9@11 1:9@11"},
        {"UTF-16, little-endian", "\xFF\xFE" + Utf16("<a>\r\nx<b/></a>", false),
         "1:1@2 1:4@8 2:2@14 2:6@22 2:6@22"},
        {"UTF-16, big-endian", "\xFE\xFF" + Utf16("<a>\nx<b/></a>", true),
         "1:1@2 1:4@8 2:2@12 2:6@20 2:6@20"},
        {"UTF-16, surrogates", "\xFF\xFE<\0a\0>\0\x3D\xD8\x00\xDE<\0b\0/\0>\0<\0/\0a\0>\0"s,
         "1:1@2 1:4@8 1:5@12 1:9@20 1:9@20"},
        {"UTF-16 without mark",
         Utf16("<?xml version='1.0' encoding='UTF-16'?>", true) + Utf16("<a>x<b/></a>", true),
         "1:40@78 1:43@84 1:44@86 1:48@94 1:48@94"},
    };
    for (const auto& row : rows) {
        // An empty tag is start and end; the end stands after it.
        const std::string places = PlacesOf(row.xml);
        EXPECT_EQ(places, row.places) << row.what;
    }
}

TEST(XmlReader, CountsPlacesWhereACharacterIsOneByte) {
    EXPECT_EQ(PlacesOf("<?xml version='1.0' encoding='ISO-8859-1'?>\n<a>\xA9\xE9\x80<b/></a>"),
              "2:1@44 2:4@47 2:7@50 2:11@54 2:11@54");
}

/// Tokens of all sorts at the borders of pieces, from all sources.
TEST(XmlReader, IsIndifferentToPieces) {
    const std::string tokens =
        "<item name='\xE2\x82\xAC &amp; x'>\xF0\x9F\x98\x80&#233;</item>\r\n<!-- c -->";
    for (std::size_t shift = 0; shift < 70; shift += 3) {
        std::string xml = "<r><long>" + std::string(65536 - 40 - shift, 'x') + "</long>";
        const std::size_t at = xml.size();
        for (int i = 0; i < 4000; ++i)
            xml += tokens;
        xml += "<last big='" + std::string(200000, 'y') + "'/></r>";
        CXmlReader reader;
        reader.OpenText(xml);
        std::uint64_t items = 0;
        while (reader.Read()) {
            if (!reader.IsStart("item")) {
                if (reader.IsStart("last")) {
                    EXPECT_EQ(reader.GetAttribute("big").size(), 200000u);
                }
                continue;
            }
            ASSERT_EQ(reader.GetOffset(), at + items * tokens.size());
            if (items % 500 == 7) {
                ASSERT_EQ(reader.GetLine(), items + 1);
                ASSERT_EQ(reader.GetColumn(), 11u);  // after the comment
            }
            ++items;
            ASSERT_EQ(reader.GetAttribute("name"), "\xE2\x82\xAC & x");
            std::string text;
            while (reader.Read() && reader.GetEvent() == XmlEvent::Text)
                text += reader.GetText();
            ASSERT_EQ(text, "\xF0\x9F\x98\x80\xC3\xA9");
        }
        ASSERT_EQ(items, 4000u);
        if (shift != 0) continue;
        const std::string places = PlacesOf(xml);
        std::istringstream stream(xml);
        reader.OpenStream(stream);
        EXPECT_TRUE(Events(reader, Place) == places);
        const std::string small = Compressed(xml);
        reader.OpenBuffer(small.data(), small.size());
        EXPECT_TRUE(Events(reader, Place) == places);
        std::istringstream smallStream(small);
        reader.OpenStream(smallStream);
        EXPECT_TRUE(Events(reader, Place) == places);
    }
}

/// The host's converter knows them, the parser does not; longer than a piece.
TEST(XmlReader, ReadsEncodingsOfTheHost) {
    std::string xml = "<?xml version='1.0' encoding='GB18030'?>\n<a>";
    std::string expected = "<a> '";
    for (int i = 0; i < 30000; ++i) {
        xml += "\xD6\xD0\x81\x30\x84\x36";  // of two and of four bytes: U+4E2D, U+00A5
        expected += "\xE4\xB8\xAD\xC2\xA5";
    }
    std::string texts;
    CXmlReader reader;
    xml += "<b/></a>";
    reader.OpenText(xml);
    std::string place;
    while (reader.Read()) {
        if (reader.GetEvent() == XmlEvent::Text) texts += reader.GetText();
        if (reader.IsStart("b"))
            place = std::to_string(reader.GetLine()) + ":" + std::to_string(reader.GetColumn());
    }
    EXPECT_TRUE("<a> '" + texts == expected);
    EXPECT_EQ(place, "2:60004");
    const std::string jis = "<?xml version='1.0' encoding='Shift_JIS'?><a>\x93\xFA\x5C</a>";
    EXPECT_NE(EventsOf(jis).find("\xE6\x97\xA5"), std::string::npos) << EventsOf(jis);
    EXPECT_EQ(EventsOf("<?xml version='1.0' encoding='Shift_JIS'?><a>\x93\xFA<b></a>"),
              "<a> '\xE6\x97\xA5' <b> ! mismatched tag at line 1");
    EXPECT_NE(EventsOf("<?xml version='1.0' encoding='no-such'?><a/>").find(" ! "), std::string::npos);
}

TEST(XmlReader, KeepsLimitsAfterWhatCameBefore) {
    CSerializationContext context;
    context.SetMaxElementDepth(3);
    const auto events = [&](const std::string& xml) {
        CXmlReader reader(context);
        reader.OpenText(xml);
        return Events(reader);
    };
    EXPECT_EQ(events("<a><a><a/></a></a>"), "<a> <a> <a> </a> </a> </a>");
    EXPECT_EQ(events("<a><a>\n<a><a/></a></a></a>").compare(0, 17, "<a> <a> '\n' <a> !"), 0);

    context.SetMaxInflatedSize(100000);
    const std::string bomb = Compressed("<a>" + std::string(300000, 'x') + "</a>");
    const std::string result = events(bomb);
    EXPECT_EQ(result.compare(0, 3, "<a>"), 0) << result.substr(0, 80);
    EXPECT_NE(result.find(" ! "), std::string::npos);
}

/// An element that a limit refuses is no event.
TEST(XmlReader, RefusesNamesBeyondTheLimit) {
    CSerializationContext context;
    context.SetMaxDistinctNames(3);
    for (const char* xml : {"<a><b/><c/><d/></a>", "<a><b/><d x='' y=''/></a>"}) {
        CXmlReader reader(context);
        reader.OpenText(xml);
        const std::string events = Events(reader);
        EXPECT_EQ(events.find("<d"), std::string::npos) << events;
        EXPECT_EQ(events.find("<>"), std::string::npos) << events;
        EXPECT_NE(events.find(" ! the document has more distinct names than the limit of 3"),
                  std::string::npos)
            << events;
    }
}

}  // namespace
}  // namespace KvXmlLib16
