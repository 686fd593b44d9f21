#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/platform/text_settings.h"
#include "kvxml/settings/fast_infoset_context.h"
#include "kvxml/settings/fast_infoset_vocabulary.h"
#include "kvxml/xml/xml_document.h"
#include "kvxml/xml/xml_element.h"
#include "tests/support/error_of.h"
#include "tests/support/xml_tree_dump.h"

using namespace KvXmlLib16;

namespace {

/// Octets of hexadecimal digits; what stands between apostrophes is text.
std::string Octets(std::string_view hex) {
    std::string octets;
    int high = -1;
    for (std::size_t i = 0; i < hex.size(); ++i) {
        if (hex[i] == '\'') {
            for (++i; hex[i] != '\''; ++i)
                octets += hex[i];
        } else if (hex[i] != ' ') {
            const int digit = hex[i] <= '9' ? hex[i] - '0' : hex[i] - 'A' + 10;
            if (high >= 0) octets += static_cast<char>(high << 4 | digit);
            high = high >= 0 ? -1 : digit;
        }
    }
    return octets;
}

const std::string kStart = Octets("E0 00 00 01 00");

void Load(CXmlDocument& document, std::string_view octets) {
    document.LoadXmlStream(reinterpret_cast<const unsigned char*>(octets.data()), octets.size());
}

std::string DumpOf(std::string_view octets,
                   const CSerializationContext& context = CSerializationContext::GetDefaultContext()) {
    CXmlDocument document(context);
    const std::string error = ErrorOf([&] { Load(document, octets); });
    return error == "(no error)" ? testsupport::Dump(document) : error;
}

struct Row {
    const char* hex;
    const char* expected;
};

// Behind "E0 00 00 01 00".
const Row kBodies[] = {
    // Elements and attributes: names and values literal and by index, the empty value, terminators.
    {"3C 00'a' FF", "a"},
    {"3C 00'a' 00 00 FF FF", "a(a(a))"},
    {"7C 00'a' 78 00'x' 41'17' 78 00'y' 01'li' 78 00'z' FF F0 40 00 80 01 40'q' F0 40 02 81 FF FF F0",
     "a@x=17@y=li@z=(a@x=17@y=q(a@z=q))"},
    {"7C 00'a' F0 FF", "a"},                             // a list of attributes without attributes
    {"38 F0 3C 00'a' FF", "a"},                          // and one of declarations
    {"7C 00'a' 78 80 02 09 0D 0A FF F0", "a@a=\t\r\n"},  // values are as they stand
    // Namespaces.
    {"38 CD 00'u' F0 3D 81 00'a' 38 CC F0 3C 80 FF F0", "{u}a(a)"},
    {"78 CF 00'p' 00'u' F0 3F 81 81 00'a' 7B 81 81 80 40'1' 79 81 00'b' 40'2' FF F0", "{u}a@{u}a=1@{u}b=2"},
    {"38 CF 00'p' 00'u' F0 3F 00'p' 00'u' 00'a' FF", "{u}a"},  // parts of a name that are literal once more
    {"7C 00'a' 7B 80 80 03'lang' 41'de' FF F0", "a@{http://www.w3.org/XML/1998/namespace}lang=de"},
    {"38 CF 80 80 F0 3C 00'a' FF", "a"},
    {"38 CF 00'p' 00'u' F0 3C 00'a' 38 CE 81 F0 00 F0 3F 81 81 00'b' FF F0", "a(a {u}b)"},
    // Text: the four formats in all lengths, by index, with carriage returns.
    {"3C 00'a' 80'1' 81'23' 82 01'4567' 90'8' A0 FF", "a'123456788'"},
    {"3C 00'a' 85 00 E9 86 01 D8 3D DE 00 F0 F0", "a'\u00E9\U0001F600'"},
    {"3C 00'a' 95 00 41 91 0D'x' A0 A1 F0 F0", "a'AxAx'"},
    {"3C 00'a' 88 00 12 88 00 1F 88 04 AB 88 02 00 A1 2E DF 98 01 C1 2F A0 F0 F0", "a'121-:-12 E.12.12'"},
    // Encoding algorithms.
    {"3C 00'a' 8C 01 00 AB 80' ' 8C 06 00 01 02 03 F0 F0", "a'00AB AQID'"},
    {"3C 00'a' 8C 0A 01 FF FE 7F FF F0 F0", "a'-2 32767'"},
    {"3C 00'a' 8C 0E 01 80 00 00 00 80' ' 8C 12 05 7F FF FF FF FF FF FF FF F0 F0",
     "a'-2147483648 9223372036854775807'"},
    {"3C 00'a' 8C 14 28 80' ' 8C 15 7F 80 80' ' 8C 14 38 F0 F0",
     "a'true false true true true true true true'"},
    {"3C 00'a' 8C 1A 0D 3F C0 00 00 7F 80 00 00 FF 80 00 00 7F C0 00 00 F0 F0", "a'1.5 INF -INF NaN'"},
    {"3C 00'a' 8C 1A 05 3D CC CC CD 80 00 00 00 F0 F0", "a'0.1 -0'"},
    {"3C 00'a' 8C 1E 0D 3F B9 99 99 99 99 99 9A 7F EF FF FF FF FF FF FF F0 F0",
     "a'0.1 1.7976931348623157e+308'"},
    {"3C 00'a' 8C 22 0D 01 23 45 67 89 AB CD EF 01 23 45 67 89 AB CD EF F0 F0",
     "a'01234567-89ab-cdef-0123-456789abcdef'"},
    {"3C 00'a' 80'1' 8C 26 01'<&]]' 80'2' F0 F0", "a'1<&]]2'"},
    {"7C 00'd' 78 00'h' 70 01 CA FE 78 00'i' 80 78 00'n' 30 33 00 00 00 07 78 00'o' 20 01 A1 2F FF F0",
     "d@h=CAFE@i=CAFE@n=7@o=-12"},
    {"7C 00'd' 78 00'h' 11 00 41 78 00'i' 51 00 42 78 00'j' 80 FF F0", "d@h=A@i=B@j=B"},
    // What trees do not keep is kept in step.
    {"E2 40'c' C7 00's' 00'p' E1 00't' FF F0 3C 00'a' E2 80 E1 80 80 E2 FF 80'x' E2 02'abc' 80'y' FF",
     "a'xy'"},
    {"3C 00'a' 80'x' C8 00'e' CA 80 00's' CB 80 80 80 80'y' FF", "a'xy'"},
    {"3C 00'a' F0 E2 40'c' E1 00't' 80 F0", "a"},
    // The same text twice has two indexes.
    {"3C 00'a' 90'x' 90'x' 90'y' A2 FF", "a'xxyy'"},
};

// Whole documents.
const Row kDocuments[] = {
    {"'<?xml encoding=%finf% standalone=%yes%?>' E0 00 00 01 00 3C 00'a' FF", "a"},
    {"'<?xml version=%1.1% encoding=%finf% standalone=%yes%?>' E0 00 00 01 00 3C 00'a' FF", "a"},
    // All optional components: additional data; a vocabulary of one entry in each table; notations and
    // unparsed entities, with and without identifiers; encoding; standalone; version.
    {"E0 00 00 01 7F  01 00'i' 01'dd' 00'j' 00 FF"
     "0F FF 00 02'xyz' 00 00'u' 00 00'p' 00 01'un' 00 00'l' 00 00't' 00 00's' 00 00'v' 00 00'c' 00 00'o'"
     "00 03 01 01 00 00 00 00"
     "C0 80 C1 01't2' 80 C2 80 80 C3 80 80 80 F0  D0 80 80 80 D1 80 80 80 80 F0  04'UTF-8' 01 80"
     "78 CF 81 81 F0 00 00 80 F0 A0 88 3C 1B E1 80 80 40 00 80 FF FF",
     "{un}l@l=v'cxyz'({un}l@l=v)"},
};

// Refused, with the place.
struct Refusal {
    const char* hex;  // behind the start
    const char* message;
    int offset;
};

const char* const kReservedOctet = "Reserved octet";
const char* const kNoEntry = "An index is beyond the end of its table";
const char* const kNotText = "A text is not well-formed UTF-8 or has a character that is not allowed";
const char* const kNotName = "A name is not well-formed";
const char* const kScope = "A prefix does not stand for the namespace of its name";
const char* const kPadding = "Text in a restricted alphabet is not filled up with ones";
const char* const kWhole = "The octets do not make whole values";
const char* const kNotInDocument = "An octet does not begin anything that a document may contain";
const char* const kLengthBits = "Reserved bits are set in a length";
const char* const kBeyond = "A length reaches beyond the end of the document";

const Refusal kRefusals[] = {
    // Document level.
    {"F0", "There is no document element", 5},
    {"FF", kNotInDocument, 5},
    {"C8 00'e'", kNotInDocument, 5},
    {"C4 F0 C4", kNotInDocument, 7},
    {"C4 FF", "An octet does not begin anything that a document type may contain", 6},
    {"3C 00'a' F0 FF", kNotInDocument, 9},
    {"3C 00'a' F0 C4 F0", kNotInDocument, 9},
    {"3C 00'a' F0 3C 00'b' FF", "There is a second document element", 9},
    {"3C 00'a' FF 00", "There is something behind the end of the document", 9},
    // Reserved octets, one of each range; indexes.
    {"31", kReservedOctet, 5},
    {"3A", kReservedOctet, 5},
    {"3E 00'a'", kReservedOctet, 5},
    {"3C 00'a' B9", kReservedOctet, 8},
    {"3C 00'a' C4", kReservedOctet, 8},
    {"3C 00'a' F1", kReservedOctet, 8},
    {"3C 00'a' B8 10 00 00", "Reserved bits are set in an index", 9},
    {"3C 00'a' 01", kNoEntry, 8},
    {"3C 00'a' 30 0F FF FF", kNoEntry, 8},
    {"3C 00'a' A0", kNoEntry, 8},
    {"3C 81", kNoEntry, 6},
    {"3C F0", "Reserved bits are set in an index", 6},
    {"7C 00'a' 00 80", kNoEntry, 8},
    {"7C 00'a' 70", "An octet does not begin an attribute", 8},
    {"7C 00'a' F8", "An octet does not begin an attribute", 8},
    {"7C 00'a' 78 00'x' 80", kNoEntry, 11},
    {"7C 00'a' 78 00'x' F0", "Reserved bits are set in an index", 11},
    {"E2 80", kNoEntry, 6},
    {"E1 80", kNoEntry, 6},
    // Lengths.
    {"3C 41", kLengthBits, 6},
    {"3C 05'abc'", kBeyond, 7},
    {"3C 60 FF FF FF FF", "A length is above the limit of its form", 7},
    {"3C 60 FF FF FE BF", kBeyond, 11},
    {"3C 00'a' 83 FF FF FE FE", "A length is above the limit of its form", 9},
    {"3C 00'a' 83 FF FF FE FD", kBeyond, 13},
    {"7C 00'a' 78 00'x' 09", kLengthBits, 11},
    {"7C 00'a' 78 00'x' 0C 7F FF FF FF", kBeyond, 16},
    // Names and namespaces.
    {"3C 00'1'", kNotName, 6},
    {"3C 02'a:b'", kNotName, 6},
    {"3D 00'u' 00'a'", kScope, 5},
    {"38 CD 00'u' F0 3D 81 00'a' 3C 80", kScope, 14},
    {"38 CF 00'p' 00'u' F0 3C 00'a' 38 CF 81 00'v' F0 3F 81 81 00'b' F0", kScope, 21},
    {"38 CF 00'p' 00'u' F0 3C 00'a' 78 CE 81 F0 3C 00'b' 7B 81 81 80", kScope, 22},
    {"3C 00'r' 38 CF 00'p' 00'u' F0 3F 81 81 00'a' F0 3F 81 81 00'b' F0", kScope, 21},
    {"38 CF 00'p' 00'u' CF 81 81", "An element declares a prefix twice", 11},
    {"38 CF 02'xml' 80", "A reserved prefix or namespace is declared", 7},
    {"38 CF 04'xmlns' 00'u'", "A reserved prefix or namespace is declared", 7},
    {"38 CF 00'p' 80", "The prefix xml and its namespace belong together", 6},
    {"38 CE 80", "The prefix xml and its namespace belong together", 6},
    {"38 FF", "An octet does not begin a declaration", 6},
    {"38 F0 7C 00'a'", "Reserved bits are set", 7},
    {"7C 00'a' 78 00'x' 40'1' 78 81 40'2' FF F0", "An element has two attributes of one name", 13},
    {"7C 00'a' 78 04'xmlns' 40'u'", "A declaration is written as an attribute", 8},
    // Characters.
    {"3C 00'a' 80 00", kNotText, 8},
    {"3C 00'a' 82 05'abcdefg' 0B", kNotText, 8},
    {"3C 00'a' 81 C0 80", kNotText, 8},
    {"3C 00'a' 82 00 ED A0 80", kNotText, 8},
    {"3C 00'a' 82 00 EF BF BF", kNotText, 8},
    {"3C 00'a' 8C 24 0C", kNotText, 8},
    {"3C 00'a' 8C 26 00']]>'", "A CDATA section contains its own end", 8},
    {"3C 00'a' 84 41", "UTF-16 text has an odd number of octets", 8},
    {"3C 00'a' 85 D8 00", "UTF-16 text has an unpaired surrogate", 8},
    {"3C 00'a' 85 DC 00", "UTF-16 text has an unpaired surrogate", 8},
    {"3C 00'a' 86 01 D8 00 00 41", "UTF-16 text has an unpaired surrogate", 8},
    {"3C 00'a' 85 00 00", "A character is not allowed", 8},
    // Restricted alphabets and algorithms.
    {"3C 00'a' 88 08 12", "Unknown restricted alphabet", 8},
    {"3C 00'a' 88 00 FF", kPadding, 8},
    {"3C 00'a' 88 00 F1", kPadding, 8},
    {"3C 00'a' 88 01 1F 12", kPadding, 8},
    {"3C 00'a' 8C 28 00", "Unknown encoding algorithm", 8},
    {"3C 00'a' 8C 08 00", kWhole, 8},
    {"3C 00'a' 8C 1E 01 00 00 00 00", kWhole, 8},
    {"3C 00'a' 8C 22 01 00 00 00 00", kWhole, 8},
    {"3C 00'a' 8C 14 48", "The count of unused bits is too large", 8},
    {"3C 00'a' 8C 14 39", "Unused bits are set", 8},
    {"E2 30 00 AB", "An encoding algorithm is used where it is not allowed", 6},
    {"7C 00'a' 78 00'x' 30 90'c'", "An encoding algorithm is used where it is not allowed", 11},
};

const Refusal kHeaderRefusals[] = {
    {"E0 00 00 02 00", "The identification or version is not that of the format", 3},
    {"'<?xml encoding=%finf%?>' 0A E0 00 00 01 00", "The identification or version is not that of the format",
     23},
    {"E0 00 00 01 80", "Reserved bits are set", 4},
    {"E0 00 00 01 20 20 00", "Reserved bits are set", 5},
    {"E0 00 00 01 40 90 00 00", kLengthBits, 5},
    {"E0 00 00 01 40 8F FF FF", "A length is above the limit of its form", 5},
    {"E0 00 00 01 40 00 80", kLengthBits, 6},
    {"E0 00 00 01 20 10 00 04'urn:x'", "Unknown external vocabulary [urn:x]", 7},
    {"E0 00 00 01 20 02 00 00 00'1'", kNotName, 8},
    {"E0 00 00 01 20 00 10 00 40'v'", "Reserved bits are set", 8},
    {"E0 00 00 01 20 00 02 00 00 00", kNoEntry, 9},
    {"E0 00 00 01 20 00 02 00 01 01", kNoEntry, 9},
    {"E0 00 00 01 10 C4", "An octet does not begin a notation", 5},
    {"E0 00 00 01 08 D2", "An octet does not begin an unparsed entity", 5},
    {"E0 00 00 01 01 81", kNoEntry, 5},
};

std::string Message(const char* what, std::size_t offset) {
    return "Failed to parse FastInfoset. " + std::string(what) + " at octet " + std::to_string(offset);
}

/// In the rows a percent sign stands for an apostrophe in text.
std::string Whole(const char* hex) {
    std::string octets = Octets(hex);
    for (char& c : octets)
        c = c == '%' ? '\'' : c;
    return octets;
}

std::vector<std::string> AllDocuments() {
    std::vector<std::string> documents;
    for (const Row& row : kBodies)
        documents.push_back(kStart + Octets(row.hex));
    for (const Row& row : kDocuments)
        documents.push_back(Whole(row.hex));
    return documents;
}

std::string BigEndian(std::uint32_t value, int octets) {
    std::string out;
    for (int shift = 8 * (octets - 1); shift >= 0; shift -= 8)
        out += static_cast<char>(value >> shift & 0xFF);
    return out;
}

/// A literal chunk; with `add` it enters the table.
std::string Chunk(const std::string& text, bool add) {
    return static_cast<char>(add ? 0x93 : 0x83) +
           BigEndian(static_cast<std::uint32_t>(text.size() - 259), 4) + text;
}

bool DiscardB(CXmlElement* element) {
    return element->GetLocalName() == "b";
}

}  // namespace

