/// Judges elements that hold text only, whatever record or collection reads them, and the mark of nil ones.
#pragma once

#include <optional>
#include <string_view>

#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16 {

class CSerializationContext;

namespace internal {

/// Refuses attributes and child elements, unless the context ignores unknown ones, with
/// CKvValidationException. Schema locations may stand on any element, and so may an xsi:nil that is false.
/// Returns whether the element is nil, which is an error too unless it is `nillable`.
bool JudgeAnyElement(const CSerializationContext& context, const CXmlElement& element, bool nillable);
inline bool JudgeSimpleElement(const CSerializationContext& context, const CXmlElement& element,
                               bool nillable) {
    const bool hasTextOnly = element.GetFirstElement() == nullptr && element.GetAttributes().empty();
    return !hasTextOnly && JudgeAnyElement(context, element, nillable);
}

/// The value of an xsi:nil attribute: a boolean of XML Schema, in which case and blanks around it do not
/// count. None for any other text.
std::optional<bool> ToNil(std::string_view text) noexcept;
/// CKvValidationException with the path of the element or attribute.
[[noreturn]] void ThrowNilNotAllowed(const CXmlElement& element);
[[noreturn]] void ThrowUnexpectedNil(const CXmlAttribute& attribute);

}  // namespace internal
}  // namespace KvXmlLib16
