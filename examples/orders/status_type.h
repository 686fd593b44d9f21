/// Orders type StatusType: how far an order has got.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <cstdint>

namespace Orders {

enum EStatusType : std::int32_t {
    EStatusType_new = 0,
    EStatusType_paid = 1,
    EStatusType_packed = 2,
    EStatusType_shipped = 3,
    EStatusType_delivered = 4,
    EStatusType_returned = 5,
    EStatusType_cancelled = 6,
};

/// CKvInvalidValueException "Invalid Value for %s [%d]" for a number that is none of the enumeration.
const char* EStatusTypeToString(int value);
/// CKvInvalidValueException "Invalid Value for %s [%s]." for a text that is none of the enumeration.
int EStatusTypeFromString(const char* text);

}  // namespace Orders