TEST(FastInfosetReader, EveryForm) {
    for (const Row& row : kBodies)
        EXPECT_EQ(DumpOf(kStart + Octets(row.hex)), row.expected) << row.hex;
    for (const Row& row : kDocuments)
        EXPECT_EQ(DumpOf(Whole(row.hex)), row.expected) << row.hex;
}

TEST(FastInfosetReader, RefusalsTellTheOctet) {
    for (const Refusal& row : kRefusals)
        EXPECT_EQ(DumpOf(kStart + Octets(row.hex)),
                  Message(row.message, static_cast<std::size_t>(row.offset)))
            << row.hex;
    for (const Refusal& row : kHeaderRefusals)
        EXPECT_EQ(DumpOf(Whole(row.hex)), Message(row.message, static_cast<std::size_t>(row.offset)))
            << row.hex;
    // Other declarations of this encoding are none, and the parser of XML text gets them.
    EXPECT_EQ(DumpOf("<?xml version=\"1.0\" encoding=\"finf\"?>" + kStart), "unknown encoding at line 1");
}

TEST(FastInfosetReader, TruncatedAndDamaged) {
    for (const std::string& document : AllDocuments()) {
        const std::size_t declaration = document.find('\xE0');
        for (std::size_t length = std::max<std::size_t>(declaration, 1); length < document.size(); ++length) {
            const std::string message = DumpOf(document.substr(0, length));
            EXPECT_EQ(message.substr(0, 29), "Failed to parse FastInfoset. ") << length << message;
        }
        // Whatever a document becomes by a changed bit, it is read or refused.
        for (std::size_t bit = 0; bit < document.size() * 8; ++bit) {
            std::string damaged = document;
            damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
            EXPECT_FALSE(DumpOf(damaged).empty());
        }
    }
    EXPECT_EQ(DumpOf(kStart + Octets("3C 00'a' 80")),
              Message("The document ends early", 9).replace(29, 23, kBeyond));
    EXPECT_EQ(DumpOf(kStart + Octets("3C 00'a'")), Message("The document ends early", 8));
}

