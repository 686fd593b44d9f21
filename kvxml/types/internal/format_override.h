/// Formats that records give for the output of their values.
#pragma once

#include <string_view>

#include "kvxml/types/item_type.h"

namespace KvXmlLib16::internal {

/// Reads the count of fraction digits that a format of decimals begins with, as atoi does; false when there
/// is none. CKvInvalidParamException "The format [...] is no count of fraction digits" for one beyond 32
/// bits.
bool ReadFractionDigits(std::string_view format, int& count);
[[noreturn]] void ThrowNoCount(std::string_view format);

/// CKvInvalidParamException when `format` is none for the kind: a printf format with at most one conversion,
/// of a floating point value, for r4 and r8; a count of fraction digits for decimals. Other kinds pass it
/// over. Empty stands for the default form.
void CheckFormat(ItemType type, std::string_view format);

}  // namespace KvXmlLib16::internal
