/// The kvxml command as its users meet it, a process with files, pipes, statuses and messages, and what of
/// its parts must not take long.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "kvxml/xml/xml_text_writer.h"
#include "tests/tools/command_test.h"
#include "tools/kvxml/encoded_stream.h"
#include "tools/kvxml/messages.h"
#include "tools/kvxml/output.h"

namespace {

namespace fs = std::filesystem;

const char* const kDocument =
    "<?xml version='1.0'?><!-- c --><r xmlns='urn:d' xmlns:p='urn:p'><a x='1'>t</a><p:b>&#xE9;</p:b></r>";

std::string Repeat(const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

class KvxmlCommand : public CommandTest {
protected:
    void SetUp() override {
        CommandTest::SetUp();
        Save("in.xml", kDocument);
    }

    std::set<std::string> Files() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_folder / "work"))
            names.insert(entry.path().filename().string());
        return names;
    }
};

TEST_F(KvxmlCommand, LaysOut) {
    const struct {
        const char* options;
        const char* input;
        const char* output;
    } rows[] = {
        {"", kDocument,
         "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r xmlns=\"urn:d\" xmlns:p=\"urn:p\">\n\t<a "
         "x=\"1\">t</a>\n"
         "\t<p:b>\xC3\xA9</p:b>\n</r>\n"},
        {"--indent 1", "<a><b><c/></b></a>",
         "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>\n <b>\n  <c/>\n </b>\n</a>\n"},
        {"--compact", "<a x='&#9;&#10;&#13;q&#9;'>x<b/>y</a>",
         "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a x=\"&#x9;&#xA;&#xD;q&#x9;\">xy<b/></a>"},
        {"--compact", "<a>&lt;![CDATA[x]]&gt;<b><![CDATA[<]]></b></a>",
         "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a>&lt;![CDATA[x]]&gt;<b>&lt;</b></a>"},
        {"--compact --encoding iso-8859-1", "<a x='\xE2\x82\xAC'>\xC3\xA9\xE2\x82\xAC</a>",
         "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><a x=\"&#x20AC;\">\xE9&#x20AC;</a>"},
        {"--compact --encoding us-ascii", "<a>&lt;![CDATA[\xF0\x9F\x98\x80]]&gt;</a>",
         "<?xml version=\"1.0\" encoding=\"us-ascii\"?><a>&lt;![CDATA[&#x1F600;]]&gt;</a>"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.options) + " " + row.input);
        const Result result = Run(std::string("$K convert - - ") + row.options, row.input);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");  // no progress where no terminal is
        EXPECT_EQ(result.output, row.output);
    }
    const std::string utf16 = Run("$K convert --compact --encoding utf-16 in.xml -").output;
    EXPECT_EQ(utf16.substr(0, 6), std::string("\xFF\xFE<\0?\0", 6));
    EXPECT_EQ(Run("$K convert --compact - -", utf16).output, Run("$K convert --compact in.xml -").output);
}

/// Characters of several bytes and marked tabs at every distance from where the text is passed on.
TEST_F(KvxmlCommand, KeepsLongTexts) {
    std::string document = "<a>";
    for (int i = 0; i < 9000; ++i) {
        document += "<b x=\"" + std::string(static_cast<std::size_t>(i % 7), 'q') + "&#x9;\">";
        for (int n = i % 11; n >= 0; --n)
            document += "\xF0\x9F\x98\x80\xE2\x82\xAC";
        document += "</b>";
    }
    document += "</a>";
    for (const char* encoding : {"utf-8", "utf-16", "gb18030"}) {
        SCOPED_TRACE(encoding);
        const Result result = Run(
            std::string("$K convert - x --encoding ") + encoding + " && $K convert --compact x -", document);
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_TRUE(result.output == "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + document);
    }
}

TEST_F(KvxmlCommand, ConvertsToJsonAndBack) {
    const std::string xml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
        "<p:a xmlns:p=\"urn:p\" "
        "b=\"&quot;&#x9;&#xA;&#xD;\"><p:c>&lt;![CDATA[\\]]&gt;</p:c><p:c/><d>2</d></p:a>";
    const std::string json =
        R"({"p:a": {"@xmlns:p": "urn:p","@b": "\"\t\n\r","p:c": ["<![CDATA[\\]]>",{}],"d": "2"}})";
    EXPECT_EQ(Run("$K convert --to json --compact - -", xml).output, json);
    EXPECT_EQ(Run("$K convert --from json --compact - -", json).output, xml);
    EXPECT_EQ(Run("$K convert - o.json.gz --encoding utf-16 && $K convert o.json.gz --compact -", xml).output,
              xml);
}