TEST(FastInfosetReader, LongTextIsSharedAndStaysWhole) {
    const std::string x(300, 'x');
    const std::string document = kStart + Octets("3C 00'a'") + Chunk(x, true) +
                                 Octets("80'1' A0 A0 3C 00'b'") +
                                 Octets("A0 80'2' F0 A0 91 0A' ' A1 01 A0 F0 A1 01 A1 FF F0");
    const std::string expected = "a'" + x + '1' + x + x + x + "\n \n \n '(b'" + x + "2' b'" + x + "' b'\n ')";
    EXPECT_EQ(DumpOf(document), expected);
    CXmlDocument filtered(&DiscardB);
    Load(filtered, document);
    EXPECT_EQ(testsupport::Dump(filtered), expected.substr(0, expected.find('(')));
}

TEST(FastInfosetReader, SettingsHoldAsForXml) {
    CSerializationContext context;
    context.SetStripCDATA(false);
    context.SetSchemaType(SchemaType_NoNamespaces);
    context.SetMaxElementDepth(2);
    const std::string body =
        Octets("78 CF 00'p' 00'u' CD 81 F0 3F 81 81 00'a' 7B 81 81 80 40'1' F0 9C 24'<' A0");
    const std::string expected = "p:a@xmlns:p=u@xmlns=u@p:a=1'<![CDATA[<]]><'";
    EXPECT_EQ(DumpOf(kStart + body + Octets("FF"), context), expected);
    EXPECT_EQ(DumpOf(kStart + body + Octets("00 FF F0"), context), expected + "(p:a)");
    EXPECT_EQ(DumpOf(kStart + body + Octets("00 00"), context),
              Message("Elements are nested deeper than the limit of 2", 31));

    SetLocalCharEncoding(1252);
    const std::string converted =
        DumpOf(kStart +
               Octets("78 CD 02'\u20AC' F0 3D 81 01'\u00E9' 78 00'x' 42'\u20AC' 78 00'y' 80 F0 92 00'\u20AC' "
                      "A0 FF"));
    const std::string unknown = DumpOf(kStart + Octets("3C 00'a' 85 4E 2D F0 F0"));
    SetLocalCharEncoding(3);
    EXPECT_EQ(converted, "{\x80}\xE9@x=\x80@y=\x80'\x80\x80'");
    EXPECT_EQ(unknown, "a'?'");
}

