#include "examples/gpx/fix_type.h"

#include <string_view>

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/element_info.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/variant.h"
#include "kvxml/platform/critical_section.h"
#include "kvxml/types/format_string.h"

namespace Gpx {

const char* EFixTypeToString(int value) {
    switch (value) {
        case EFixType_none:
            return "none";
        case EFixType_2d:
            return "2d";
        case EFixType_3d:
            return "3d";
        case EFixType_dgps:
            return "dgps";
        case EFixType_pps:
            return "pps";
        default:
            throw KvXmlLib16::CKvInvalidValueException(
                KvXmlLib16::FormatString("Invalid Value for %s [%d]", "fixType", value));
    }
}

int EFixTypeFromString(const char* text) {
    const std::string_view lexical(text);
    if (lexical == "none") return EFixType_none;
    if (lexical == "2d") return EFixType_2d;
    if (lexical == "3d") return EFixType_3d;
    if (lexical == "dgps") return EFixType_dgps;
    if (lexical == "pps") return EFixType_pps;
    throw KvXmlLib16::CKvInvalidValueException(
        KvXmlLib16::FormatString("Invalid Value for %s [%s].", "fixType", text));
}

}  // namespace Gpx
