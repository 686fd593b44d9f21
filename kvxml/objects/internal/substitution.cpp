#include "kvxml/objects/internal/substitution.h"

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/xml_generated_class.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/xml_attribute.h"
#include "kvxml/xml/xml_element.h"

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
