#include "kvxml/metadata/attribute_col.h"

#include "kvxml/runtime/exceptions.h"
#include "kvxml/runtime/format_string.h"
#include "kvxml/types/item_type.h"
#include "kvxml/xml/xml_writer.h"

namespace KvXmlLib16 {

namespace {

[[noreturn]] void ThrowNotAnElement() {
    throw CKvException("Attributes can not be read from an element");
}

}  // namespace

CAttribute::CAttribute() = default;

CAttribute::CAttribute(const char* name, const char* ns, const char* value)
    : m_namespace(ns == nullptr ? "" : ns), m_value(value == nullptr ? "" : value) {
    SetName(name);
}

void CAttribute::SetName(const char* name) {
    if (name == nullptr || *name == '\0') throw CKvInvalidParamException("Attribute Name must have a value");
    SetElementName(name);
}

void CAttribute::ToXml_Int(CXmlWriter* writer, bool, const char*, const CSerializationContext&, bool) const {
    writer->WriteAttribute(GetElementNameView(), m_namespace, m_value, ItemType_string);
}

CXmlElement* CAttribute::FromXml_Int(CXmlElement*, CXmlElement*, const CSerializationContext&, bool) {
    ThrowNotAnElement();
}

CAttributeCol::CAttributeCol(const char* restriction, const char* targetNamespace)
    : CXmlTypedCollection<CAttribute>("", "", 0, -1),
      m_restriction(restriction == nullptr ? "" : restriction),
      m_targetNamespace(targetNamespace == nullptr ? "" : targetNamespace) {}

CSmartPtr<CAttribute> CAttributeCol::Add(const char* name, const char* ns, const char* value) {
    const char* uri = ns == nullptr ? "" : ns;
    if (!IsNamespaceValid(uri, m_restriction.c_str(), m_targetNamespace.c_str())) {
        throw CKvInvalidNamespaceException(FormatString("Invalid Namespace [%s].", uri), std::string());
    }
    CSmartPtr<CAttribute> attribute(new CAttribute(name, uri, value));
    AppendItem(attribute.Get());
    return attribute;
}

CSmartPtr<CAttribute> CAttributeCol::Find(std::string_view name, std::string_view ns) const {
    for (CAttribute* attribute : *this) {
        if (attribute->GetName() == name && attribute->GetNamespace() == ns) return attribute;
    }
    return nullptr;
}

CXmlElement* CAttributeCol::FromXml_Int(CXmlElement*, CXmlElement*, const CSerializationContext&, bool) {
    ThrowNotAnElement();
}

}  // namespace KvXmlLib16
