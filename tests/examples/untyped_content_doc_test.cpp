// What docs/untyped-content.md shows.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

// [example]
#include <string>

#include "kvxml/kvxml.h"

/// Marks every line of an order that costs more than a limit, whatever else the order contains.
std::string MarkExpensive(const std::string& xml, double limit) {
    using namespace KvXmlLib16;
    CElement order;
    order.FromXml(xml.c_str());
    for (CElement* line : *order.GetElements()) {
        const CSmartPtr<CElement> price = line->FindElement("price", order.GetNamespaceView());
        if (price == nullptr || std::stod(price->GetValue()) <= limit) continue;
        line->SetAttribute("check", nullptr, "true");
        line->AddElement("note", nullptr, "expensive");
    }
    return order.ToXml(false, false);
}
// [example]

namespace {

std::string ReadAll(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(UntypedContentDoc, ShowsThisExample) {
    const std::string root = std::string(KVXML_SOURCE_DIR) + "/";
    const std::string source = ReadAll(root + "tests/examples/untyped_content_doc_test.cpp");
    const std::string marker = "// [example]\n";
    const std::size_t begin = source.find(marker) + marker.size();
    const std::string example = source.substr(begin, source.find(marker, begin) - begin);
    ASSERT_FALSE(example.empty());
    EXPECT_NE(ReadAll(root + "docs/untyped-content.md").find("```cpp\n" + example + "```\n"),
              std::string::npos);
    EXPECT_EQ(
        MarkExpensive("<o:order xmlns:o=\"urn:o\"><o:line><o:price>12</o:price></o:line>"
                      "<o:line x=\"1\"><o:price>3</o:price></o:line></o:order>",
                      10),
        "<o:order xmlns:o=\"urn:o\"><o:line check=\"true\"><o:price>12</o:price><o:note>expensive</o:note>"
        "</o:line><o:line x=\"1\"><o:price>3</o:price></o:line></o:order>");
}

}  // namespace
