#include "kvxml/types/internal/format_override.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <system_error>

#include "kvxml/base/exceptions.h"
#include "kvxml/types/internal/real_text.h"

namespace KvXmlLib16::internal {

bool ReadFractionDigits(std::string_view format, int& count) {
    std::size_t begin = std::min(format.find_first_not_of(" \t\n\v\f\r"), format.size());
    if (begin < format.size() && format[begin] == '+') ++begin;
    count = 0;
    const auto result = std::from_chars(format.data() + begin, format.data() + format.size(), count);
    if (result.ec == std::errc::result_out_of_range) ThrowNoCount(format);
    return result.ec == std::errc();
}

void ThrowNoCount(std::string_view format) {
    throw CKvInvalidParamException("The format [" + std::string(format) + "] is no count of fraction digits");
}

void CheckFormat(ItemType type, std::string_view format) {
    if (format.empty()) return;
    int count = 0;
    if (type == ItemType_r4 || type == ItemType_r8) {
        CheckRealFormat(format);
    } else if (type == ItemType_decimal && !ReadFractionDigits(format, count)) {
        ThrowNoCount(format);
    }
}

}  // namespace KvXmlLib16::internal