TEST(FastInfosetReader, PrefixesOfTheDocument) {
    CXmlDocument document;
    Load(document,
         kStart + Octets("38 CF 00'p' 00'u' CD 00'v' F0 3D 82 00'a' 38 CF 81 82 F0 3F 81 82 00'b' FF F0"));
    EXPECT_EQ(document.LookupNamespaceFromAlias("p"), "v");
    EXPECT_EQ(document.LookupAliasFromNamespace("v"), "");
    EXPECT_EQ(document.LookupAliasFromNamespace("u"), "");
}

TEST(FastInfosetReader, ExternalVocabulary) {
    auto vocabulary = std::make_shared<CFastInfosetVocabulary>("urn:v");
    vocabulary->AddElementName("p", "u", "a");
    vocabulary->AddAttributeName("", "", "x");
    vocabulary->AddAttributeValue("val");
    vocabulary->AddText("txt");
    vocabulary->AddAlphabet("ab");
    vocabulary->AddOtherName("t");
    vocabulary->AddOtherText("d");
    CSerializationContext context;
    context.GetFIContext().AddKnownVocabulary(std::make_shared<CFastInfosetVocabulary>("urn:other"));
    context.GetFIContext().AddKnownVocabulary(vocabulary);
    // Its entries stand in front of those of the initial vocabulary and of the document.
    EXPECT_EQ(
        DumpOf(
            Octets(
                "E0 00 00 01 20 10 08 04'urn:v' 00 00'c' 78 CF 81 81 F0 00 00 80 F0 A0 A1 90'd' A2 88 3C 1F"
                "E1 80 80 FF"),
            context),
        "{u}a@x=val'txtcddab'");
}

