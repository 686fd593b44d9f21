/// The calendar and clock structures of Windows, for hosts that do not have them.
#pragma once

#include <cstdint>

#if defined(_WIN32)

extern "C" {
struct _SYSTEMTIME;
struct _FILETIME;
}

namespace KvXmlLib16 {
using SYSTEMTIME = ::_SYSTEMTIME;
using FILETIME = ::_FILETIME;
}  // namespace KvXmlLib16

#else

namespace KvXmlLib16 {

/// A calendar date and time of day.
struct SYSTEMTIME {
    std::uint16_t wYear;
    std::uint16_t wMonth;      ///< 1 to 12
    std::uint16_t wDayOfWeek;  ///< 0 is Sunday
    std::uint16_t wDay;        ///< 1 to 31
    std::uint16_t wHour;
    std::uint16_t wMinute;
    std::uint16_t wSecond;
    std::uint16_t wMilliseconds;
};

/// Count of 100-nanosecond steps since 1601-01-01T00:00:00Z, in two halves.
struct FILETIME {
    std::uint32_t dwLowDateTime;
    std::uint32_t dwHighDateTime;
};

}  // namespace KvXmlLib16

#endif
