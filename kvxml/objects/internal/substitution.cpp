#include "kvxml/objects/internal/substitution.h"

#include <typeinfo>

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/xml_generated_class.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/xml_attribute.h"
#include "kvxml/xml/xml_document.h"
#include "kvxml/xml/xml_element.h"
#include "kvxml/xml/xml_text_writer.h"

namespace KvXmlLib16::internal {

namespace {

bool HasType(const CXmlElement& element) {
    for (const CXmlAttribute* attribute : element.GetAttributes()) {
        if (attribute->IsNamespaceAttribute() && attribute->GetLocalName() == "type") return true;
    }
    return false;
}

}  // namespace

CSmartPtr<CXmlObjectBase> CSubstitution::Make(SubstitutionFactory factory, CXmlElement& element,
                                              bool isNamed) {
    if (factory == nullptr) return nullptr;
    CSmartPtr<CXmlObjectBase> object = factory(&element);
    if (object == nullptr || isNamed || !HasType(element)) return object;
    const auto* generated = dynamic_cast<const CXmlGeneratedClass*>(object.Get());
    if (generated == nullptr) return object;
    return generated->GetClassInfo()->GetElementName() == element.GetLocalName() ? object : nullptr;
}

CSmartPtr<CXmlObjectBase> CSubstitution::MakeLike(SubstitutionFactory factory, const CXmlObjectBase& object,
                                                  std::string_view memberName,
                                                  std::string_view memberNamespace) {
    const auto* generated = dynamic_cast<const CXmlGeneratedClass*>(&object);
    if (factory == nullptr || generated == nullptr) return nullptr;
    const auto& record = *generated->GetClassInfo();
    const std::string ns = object.GetNamespace();
    const std::string_view name = generated->EffectiveElementName();
    struct Form {
        std::string_view name;
        std::string_view ns;
        bool hasType;
    };
    const Form forms[] = {
        {name, name == memberName ? memberNamespace : ns,
         record.GetHasBaseClasses() && record.GetElementName() != name},
        {memberName, memberNamespace, true},
        {record.GetElementName(), ns, false},
    };
    for (const Form& form : forms) {
        CTextStream stream(XmlEncoding_UTF8);
        CXmlTextWriter writer(&stream);
        writer.BeginOutput();
        writer.WriteStartElement(form.name, form.ns);
        if (form.hasType)
            writer.WriteTypeAttribute(record.GetElementNamespace(), record.GetElementName(), ItemType_string);
        writer.WriteEndElement();
        writer.EndDocument();
        const CBinaryData xml = stream.ToBinaryData();
        CXmlDocument document;
        document.LoadXml(std::string_view(reinterpret_cast<const char*>(xml.GetData()), xml.GetLength()));
        CSmartPtr<CXmlObjectBase> made = factory(document.GetDocumentElement());
        if (made == nullptr) continue;
        const CXmlObjectBase& madeObject = *made;
        if (typeid(madeObject) == typeid(object)) return made;
    }
    return nullptr;
}

void CSubstitution::ThrowNone(std::string_view memberName, const CXmlElement& element) {
    throw CKvValidationException(FormatString("Failed to find a suitable substitution element for [%s].",
                                              std::string(memberName).c_str()),
                                 element.GetXPath());
}

void CSubstitution::Write(const CXmlObjectBase& object, std::string_view memberName,
                          const char* memberNamespace, CXmlWriter* writer,
                          const CSerializationContext& context) {
    std::string ownNamespace;
    if (const auto* generated = dynamic_cast<const CXmlGeneratedClass*>(&object)) {
        if (generated->EffectiveElementName() != memberName) {
            ownNamespace = generated->GetNamespace();
            memberNamespace = ownNamespace.c_str();
        }
    }
    CXmlObjectBase::ToXml_Int(&object, writer, false, memberNamespace, context, false);
}

}  // namespace KvXmlLib16::internal