TEST_F(KvxmlCommand, ConvertsToFastInfosetAndBack) {
    Save("in.xml", "<r a='&#9;&#10;&#13;'>&lt;![CDATA[x]]&gt;<p:b xmlns:p='urn:p'/></r>");
    const std::string xml = Run("$K convert --compact in.xml -").output;
    EXPECT_EQ(Run("$K convert in.xml o.finf.gz && $K convert o.finf.gz --compact -").output, xml);
    EXPECT_EQ(Run("$K convert --to fi in.xml - | $K convert --from fi --compact - -").output, xml);
}

TEST_F(KvxmlCommand, Refuses) {
    const struct {
        const char* arguments;
        const char* input;
        int status;
        const char* message;
    } rows[] = {
        {"convert - out.xml", "<a>\n<b></a>", 1, "kvxml: standard input: mismatched tag at line 2\n"},
        {"convert none.xml out.xml", "", 1, "kvxml: none.xml: No such file or directory\n"},
        {"convert in.xml .", "", 1, "kvxml: .: Is a directory\n"},
        {"convert in.xml none/out.xml", "", 1,
         "kvxml: none/out.xml: cannot create a file beside it: No such file or directory\n"},
        {"convert --from json - out.xml", "{\"a\":[1,}", 1,
         "kvxml: standard input: Expected Value '{', '[', '\"', '0-9', '-', 'true', 'false' or 'null', found "
         "'}' "
         "at line 1, position 9.; Path: $.a[1]\n"},
        {"convert --encoding latin1 in.xml out.json", "", 1,
         "kvxml: out.json: JSON can be written in utf-8 and utf-16 only\n"},
        {"convert --from fi - out.xml", "\xE0", 1,
         "kvxml: standard input: Failed to parse FastInfoset. The document ends early at octet 1\n"},
        {"convert --encoding us-ascii - out.xml", "<\xC3\xA9/>", 1,
         "kvxml: out.xml: a name contains U+00E9, which us-ascii does not have\n"},
        {"convert in.xml /dev/full", "", 1, "kvxml: /dev/full: cannot write: No space left on device\n"},
        {"convert in.xml - >/dev/full", "", 1,
         "kvxml: standard output: cannot write: No space left on device\n"},
        {"convert in.xml - >&-", "", 1, "kvxml: standard output: cannot write: Bad file descriptor\n"},
        {"--version >/dev/full", "", 1, "kvxml: standard output: cannot write\n"},
        {"convert $(printf 'n\\033\\342\\200\\256.xml') -", "", 1,
         "kvxml: n\\x1B\\u202E.xml: No such file or directory\n"},
        {"", "", 2, "kvxml: a command is required; see 'kvxml --help'\n"},
        {"conv in.xml", "", 2, "kvxml: unknown command 'conv'; did you mean 'kvxml convert'?\n"},
        {"ocnvert", "", 2, "kvxml: unknown command 'ocnvert'; did you mean 'kvxml convert'?\n"},
        {"in.xml out.xml", "", 2, "kvxml: unknown command 'in.xml'; see 'kvxml --help'\n"},
        {"help", "", 2, "kvxml: unknown command 'help'; did you mean 'kvxml --help'?\n"},
        {"help convert", "", 2, "kvxml: unknown command 'help'; did you mean 'kvxml convert --help'?\n"},
        {"-V", "", 2, "kvxml: unknown option '-V'; did you mean 'kvxml --version'?\n"},
        {"convert --compat in.xml out.xml", "", 2,
         "kvxml: unknown option '--compat'; did you mean '--compact'?\n"},
        {"convert in.xml out.xml x.xml", "", 2,
         "kvxml: unexpected argument 'x.xml'; see 'kvxml convert --help'\n"},
        {"convert in.xml out.xml --encoding 'utf-8//IGNORE'", "", 2,
         "kvxml: --encoding: unknown or unsuitable encoding utf-8//IGNORE; see 'kvxml convert --help'\n"},
        {"convert in.xml out.xml --compact --indent 2", "", 2,
         "kvxml: --compact excludes --indent; see 'kvxml convert --help'\n"},
        {"convert in.xml out.xml --to yaml", "", 2,
         "kvxml: --to: yaml not in {xml,json,fi}; see 'kvxml convert --help'\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.arguments);
        const Result result = Run(std::string("$K ") + row.arguments, row.input);
        EXPECT_EQ(result.status, row.status);
        EXPECT_EQ(result.errors, row.message);
        EXPECT_EQ(Files(), std::set<std::string>{"in.xml"});
    }
}

TEST_F(KvxmlCommand, ReplacesFiles) {
    const std::string expected = Run("$K convert in.xml -").output;
    // The same file as input and output; permissions stay, so does a link to it.
    Save("same.xml", kDocument);
    chmod(File("same.xml").c_str(), 0640);
    fs::create_symlink("same.xml", File("link.xml"));
    EXPECT_EQ(Run("umask 0; $K convert link.xml link.xml").status, 0);
    EXPECT_EQ(Read(File("same.xml")), expected);
    EXPECT_EQ(fs::status(File("same.xml")).permissions(), fs::perms(0640));
    EXPECT_TRUE(fs::is_symlink(File("link.xml")));
    // A link to nothing yet, from another folder; a new file follows the umask.
    fs::create_directory(File("sub"));
    fs::create_symlink("../new.xml", File("sub/link.xml"));
    EXPECT_EQ(Run("umask 027; $K convert in.xml sub/link.xml").status, 0);
    EXPECT_EQ(Read(File("new.xml")), expected);
    fs::create_symlink("loop.xml", File("loop.xml"));
    EXPECT_EQ(Run("$K convert in.xml loop.xml").status, 1);
    EXPECT_EQ(Files(),
              (std::set<std::string>{"in.xml", "link.xml", "loop.xml", "new.xml", "same.xml", "sub"}));
}

TEST_F(KvxmlCommand, Compresses) {
    const std::string expected = Run("$K convert in.xml -").output;
    EXPECT_EQ(Run("$K convert in.xml out.xml.gz && gzip -dc out.xml.gz").output, expected);
    EXPECT_EQ(Run("$K convert --gzip in.xml - | gzip -dc").output, expected);
    EXPECT_EQ(Run("$K convert --gzip --encoding utf-16 in.xml out && $K convert out -").output, expected);
}

TEST_F(KvxmlCommand, WritesToWhatIsNoFile) {
    const std::string expected = Run("$K convert in.xml -").output;
    EXPECT_EQ(Run("$K convert in.xml /dev/null").status, 0);
    EXPECT_EQ(Run("mkfifo pipe; cat pipe & $K convert in.xml pipe && wait").output, expected);
    EXPECT_EQ(
        Run("{ echo first; $K convert /dev/stdin /dev/stdout <in.xml; echo last; } >out; cat out").output,
        "first\n" + expected + "last\n");
    // It is written as it comes: what a refused document began with is there.
    const std::string text(1000000, 'x');
    const Result refused = Run("$K convert --encoding us-ascii - -", "<a><b>" + text + "</b><\xC3\xA9/></a>");
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.output.find(text), std::string::npos);
    Save("long.xml", "<a>" + std::string(1000000, 'x') + "</a>");
    EXPECT_EQ(Run("{ $K convert long.xml - 2>message; echo $? >status; } | true; cat status message").output,
              "1\nkvxml: standard output: cannot write: Broken pipe\n");
}

