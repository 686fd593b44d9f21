// What docs/using-objects.md shows.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>

// [example]
#include <exception>
#include <iostream>
#include <string>

#include "examples/gpx/gpx_type.h"
#include "kvxml/kvxml.h"

using namespace KvXmlLib16;
// [example]

// [example]
CSmartPtr<Gpx::CGpxType> ReadTrack(const std::string& xml) {
    CSmartPtr<Gpx::CGpxType> gpx = new Gpx::CGpxType();
    try {
        gpx->FromXml(xml);
    } catch (const std::exception& e) {
        std::cerr << e.what() << '\n';
        throw;
    }
    return gpx;
}
// [example]

// [example]
void Rename(Gpx::CGpxType& gpx) {
    for (Gpx::CWptType* waypoint : *gpx.GetWpt()) {
        if (!waypoint->IsValidName()) waypoint->SetName("unnamed");
        waypoint->UnsetCmt();
    }
    if (!gpx.GetWpt()->empty()) gpx.GetWpt()->front()->SetName("Start");

    CSmartPtr<Gpx::CWptType> summit = new Gpx::CWptType();
    summit->SetLat("46.4307");
    summit->SetLon("13.7388");
    gpx.GetWpt()->push_back(summit);
    gpx.GetWpt()[gpx.GetWpt()->size() - 1]->SetName("Summit");
}
// [example]

// [example]
bool IsChangedByRename(const Gpx::CGpxType& gpx) {
    CSmartPtr<Gpx::CGpxType> copy = Clone(gpx);
    Rename(*copy);
    return *copy != gpx;
}

void TakeOver(Gpx::CWptType& waypoint, const Gpx::CWptType& from) {
    waypoint.CopyFrom(from);  // the waypoint keeps its place in its list
}
// [example]

// [example]
CElement MakeNote(const std::string& text) {
    CElement note("note");
    note.AddElement("text", nullptr, text.c_str());
    return note;  // elements and collections can be moved
}
// [example]

// [example]
void Filter(std::istream& in, std::ostream& out) {
    CSmartPtr<Gpx::CGpxType> gpx = new Gpx::CGpxType();
    gpx->FromXmlStream(in);
    Rename(*gpx);
    gpx->ToXmlStream(out);
}
// [example]

// [example]
std::string ToShortText(const Gpx::CGpxType& gpx) {
    CWriteOptions options;
    options.declaration = false;
    options.formatted = false;

    CSerializationContext context;
    context.SetDefaultNamespaceURI("http://www.topografix.com/GPX/1/1");
    return gpx.ToXml(options, context);
}
// [example]

namespace {

std::string ReadAll(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(UsingObjectsDoc, ShowsTheseExamples) {
    const std::string root = std::string(KVXML_SOURCE_DIR) + "/";
    const std::string source = ReadAll(root + "tests/examples/using_objects_doc_test.cpp");
    const std::string page = ReadAll(root + "docs/using-objects.md");
    const std::string marker = "// [example]\n";
    int count = 0;
    for (std::size_t at = source.find('\n' + marker); at != std::string::npos; ++count) {
        const std::size_t begin = at + 1 + marker.size();
        const std::size_t end = source.find('\n' + marker, begin) + 1;
        EXPECT_NE(page.find("```cpp\n" + source.substr(begin, end - begin) + "```\n"), std::string::npos)
            << source.substr(begin, end - begin);
        at = source.find('\n' + marker, end + marker.size());
    }
    EXPECT_EQ(count, 7);
}

TEST(UsingObjectsDoc, DoesWhatItSays) {
    const std::string xml = R"(<gpx xmlns="http://www.topografix.com/GPX/1/1" version="1.1" creator="c">)"
                            R"(<wpt lat="1" lon="2"><cmt>x</cmt></wpt><wpt lat="3" lon="4"/></gpx>)";
    const auto gpx = ReadTrack(xml);
    EXPECT_EQ(ToShortText(*gpx), xml);
    EXPECT_TRUE(IsChangedByRename(*gpx));
    EXPECT_EQ(ToShortText(*gpx), xml);
    TakeOver(*gpx->GetWpt()[1], *gpx->GetWpt()[0]);
    EXPECT_TRUE(*gpx->GetWpt()[1] == *gpx->GetWpt()[0]);

    std::istringstream in(xml);
    std::ostringstream out;
    Filter(in, out);
    EXPECT_EQ(
        ToShortText(*ReadTrack(out.str())),
        R"(<gpx xmlns="http://www.topografix.com/GPX/1/1" version="1.1" creator="c">)"
        R"(<wpt lat="1" lon="2"><name>Start</name></wpt><wpt lat="3" lon="4"><name>unnamed</name></wpt>)"
        R"(<wpt lat="46.4307" lon="13.7388"><name>Summit</name></wpt></gpx>)");
    EXPECT_EQ(MakeNote("n").ToXml(false, false), "<note><text>n</text></note>");
    EXPECT_THROW(ReadTrack("<gpx/>"), std::exception);
}

}  // namespace
