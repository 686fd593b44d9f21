// Regular expressions of pattern facets.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "kvxml/types/primitive_restrictions.h"
#include "tests/support/error_of.h"

namespace {
// How many allocations without exceptions are left before one fails; negative: none does.
std::atomic<int> allocationsLeft{-1};
}  // namespace

// The memory of the pattern engine. Memory from here is given back to the ordinary operator delete.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    if (allocationsLeft >= 0 && allocationsLeft-- == 0) return nullptr;
    try {
        return ::operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

namespace KvXmlLib16 {
namespace {

using namespace std::string_literals;

CPrimitiveRestrictions WithPattern(const std::string& pattern) {
    return {pattern.c_str(), -1, -1, nullptr, nullptr, nullptr, nullptr, -1, -1, -1, {}, nullptr};
}

bool Matches(const CPrimitiveRestrictions& restrictions, const std::string& text,
             ItemType type = ItemType_string) {
    try {
        restrictions.Check("a", type, text);
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
        // Branches, anchors, quantifiers.
        {"a|bc|", {"a", "bc", ""}, {"abc", "b", "aa"}},
        {"(a|b)*c?", {"", "abab", "bac"}, {"cc", "abcd"}},
        {"a{2}b{1,}c{0,2}d{0}", {"aab", "aabbcc"}, {"ab", "aac", "aabccc", "aabd"}},
        {"\u00E4{2}|\U0001F600+", {"\u00E4\u00E4", "\U0001F600\U0001F600"}, {"\u00E4", "\u00C3\u00A4"}},
        {"^a$", {"^a$"}, {"a"}},
        {"x?", {"", "x"}, {"x\0"s, "\xFF", "x\n", "\xC3", "\xED\xA0\x80"}},
        {"a.c", {"abc", "a\U0001F600c", "a\tc", "a\u0085c", "a\u2028c", "a\0c"s}, {"a\nc", "a\rc", "ac"}},
        // Escapes.
        {"\\.\\*\\?\\+\\(\\)\\{\\}\\[\\]\\|\\n\\r\\t\\\\\\-\\^", {".*?+(){}[]|\n\r\t\\-^"}, {""}},
        {"\\D[\\D]", {"x-"}, {"x5", "5x"}},
        {"\\d+", {"0129", "\u0663", "\U0001D7D8"}, {"", "a", "1 ", "\u00B2", "\u2167"}},
        {"\\w+", {"a1\u00E4", "+", "\u20AC", "\u0301", "\u4E00"}, {"a b", "a-b", "_", "\u00A0", "\u200B"}},
        {"\\W", {"-", " ", "_", "\u3000", "\uE000", "\u0378"}, {"a", "+", "\u0663"}},
        {"\\I\\C[\\I]", {"1 -", "\u00D7/1"}, {"a 1", "1a1", "1 a"}},
        {"\\s\\S", {" a", "\nx", "\r\u00A0", "\t\v"}, {"\u00A0\u0061", "  ", "\va"}},
        {"\\i\\c*", {"_a-b.c:1", ":", "\u00E9t\u00E9", "a\u00B7\u0301"}, {"-a", "1a", "a b", "", "\u00D7"}},
        {"\\p{Lu}\\P{Lu}", {"Aa", "\u00C41"}, {"AA", "aa"}},
        {"\\p{L}\\p{N}\\p{Sc}\\p{Zs}\\p{Pd}\\p{Mn}", {"x5\u20AC -\u0301"}, {"55\u20AC -\u0301"}},
        {"\\p{C}+", {"\x01\u200B\uE000\u0378"}, {"a"}},
        {"\\p{IsGreek}+\\p{IsBasicLatin}", {"\u03B1\u03B2z"}, {"az"}},
        {"\\p{IsPrivateUse}\\P{IsPrivateUse}", {"\uE000a", "\U000F0000a", "\U0010FFFDa"}, {"ab"}},
        {"\\P{IsBasicLatin}[\\p{IsCyrillic}x]", {"\u00E4x", "\u00E4\u0430"}, {"ax", "\u00E4\u0061"}},
        // Classes.
        {"[a-z-[aeiou]]+", {"xyz"}, {"xaz", "", "X"}},
        {"[^a-c-[x-z]]", {"d"}, {"a", "x"}},
        {"[-a]+[b-]", {"-a-", "ab"}, {"b", "-"}},
        {"[a--[b]]+", {"a-"}, {"b"}},
        {"[\\S][^\\s]", {"ab"}, {" b", "a "}},
        {"[\\p{L}-[\\p{Lu}-[A-C-[B]]]]+", {"aAC\u00E4"}, {"B", "D", "\u00C4"}},
        {"([a-z-[b]]{2}-?)+", {"ac-de", "acde"}, {"ab", "a"}},
        {"[\\w-.]+@[0-9-_]+", {"a-b.c@1-2_"}, {"a@b"}},
        {"[a^][^^]", {"^a"}, {"^^", "b^"}},
        {"[\u00E4-\u00F6\U0001F600-\U0001F64F]+", {"\u00E5\U0001F601"}, {"a", "\u00FC"}},
        {"[\\i-[:]][\\c-[:]]{0,600}", {"a", "_" + std::string(600, '-')}, {":", "a:", "-"}},
        {"[a-[a]]?[\\s\\S]", {"a"}, {"aa", ""}},
        {"[\t-\\r &-\\+]+", {"\t\n\v\r (+"}, {"%", ","}},
        // Counts beyond what one repetition of the engine can hold.
        {".{0,4294967296}", {std::string(70000, 'x')}, {"\n"}},
        {"a{70000,}", {std::string(70001, 'a')}, {std::string(69999, 'a')}},
        {"a{65536}", {std::string(65536, 'a')}, {std::string(65535, 'a'), std::string(65537, 'a')}},
        {"(a{70000,140000}b)*",
         {std::string(70000, 'a') + "b", std::string(140000, 'a') + "b"},
         {std::string(69999, 'a') + "b", std::string(140001, 'a') + "b"}},
        {"(a{1000}){1000}", {std::string(1000000, 'a')}, {std::string(999999, 'a')}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pattern);
        const CPrimitiveRestrictions restrictions = WithPattern(row.pattern);
        for (const std::string& text : row.good)
            EXPECT_TRUE(Matches(restrictions, text)) << text.substr(0, 100);
        for (const std::string& text : row.bad)
            EXPECT_FALSE(Matches(restrictions, text)) << text.substr(0, 100);
    }
}

TEST(XsdPattern, SubtractionLeavesWhatIsInOneSetAndNotInTheOther) {
    const char* const sets[] = {"\\p{L}", "\\i",        "A-Za-z0-9_",         "\\w\\-.", "\\P{Lu}",
                                "\\s\\d", "\\p{Lu}0-9", "\\p{IsGreek}\u00E9", "^a-z\\d", "\\C"};
    std::vector<std::string> characters = {"\u0663", "\u2028", "\u4E00", "\uE000", "\U0001D7D8"};
    for (char c = '\t'; c != '\x7F'; ++c)
        characters.emplace_back(1, c);
    for (int c = 0xA0; c < 0x400; c += 3)
        characters.push_back({static_cast<char>(0xC0 | c >> 6), static_cast<char>(0x80 | (c & 0x3F))});
    const auto matches = [&](const std::string& pattern) {
        const CPrimitiveRestrictions restrictions = WithPattern(pattern);
        std::vector<bool> result;
        for (const std::string& character : characters)
            result.push_back(Matches(restrictions, character));
        return result;
    };
    for (const std::string from : sets) {
        const std::vector<bool> in = matches("[" + from + "]");
        for (const std::string taken : sets) {
            std::vector<bool> expected = in;
            const std::vector<bool> out = matches("[" + taken + "]");
            for (std::size_t i = 0; i < expected.size(); ++i)
                expected[i] = in[i] && !out[i];
            EXPECT_EQ(matches("[" + from + "-[" + taken + "]]"), expected) << from << " without " << taken;
        }
    }
}

TEST(XsdPattern, FailedAllocationsAreNoVerdictAndPass) {
    bool hasFailed = true;
    int allowed = 0;
    for (; hasFailed; ++allowed) {
        const std::string suffix = std::to_string(allowed);
        std::thread([&] {
            // The second one takes the way of long matches.
            for (const std::string pattern : {"(a|b)*", "(a+)+"}) {
                const CPrimitiveRestrictions restrictions = WithPattern(pattern + suffix);
                const std::string text = std::string(3000, 'a') + suffix;
                allocationsLeft = allowed;
                try {
                    EXPECT_FALSE(Matches(restrictions, text + "!")) << suffix;
                } catch (const std::bad_alloc&) {
                }
                hasFailed = allocationsLeft < 0;
                allocationsLeft = -1;
                EXPECT_TRUE(Matches(restrictions, text)) << suffix;
            }
        }).join();
    }
    EXPECT_GT(allowed, 3);
}

TEST(XsdPattern, RefusedPatterns) {
    const auto expectRefused = [](const std::string& pattern) {
        const CPrimitiveRestrictions restrictions = WithPattern(pattern);
        for (int i = 0; i < 2; ++i) {
            const std::string message = ErrorOf([&] { restrictions.Check("Size", ItemType_string, "a"); });
            EXPECT_EQ(message.find("Invalid Regular Expression: " + pattern + " Error: '"), 0U) << message;
            EXPECT_NE(message.find("Invalid Facet of Size: pattern."), std::string::npos) << message;
        }
    };
    const char* const patterns[] = {
        "*a",          "a+?",     "a{2}{3}",    "(?i)a",    "(a)\\1", "(",          "[a",      "[]",
        "]",           "[z-a]",   "[a-\\d]",    "[a-[b]c]", "a{",     "a{,2}",      "a{2,1}",  "a{10000001}",
        "\\",          "\\u0041", "\\p{Foo}",   "\\p",      "\\p{L",  "\xC3",       "[\xC3(]", "\\Qa\\E",
        "[[:alpha:]]", ")",       "[\xC0\x80]", "[-[a]]",   "[^]",    "[a-z&&[b]]", "\\p{^L}", "(*UTF)a"};
    for (const char* pattern : patterns)
        expectRefused(pattern);
    expectRefused("\\p{IsNowhere}");
    expectRefused("[\xED\xA0\x80]");
    expectRefused("a{99999999999999999999}");
    expectRefused("((((a?){1000}){1000}){1000}){1000}");
    expectRefused("(([a-c-[b]]{60000}){60000}){60000}");
    std::string nested;
    for (int i = 0; i < 10000; ++i)
        nested += "[a-";
    expectRefused(nested);
    expectRefused(std::string(10000, '(') + std::string(10000, ')'));
}

TEST(XsdPattern, RunawayMatchesEnd) {
    const std::string text(1000000, 'a');
    const auto start = std::chrono::steady_clock::now();
    for (const char* pattern : {"(a*)*b", "(a+)+b", "(a|a)*b", "((a|a)+)+x", "(a|aa)+b", "((((a*)*)*)*)*b",
                                "(.*a){10}b", "(.*a){20}b", "[a-z]*[a-z0-9]*[!?]", "([a-z]+[a-z0-9]*)*[!?]",
                                "([a-z-[b]]+[a-z-[c]]*)*x", "((.?){300})*x", "(([a-z-[b-[c]]]?){200})*x",
                                "((a{1,100}){1,100}){1,6}x", "a{0,100000}b", "(\\p{L}|\\w|\\i|.)*!"}) {
        EXPECT_FALSE(Matches(WithPattern(pattern), text)) << pattern;
        EXPECT_FALSE(Matches(WithPattern(pattern), text.substr(0, 200))) << pattern;
    }
    // Long texts that do match are found to.
    for (const char* pattern : {"(a|b)*", "([a-z]+ ?)+", "(a+)+", "([a-z-[b]]|\\d)*", "(a|b)*a(a|b){10}"})
        EXPECT_TRUE(Matches(WithPattern(pattern), text)) << pattern;
    EXPECT_TRUE(Matches(WithPattern("([^\n]{0,80}\n?)*"), text.substr(0, 300000)));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
    const std::string message =
        ErrorOf([&] { WithPattern("((.?){300})*x").Check("Size", ItemType_string, text); });
    EXPECT_NE(message.find("[((.?){300})*x] [the match takes too many steps]."), std::string::npos);
}

TEST(XsdPattern, ThreadsShareCompiledPatternsAndFacets) {
    const CPrimitiveRestrictions facets("\\d+", -1, -1, nullptr, "500", nullptr, nullptr, -1, -1, -1, {},
                                        nullptr);
    std::atomic<int> refused{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&refused, copy = facets] {
            for (int i = 0; i < 50; ++i) {
                const CPrimitiveRestrictions own = WithPattern("([a-c]+)+b" + std::to_string(i));
                refused += Matches(own, "aab" + std::to_string(i)) ? 0 : 1;
                refused += Matches(own, std::string(300, 'a')) ? 0 : 1;
                refused += Matches(copy, std::to_string(480 + i), ItemType_i4) ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(refused, 4 * (50 + 29));
}

}  // namespace
}  // namespace KvXmlLib16
