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
            // Two words only, unlike classes.
            const std::string_view value = attribute->GetValueView();
            const bool isFalse = EqualsIgnoreAsciiCase(value, "false");
            if (!nillable && !isFalse) ThrowNilNotAllowed(element);
            if (!isFalse && !EqualsIgnoreAsciiCase(value, "true")) ThrowUnexpectedNil(*attribute);
            nil = !isFalse;
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

std::optional<bool> ToNil(std::string_view text) noexcept {
    constexpr std::string_view kBlanks = " \t\n\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return std::nullopt;
    text = text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
    if (EqualsIgnoreAsciiCase(text, "true") || text == "1") return true;
    if (EqualsIgnoreAsciiCase(text, "false") || text == "0") return false;
    return std::nullopt;
}

void ThrowNilNotAllowed(const CXmlElement& element) {
    throw CKvValidationException("Invalid use of 'nil' attribute in non-nillable element.",
                                 element.GetXPath());
}

void ThrowUnexpectedNil(const CXmlAttribute& attribute) {
    throw CKvValidationException(
        FormatString("Unexpected Value [%s] for 'nil' Attribute found.", attribute.GetValue().c_str()),
        attribute.GetXPath());
}

}  // namespace KvXmlLib16::internal