TEST_F(KvxmlCommand, LeavesTheTargetAloneWhenItFails) {
    Save("long.xml", "<a>" + std::string(3000000, 'x') + "</a>");
    Save("target.xml", "before");
    const Result limited = Run("ulimit -f 1000; $K convert long.xml target.xml");
    EXPECT_EQ(limited.status, 1);
    EXPECT_EQ(limited.errors, "kvxml: target.xml: cannot write: File too large\n");
    EXPECT_EQ(Read(File("target.xml")), "before");

    std::string large = "<a>";
    for (int i = 0; i < 600000; ++i)
        large += "<b>" + std::to_string(i * 7919L % 1000003) + "</b>";
    Save("large.xml", large + "</a>");
    for (const int signal : {SIGINT, SIGTERM, SIGQUIT, SIGXCPU}) {
        SCOPED_TRACE(signal);
        // The shell that becomes the program is the one that is told to end once the temporary file is there.
        const Result result =
            Run("ulimit -c 0; sh -c '( while ! ls .kvxml-*.tmp >/dev/null 2>&1; do :; done; kill -" +
                std::to_string(signal) + " $$ ) & exec \"$K\" convert --gzip large.xml target.xml'");
        EXPECT_EQ(result.status, 128 + signal);
        EXPECT_EQ(Read(File("target.xml")), "before");
        EXPECT_EQ(Files(), (std::set<std::string>{"in.xml", "large.xml", "long.xml", "target.xml"}));
    }
}

