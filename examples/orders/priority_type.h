/// Orders type PriorityType: how urgent an order is.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <cstdint>

namespace Orders {

enum EPriorityType : std::int32_t {
    EPriorityType_low = 0,
    EPriorityType_normal = 1,
    EPriorityType_high = 2,
    EPriorityType_urgent = 3,
};

/// CKvInvalidValueException "Invalid Value for %s [%d]" for a number that is none of the enumeration.
const char* EPriorityTypeToString(int value);
/// CKvInvalidValueException "Invalid Value for %s [%s]." for a text that is none of the enumeration.
int EPriorityTypeFromString(const char* text);

}  // namespace Orders
