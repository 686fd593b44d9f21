/// What the sources of CDateTime share: which kind has which fields, and the fields as plain numbers.
#pragma once

#include "kvxml/types/date_time.h"

namespace KvXmlLib16 {

/// Fields before they are packed, so that a number too large for its field is reported as it was given.
struct CDateTime::Numbers {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int milli = 0;
    int micro = 0;
    int nano = 0;
};

namespace internal {

constexpr int kMaxYear = 9999;
constexpr int kMinYear = -9999;

constexpr unsigned kYear = 1;
constexpr unsigned kMonth = 2;
constexpr unsigned kDay = 4;
constexpr unsigned kTime = 8;  // hour to nanosecond

struct TypeTraits {
    const char* name;
    unsigned fields;
};

/// By DTType.
inline constexpr TypeTraits kTypeTraits[] = {
    {"yearZero", 0},
    {"dateTime", kYear | kMonth | kDay | kTime},
    {"date", kYear | kMonth | kDay},
    {"gYearMonth", kYear | kMonth},
    {"gYear", kYear},
    {"time", kTime},
    {"gDay", kDay},
    {"gMonth", kMonth},
    {"gMonthDay", kMonth | kDay},
};

inline const TypeTraits& TraitsOf(CDateTime::DTType type) noexcept {
    static constexpr TypeTraits kUnknown = {"", 0};
    const auto index = static_cast<std::size_t>(type);
    return index < sizeof(kTypeTraits) / sizeof(kTypeTraits[0]) ? kTypeTraits[index] : kUnknown;
}

inline const char* TypeName(CDateTime::DTType type) noexcept {
    return TraitsOf(type).name;
}
inline unsigned FieldsOf(CDateTime::DTType type) noexcept {
    return TraitsOf(type).fields;
}

}  // namespace internal
}  // namespace KvXmlLib16
