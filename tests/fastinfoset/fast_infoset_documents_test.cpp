// Documents of the folder that KVXML_FASTINFOSET_DIR names: pairs of NAME.finf and NAME.xml that mean the
// same, and external-vocabulary.txt. Skipped without it.
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/settings/fast_infoset_context.h"
#include "kvxml/settings/fast_infoset_vocabulary.h"
#include "kvxml/xml/xml_document.h"
#include "kvxml/xml/xml_element.h"
#include "tests/support/error_of.h"
#include "tests/support/xml_tree_dump.h"

using namespace KvXmlLib16;

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> Documents(const fs::path& folder) {
    std::vector<fs::path> documents;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.path().extension() == ".finf") documents.push_back(entry.path());
    }
    std::sort(documents.begin(), documents.end());
    return documents;
}

/// Each line has a kind of table and an entry, the parts separated by tabs.
std::shared_ptr<const CFastInfosetVocabulary> ReadVocabulary(const fs::path& path) {
    std::ifstream file(path);
    std::shared_ptr<CFastInfosetVocabulary> vocabulary;
    for (std::string line; std::getline(file, line);) {
        std::vector<std::string> parts(1);
        for (const char c : line) {
            if (c == '\t') {
                parts.emplace_back();
            } else {
                parts.back() += c;
            }
        }
        parts.resize(4);
        const std::string& kind = parts[0];
        if (kind == "uri") vocabulary = std::make_shared<CFastInfosetVocabulary>(parts[1]);
        if (kind == "alpha") vocabulary->AddAlphabet(parts[1]);
        if (kind == "prefix") vocabulary->AddPrefix(parts[1]);
        if (kind == "ns") vocabulary->AddNamespace(parts[1]);
        if (kind == "local") vocabulary->AddLocalName(parts[1]);
        if (kind == "attval") vocabulary->AddAttributeValue(parts[1]);
        if (kind == "chunk") vocabulary->AddText(parts[1]);
        if (kind == "el") vocabulary->AddElementName(parts[1], parts[2], parts[3]);
        if (kind == "at") vocabulary->AddAttributeName(parts[1], parts[2], parts[3]);
    }
    return vocabulary;
}

bool IsSameValue(const std::string& a, const std::string& b) {
    const auto number = [](const std::string& text, double& value) {
        const char* const end = text.data() + text.size();
        return std::from_chars(text.data(), end, value).ptr == end;
    };
    double x = 0;
    double y = 0;
    return a == b ||
           (number(a, x) && number(b, y) && (x == y || static_cast<float>(x) == static_cast<float>(y)));
}

/// The same dump up to how numbers are written.
bool IsSame(const std::string& a, const std::string& b) {
    const auto words = [](std::string text) {
        std::replace_if(
            text.begin(), text.end(),
            [](char c) { return std::string("'=()@").find(c) != std::string::npos; }, ' ');
        std::istringstream in(text);
        return std::vector<std::string>{std::istream_iterator<std::string>(in), {}};
    };
    const auto x = words(a);
    const auto y = words(b);
    return a == b || std::equal(x.begin(), x.end(), y.begin(), y.end(), IsSameValue);
}

}  // namespace

TEST(FastInfosetDocuments, MeanTheSameAsTheirXml) {
    const char* const folder = std::getenv("KVXML_FASTINFOSET_DIR");
    if (folder == nullptr) GTEST_SKIP() << "KVXML_FASTINFOSET_DIR is not set";
    CSerializationContext context;
    context.SetMaxElementDepth(100000);
    context.GetFIContext().AddKnownVocabulary(ReadVocabulary(fs::path(folder) / "external-vocabulary.txt"));
    std::size_t compared = 0;
    for (const fs::path& path : Documents(folder)) {
        CXmlDocument fast(context);
        CXmlDocument xml(context);
        fs::path xmlPath = path;
        xmlPath.replace_extension(".xml");
        EXPECT_EQ(ErrorOf([&] { fast.Load(path.c_str()); }), "(no error)") << path;
        EXPECT_EQ(ErrorOf([&] { xml.Load(xmlPath.c_str()); }), "(no error)") << path;
        const std::string a = testsupport::Dump(fast);
        const std::string b = testsupport::Dump(xml);
        EXPECT_TRUE(IsSame(a, b)) << path << "\n" << a.substr(0, 2000) << "\n" << b.substr(0, 2000);
        ++compared;
    }
    EXPECT_GT(compared, 0U);
    RecordProperty("compared", static_cast<int>(compared));
    std::printf("%zu documents compared\n", compared);
}
