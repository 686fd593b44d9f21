/// `kvxml validate` as a process: verdicts, faults, statuses, where schemas come from.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/tools/command_test.h"

namespace {

const char* const kSchema =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:s' xmlns='urn:s'>\n"
    "<xs:element name='s'><xs:complexType><xs:sequence>\n"
    "<xs:element name='n' type='xs:int' maxOccurs='unbounded'/>\n"
    "</xs:sequence><xs:attribute name='id' type='xs:ID'/></xs:complexType></xs:element></xs:schema>\n";
const char* const kValid = "<s:s xmlns:s='urn:s'><n>1</n></s:s>";
const char* const kInvalid = "<s:s xmlns:s='urn:s'>\n <n>1</n>\n <n>x</n>\n <n>y</n><m/>\n</s:s>";

/// A document that names its schema.
std::string Hinting(const std::string& location, const std::string& content = "<n>1</n>") {
    return "<s:s xmlns:s='urn:s' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
           "xsi:schemaLocation='urn:s " +
           location + "'>" + content + "</s:s>";
}

class KvxmlValidate : public CommandTest {
protected:
    void SetUp() override {
        CommandTest::SetUp();
        Save("s.xsd", kSchema);
        Save("good.xml", kValid);
        Save("bad.xml", kInvalid);
    }
    Result Run(const std::string& arguments, const std::string& input = "") const {
        return CommandTest::Run("$K validate " + arguments, input);
    }
};

TEST_F(KvxmlValidate, TellsVerdictsAndFaults) {
    const Result result = Run("--schema s.xsd good.xml bad.xml");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "good.xml: valid\nbad.xml: invalid\n");
    std::istringstream errors(result.errors);
    const struct {
        const char* begin;
        const char* end;
        const char* path;
    } rows[] = {
        {"bad.xml:3:2: ", " (cvc-datatype-valid.1.2.1)", "    /s:s/n[2]"},
        {"bad.xml:4:2: ", " (cvc-datatype-valid.1.2.1)", "    /s:s/n[3]"},
        {"bad.xml:4:10: ", " (cvc-complex-type.2.4)", "    /s:s/m"},
    };
    for (const auto& row : rows) {
        std::string line;
        std::getline(errors, line);
        EXPECT_EQ(line.compare(0, std::string(row.begin).size(), row.begin), 0) << line;
        const std::string end = row.end;
        EXPECT_TRUE(line.size() > end.size() && line.substr(line.size() - end.size()) == end) << line;
        std::getline(errors, line);
        EXPECT_EQ(line, row.path);
    }
    EXPECT_EQ(errors.peek(), EOF) << errors.str();

    const Result first = Run("--schema s.xsd --max-errors 1 bad.xml");
    EXPECT_NE(first.errors.find(":3:2:"), std::string::npos);
    EXPECT_EQ(first.errors.find(":4:2:"), std::string::npos);
}

TEST_F(KvxmlValidate, EndsWithStatus) {
    Save("none.xsd",
         "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a' type='b'/>"
         "<xs:element name='c' type='d'/></xs:schema>");
    Save("broken.xml", "<s:s xmlns:s='urn:s'><n>1</m></s:s>");
    Save("deep.xml", "<s:s xmlns:s='urn:s'><n><a><b/></a></n></s:s>");
    const struct {
        const char* arguments;
        int status;
        const char* output;
        const char* errors;  // contained in them; null: there are none
    } rows[] = {
        {"--schema s.xsd", 0, "", nullptr},
        {"--schema none.xsd", 1, "", "none.xsd:1:56: "},
        {"--schema none.xsd", 1, "", "(src-resolve)"},
        {"--schema none.xsd --max-errors 1", 1, "", "(no further faults are told)"},
        {"--schema none.xsd good.xml", 1, "", "none.xsd:1:56: "},  // nothing is said of documents
        {"--schema good.xml good.xml", 1, "", "good.xml:1:1: "},
        {"--schema missing.xsd good.xml", 1, "", "missing.xsd"},
        {"--schema s.xsd good.xml", 0, "good.xml: valid\n", nullptr},
        {"--schema s.xsd --quiet bad.xml", 1, "bad.xml: invalid\n", nullptr},
        {"--schema s.xsd missing.xml good.xml", 1, "good.xml: valid\n", "missing.xml: "},
        {"--schema s.xsd --quiet missing.xml", 1, "", "missing.xml: "},
        {"--schema s.xsd broken.xml", 1, "broken.xml: invalid\n", "broken.xml:1:"},
        {"broken.xml", 1, "broken.xml: invalid\n", "broken.xml:1:"},
        {"--schema s.xsd --max-depth 2 deep.xml", 1, "deep.xml: invalid\n", "the limit of 2"},
        {"--schema s.xsd --catalog missing.xml good.xml", 1, "", "missing.xml"},
        {"good.xml", 1, "good.xml: invalid\n", "(cvc-elt.1)"},
        {"", 2, "", "kvxml: "},
        {"--schma s.xsd good.xml", 2, "", "did you mean '--schema'?"},
        {"--schema s.xsd --map x good.xml", 2, "", "--map"},
        {"--schema s.xsd --jobs 0 good.xml", 2, "", "--jobs"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.arguments);
        const Result result = Run(row.arguments);
        EXPECT_EQ(result.status, row.status);
        EXPECT_EQ(result.output, row.output);
        if (row.errors == nullptr) {
            EXPECT_EQ(result.errors, "");
        } else {
            EXPECT_NE(result.errors.find(row.errors), std::string::npos) << result.errors;
        }
    }
    EXPECT_EQ(Run("--help").status, 0);
}

