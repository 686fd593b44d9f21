#include "kvxml/schema/reader/internal/built_in_schemas.h"

#include "kvxml/base/internal/namespace_uris.h"

namespace KvXmlLib16::internal {

namespace {

// XML 1.0 (2.10, 2.12), XML Base, xml:id.
constexpr std::string_view kXmlSchema = R"(<?xml version="1.0"?>
<schema xmlns="http://www.w3.org/2001/XMLSchema" targetNamespace="http://www.w3.org/XML/1998/namespace">
  <attribute name="lang">
    <simpleType>
      <union memberTypes="language">
        <simpleType><restriction base="string"><enumeration value=""/></restriction></simpleType>
      </union>
    </simpleType>
  </attribute>
  <attribute name="space">
    <simpleType>
      <restriction base="NCName"><enumeration value="default"/><enumeration value="preserve"/></restriction>
    </simpleType>
  </attribute>
  <attribute name="base" type="anyURI"/>
  <attribute name="id" type="ID"/>
  <attributeGroup name="specialAttrs">
    <attribute ref="xml:base"/>
    <attribute ref="xml:lang"/>
    <attribute ref="xml:space"/>
    <attribute ref="xml:id"/>
  </attributeGroup>
</schema>
)";

// XLink 1.1, its attributes (3.2) and what elements of each type may have of them (5).
constexpr std::string_view kXlinkSchema = R"(<?xml version="1.0"?>
<schema xmlns="http://www.w3.org/2001/XMLSchema" xmlns:xlink="http://www.w3.org/1999/xlink"
        targetNamespace="http://www.w3.org/1999/xlink">
  <simpleType name="typeType">
    <restriction base="token">
      <enumeration value="simple"/><enumeration value="extended"/><enumeration value="title"/>
      <enumeration value="resource"/><enumeration value="locator"/><enumeration value="arc"/>
    </restriction>
  </simpleType>
  <simpleType name="hrefType"><restriction base="anyURI"/></simpleType>
  <simpleType name="roleType"><restriction base="anyURI"><minLength value="1"/></restriction></simpleType>
  <simpleType name="arcroleType"><restriction base="anyURI"><minLength value="1"/></restriction></simpleType>
  <simpleType name="titleAttrType"><restriction base="string"/></simpleType>
  <simpleType name="showType">
    <restriction base="token">
      <enumeration value="new"/><enumeration value="replace"/><enumeration value="embed"/>
      <enumeration value="other"/><enumeration value="none"/>
    </restriction>
  </simpleType>
  <simpleType name="actuateType">
    <restriction base="token">
      <enumeration value="onLoad"/><enumeration value="onRequest"/><enumeration value="other"/>
      <enumeration value="none"/>
    </restriction>
  </simpleType>
  <simpleType name="labelType"><restriction base="NCName"/></simpleType>
  <simpleType name="fromType"><restriction base="NCName"/></simpleType>
  <simpleType name="toType"><restriction base="NCName"/></simpleType>
  <attribute name="type" type="xlink:typeType"/>
  <attribute name="href" type="xlink:hrefType"/>
  <attribute name="role" type="xlink:roleType"/>
  <attribute name="arcrole" type="xlink:arcroleType"/>
  <attribute name="title" type="xlink:titleAttrType"/>
  <attribute name="show" type="xlink:showType"/>
  <attribute name="actuate" type="xlink:actuateType"/>
  <attribute name="label" type="xlink:labelType"/>
  <attribute name="from" type="xlink:fromType"/>
  <attribute name="to" type="xlink:toType"/>
  <attributeGroup name="simpleAttrs">
    <attribute ref="xlink:type" fixed="simple"/>
    <attribute ref="xlink:href"/>
    <attribute ref="xlink:role"/>
    <attribute ref="xlink:arcrole"/>
    <attribute ref="xlink:title"/>
    <attribute ref="xlink:show"/>
    <attribute ref="xlink:actuate"/>
  </attributeGroup>
  <attributeGroup name="extendedAttrs">
    <attribute ref="xlink:type" fixed="extended" use="required"/>
    <attribute ref="xlink:role"/>
    <attribute ref="xlink:title"/>
  </attributeGroup>
  <attributeGroup name="titleAttrs">
    <attribute ref="xlink:type" fixed="title" use="required"/>
  </attributeGroup>
  <attributeGroup name="resourceAttrs">
    <attribute ref="xlink:type" fixed="resource" use="required"/>
    <attribute ref="xlink:role"/>
    <attribute ref="xlink:title"/>
    <attribute ref="xlink:label"/>
  </attributeGroup>
  <attributeGroup name="locatorAttrs">
    <attribute ref="xlink:type" fixed="locator" use="required"/>
    <attribute ref="xlink:href" use="required"/>
    <attribute ref="xlink:role"/>
    <attribute ref="xlink:title"/>
    <attribute ref="xlink:label"/>
  </attributeGroup>
  <attributeGroup name="arcAttrs">
    <attribute ref="xlink:type" fixed="arc" use="required"/>
    <attribute ref="xlink:arcrole"/>
    <attribute ref="xlink:title"/>
    <attribute ref="xlink:show"/>
    <attribute ref="xlink:actuate"/>
    <attribute ref="xlink:from"/>
    <attribute ref="xlink:to"/>
  </attributeGroup>
</schema>
)";

// The instance attributes themselves are there from the start.
constexpr std::string_view kInstanceSchema = R"(<?xml version="1.0"?>
<schema xmlns="http://www.w3.org/2001/XMLSchema" targetNamespace="http://www.w3.org/2001/XMLSchema-instance"/>
)";

}  // namespace

std::string_view FindBuiltInSchema(std::string_view namespaceUri) noexcept {
    if (namespaceUri == kXmlNamespace) return kXmlSchema;
    if (namespaceUri == "http://www.w3.org/1999/xlink") return kXlinkSchema;
    if (namespaceUri == kInstanceNamespace) return kInstanceSchema;
    return {};
}

}  // namespace KvXmlLib16::internal
