#include "kvxml/objects/internal/simple_element.h"

#include <string>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/ascii.h"
#include "kvxml/settings/serialization_context.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/xml_attribute.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16::internal {

namespace {

[[noreturn]] void ThrowUnexpectedChild(const CXmlElement& element, const CXmlElement& child) {
    throw CKvValidationException(
        FormatString("Failed read all the elements held within the element [%s]. The unexpected element [%s] "
                     "remains un processed",
                     element.GetLocalName().c_str(), child.GetLocalName().c_str()),
        element.GetXPath());
}

bool JudgeAttributes(const CSerializationContext& context, const CXmlElement& element, bool nillable) {
    bool nil = false;
    for (const auto* attribute : element.GetAttributes()) {
        if (attribute->IsNilAttribute()) {
            const std::string& value = attribute->GetValue();
            if (EqualsIgnoreAsciiCase(value, "false")) {
                nil = false;
            } else if (!nillable) {
                throw CKvValidationException("Invalid use of 'nil' attribute in non-nillable element.",
                                             element.GetXPath());
            } else if (EqualsIgnoreAsciiCase(value, "true")) {
                nil = true;
            } else {
                throw CKvValidationException(
                    FormatString("Unexpected Value [%s] for 'nil' Attribute found.", value.c_str()),
                    attribute->GetXPath());
            }
        } else if (!context.GetIgnoreUnknownAttributes()) {
            throw CKvValidationException("Unexpected Attribute found.", attribute->GetXPath());
        }
    }
    return nil;
}

}  // namespace

bool JudgeAnyElement(const CSerializationContext& context, const CXmlElement& element, bool nillable) {
    const CXmlElement* child = element.GetFirstElement();
    if (child != nullptr && !context.GetIgnoreUnknownElements()) ThrowUnexpectedChild(element, *child);
    return !element.GetAttributes().empty() && JudgeAttributes(context, element, nillable);
}

void ThrowSetFailed(std::string_view name, const CXmlElement& element, const CKvException& inner) {
    throw CKvValidationException(
        FormatString("Failed to set the property value [%s].", std::string(name).c_str()), element.GetXPath(),
        inner);
}

}  // namespace KvXmlLib16::internal
