/// Any bytes as a document, judged by a fixed schema that has something of everything.
#include <cstddef>
#include <cstdint>

#include "fuzz/schema_judge.h"

namespace {

constexpr const char* kSchema = R"(
<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:f' xmlns='urn:f'
           elementFormDefault='qualified' blockDefault=''>
  <xs:notation name='gif' public='image/gif'/>
  <xs:simpleType name='Code'><xs:restriction base='xs:token'>
    <xs:pattern value='[A-Z]{2}\d+'/><xs:pattern value='\i\c*-[\p{Lu}-[AEIOU]]?'/><xs:maxLength value='9'/>
  </xs:restriction></xs:simpleType>
  <xs:simpleType name='Sizes'><xs:restriction>
    <xs:simpleType><xs:list itemType='xs:decimal'/></xs:simpleType><xs:maxLength value='3'/>
  </xs:restriction></xs:simpleType>
  <xs:simpleType name='Either'><xs:union memberTypes='Code xs:int Sizes xs:date xs:gYearMonth'>
    <xs:simpleType><xs:restriction base='xs:string'><xs:enumeration value='none'/></xs:restriction></xs:simpleType>
  </xs:union></xs:simpleType>
  <xs:simpleType name='Format'><xs:restriction base='xs:NOTATION'>
    <xs:enumeration value='gif'/></xs:restriction></xs:simpleType>
  <xs:group name='Pair'><xs:sequence>
    <xs:element name='l' type='xs:string' minOccurs='0'/><xs:element name='r' type='Either' nillable='true'/>
  </xs:sequence></xs:group>
  <xs:attributeGroup name='Ids'>
    <xs:attribute name='id' type='xs:ID'/><xs:attribute name='to' type='xs:IDREFS'/>
    <xs:anyAttribute namespace='##other' processContents='lax'/>
  </xs:attributeGroup>
  <xs:element name='head' abstract='true' type='Base'/>
  <xs:element name='one' substitutionGroup='head' type='Base'/>
  <xs:element name='two' substitutionGroup='one' type='More'/>
  <xs:element name='value' type='xs:anySimpleType'/>
  <xs:element name='none' type='Nothing' nillable='true'/>
  <xs:attribute name='when' type='xs:dateTime'/>
  <xs:complexType name='Nothing'><xs:attribute name='kind' type='Format' fixed='gif'/></xs:complexType>
  <xs:complexType name='Base'><xs:sequence><xs:element name='n' type='xs:integer' minOccurs='0'/></xs:sequence>
    <xs:attribute name='k' type='xs:decimal'/></xs:complexType>
  <xs:complexType name='More'><xs:complexContent><xs:extension base='Base'>
    <xs:choice maxOccurs='3'><xs:group ref='Pair'/><xs:element name='date' type='xs:date' default='2000-02-29'/>
    </xs:choice><xs:attribute ref='when' use='required'/></xs:extension></xs:complexContent></xs:complexType>
  <xs:complexType name='Less'><xs:complexContent><xs:restriction base='Base'>
    <xs:attribute name='k' use='prohibited'/></xs:restriction></xs:complexContent></xs:complexType>
  <xs:complexType name='Text' mixed='true'><xs:choice minOccurs='0' maxOccurs='unbounded'>
    <xs:element name='b' type='Text'/><xs:any namespace='urn:g urn:x' processContents='skip'/>
  </xs:choice></xs:complexType>
  <xs:complexType name='Price'><xs:simpleContent><xs:extension base='xs:double'>
    <xs:attribute name='currency' type='xs:NMTOKEN' default='EUR'/></xs:extension></xs:simpleContent></xs:complexType>
  <xs:complexType name='Every'><xs:all>
    <xs:element name='a' type='xs:duration' minOccurs='0'/><xs:element name='b' type='xs:base64Binary'/>
    <xs:element name='c' type='xs:hexBinary' minOccurs='0'/><xs:element name='d' type='xs:anyURI' minOccurs='0'/>
    <xs:element name='e' type='xs:QName' minOccurs='0'/><xs:element name='f' type='xs:time' fixed='12:00:00Z'/>
  </xs:all></xs:complexType>
  <xs:element name='root'>
    <xs:complexType><xs:sequence>
      <xs:element ref='head' minOccurs='0' maxOccurs='unbounded'/>
      <xs:choice minOccurs='2' maxOccurs='7'>
        <xs:element name='text' type='Text'/><xs:element name='price' type='Price'/>
        <xs:element name='every' type='Every'/><xs:group ref='Pair'/>
        <xs:element name='inner'><xs:complexType><xs:sequence>
          <xs:element ref='root' minOccurs='0' maxOccurs='2'/></xs:sequence>
          <xs:attributeGroup ref='Ids'/></xs:complexType></xs:element>
        <xs:sequence minOccurs='0' maxOccurs='3'><xs:element ref='value'/><xs:element ref='none' maxOccurs='2'/>
        </xs:sequence>
      </xs:choice>
      <xs:any namespace='urn:g' processContents='strict' minOccurs='0'/>
      <xs:any namespace='##local' processContents='lax' minOccurs='0' maxOccurs='unbounded'/>
    </xs:sequence><xs:attributeGroup ref='Ids'/></xs:complexType>
    <xs:unique name='byK'><xs:selector xpath='*'/><xs:field xpath='@k|@id'/></xs:unique>
    <xs:key name='byN'><xs:selector xpath='one'/><xs:field xpath='n'/></xs:key>
    <xs:unique name='pairs'><xs:selector xpath='.//inner|r'/><xs:field xpath='@id'/><xs:field xpath='.//r'/></xs:unique>
    <xs:keyref name='refer' refer='byK'><xs:selector xpath='.//one'/><xs:field xpath='n'/></xs:keyref>
  </xs:element>
</xs:schema>)";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto schema = fuzzing::LoadSchema(kSchema);
    if (schema == nullptr) fuzzing::Fail("the schema of the target is not valid", {}, {});
    fuzzing::JudgeDocument(schema, {reinterpret_cast<const char*>(data), size});
    return 0;
}
