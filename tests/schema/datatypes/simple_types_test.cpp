// Which texts are values of which types, which values are equal, and what facets do to them.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kvxml/schema/datatypes/internal/simple_type_checker.h"
#include "kvxml/schema/schema.h"

namespace KvXmlLib16 {
namespace {

constexpr std::string_view kXsd = "http://www.w3.org/2001/XMLSchema";

std::shared_ptr<const CSchemaSet> Load(const std::string& content, CFaultList& faults) {
    CSchemaLoader loader;
    loader.AddText("<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns:p='urn:p'>\n" + content +
                       "</xs:schema>",
                   "test.xsd");
    return loader.Load(faults);
}

const CSchemaSet& BuiltIn() {
    static const std::shared_ptr<const CSchemaSet> set = [] {
        CFaultList faults;
        return Load("", faults);
    }();
    return *set;
}

const internal::CSimpleTypeChecker& CheckerOf(const CSchemaSet& set, std::string_view uri,
                                              std::string_view name) {
    const CTypeDefinition* const type = set.FindType(uri, name);
    if (type == nullptr) throw CKvException(std::string(name).c_str());
    return *type->AsSimple()->checker;
}

/// Prefixes p and q are the same namespace, r another; there is no default.
const std::vector<std::pair<std::string_view, std::string_view>> kPrefixes = {
    {"p", "urn:p"}, {"q", "urn:p"}, {"r", "urn:r"}};

/// The rule that is violated; "" for a valid text.
std::string RuleOf(const internal::CSimpleTypeChecker& checker, std::string_view text) {
    const internal::CVectorScope scope(&kPrefixes);
    std::string error;
    const char* constraint = "";
    if (checker.Check(text, &scope, nullptr, &error, &constraint)) return "";
    EXPECT_NE(error, "") << text;
    return constraint;
}

/// A separator ends the key's primitive type, so keys of one type can be compared.
std::string KeyOf(const internal::CSimpleTypeChecker& checker, std::string_view text) {
    const internal::CVectorScope scope(&kPrefixes);
    internal::CCheckedValue value;
    return checker.Check(text, &scope, &value, nullptr, nullptr) ? value.key : "(invalid)";
}

TEST(SimpleTypes, TextsThatAreValues) {
    const struct {
        const char* type;
        std::vector<const char*> valid;
        std::vector<const char*> invalid;
    } rows[] = {
        {"boolean", {"true", "false", "1", "0", " true\n"}, {"", "TRUE", "yes", "01", "tru e"}},
        {"decimal",
         {"0", "-0", "+1.", ".5", "-.5", "00012.3400", "123456789012345678901234567890.5", " 1 "},
         {"", ".", "+", "-.", "1e2", "1,5", "+-1", "1 2", "INF", "0x1"}},
        {"integer", {"-0", "+7", "00", "123456789012345678901234567890"}, {"1.0", "1.", "", "-", "1e1"}},
        {"byte", {"127", "-128", "+0127"}, {"128", "-129", "1.0"}},
        {"unsignedLong", {"18446744073709551615", "+0", "-0"}, {"18446744073709551616", "-1"}},
        {"long", {"-9223372036854775808", "9223372036854775807"}, {"9223372036854775808"}},
        {"negativeInteger", {"-1"}, {"0", "-0", "1"}},
        {"positiveInteger", {"1", "+1"}, {"0", "-1"}},
        {"float",
         {"1", "-1E4", "1267.43233e+12", "12.78e-2", ".5", "5.", "INF", "-INF", "NaN", "-0", "1e999"},
         {"", "+INF", "inf", "nan", "0x1p3", "1e", "e5", "1 e5", "1f", "."}},
        {"double", {"1e-999", "-1.5E+3"}, {"infinity", "1d", "--1"}},
        {"duration",
         {"P1Y", "P1Y2M3DT10H30M5.5S", "-P120D", "PT0S", "P0Y", "PT1.000S", "P99999999999999999999Y"},
         {"", "P", "PT", "P1YT", "P1S", "PT1Y", "P-1Y", "P1.5Y", "P1M1Y", "1Y", "+P1Y", "PT1.S", "PT.5S",
          "P1Y 2M"}},
        {"dateTime",
         {"2000-01-01T00:00:00", "2000-12-31T24:00:00", "-0001-01-01T00:00:00Z",
          "12000-02-29T23:59:59.999+14:00", "2000-02-29T00:00:00-00:00",
          "2000-01-01T00:00:00.123456789012345"},
         {"0000-01-01T00:00:00", "2000-01-01", "1900-02-29T00:00:00", "2000-01-01T24:00:01",
          "2000-01-01T24:00:00.1", "2000-01-01T00:00:60", "2000-01-01T00:60:00", "02000-01-01T00:00:00",
          "+2000-01-01T00:00:00", "200-01-01T00:00:00", "2000-01-01T00:00:00.", "2000-01-01T00:00:00+14:01",
          "2000-01-01T00:00:00z", "2000-01-01t00:00:00", "2000-13-01T00:00:00", "2000-00-01T00:00:00",
          "2000-01-01T00:00"}},
        {"time",
         {"00:00:00", "24:00:00", "23:59:59.9Z", "12:00:00+00:30"},
         {"24:00:01", "1:00:00", "12:00", "12:00:00+1"}},
        {"date",
         {"2004-02-29", "-2004-01-31Z", "2000-04-30+13:59"},
         {"2003-02-29", "2004-04-31", "2004-2-29", "04-02-29"}},
        {"gYearMonth", {"2000-01", "-12000-12Z"}, {"2000-13", "2000-1", "2000"}},
        {"gYear", {"2000", "-0001", "2000+01:00"}, {"0000", "200", "2000-01"}},
        {"gMonthDay", {"--02-29", "--12-31Z"}, {"--02-30", "--04-31", "-02-29", "02-29"}},
        {"gDay", {"---31", "---01-05:00"}, {"---32", "---00", "--01"}},
        {"gMonth", {"--01", "--12Z"}, {"--01--", "--13", "--00", "-01", "--1"}},
        {"hexBinary", {"", "0fB8", " 0f\n"}, {"0", "0g", "0f b8"}},
        {"base64Binary",
         {"", "AQID", "AQ==", "AQI=", "A Q I D", "AQ= ="},
         {"A", "AQ", "AQI", "AR==", "AQJ=", "=AQI", "AQ==AQ==", "AQ!D", "===="}},
        {"anyURI", {"", "a b", "http://x/\xC3\xA9", "#f", "urn:x:y", "../x"}, {"%zz", "a#b#c"}},
        {"QName", {"a", "p:a", " p:a "}, {"", "x:a", "p:", ":a", "p:a:b", "1a", "p:1", "p :a"}},
        {"string", {"", " a\n\t\x7F"}, {}},
        {"normalizedString", {"a\tb\n", ""}, {}},
        {"token", {"  a   b "}, {}},
        {"language",
         {"en", "en-GB", "x-klingon-12345678"},
         {"", "e_n", "en-", "abcdefghi", "1n", "en-123456789"}},
        {"NMTOKEN", {"1a", "-:.", "\xC3\xA9"}, {"", "a b", "a,b"}},
        {"NMTOKENS", {"a", " a 1\tb "}, {"", " ", "a ,"}},
        {"Name", {":a", "_a-1", "\xC3\xA9"}, {"1a", "-a", "", "a b"}},
        {"NCName", {"_a.1"}, {"a:b", ":a", "1"}},
        {"ID", {" a "}, {"a b", "1", "a:b"}},
        {"IDREFS", {"a b"}, {"", "a 1"}},
        {"ENTITY", {"e"}, {"1", ""}},
    };
    for (const auto& row : rows) {
        const internal::CSimpleTypeChecker& checker = CheckerOf(BuiltIn(), kXsd, row.type);
        for (const char* text : row.valid)
            EXPECT_EQ(RuleOf(checker, text), "") << row.type << " [" << text << "]";
        for (const char* text : row.invalid)
            EXPECT_NE(RuleOf(checker, text), "") << row.type << " [" << text << "]";
    }
}

TEST(SimpleTypes, KeysAreEqualForEqualValuesOnly) {
    const struct {
        const char* type;
        const char* one;
        const char* other;
        bool areEqual;
    } rows[] = {
        {"decimal", "1", "+01.00", true},
        {"decimal", "-0", "0.0", true},
        {"decimal", "100", "10", false},
        {"decimal", "1.01", "10.1", false},
        {"decimal", "0.1", "0.10000000000000000000000000001", false},
        {"boolean", "1", "true", true},
        {"float", "1e2", "100", true},
        {"float", "16777217", "16777216", true},  // in 32 bits
        {"double", "16777217", "16777216", false},
        {"double", "NaN", "NaN", true},
        {"double", "INF", "1e999", true},
        {"duration", "P1Y", "P12M", true},
        {"duration", "P1D", "PT24H", true},
        {"duration", "PT1.50S", "PT1.5S", true},
        {"duration", "P1M", "P30D", false},
        {"duration", "-PT0S", "P0Y", true},
        {"dateTime", "2000-01-01T12:00:00+01:00", "2000-01-01T11:00:00Z", true},
        {"dateTime", "2000-01-01T00:30:00+01:00", "1999-12-31T23:30:00Z", true},
        {"dateTime", "1999-12-31T24:00:00", "2000-01-01T00:00:00.000", true},
        {"dateTime", "2000-01-01T00:00:00", "2000-01-01T00:00:00Z", false},
        {"dateTime", "-0002-12-31T24:00:00Z", "-0001-01-01T00:00:00Z", true},
        {"time", "24:00:00", "00:00:00", true},
        {"time", "12:00:00+01:00", "11:00:00Z", true},
        {"date", "2000-01-01+00:00", "2000-01-01Z", true},
        {"gDay", "---01", "---02", false},
        {"hexBinary", "0a", "0A", true},
        {"base64Binary", "AQ I=", "AQI=", true},
        {"QName", "p:a", "q:a", true},
        {"QName", "p:a", "r:a", false},
        {"QName", "a", "p:a", false},
        {"string", "a", " a", false},
        {"token", "a  b", " a b", true},
        {"anyURI", "http://x", "HTTP://x", false},
        {"NMTOKENS", "a b", " a   b", true},
        {"NMTOKENS", "a b", "ab", false},
    };
    for (const auto& row : rows) {
        const internal::CSimpleTypeChecker& checker = CheckerOf(BuiltIn(), kXsd, row.type);
        const std::string one = KeyOf(checker, row.one);
        const std::string other = KeyOf(checker, row.other);
        EXPECT_NE(one, "(invalid)") << row.one;
        EXPECT_NE(other, "(invalid)") << row.other;
        EXPECT_EQ(one == other, row.areEqual) << row.type << " [" << row.one << "] [" << row.other << "]";
    }
    // Values of different primitive types are never equal, derived types share the primitive's values.
    EXPECT_NE(KeyOf(CheckerOf(BuiltIn(), kXsd, "float"), "1"),
              KeyOf(CheckerOf(BuiltIn(), kXsd, "double"), "1"));
    EXPECT_NE(KeyOf(CheckerOf(BuiltIn(), kXsd, "string"), "1"),
              KeyOf(CheckerOf(BuiltIn(), kXsd, "anyURI"), "1"));
    EXPECT_EQ(KeyOf(CheckerOf(BuiltIn(), kXsd, "byte"), "01"),
              KeyOf(CheckerOf(BuiltIn(), kXsd, "decimal"), "1.0"));
}

struct FacetRow {
    const char* derivation;  // inside <xs:simpleType name='t'>
    const char* text;
    const char* rule;  // "" for a valid text
};

TEST(SimpleTypes, FacetsHold) {
#define RESTRICT(base, facets) "<xs:restriction base='xs:" base "'>" facets "</xs:restriction>"
    static const FacetRow kRows[] = {
        {RESTRICT("string", "<xs:length value='2'/>"), "\xC3\xA9\xF0\x9F\x98\x80", ""},
        {RESTRICT("string", "<xs:length value='2'/>"), "abc", "cvc-length-valid"},
        {RESTRICT("hexBinary", "<xs:maxLength value='2'/>"), "0102", ""},
        {RESTRICT("hexBinary", "<xs:maxLength value='2'/>"), "010203", "cvc-maxLength-valid"},
        {RESTRICT("base64Binary", "<xs:minLength value='2'/>"), "AQ==", "cvc-minLength-valid"},
        {RESTRICT("NMTOKENS", "<xs:maxLength value='2'/>"), "a b c", "cvc-maxLength-valid"},
        {RESTRICT("NMTOKENS", "<xs:maxLength value='2'/>"), "abc abcd", ""},
        {RESTRICT("decimal", "<xs:totalDigits value='3'/><xs:fractionDigits value='1'/>"), "0012.300", ""},
        {RESTRICT("decimal", "<xs:totalDigits value='3'/>"), "12.34", "cvc-totalDigits-valid"},
        {RESTRICT("decimal", "<xs:fractionDigits value='1'/>"), "1.25", "cvc-fractionDigits-valid"},
        {RESTRICT("decimal", "<xs:maxExclusive value='1'/>"), "0.99999999999999999999", ""},
        {RESTRICT("decimal", "<xs:maxExclusive value='1'/>"), "1.0", "cvc-maxExclusive-valid"},
        {RESTRICT("double", "<xs:minInclusive value='0'/>"), "NaN", "cvc-minInclusive-valid"},
        {RESTRICT("double", "<xs:minInclusive value='0'/>"), "-0", ""},
        {RESTRICT("duration", "<xs:maxInclusive value='P1M'/>"), "P27D", ""},
        {RESTRICT("duration", "<xs:maxInclusive value='P1M'/>"), "P30D",
         "cvc-maxInclusive-valid"},  // no order
        {RESTRICT("dateTime", "<xs:minExclusive value='2000-01-01T00:00:00Z'/>"), "2000-01-01T00:00:01+00:00",
         ""},
        {RESTRICT("dateTime", "<xs:minExclusive value='2000-01-01T00:00:00Z'/>"), "2000-01-01T13:00:00",
         "cvc-minExclusive-valid"},  // without a zone: no order within fourteen hours
        {RESTRICT("dateTime", "<xs:minExclusive value='2000-01-01T00:00:00Z'/>"), "2000-01-01T14:00:01", ""},
        {RESTRICT("time", "<xs:maxInclusive value='12:00:00Z'/>"), "12:30:00+01:00", ""},
        {RESTRICT("string", "<xs:pattern value='a+'/><xs:pattern value='b+'/>"), "bb", ""},
        {RESTRICT("string", "<xs:pattern value='a+'/><xs:pattern value='b+'/>"), "ab", "cvc-pattern-valid"},
        {RESTRICT("int", "<xs:pattern value='\\d{2}'/>"), " 07 ", ""},  // after whitespace was treated
        {RESTRICT("int", "<xs:enumeration value='7'/>"), "+07", ""},
        {RESTRICT("int", "<xs:enumeration value='7'/>"), "8", "cvc-enumeration-valid"},
        {RESTRICT("QName", "<xs:enumeration value='p:a'/>"), "q:a", ""},
        {RESTRICT("QName", "<xs:enumeration value='p:a'/>"), "r:a", "cvc-enumeration-valid"},
        {RESTRICT("string", "<xs:whiteSpace value='collapse'/><xs:maxLength value='3'/>"), "  a   b ", ""},
        {"<xs:list itemType='xs:byte'/>", "1 -128\n127", ""},
        {"<xs:list itemType='xs:byte'/>", "", ""},
        {"<xs:list itemType='xs:byte'/>", "1 128", "cvc-maxInclusive-valid"},
        {"<xs:union memberTypes='xs:int xs:boolean'/>", " true ", ""},
        {"<xs:union memberTypes='xs:int xs:boolean'/>", "x", "cvc-datatype-valid.1.2.3"},
    };
#undef RESTRICT
    for (const FacetRow& row : kRows) {
        CFaultList faults;
        const auto set =
            Load(std::string("<xs:simpleType name='t'>") + row.derivation + "</xs:simpleType>", faults);
        ASSERT_NE(set, nullptr) << row.derivation << ToText(faults.GetFaults().front());
        EXPECT_EQ(RuleOf(CheckerOf(*set, "", "t"), row.text), row.rule)
            << row.derivation << " [" << row.text << "]";
    }
}

/// The member that takes a value decides what it is equal to.
TEST(SimpleTypes, UnionsTakeTheFirstMember) {
    CFaultList faults;
    const auto set =
        Load("<xs:simpleType name='t'><xs:union memberTypes='xs:int xs:string'/></xs:simpleType>", faults);
    ASSERT_NE(set, nullptr);
    const internal::CSimpleTypeChecker& checker = CheckerOf(*set, "", "t");
    EXPECT_EQ(KeyOf(checker, "1"), KeyOf(checker, " 01 "));
    EXPECT_NE(KeyOf(checker, "1x"), KeyOf(checker, "01x"));
    internal::CCheckedValue value;
    ASSERT_TRUE(checker.Check("x", nullptr, &value, nullptr, nullptr));
    EXPECT_EQ(value.actualType, set->FindType(kXsd, "string"));
    value = {};
    ASSERT_TRUE(CheckerOf(*set, kXsd, "IDREFS").Check(" a  b ", nullptr, &value, nullptr, nullptr));
    ASSERT_EQ(value.references.size(), 2u);
    EXPECT_EQ(value.references[1].second, "b");
}

}  // namespace
}  // namespace KvXmlLib16
