// Which documents are no schema documents, told where and by which rule.
#include <gtest/gtest.h>

#include <string>

#include "kvxml/schema/reader/schema_loader.h"

namespace KvXmlLib16 {
namespace {

/// Faults of a document as "line:column constraint", one after another.
std::string FaultsOf(const std::string& text) {
    CSchemaLoader loader;
    loader.AddText(text, "test.xsd");
    CFaultList faults;
    loader.Load(faults);
    std::string result;
    for (const CFault& fault : faults.GetFaults()) {
        result += (result.empty() ? "" : ", ") + std::to_string(fault.line) + ":" +
                  std::to_string(fault.column) + " " + fault.constraint;
    }
    return result;
}

/// The same for the content of a schema, which is line 2.
std::string FaultsIn(const std::string& content, const std::string& attributes = "") {
    return FaultsOf("<schema xmlns='http://www.w3.org/2001/XMLSchema' xmlns:t='urn:t' " + attributes + ">\n" +
                    content + "</schema>");
}

struct Row {
    const char* content;
    const char* faults;
};

void CheckRows(const Row* row, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        EXPECT_EQ(FaultsIn(row[i].content), row[i].faults) << row[i].content;
}

template <std::size_t N>
void CheckRows(const Row (&rows)[N]) {
    CheckRows(rows, N);
}

TEST(SchemaStructure, Root) {
    EXPECT_EQ(FaultsOf("<schema><foo/></schema>"), "1:1 s4s-elt-invalid-content");
    EXPECT_EQ(FaultsOf("<element xmlns='http://www.w3.org/2001/XMLSchema' name='a' foo=''/>"),
              "1:1 s4s-elt-invalid-content");
    EXPECT_EQ(FaultsIn("", "targetNamespace=''"), "1:1 s4s-att-invalid-value");
    EXPECT_EQ(FaultsIn("", "elementFormDefault='Qualified' attributeFormDefault='' version='  ' id='1'"),
              "1:1 s4s-att-invalid-value, 1:1 s4s-att-invalid-value, 1:1 s4s-att-invalid-value");
    EXPECT_EQ(FaultsIn("", "blockDefault='list' finalDefault='substitution'"),
              "1:1 s4s-att-invalid-value, 1:1 s4s-att-invalid-value");
    EXPECT_EQ(
        FaultsIn("", "blockDefault=' substitution\textension ' finalDefault='list union' xml:lang='en'"), "");
    EXPECT_EQ(
        FaultsIn("", "xmlns:xs='http://www.w3.org/2001/XMLSchema' xs:version='1' t:version='1' Version='1'"),
        "1:1 s4s-att-not-allowed, 1:1 s4s-att-not-allowed");
}

TEST(SchemaStructure, OrderAndNumberOfChildren) {
    static const Row kRows[] = {
        {"<annotation/><notation name='n' public='p'/><annotation/><element name='e'/><annotation/>", ""},
        {"<element name='e'/>\n<include schemaLocation='x'/>", "3:1 s4s-elt-invalid-content"},
        {"<key name='k'/>", "2:1 s4s-elt-invalid-content"},
        {"<t:element name='k'><foo/></t:element>", "2:1 s4s-elt-invalid-content"},
        {"<elements/>text", "1:1 s4s-elt-character, 2:1 s4s-elt-invalid-content"},
        {"<annotation><annotation/><t:a/></annotation>",
         "2:13 s4s-elt-invalid-content, 2:26 s4s-elt-invalid-content"},
        {"<annotation><appinfo source='a b'>x<t:a/></appinfo><documentation><annotation/>"
         "</documentation></annotation>",
         ""},
        {"<element name='e'><annotation/>\n<annotation/></element>", "3:1 s4s-elt-invalid-content"},
        {"<element name='e'><complexType/>\n<annotation foo=''/>\n<simpleType/></element>",
         "3:1 s4s-elt-invalid-content, 3:1 s4s-att-not-allowed, 4:1 s4s-elt-invalid-content, "
         "4:1 s4s-elt-invalid-content"},
        {"<complexType name='c'><attribute name='a'/>\n<sequence/></complexType>",
         "3:1 s4s-elt-invalid-content"},
        {"<complexType name='c'><anyAttribute/>\n<anyAttribute/></complexType>",
         "3:1 s4s-elt-invalid-content"},
        {"<complexType name='c'><complexContent><extension base='anyType'/></complexContent>\n"
         "<attribute name='a'/></complexType>",
         "3:1 s4s-elt-invalid-content"},
        {"<complexType name='c'>\n<simpleContent/></complexType>", "3:1 s4s-elt-invalid-content"},
        {"<complexType name='c'><simpleContent><restriction base='string'>\n<sequence/></restriction>"
         "</simpleContent></complexType>",
         "3:1 s4s-elt-invalid-content"},
        {"<complexType name='c'><complexContent><restriction base='anyType'>\n<length value='1'/>"
         "</restriction></complexContent></complexType>",
         "3:1 s4s-elt-invalid-content"},
        {"<complexType name='c'><sequence>\n<all/><attribute name='a'/></sequence></complexType>",
         "3:1 s4s-elt-invalid-content, 3:7 s4s-elt-invalid-content"},
        {"<group name='g'/>", "2:1 s4s-elt-invalid-content"},
        {"<group name='g'><sequence/>\n<sequence/></group>", "3:1 s4s-elt-invalid-content"},
        {"<group name='g'>\n<element name='e'/></group>", "3:1 s4s-elt-invalid-content"},
        {"<simpleType name='s'/>", "2:1 s4s-elt-invalid-content"},
        {"<simpleType name='s'><restriction base='string'><length value='1'/>\n<simpleType/>"
         "</restriction></simpleType>",
         "2:22 src-restriction-base-or-simpleType, 3:1 s4s-elt-invalid-content, 3:1 s4s-elt-invalid-content"},
        {"<element name='e'><key name='k'/></element>", "2:19 s4s-elt-invalid-content"},
        {"<element name='e'><key name='k'>\n<field xpath='a'/></key></element>",
         "3:1 s4s-elt-invalid-content"},
        {"<element name='e'><key name='k'><selector xpath='a'/>\n<selector xpath='a'/></key></element>",
         "3:1 s4s-elt-invalid-content, 2:19 s4s-elt-invalid-content"},
    };
    CheckRows(kRows);
}

TEST(SchemaStructure, AttributesByContext) {
    static const Row kRows[] = {
        {"<element/><attribute/><group><all/></group><attributeGroup/><complexType/>",
         "2:1 s4s-att-must-appear, 2:11 s4s-att-must-appear, 2:23 s4s-att-must-appear, "
         "2:44 s4s-att-must-appear, 2:61 s4s-att-must-appear"},
        {"<element name='e' minOccurs='1'/>", "2:1 s4s-att-not-allowed"},
        {"<element name='e' form='qualified'/>", "2:1 s4s-att-not-allowed"},
        {"<element name='e'><complexType name='c'/></element>", "2:19 s4s-att-not-allowed"},
        {"<attribute name='a' use='required'/>", "2:1 s4s-att-not-allowed"},
        {"<attribute name='a'><simpleType final='#all'><list itemType='int'/></simpleType></attribute>",
         "2:21 s4s-att-not-allowed"},
        {"<group name='g'><sequence maxOccurs='1'>\n<element name='e' abstract='true'/></sequence></group>",
         "2:17 s4s-att-not-allowed, 3:1 s4s-att-not-allowed"},
        {"<complexType name='c'><sequence><group name='g' ref='h'/></sequence></complexType>",
         "2:33 s4s-att-not-allowed"},
        {"<simpleType name='s'><restriction base='int'><pattern value='1' fixed='1'/><maxInclusive/>"
         "</restriction></simpleType>",
         "2:46 s4s-att-not-allowed, 2:76 s4s-att-must-appear"},
        {"<redefine/><include schemaLocation='%'/>", "2:1 s4s-att-must-appear, 2:12 s4s-att-invalid-value"},
        {"<complexType name='c'><complexContent><extension/></complexContent></complexType>",
         "2:39 s4s-att-must-appear"},
        {"<element name='e'><keyref name='k'><selector/><field xpath='a' t:x=''/></keyref></element>",
         "2:19 s4s-att-must-appear, 2:36 s4s-att-must-appear"},
        {"<notation name='n'/>", "2:1 n-props-correct"},
    };
    CheckRows(kRows);
}

TEST(SchemaStructure, FormsOfAttributes) {
    // Attribute and value; invalid ones refused with one fault.
    static const struct {
        const char* before;
        const char* after;
        const char* valid[6];
        const char* invalid[6];
    } kRows[] = {
        {"<element id='", "' name='e'/>", {"a", " _1 "}, {"", "1", "a:b", "a b"}},
        {"<element name='", "'/>", {"e", "\n e-1 "}, {"", "-e", "t:e", "e e"}},
        {"<element name='e' type='", "'/>", {"int", " t:int"}, {"", ":int", "t:", "t:a:b", "t: a"}},
        {"<element name='e' nillable='", "'/>", {"true", " 0 "}, {"", "TRUE", "yes", "00"}},
        {"<element name='e' block='",
         "'/>",
         {"", "#all", "substitution  extension"},
         {"#all extension", "all"}},
        {"<element name='e' final='", "'/>", {"", "extension restriction"}, {"substitution", "list"}},
        {"<simpleType name='s' final='",
         "'><list itemType='int'/></simpleType>",
         {"", "#all", "list union restriction"},
         {"extension", "#all list"}},
        {"<simpleType name='s'><union memberTypes='",
         "'/></simpleType>",
         {"int", " int\n string "},
         {"int, string", ":"}},
        {"<group name='g'><sequence><element name='e' minOccurs='0' maxOccurs='",
         "'/></sequence></group>",
         {"1", "unbounded", "+007", " 99999999999999999999 ", "-0"},
         {"", "-1", "1.0", "Unbounded", "+", "1 2"}},
        {"<complexType name='c'><all minOccurs='", "'/></complexType>", {"0", "01"}, {"2", "unbounded", ""}},
        {"<complexType name='c'><all maxOccurs='", "'/></complexType>", {"1"}, {"0", "2", "unbounded"}},
        {"<complexType name='c'><all><element name='e' minOccurs='0' maxOccurs='",
         "'/></all></complexType>",
         {"0", "1"},
         {"2", "unbounded"}},
        {"<complexType name='c'><attribute name='a' use='", "'/></complexType>", {"required"}, {"", "none"}},
        {"<complexType name='c'><attribute name='a' form='", "'/></complexType>", {"qualified"}, {"", "x"}},
        {"<complexType name='c'><anyAttribute processContents='", "'/></complexType>", {"lax"}, {"", "Lax"}},
        {"<complexType name='c'><anyAttribute namespace='",
         "'/></complexType>",
         {"", "##any", " ##other ", "##local  ##targetNamespace urn:x"},
         {"##any ##local", "##other urn:x", "##none", "##", "%%"}},
        {"<annotation xml:lang='", "'/>", {"", "en-US"}, {"_", "en_US"}},
        {"<annotation><documentation xml:lang='", "'/></annotation>", {"de"}, {"", "verylonglanguage"}},
        {"<annotation xml:space='", "'/>", {"preserve"}, {"", "yes"}},
    };
    for (const auto& row : kRows) {
        const auto faultsOf = [&](const char* value) {
            const std::string faults = FaultsIn(std::string(row.before) + value + row.after);
            return faults.find("s4s") == std::string::npos ? "" : faults.substr(faults.find(' ') + 1);
        };
        for (const char* value : row.valid) {
            if (value == nullptr) break;
            EXPECT_EQ(faultsOf(value), "") << row.before << value;
        }
        for (const char* value : row.invalid) {
            if (value == nullptr) break;
            EXPECT_EQ(faultsOf(value), "s4s-att-invalid-value") << row.before << value;
        }
    }
    EXPECT_EQ(FaultsIn("<element id='a' name='a'/>\n<element id=' a' name='b'/>"),
              "3:1 s4s-att-invalid-value");
}

TEST(SchemaStructure, AttributesAndChildrenThatExcludeEachOther) {
    static const Row kRows[] = {
        {"<element name='e' default='1' fixed='1'/>", "2:1 src-element.1"},
        {"<element name='e' type='int'><simpleType><list itemType='int'/></simpleType></element>",
         "2:1 src-element.3"},
        {"<group name='g'><sequence><element/>\n<element name='e' ref='e'/></sequence></group>",
         "2:27 src-element.2.1, 3:1 src-element.2.1"},
        {"<group name='g'><sequence><element ref='e' type='int' form='qualified'><complexType/></element>"
         "</sequence></group>",
         "2:27 src-element.2.2"},
        {"<attribute name='a' default='1' fixed='1'/>", "2:1 src-attribute.1"},
        {"<attributeGroup name='g'><attribute name='a' default='1' use='required'/></attributeGroup>",
         "2:26 src-attribute.2"},
        {"<attributeGroup name='g'><attribute/></attributeGroup>", "2:26 src-attribute.3.1"},
        {"<attributeGroup name='g'><attribute ref='a' type='int' use='optional'/></attributeGroup>",
         "2:26 src-attribute.3.2"},
        {"<attribute name='a' type='int'><simpleType><list itemType='int'/></simpleType></attribute>",
         "2:1 src-attribute.4"},
        {"<simpleType name='s'><restriction/></simpleType>", "2:22 src-restriction-base-or-simpleType"},
        {"<simpleType name='s'><list/></simpleType>", "2:22 src-list-itemType-or-simpleType"},
        {"<simpleType name='s'><list itemType='int'><simpleType><list itemType='int'/></simpleType></list>"
         "</simpleType>",
         "2:22 src-list-itemType-or-simpleType"},
        {"<simpleType name='s'><union memberTypes=' '/></simpleType>",
         "2:22 src-union-memberTypes-or-simpleTypes"},
        {"<redefine schemaLocation='x'><simpleType name='s'><list itemType='s'/></simpleType>\n"
         "<complexType name='c'/>\n<element name='e'/></redefine>",
         "2:30 src-redefine.5, 3:1 src-redefine.5, 4:1 s4s-elt-invalid-content"},
    };
    CheckRows(kRows);
}

TEST(SchemaStructure, WhatIsOfVersion11IsNamedSo) {
    static const char* const kRows[] = {
        "<override schemaLocation='x'/>",
        "<defaultOpenContent><any/></defaultOpenContent>",
        "<complexType name='c' defaultAttributesApply='true'/>",
        "<complexType name='c'><openContent><any/></openContent><sequence/></complexType>",
        "<complexType name='c'><sequence/><assert test='true()'/></complexType>",
        "<complexType name='c'><attribute name='a' targetNamespace='x'/></complexType>",
        "<complexType name='c'><anyAttribute notQName='##defined'/></complexType>",
        "<attribute name='a' inheritable='true'/>",
        "<element name='e'><alternative type='int'/></element>",
        "<element name='e'><key ref='k'/></element>",
        "<simpleType name='s'><restriction base='date'><explicitTimezone value='required'/></restriction>"
        "</simpleType>",
    };
    for (const char* content : kRows) {
        CSchemaLoader loader;
        loader.AddText(
            "<schema xmlns='http://www.w3.org/2001/XMLSchema'>" + std::string(content) + "</schema>",
            "test.xsd");
        CFaultList faults;
        EXPECT_EQ(loader.Load(faults), nullptr);
        ASSERT_EQ(faults.GetCount(), 1U) << content;
        EXPECT_NE(faults.GetFaults()[0].message.find("XML Schema 1.1"), std::string::npos) << content;
    }
}

TEST(SchemaStructure, Messages) {
    CSchemaLoader loader;
    loader.AddText(
        "<schema xmlns='http://www.w3.org/2001/XMLSchema'>\n"
        "<element nam='e' nillable='yes'>\n<attribute/></element>\n"
        "<element name='e'><keyref name='k' refer='k'/></element></schema>",
        "test.xsd");
    CFaultList faults;
    loader.Load(faults);
    std::string text;
    for (const CFault& fault : faults.GetFaults())
        text += ToText(fault) + "\n";
    EXPECT_EQ(
        text,
        "test.xsd:2:1: The attribute [nam] of [element] is not allowed here. (s4s-att-not-allowed)\n"
        "test.xsd:2:1: The value [yes] of the attribute [nillable] of [element] is not true, false, 1 or "
        "0. (s4s-att-invalid-value)\n"
        "test.xsd:2:1: The attribute [name] of [element] is missing. (s4s-att-must-appear)\n"
        "test.xsd:3:1: The element [attribute] is not allowed in [element]; its content is (annotation?, "
        "(simpleType | complexType)?, (unique | key | keyref)*). (s4s-elt-invalid-content)\n"
        "test.xsd:4:19: The element [keyref] lacks [selector]; its content is (annotation?, selector, "
        "field+). (s4s-elt-invalid-content)\n");
}

}  // namespace
}  // namespace KvXmlLib16
