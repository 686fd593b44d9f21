#include "kvxml/json/json_text_reader.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "kvxml/base/exceptions.h"
#include "kvxml/platform/text_settings.h"
#include "kvxml/settings/json_context.h"
#include "tests/support/error_of.h"

namespace KvXmlLib16 {
namespace {

/// Writes the events down: "{0 name: 's' 12 true null [1 ... ] }".
class CEventLog : public IJsonReaderHandler, public IErrorPathProvider {
public:
    explicit CEventLog(std::string& log) : m_log(log) {}
    void OnStartDocument() override { m_log += "<"; }
    void OnEndDocument() override { m_log += ">"; }
    void OnName(const std::string& name) override { m_log += name + ":"; }
    void OnString(const std::string& value) override { m_log += "'" + value + "' "; }
    void OnNumber(const std::string& text) override { m_log += text + " "; }
    void OnStartObject(int depth) override { m_log += "{" + std::to_string(depth) + " "; }
    void OnEndObject() override { m_log += "} "; }
    void OnStartArray(int depth) override { m_log += "[" + std::to_string(depth) + " "; }
    void OnEndArray() override { m_log += "] "; }
    void OnBoolean(bool value) override { m_log += value ? "true " : "false "; }
    void OnNull() override { m_log += "null "; }
    std::string GetErrorPath() const override { return "here"; }

private:
    std::string& m_log;
};

std::string Read(std::string_view json, const CJsonContext& settings = CJsonContext()) {
    std::string log;
    CJsonTextReader(std::make_unique<CEventLog>(log), settings).Read(json);
    return log;
}

std::string Nested(int levels, const std::string& inner) {
    const auto count = static_cast<std::size_t>(levels);
    return std::string(count, '[') + inner + std::string(count, ']');
}

TEST(JsonTextReader, Events) {
    struct Row {
        std::string_view json;
        std::string_view events;
    };
    const Row rows[] = {
        {"", "<>"},
        {" \t\r\n/* only */ // comments", "<>"},
        {"{}", "<{0 } >"},
        {"[]", "<[0 ] >"},
        {"{\"a\":{\"b\":[1,[],{}]},\"a\":null}", "<{0 a:{1 b:[2 1 [3 ] {3 } ] } a:null } >"},
        {"[true,false,null]", "<[0 true false null ] >"},
        {"[0,-0,007,1.50,-1e5,1E+05,2.5e-3,123456789012345678901234567890e999]",
         "<[0 0 -0 007 1.50 -1e5 1E+05 2.5e-3 123456789012345678901234567890e999 ] >"},
        {"7 nothing behind is looked at", "<7 >"},
        {R"("\"\\\/\b\f\n\r\t\u0041\u00e4\u20AC\ud83d\uDE00 ")",
         "<'\"\\/\b\f\n\r\tA\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80 ' >"},
        {"\"raw \t\n\x01 12345678 \xC3\xA4\"", "<'raw \t\n\x01 12345678 \xC3\xA4' >"},
        {"/*/**/[/* a */1//b\n,/**//**/2/***/]", "<[0 1 2 ] >"},
        {"/*\xFF*/\"\xC3\xA4\"", "<'\xC3\xA4' >"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.json);
        EXPECT_EQ(Read(row.json), row.events);
    }
    CJsonContext settings;
    settings.SetRootElementName("root");
    EXPECT_EQ(Read("[5]", settings), "<{0 root:[0 5 ] } >");
    EXPECT_EQ(Read("", settings), "<{0 root:} >");
}

TEST(JsonTextReader, SyntaxErrors) {
    constexpr const char* kValue =
        "Expected Value '{', '[', '\"', '0-9', '-', 'true', 'false' or 'null', found ";
    constexpr const char* kEnd = "Unexpected End of File. ";
    struct Row {
        std::string_view json;
        std::string error;  // without what follows "at"
        const char* place;
    };
    using namespace std::string_view_literals;
    const Row rows[] = {
        {"x", std::string(kValue) + "'x'", "line 1, position 1"},
        {"\n\n  ]", std::string(kValue) + "']'", "line 3, position 3"},
        {"[1,]", std::string(kValue) + "']'", "line 1, position 4"},
        {"[/x", std::string(kValue) + "'/'", "line 1, position 2"},
        {"[/", std::string(kValue) + "'/'", "line 1, position 2"},
        {"{1", "Expected quotation mark character '\"' before Name, found '1'", "line 1, position 2"},
        {"{\"a\" 1", "Expected Object Name/Value separator character ':', found '1'", "line 1, position 6"},
        {"{\"a\"", std::string(kEnd) + "Expected Object Name/Value separator character ':'",
         "line 1, position 4"},
        {"{\"a\":\n", std::string(kEnd) + "Expected Object Value", "line 2, position 0"},
        {"{\"a\":1 \"", "Expected Object separator character ',', found '\"'", "line 1, position 8"},
        {"{\"a\":1", std::string(kEnd) + "Expected Object terminator character '}'", "line 1, position 6"},
        {"{\"a\":1,", std::string(kEnd) + "Expected Object terminator character '}'", "line 1, position 7"},
        {"{", std::string(kEnd) + "Expected Object terminator character '}}'", "line 1, position 1"},
        {"[1 2", "Expected Array separator character ',', found '2'", "line 1, position 4"},
        {"[\"\n\"}", "Expected Array separator character ',', found '}'", "line 2, position 2"},
        {"[", std::string(kEnd) + "Expected Array terminator character ']'", "line 1, position 1"},
        {"[/* *", std::string(kEnd) + "Expected Array terminator character ']'", "line 1, position 5"},
        {"trup", "Expected 'true'", "line 1, position 4"},
        {"fa\nlse", "Expected 'false'", "line 2, position 0"},
        {"nul", std::string(kEnd) + "Expected value 'NULL'", "line 1, position 3"},
        {"tru", std::string(kEnd) + "Expected value 'true'", "line 1, position 3"},
        {"f", std::string(kEnd) + "Expected value 'false'", "line 1, position 1"},
        {"-", std::string(kEnd) + "Expected a number", "line 1, position 1"},
        {"-x", "Expected a digit '0' to '9', found 'x'", "line 1, position 2"},
        {"-\xC3\xA4", "Expected a digit '0' to '9', found '\xC3\xA4'", "line 1, position 2"},
        {"-\xC3", "Expected a digit '0' to '9', found '\\xC3'", "line 1, position 2"},
        {"1.", std::string(kEnd) + "Expected a digit '0' to '9'", "line 1, position 2"},
        {"1e", std::string(kEnd) + "Expected '+', '-' or a number", "line 1, position 2"},
        {"1e+", std::string(kEnd) + "Expected a digit '0' to '9'", "line 1, position 3"},
        {"\"\\x\"", "Invalid Escape Character 'x'", "line 1, position 3"},
        {"\"\\u12g4\"", "Invalid Escape Character 'g'", "line 1, position 6"},
        {"\"\\u123", std::string(kEnd) + "Expected 4 hexadecimal digits'\\uxxxx'", "line 1, position 6"},
        {"\"abc", std::string(kEnd) + "Expected string value", "line 1, position 4"},
        {"\"\\ud83d\"", "Unpaired surrogate in a string", "line 1, position 7"},
        {"\"\\ud83d\\u0041\"", "Unpaired surrogate in a string", "line 1, position 13"},
        {"\"\\uDE00\"", "Unpaired surrogate in a string", "line 1, position 7"},
        {"\"\\u0000\"", "Zero character in a string", "line 1, position 7"},
        {"\"a\0\""sv, "Zero character in a string", "line 1, position 3"},
        {"\"ab\n\xC3\"", "Invalid UTF-8 in a string", "line 2, position 1"},
        {"[\"\xC3\xA4\",\"\\n\xED\xA0\x80\"]", "Invalid UTF-8 in a string", "line 1, position 10"},
        {"/*\xFF*/\"\xFE\"", "Invalid UTF-8 in a string", "line 1, position 7"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.json);
        EXPECT_EQ(ErrorOf([&] { Read(row.json); }), row.error + " at " + row.place + ".\nPath: here");
    }
}

TEST(JsonTextReader, Comments) {
    CJsonContext settings;
    settings.GetAllowComments(false);
    for (const char* json : {"//\n1", "/**/1"}) {
        EXPECT_EQ(Read(json), "<1 >");
        EXPECT_NE(ErrorOf([&] { Read(json, settings); }).find("found '/' at line 1, position 1."),
                  std::string::npos);
    }
}

TEST(JsonTextReader, Depth) {
    EXPECT_NO_THROW(Read(Nested(100, "")));
    constexpr const char* kTooDeep = "JSON exceeded depth limit at line 1, position 101.\nPath: here";
    EXPECT_EQ(ErrorOf([] { Read(Nested(101, "")); }), kTooDeep);
    EXPECT_EQ(ErrorOf([] { Read(Nested(100, "1")); }), kTooDeep);
    EXPECT_EQ(ErrorOf([] { Read(std::string(1 << 20, '[')); }), kTooDeep);
}

TEST(JsonTextReader, CutOffAnywhereIsAnError) {
    const std::string json =
        R"({"a":[1.5e+7,"x\u00e4\ud83d\ude00\n",true,false,null,{}],"b":{"c":[],"d":-3}/**/ ,"e":""})";
    ASSERT_NO_THROW(Read(json));
    for (std::size_t length = 1; length < json.size(); ++length) {
        const std::unique_ptr<char[]> exact(new char[length]);  // so that reading on is found out
        json.copy(exact.get(), length);
        EXPECT_THROW(Read({exact.get(), length}), CKvValidationException) << length;
    }
}

TEST(JsonTextReader, OtherCodePages) {
    SetLocalCharEncoding(1252);
    const std::string log = Read("[\"\xE4\",\"\\u20ac\",\"\\u4e00\"]");
    SetLocalCharEncoding(3);
    EXPECT_EQ(log, "<[0 '\xE4' '\x80' '?' ] >");
}

TEST(JsonTextReader, HandlersWithoutPath) {
    CJsonTextReader reader(std::make_unique<CJsonReaderDefaultHandler>());
    reader.Read("{\"a\":[1,\"\",true,null]}");
    EXPECT_EQ(ErrorOf([&] { reader.Read("nil"); }), "Expected 'NULL' at line 1, position 2.");
}

}  // namespace
}  // namespace KvXmlLib16
