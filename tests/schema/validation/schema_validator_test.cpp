/// Validation in its several ways: pushed, event by event, over a tree, by many threads.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "kvxml/schema/schema.h"
#include "kvxml/xml/xml_document.h"
#include "kvxml/xml/xml_reader.h"

namespace KvXmlLib16 {
namespace {

std::shared_ptr<const CSchemaSet> Load() {
    CSchemaLoader loader;
    loader.AddText(
        "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:s' xmlns='urn:s'>"
        "<xs:element name='s'><xs:complexType mixed='true'><xs:sequence>"
        "<xs:element name='a' type='xs:int' minOccurs='0' maxOccurs='3'/>"
        "<xs:element name='b' type='xs:decimal' minOccurs='0' maxOccurs='unbounded' nillable='true'/>"
        "<xs:element name='t' type='xs:string' minOccurs='0'/>"
        "<xs:element name='e' type='E' minOccurs='0' maxOccurs='unbounded'/>"
        "<xs:element name='q' minOccurs='0'><xs:simpleType><xs:restriction base='xs:QName'>"
        "<xs:enumeration value='xs:q'/></xs:restriction></xs:simpleType></xs:element>"
        "<xs:any namespace='##other' processContents='lax' minOccurs='0'/></xs:sequence>"
        "<xs:attribute name='id' type='xs:ID'/><xs:attribute name='ref' type='xs:IDREF'/>"
        "</xs:complexType></xs:element>"
        "<xs:complexType name='E'/>"
        "<xs:complexType name='F'><xs:complexContent><xs:extension base='E'><xs:sequence>"
        "<xs:element name='f' type='xs:boolean' minOccurs='2' maxOccurs='2'/></xs:sequence>"
        "</xs:extension></xs:complexContent></xs:complexType></xs:schema>",
        "s.xsd");
    return loader.Load();
}

std::string TextOf(const CFaultList& faults, bool withPlaces) {
    std::string text;
    for (const CFault& fault : faults.GetFaults())
        text += (withPlaces ? ToText(fault) : fault.message + fault.constraint) + " " + fault.path + "\n";
    return text;
}

/// Faults by way of events that the caller asks for.
CValidationReport InStep(CSchemaValidator& validator, const std::string& xml) {
    CXmlReader reader;
    reader.OpenText(xml);
    CValidationReport report;
    validator.Begin(reader, report);
    while (reader.Read())
        validator.OnEvent(reader);
    validator.End();
    return report;
}

TEST(SchemaValidator, AllWaysFindTheSame) {
    const auto schema = Load();
    const struct {
        const char* content;
        const char* faults;  // line and column of each
    } rows[] = {
        {"", ""},
        {" x <a>1</a> y <a>2</a><a>3</a><b>1.5</b><b>2</b>", ""},
        {"<a>1</a>\n<a>2</a><a>3</a><a>4</a>", "2:17 "},
        {"\n<a>x<!-- -->y</a><b>1</b>", "2:1 "},
        {"<b/>\n<b i:nil='1'/><b i:nil='true'>1</b>", "1:74 2:31 "},
        {"<t>any <![CDATA[<]]> &amp;</t><t/>", "1:104 "},
        {"<e><x/></e><e>\n</e>", "1:77 1:88 "},
        {"<e i:type='s:F'><f>1</f><f>true</f></e>", ""},
        {"<e i:type='s:F'><f>1</f></e><e i:type='z:F' xmlns:z='urn:s'/>", "1:98 1:135 "},
        {"<q xmlns:p='http://www.w3.org/2001/XMLSchema'>\np:q</q>", ""},
        {"<q xmlns:p='urn:other'>p:q</q>", "1:74 "},
        {"<q>p:q</q><o:x xmlns:o='urn:o'><y/></o:x><o:x xmlns:o='urn:o'/>", "1:74 1:115 "},
    };
    CSchemaValidator validator(schema);
    for (const auto& row : rows) {
        const std::string xml =
            std::string("<s:s xmlns:i='http://www.w3.org/2001/XMLSchema-instance' xmlns:s='urn:s'>") +
            row.content + "</s:s>";
        SCOPED_TRACE(xml);
        const CValidationReport pushed = validator.ValidateBuffer(xml.data(), xml.size());
        std::string places;
        for (const CFault& fault : pushed.GetFaults())
            places += std::to_string(fault.line) + ":" + std::to_string(fault.column) + " ";
        EXPECT_EQ(places, row.faults) << TextOf(pushed, true);
        EXPECT_EQ(TextOf(InStep(validator, xml), true), TextOf(pushed, true));
        CXmlDocument document;
        document.LoadXml(xml);
        EXPECT_EQ(validator.Validate(document).GetCount(), pushed.GetCount());
    }
}

/// Whatever the pieces are in which the input comes.
TEST(SchemaValidator, ValuesHaveThePlaceOfTheirStartTag) {
    const auto schema = Load();
    for (const std::size_t padding :
         {std::size_t{65400}, std::size_t{65480}, std::size_t{65530}, std::size_t{200000}}) {
        std::istringstream xml("<s:s xmlns:s='urn:s'>" + std::string(padding, ' ') + "\n  <a>" +
                               std::string(padding, '\n') + "x</a>\n<b>y</b></s:s>");
        CXmlReader reader;
        reader.OpenStream(xml);
        const CValidationReport report = CSchemaValidator(schema).Validate(reader);
        ASSERT_EQ(report.GetFaults().size(), 2u);
        EXPECT_EQ(report.GetFaults()[0].line, 2u);
        EXPECT_EQ(report.GetFaults()[0].column, 3u);
        EXPECT_EQ(report.GetFaults()[1].line, padding + 3);
        EXPECT_EQ(report.GetFaults()[1].column, 1u);
    }
}

TEST(SchemaValidator, StopsWhenTheReportIsFull) {
    CValidationOptions options;
    options.maxFaults = 1;
    const std::string xml = "<s:s xmlns:s='urn:s'><a>x</a><a>y</a><broken</s:s>";
    EXPECT_EQ(CSchemaValidator(Load(), options).ValidateBuffer(xml.data(), xml.size()).GetCount(), 1u);
}

TEST(SchemaValidator, ThreadsShareASchema) {
    const auto schema = Load();
    std::vector<std::thread> threads;
    std::vector<std::size_t> faults(4);
    for (std::size_t i = 0; i < faults.size(); ++i) {
        threads.emplace_back([&, i] {
            for (int turn = 0; turn < 200; ++turn) {
                const std::string xml =
                    "<s xmlns='urn:s' xmlns:i='http://www.w3.org/2001/XMLSchema-instance'>"
                    "<a xmlns=''>1</a><b xmlns=''>" +
                    std::string(turn % 2 == 0 ? "2" : "x") +
                    "</b><e xmlns='' xmlns:s='urn:s' i:type='s:F'><f>1</f><f>0</f></e></s>";
                faults[i] += CSchemaValidator(schema).ValidateBuffer(xml.data(), xml.size()).GetCount();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(faults, std::vector<std::size_t>(4, 100));
}

}  // namespace
}  // namespace KvXmlLib16