TEST_F(KvxmlValidate, FindsSchemas) {
    Save("beside/t.xsd", kSchema);
    Save("beside/d.xml", Hinting("t.xsd"));
    Save("x.xml", Hinting("gone.xsd"));
    Save("xbad.xml", Hinting("gone.xsd", "<n>x</n>"));
    Save("remote.xml", Hinting("http://example.org/s.xsd"));
    Save("nons.xsd",
         "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'/></xs:schema>");
    Save("nons.xml",
         "<a xmlns:i='http://www.w3.org/2001/XMLSchema-instance' i:noNamespaceSchemaLocation=' nons.xsd '/>");
    // The hint stands inside; lax content of the document element.
    Save("inside.xml",
         "<a xmlns:i='http://www.w3.org/2001/XMLSchema-instance' "
         "i:noNamespaceSchemaLocation='nons.xsd'><b>" +
             Hinting("s.xsd", "<n>x</n>") + "</b></a>");
    Save("catalog.xml",
         "<catalog xmlns='urn:oasis:names:tc:entity:xmlns:xml:catalog'>"
         "<uri name='urn:s' uri='beside/t.xsd'/></catalog>");
    Save("locations.xml",
         "<catalog xmlns='urn:oasis:names:tc:entity:xmlns:xml:catalog'>"
         "<system systemId='http://example.org/s.xsd' uri='beside/t.xsd'/></catalog>");
    Save(
        "import.xsd",
        "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns:s='urn:s'><xs:import namespace='urn:s' "
        "schemaLocation='far/t.xsd'/><xs:element name='a'><xs:complexType><xs:sequence><xs:element "
        "ref='s:s'/></xs:sequence></xs:complexType></xs:element></xs:schema>");
    Save("folder/far/t.xsd", kSchema);
    const struct {
        const char* arguments;
        bool isValid;
    } rows[] = {
        {"beside/d.xml", true},
        {"nons.xml", true},
        {"inside.xml", false},
        {"x.xml", false},
        {"--map urn:s=s.xsd x.xml", true},
        {"--map gone.xsd=s.xsd x.xml", true},
        {"--map urn:s=s.xsd xbad.xml", false},
        {"--catalog catalog.xml x.xml", true},
        {"--catalog catalog.xml remote.xml", true},
        {"--catalog locations.xml remote.xml", true},
        {"--map http://example.org/s.xsd=s.xsd remote.xml", true},
        {"remote.xml", false},
        {"--schema nons.xsd beside/d.xml", true},  // the hint adds what the schema has not
        {"--schema s.xsd x.xml", true},            // and does not count where it has
        {"--schema nons.xsd --schema s.xsd nons.xml good.xml", true},
        {"--schema import.xsd", false},
        {"--schema import.xsd --include-path folder", true},
        {"--schema import.xsd --include-path nowhere --include-path folder", true},
        {"--schema import.xsd --map urn:s=s.xsd", true},
        {"--schema import.xsd --map far/t.xsd=s.xsd", true},
        {"--schema import.xsd --catalog catalog.xml", true},
    };
    for (const auto& row : rows) {
        const Result result = Run(row.arguments);
        EXPECT_EQ(result.status, row.isValid ? 0 : 1) << row.arguments << '\n' << result.errors;
    }
}