TEST(FastInfosetReader, AlphabetsOfBothNumberings) {
    // 40 alphabets of two letters: "ab", "bc" and so on in turns, the letters packed as 0001 1111.
    std::string start = Octets("E0 00 00 01 20 08 00 27");
    for (int i = 0; i < 40; ++i)
        start += Octets("01") + std::string(1, static_cast<char>('A' + i)) + 'z';
    const auto chunk = [](unsigned number) {
        return std::string{static_cast<char>(0x88 | number >> 6), static_cast<char>(number << 2 & 0xFF),
                           '\x1F'};
    };
    const auto read = [&](std::initializer_list<unsigned> numbers) {
        std::string octets = start + Octets("3C 00'a'");
        for (const unsigned number : numbers)
            octets += chunk(number);
        return DumpOf(octets + Octets("FF"));
    };
    EXPECT_EQ(read({32, 33, 71}), "a'AzBzhz'");        // from 32 on
    EXPECT_EQ(read({15, 31, 32, 54}), "a'AzQzRzhz'");  // from 15 on
    EXPECT_EQ(read({72}).substr(0, 6), "Failed");
    EXPECT_EQ(read({14}).substr(0, 6), "Failed");
}

TEST(FastInfosetReader, HostileDocumentsEndSoon) {
    constexpr std::size_t kMany = 1000000;
    EXPECT_EQ(DumpOf(kStart + Octets("3C 00'a'") + std::string(kMany, '\0')),
              Message("Elements are nested deeper than the limit of 1000", 1007));
    CSerializationContext deep;
    deep.SetMaxElementDepth(2000000);
    CXmlDocument document(deep);
    Load(document, kStart + Octets("3C 00'a'") + std::string(kMany - 1, '\0') +
                       std::string(kMany / 2, '\xFF') + '\xF0');

    // Few octets that stand for much: text, values, declarations and names by index.
    const std::string big(1000000, 'u');
    const std::string length = BigEndian(static_cast<std::uint32_t>(big.size() - 321), 4);
    std::string values = kStart + Octets("7C 00'a' 78 00'x' 4C") + BigEndian(1000000 - 265, 4) + big + '\xF0';
    for (std::size_t i = 0; i < 10000; ++i)
        values += Octets("40 00 80 FF");
    std::string declarations = kStart + Octets("38 CD 60") + length + big + Octets("F0 3D 81 00'a'");
    for (int i = 0; i < 10000; ++i)
        declarations += Octets("38 CD 81 F0 00 F0");
    for (const std::string& octets :
         {kStart + Octets("3C 00'a'") + Chunk(std::string(300, 'x'), true) + std::string(kMany * 3, '\xA0'),
          values, declarations}) {
        const std::string message = DumpOf(octets);
        EXPECT_EQ(message.substr(0, message.find(" at octet ")),
                  "Failed to parse FastInfoset. Table entries stand for more text than the limit allows");
    }
}

TEST(FastInfosetReader, ManyAttributesOfOneElement) {
    std::string octets = kStart + Octets("7C 00'a'");
    for (int i = 100000; i < 200000; ++i)
        octets += Octets("78 06'n'") + std::to_string(i) + '\xFF';
    CXmlDocument document;
    Load(document, octets + Octets("FF F0"));
    EXPECT_EQ(document.GetDocumentElement()->GetAttributes().size(), 100000U);
    EXPECT_EQ(DumpOf(octets + Octets("00 FF")),
              Message("An element has two attributes of one name", octets.size()));
}
