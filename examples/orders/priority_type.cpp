#include "examples/orders/priority_type.h"

#include <string_view>

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/element_info.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/variant.h"
#include "kvxml/platform/critical_section.h"
#include "kvxml/types/format_string.h"

namespace Orders {

const char* EPriorityTypeToString(int value) {
    switch (value) {
        case EPriorityType_low:
            return "low";
        case EPriorityType_normal:
            return "normal";
        case EPriorityType_high:
            return "high";
        case EPriorityType_urgent:
            return "urgent";
        default:
            throw KvXmlLib16::CKvInvalidValueException(
                KvXmlLib16::FormatString("Invalid Value for %s [%d]", "PriorityType", value));
    }
}

int EPriorityTypeFromString(const char* text) {
    const std::string_view lexical(text);
    if (lexical == "low") return EPriorityType_low;
    if (lexical == "normal") return EPriorityType_normal;
    if (lexical == "high") return EPriorityType_high;
    if (lexical == "urgent") return EPriorityType_urgent;
    throw KvXmlLib16::CKvInvalidValueException(
        KvXmlLib16::FormatString("Invalid Value for %s [%s].", "PriorityType", text));
}

}  // namespace Orders