TEST_F(KvxmlCommand, RespectsPermissions) {
    // Everything is permitted to root, so root becomes somebody else.
    const std::string as = geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "";
    fs::permissions(m_folder, fs::perms(0755));
    if (Run(as + "\"$K\" --version").status != 0) GTEST_SKIP() << "the program cannot be run without rights";
    Save("secret.xml", kDocument);
    Save("fixed.xml", "before");
    chmod(File("secret.xml").c_str(), 0);
    chmod(File("fixed.xml").c_str(), 0444);
    fs::permissions(m_folder / "work", fs::perms(0555));
    EXPECT_EQ(Run(as + "$K convert secret.xml -").errors, "kvxml: secret.xml: Permission denied\n");
    EXPECT_EQ(Run(as + "$K convert in.xml fixed.xml").errors, "kvxml: fixed.xml: Permission denied\n");
    EXPECT_EQ(Run(as + "$K convert in.xml new.xml").errors,
              "kvxml: new.xml: cannot create a file beside it: Permission denied\n");
    EXPECT_EQ(Read(File("fixed.xml")), "before");
    fs::permissions(m_folder / "work", fs::perms(0777));
    if (geteuid() != 0) return;
    // Whose file it was, and who else may write it, cannot be kept without rights; that is said.
    Save("shared.xml", "before");
    chmod(File("shared.xml").c_str(), 0666);
    const Result replaced = Run(as + "$K convert in.xml shared.xml");
    EXPECT_EQ(replaced.status, 0);
    EXPECT_EQ(replaced.errors,
              "kvxml: shared.xml: not kept: owner, group, permissions (0606 instead of 0666)\n");
}