TEST_F(KvxmlValidate, TakesFoldersAndStandardInput) {
    EXPECT_EQ(Run("--schema s.xsd -", kValid).output, "standard input: valid\n");
    const Result bad = Run("--schema s.xsd -", kInvalid);
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(bad.errors.compare(0, 20, "standard input:3:2: "), 0) << bad.errors;
    EXPECT_EQ(Run("-", Hinting("s.xsd")).output, "standard input: valid\n");

    Save("box/b.xml", kValid);
    Save("box/a.xml", kInvalid);
    Save("box/below/c.xml", kValid);
    Save("box/d.txt", "no document");
    const Result box = Run("--schema s.xsd -q box good.xml");
    EXPECT_EQ(box.output, "box/a.xml: invalid\nbox/b.xml: valid\nbox/below/c.xml: valid\ngood.xml: valid\n");
    EXPECT_EQ(box.status, 1);
    EXPECT_EQ(box.errors, "");

    Save("empty/d.txt", "no document");
    const Result empty = Run("--schema s.xsd empty good.xml");
    EXPECT_EQ(empty.output, "good.xml: valid\n");
    EXPECT_EQ(empty.status, 1);
    EXPECT_EQ(empty.errors, "kvxml: empty: no .xml file is in the folder\n");
}

/// A pipe gives its document once, whoever looks for hints in it.
TEST_F(KvxmlValidate, TakesPipes) {
    Save("hints.xml", Hinting("s.xsd"));
    const struct {
        const char* schema;
        const char* document;
        const char* output;
    } rows[] = {{"--schema s.xsd", "good.xml", "pipe: valid\n"},
                {"--schema s.xsd", "bad.xml", "pipe: invalid\n"},
                {"", "hints.xml", "pipe: valid\n"}};
    for (const auto& row : rows) {
        const Result result = CommandTest::Run(std::string("rm -f pipe && mkfifo pipe\ncat ") + row.document +
                                               " >pipe & timeout 20 $K validate " + row.schema + " pipe");
        EXPECT_EQ(result.output, row.output) << result.errors;
    }
}

/// Without namespaces, names in JSON count by their local parts.
TEST_F(KvxmlValidate, TakesJsonAndFastInfoset) {
    Save("good.json", R"({"s": {"@id": "a", "n": [1, 2]}})");
    Save("bad.json", R"({"s": {"n": [1, "x"]}})");
    Save("late.json", R"({"s": {"n": 1, "@id": "1"}})");
    Save("other.json", R"({"s": {"@xmlns": "urn:other", "n": 1}})");
    Save("broken.json", R"({"s": )");
    EXPECT_EQ(CommandTest::Run("$K convert good.xml good.fi && $K convert bad.xml bad.finf", "").status, 0);
    const struct {
        const char* arguments;
        const char* output;
        const char* errors;
    } rows[] = {
        {"good.json good.fi", "good.json: valid\ngood.fi: valid\n", ""},
        {"bad.json", "bad.json: invalid\n", "bad.json: The element [n] is not valid: "},
        {"bad.json", "bad.json: invalid\n", "    /s/n[2]\n"},
        {"late.json", "late.json: invalid\n", "    /s/@id\n"},
        {"other.json", "other.json: invalid\n", "There is no declaration of the element [s] of"},
        {"broken.json", "broken.json: invalid\n", "broken.json: "},
        {"bad.finf", "bad.finf: invalid\n", "    /s:s/n[2]\n"},
        {"--from json good.xml", "good.xml: invalid\n", "good.xml: "},
    };
    for (const auto& row : rows) {
        const Result result = Run(std::string("--schema s.xsd ") + row.arguments);
        EXPECT_EQ(result.output, row.output);
        EXPECT_NE(result.errors.find(row.errors), std::string::npos) << result.errors;
    }
    EXPECT_EQ(Run("--schema s.xsd --from json -", R"({"s": {"n": 1}})").output, "standard input: valid\n");
}

/// Whatever is done first, verdicts and faults come in the order of the documents, and schemas are shared.
TEST_F(KvxmlValidate, JudgesManyAtATime) {
    std::string big = "<s:s xmlns:s='urn:s'>";
    for (int i = 0; i < 20000; ++i)
        big += "<n>1</n>";
    Save("box/000.xml", big + "</s:s>");
    for (int i = 1; i < 60; ++i)
        Save("box/" + std::to_string(100 + i) + ".xml", i % 3 == 0   ? Hinting("../s.xsd", "<n>x</n>")
                                                        : i % 3 == 1 ? std::string(kInvalid)
                                                                     : kValid);
    for (const char* schema : {"--schema s.xsd box", "box"}) {
        const Result one = Run(schema);
        const Result many = Run(std::string("--jobs 8 ") + schema);
        EXPECT_EQ(one.status, 1);
        EXPECT_EQ(many.status, 1);
        EXPECT_NE(one.errors, "");
        EXPECT_EQ(many.output, one.output);
        EXPECT_EQ(many.errors, one.errors);
    }
}

}  // namespace
