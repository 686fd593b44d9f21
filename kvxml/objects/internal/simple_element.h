/// Judges elements that hold text only, whatever record or collection reads them.
#pragma once

#include <string_view>

#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16 {

class CKvException;
class CSerializationContext;

namespace internal {

/// Refuses attributes and child elements, unless the context ignores unknown ones, with
/// CKvValidationException. An xsi:nil attribute may always be "false". Returns whether the element is nil,
/// which is an error too unless it is `nillable`.
bool JudgeAnyElement(const CSerializationContext& context, const CXmlElement& element, bool nillable);
inline bool JudgeSimpleElement(const CSerializationContext& context, const CXmlElement& element,
                               bool nillable) {
    const bool hasTextOnly = element.GetFirstElement() == nullptr && element.GetAttributes().empty();
    return !hasTextOnly && JudgeAnyElement(context, element, nillable);
}

/// CKvValidationException with the path of `element`: its value was refused for the reason `inner`.
[[noreturn]] void ThrowSetFailed(std::string_view name, const CXmlElement& element,
                                 const CKvException& inner);

}  // namespace internal
}  // namespace KvXmlLib16
