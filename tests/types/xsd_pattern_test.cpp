// Regular expressions of pattern facets.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "kvxml/runtime/exceptions.h"
#include "kvxml/types/primitive_restrictions.h"

namespace KvXmlLib16 {
namespace {

CPrimitiveRestrictions WithPattern(const char* pattern) {
    return {pattern,
            -1,
            -1,
            nullptr,
            nullptr,
            nullptr,
            nullptr,
            -1,
            -1,
            -1,
            CWhitespaceUtils::WhitespaceRule_Preserve,
            nullptr};
}

bool Matches(const CPrimitiveRestrictions& restrictions, const std::string& text) {
    try {
        restrictions.Check("a", ItemType_string, text);
        return true;
    } catch (const CKvInvalidValueException&) {
        return false;
    }
}

TEST(XsdPattern, Matching) {
    const struct {
        const char* pattern;
        std::vector<std::string> good;
        std::vector<std::string> bad;
    } rows[] = {
        {"a|bc|", {"a", "bc", ""}, {"abc", "b"}},
        {"(a|b)*c?", {"", "abab", "bac"}, {"cc", "abcd"}},
        {"a{2}b{1,}c{0,2}", {"aab", "aabbcc"}, {"ab", "aac", "aabccc"}},
        {"^a$", {"^a$"}, {"a"}},
        {"a.c",
         {"abc",
          "a\xE2\x82\xAC"
          "c",
          "a\tc"},
         {"a\nc", "a\rc", "ac"}},
        {"a b#c", {"a b#c"}, {"abc"}},
        {"\\d+", {"0129", "\xD9\xA3"}, {"", "a", "1 "}},
        {"\\D", {"x", "-"}, {"5", "\xD9\xA3"}},
        {"\\w+", {"a1\xC3\xA4", "+"}, {"a b", "a-b", "_"}},
        {"\\W", {"-", " ", "_"}, {"a", "+"}},
        {"\\s\\S",
         {" a", "\nx", "\r\xC2\xA0"},
         {"\xC2\xA0"
          "a",
          "  "}},
        {"\\i\\c*", {"_a-b.c:1", ":", "\xC3\xA9t\xC3\xA9"}, {"-a", "1a", "a b", ""}},
        {"\\I\\C", {"1 ", "- "}, {"a ", "1a"}},
        {"[a-z-[aeiou]]+", {"xyz"}, {"xaz", "", "X"}},
        {"[\\w-[\\d-[5]]]+", {"ab5"}, {"ab4"}},
        {"[^a-c-[x-z]]", {"d"}, {"a", "x"}},
        {"[-a]+[b-]", {"-a-", "ab"}, {"b", "-"}},
        {"[\\-\\]\\^\\\\]+", {"-]^\\"}, {"a"}},
        {"[^\\d]", {"a"}, {"1"}},
        {"[+\\-]?[0-9]+(\\.[0-9]+)?", {"-12.5", "7"}, {"12.", "--1"}},
        {"[$^.*{}()?|+]+", {"$^.*{}()?|+"}, {"a"}},
        {"\\.\\*\\?\\+\\(\\)\\{\\}\\[\\]\\|\\n\\r\\t", {".*?+(){}[]|\n\r\t"}, {""}},
        {"\\p{Lu}\\P{Lu}",
         {"Aa",
          "\xC3\x84"
          "1"},
         {"AA", "aa"}},
        {"\\p{IsGreek}+\\p{IsBasicLatin}", {"\xCE\xB1\xCE\xB2z"}, {"az"}},
        {"\\P{IsBasicLatin}[\\p{IsCyrillic}x]",
         {"\xC3\xA4x", "\xC3\xA4\xD0\xB0"},
         {"ax",
          "\xC3\xA4"
          "a"}},
        {"[\xC3\xA4-\xC3\xB6]", {"\xC3\xA5"}, {"a", "\xC3\xBC"}},
        {"x?", {"", "x"}, {std::string("x\0", 2), "\xFF", "x\n"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pattern);
        const CPrimitiveRestrictions restrictions = WithPattern(row.pattern);
        for (const std::string& text : row.good)
            EXPECT_TRUE(Matches(restrictions, text)) << text;
        for (const std::string& text : row.bad)
            EXPECT_FALSE(Matches(restrictions, text)) << text;
    }
}

TEST(XsdPattern, RefusedPatterns) {
    for (const char* pattern : {"*a",     "a**", "a+?",   "a++",     "(?i)a",    "(a)\\1",
                                "a|*",    "(",   ")",     "(a",      "[a",       "[]",
                                "[^]",    "]",   "[z-a]", "[a-\\d]", "[a[b]]",   "[a-[b]c]",
                                "[-[a]]", "a{",  "a{,2}", "a{x}",    "a{2,1}",   "a{99999}",
                                "\\",     "\\b", "\\A",   "\\u0041", "\\p{Foo}", "\\p{IsNowhere}",
                                "\\pL",   "[a-", "\xC3",  "[\xC3(]"}) {
        try {
            WithPattern(pattern).Check("a", ItemType_string, "a");
            ADD_FAILURE() << pattern;
        } catch (const CKvException& e) {
            EXPECT_EQ(
                e.GetMessage().find(std::string("Invalid Regular Expression: ") + pattern + " Error: '"), 0U)
                << e.GetMessage();
        }
    }
    EXPECT_THROW(WithPattern(std::string(10000, '(').c_str()).Check("a", ItemType_string, "a"), CKvException);
    std::string nested;
    for (int i = 0; i < 10000; ++i)
        nested += "[a-";
    EXPECT_THROW(WithPattern(nested.c_str()).Check("a", ItemType_string, "a"), CKvException);
}

TEST(XsdPattern, RunawayMatchesEnd) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(Matches(WithPattern("(a*)*b"), std::string(200, 'a')));
    EXPECT_FALSE(Matches(WithPattern("((a|a)+)+x"), std::string(60, 'a')));
    EXPECT_TRUE(Matches(WithPattern("(ab|c)*"), std::string(1000000, 'c')));
    EXPECT_TRUE(Matches(WithPattern("([a-z-[b]]|\\d)*"), std::string(1000000, 'c')));
    EXPECT_FALSE(Matches(WithPattern("[a-z]*[a-z0-9]*[!?]"), std::string(1000000, 'a')));
    EXPECT_FALSE(Matches(WithPattern("([a-z]+[a-z0-9]*)*[!?]"), std::string(1000000, 'a')));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

}  // namespace
}  // namespace KvXmlLib16
