#include "kvxml/fastinfoset/fast_infoset_writer.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "kvxml/kvxml.h"
#include "tests/support/error_of.h"
#include "tests/support/fast_infoset_decoder.h"
#include "tests/support/xml_tree_dump.h"

namespace KvXmlLib16 {

namespace {

using testsupport::DecodeFastInfoset;
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

TEST(FastInfosetWriterTest, OctetsOfSmallDocuments) {
    const std::string u9(9, 'u');
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
        CXmlDocument document;
        document.LoadXml(row.xml);
        EXPECT_EQ(DecodeFastInfoset(octets), Dump(document));
    }
}

}  // namespace

}  // namespace KvXmlLib16
