#include "examples/orders/status_type.h"

#include <string_view>

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/element_info.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/variant.h"
#include "kvxml/platform/critical_section.h"
#include "kvxml/types/format_string.h"

namespace Orders {

const char* EStatusTypeToString(int value) {
    switch (value) {
        case EStatusType_new:
            return "new";
        case EStatusType_paid:
            return "paid";
        case EStatusType_packed:
            return "packed";
        case EStatusType_shipped:
            return "shipped";
        case EStatusType_delivered:
            return "delivered";
        case EStatusType_returned:
            return "returned";
        case EStatusType_cancelled:
            return "cancelled";
        default:
            throw KvXmlLib16::CKvInvalidValueException(
                KvXmlLib16::FormatString("Invalid Value for %s [%d]", "StatusType", value));
    }
}

int EStatusTypeFromString(const char* text) {
    const std::string_view lexical(text);
    if (lexical == "new") return EStatusType_new;
    if (lexical == "paid") return EStatusType_paid;
    if (lexical == "packed") return EStatusType_packed;
    if (lexical == "shipped") return EStatusType_shipped;
    if (lexical == "delivered") return EStatusType_delivered;
    if (lexical == "returned") return EStatusType_returned;
    if (lexical == "cancelled") return EStatusType_cancelled;
    throw KvXmlLib16::CKvInvalidValueException(
        KvXmlLib16::FormatString("Invalid Value for %s [%s].", "StatusType", text));
}

}  // namespace Orders
