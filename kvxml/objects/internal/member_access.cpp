#include "kvxml/objects/internal/member_access.h"

#include "kvxml/types/format_string.h"

namespace KvXmlLib16::internal {

void ThrowGetFailed(std::string_view name, const CKvException& inner) {
    throw CKvValidationException(
        FormatString("Failed to get the property value for [%s].", std::string(name).c_str()), std::string(),
        inner);
}

void ThrowSetFailed(std::string_view name, const std::string& path, const CKvException& inner) {
    throw CKvValidationException(
        FormatString("Failed to set the property value [%s].", std::string(name).c_str()), path, inner);
}

void ThrowMandatoryIsNull(std::string_view name) {
    throw CKvInvalidParamException(
        FormatString("The Property [%s] is mandatory, it may not be NULL", std::string(name).c_str()));
}

}  // namespace KvXmlLib16::internal