TEST_F(KvxmlCommand, HasLimits) {
    Save("deep", Repeat("<a>", 1001) + Repeat("</a>", 1001));
    Save("names", "<a b='1'><c/><d/></a>");
    Save("entity",
         "<!DOCTYPE a [<!ENTITY e '" + std::string(90000, 'x') + "'>]><a>" + Repeat("&e;", 200) + "</a>");
    Save("blanks", "<a>" + std::string(9000000, ' ') + "</a>");
    const struct {
        const char* command;
        int status;
    } rows[] = {
        {"$K convert --compact deep out.json", 1},
        {"$K convert --compact deep out.json --max-depth 1001", 0},
        {"$K convert --compact deep out.json --max-depth 0", 0},
        {"$K convert names - --max-names 3", 1},
        {"$K convert names - --max-names 4", 0},
        {"$K convert entity out.xml", 1},
        {"$K convert entity out.xml --max-expansion 20M", 0},
        {"gzip -c blanks | $K convert - out.xml", 1},
        {"gzip -c blanks | $K convert - out.xml --max-inflation-ratio 2000", 0},
        {"gzip -c blanks | $K convert - out.xml --max-inflation-ratio 0 --max-inflated 8M", 1},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Run(row.command).status, row.status) << row.command;
}

TEST_F(KvxmlCommand, IndentsDeepDocumentsWithinBounds) {
    for (const char* options : {"", "--indent 64", "--to json"}) {
        const auto length = [&](int levels) {
            const std::string document = Repeat("<a>", levels) + Repeat("</a>", levels);
            return Run(std::string("$K convert - - ") + options, document).output.size();
        };
        EXPECT_LT(length(800), 8 * length(200)) << options;
    }
}

TEST(KvxmlCommandParts, CostsAsMuchAsTheTextIsLong) {
    const struct {
        const char* encoding;
        const char* text;
        const char* value;
    } rows[] = {{"us-ascii", "\xC3\xA9", ""}, {"us-ascii", "", "\xC3\xA9"}, {"utf-8", "", "\t"}};
    for (const auto& row : rows) {
        const auto cost = [&](int count) {
            const std::string text = Repeat(row.text, count);
            const std::string value = Repeat(row.value, count);
            const std::clock_t start = std::clock();
            tool::COutput output("/dev/null", false);
            tool::CEncodedStream stream(output, row.encoding);
            KvXmlLib16::CXmlTextWriter writer(&stream);
            writer.SetLossless(true);
            writer.BeginOutput();
            writer.WriteStartElement("a", {});
            writer.WriteAttribute("b", {}, value, KvXmlLib16::ItemType_string);
            writer.WriteText(text, KvXmlLib16::ItemType_string, false);
            writer.WriteEndElement();
            writer.EndDocument();
            return std::clock() - start;
        };
        constexpr int kCount = 150000;
        const std::clock_t slack = CLOCKS_PER_SEC / 20;
        EXPECT_LT(cost(4 * kCount), 6 * cost(kCount) + slack) << row.encoding << row.text << row.value;
    }
}

TEST(KvxmlCommandParts, ShowsTextsSafely) {
    const struct {
        std::string text;
        std::string shown;
    } rows[] = {
        {"a\nb", "a; b"},
        {"\x1B[2J\x7F\xC2\x9B", "\\x1B[2J\\x7F\\u009B"},
        {"\xE2\x80\xAE\xE2\x81\xA6\xD8\x9C\xF3\xA0\x81\x81", "\\u202E\\u2066\\u061C\\U000E0041"},
        {"\xC3\xA9\xF0\x9F\x98\x80", "\xC3\xA9\xF0\x9F\x98\x80"},
        {"\xC3|\xED\xA0\x80|\xC0\xAF", "\\xC3|\\xED\\xA0\\x80|\\xC0\\xAF"},
        {"x" + Repeat("\xC3\xA9", 5000), "x" + Repeat("\xC3\xA9", 249) + " [...] " + Repeat("\xC3\xA9", 150)},
    };
    for (const auto& row : rows)
        EXPECT_EQ(tool::Printable(row.text), row.shown);
}

}  // namespace
