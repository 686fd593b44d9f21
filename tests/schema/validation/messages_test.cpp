/// What a user is told of typical mistakes: one message for one mistake, with its place and what would have
/// been right.
#include <gtest/gtest.h>

#include <string>

#include "kvxml/schema/schema.h"

namespace KvXmlLib16 {
namespace {

const char* const kSchema = R"(
<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='u' xmlns='u' xmlns:u='u'
           elementFormDefault='qualified'>
  <xs:attribute name='lang' type='xs:language'/>
  <xs:element name='r'><xs:complexType><xs:sequence><xs:element name='i' maxOccurs='unbounded'>
    <xs:complexType><xs:sequence>
      <xs:element name='a' type='xs:int'/><xs:element name='b'><xs:simpleType><xs:restriction base='xs:string'>
        <xs:enumeration value='S'/><xs:enumeration value='M'/></xs:restriction></xs:simpleType></xs:element>
      <xs:element name='c' type='xs:decimal'/>
    </xs:sequence><xs:attribute name='k' type='xs:int' use='required'/><xs:attribute name='to' type='xs:int'/>
    <xs:attribute ref='lang'/></xs:complexType></xs:element></xs:sequence></xs:complexType>
  <xs:key name='key'><xs:selector xpath='u:i'/><xs:field xpath='@k'/></xs:key>
  <xs:keyref name='ref' refer='key'><xs:selector xpath='u:i'/><xs:field xpath='@to'/></xs:keyref></xs:element>
</xs:schema>)";

/// Lines and messages of all faults.
std::string Faults(const std::string& document) {
    static const auto schema = [] {
        CSchemaLoader loader;
        loader.AddText(kSchema, "u.xsd");
        return loader.Load();
    }();
    const CValidationReport report =
        CSchemaValidator(schema).ValidateBuffer(document.data(), document.size());
    std::string text;
    for (const CFault& fault : report.GetFaults())
        text += std::to_string(fault.line) + ": " + fault.message + "\n";
    return text;
}

TEST(ValidationMessages, OneForEachMistake) {
    const struct {
        const char* items;  // from line 2 on
        const char* faults;
    } rows[] = {
        {"<i k='1'><a>1</a><b>S</b><c>1</c></i>", ""},
        {"<i k='1'><b>S</b>\n<a>1</a><c>1</c></i>",
         "2: The element [b] of the namespace [u] is not allowed here; expected: [a].\n"},
        {"<i k='1'><b>S</b>\n<a>x</a><c>1</c></i>",
         "2: The element [b] of the namespace [u] is not allowed here; expected: [a].\n"
         "3: The element [a] is not valid: The value [x] is no value of the type [int].\n"},
        {"<i k='1'><a>1</a><B>S</B><c>1</c></i>",
         "2: The element [B] of the namespace [u] is not allowed here; expected: [b].\n"},
        {"<i k='1'><a>1</a><b>S</b><C>1</C></i>",
         "2: The element [C] of the namespace [u] is not allowed here; expected: [c].\n"},
        {"<i k='1'><a>1</a><b xmlns=''>S</b><c>1</c></i>",
         "2: The element [b] is not allowed here; expected: [b] of the namespace [u].\n"},
        {"<i k='1'><a>1</a><b>L</b><c>1</c></i>",
         "2: The element [b] is not valid: The value [L] does not satisfy the facet enumeration of the type "
         "[string], which has [S], [M].\n"},
        {"<i><a>1</a><b>S</b><c>1</c></i>", "2: The element [i] lacks the attribute [k].\n"},
        {"<i k='x'><a>1</a><b>S</b><c>1</c></i>",
         "2: The attribute [k] is not valid: The value [x] is no value of the type [int].\n"},
        {"<i k='1' lang='en'><a>1</a><b>S</b><c>1</c></i>",
         "2: The attribute [lang] is not allowed on the element [i]; [lang] of the namespace [u] is.\n"},
        {"<i k='0'><a>1</a><b>S</b><c>1</c></i>\n<i k='00'><a>1</a><b>S</b><c>1</c></i>",
         "3: The value [0] of the key [key] stands there twice, first in line 2.\n"},
        {"<i k='1'><a>1</a><b>S</b><c>1</c></i>\n<i k='2' to='9'><a>1</a><b>S</b><c>1</c></i>\n",
         "3: The value [9] of the keyref [ref] refers to nothing: the key [key] does not have it.\n"},
        {"<i k='1'><a>1</a><b>S</b><c>1</c></i>text", "2: The element [r] may have elements, but no text.\n"},
        {"<i k='1'><a>1</a><b>S</b><c x:nil='true'/></i>", "2: The element [c] may not have xsi:nil.\n"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Faults("<r xmlns='u' xmlns:x='http://www.w3.org/2001/XMLSchema-instance'>\n" +
                         std::string(row.items) + "</r>"),
                  row.faults)
            << row.items;
    }
    EXPECT_EQ(Faults("<r/>"),
              "1: There is no declaration of the element [r]; there is one of the namespace [u].\n");
}

}  // namespace
}  // namespace KvXmlLib16
