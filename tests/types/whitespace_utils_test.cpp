#include "kvxml/types/whitespace_utils.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace KvXmlLib16 {
namespace {

using namespace std::string_literals;
using Utils = CWhitespaceUtils;

TEST(WhitespaceUtils, Rules) {
    const struct {
        std::string text;
        std::string preserved;
        std::string replaced;
        std::string collapsed;
    } rows[] = {
        {"", "", "", ""},
        {" \r\n\t ", " \n\t ", "    ", ""},
        {"\t a  b \r\n", "\t a  b \n", "  a  b  ", "a b"},
        {"a\r\nb", "a\nb", "a b", "a b"},
        {"a\r", "a\n", "a ", "a"},
        {"a\xC2\xA0  b", "a\xC2\xA0  b", "a\xC2\xA0  b", "a\xC2\xA0 b"},
        {"a\0\rb"s, "a", "a\0 b"s, "a\0 b"s},
    };
    std::string scratch = "former content";
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(Utils::ApplyRule(Utils::WhitespaceRule_None, row.text), row.text);
        EXPECT_EQ(Utils::Preserve(row.text), row.preserved);
        EXPECT_EQ(Utils::Replace(row.text), row.replaced);
        EXPECT_EQ(Utils::Collapse(row.text), row.collapsed);
        EXPECT_EQ(Utils::ApplyRuleView(Utils::WhitespaceRule_Preserve, row.text, scratch), row.preserved);
        EXPECT_EQ(Utils::ApplyRuleView(Utils::WhitespaceRule_Replace, row.text, scratch), row.replaced);
        EXPECT_EQ(Utils::ApplyRuleView(Utils::WhitespaceRule_Collapse, row.text, scratch), row.collapsed);
    }
    EXPECT_EQ(Utils::Preserve("a\r\nb\0c", 6), "a\nb");
}

TEST(WhitespaceUtils, CollapseOfLongTexts) {
    std::mt19937 random(3);
    const std::string alphabet = "abcdefgh\xA0\xC0  \t\r\n\x01"s;
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        // Half of them without control characters, so that long parts stay as they are.
        const std::size_t choice = alphabet.size() - (i % 2 == 0 ? 4 : 0);
        for (auto length = random() % 40; length > 0; --length)
            text += alphabet[random() % choice];
        std::string expected;
        for (const char c : text) {
            if (!Utils::IsWhiteSpace(c)) {
                expected += c;
            } else if (!expected.empty() && expected.back() != ' ') {
                expected += ' ';
            }
        }
        if (!expected.empty() && expected.back() == ' ') expected.pop_back();
        ASSERT_EQ(Utils::Collapse(text), expected) << text;
    }
}

}  // namespace
}  // namespace KvXmlLib16
