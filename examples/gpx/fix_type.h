/// GPX 1.1 type fixType: how a position was found.
///
/// Every class of this folder follows the one pattern of generated code: see docs/generated-code.md.
#pragma once

#include <cstdint>

namespace Gpx {

enum EFixType : std::int32_t {
    EFixType_none = 0,
    EFixType_2d = 1,
    EFixType_3d = 2,
    EFixType_dgps = 3,
    EFixType_pps = 4,
};

/// CKvInvalidValueException "Invalid Value for %s [%d]" for a number that is none of the enumeration.
const char* EFixTypeToString(int value);
/// CKvInvalidValueException "Invalid Value for %s [%s]." for a text that is none of the enumeration.
int EFixTypeFromString(const char* text);

}  // namespace Gpx
