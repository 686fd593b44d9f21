#include "kvxml/platform/clock.h"

#include <algorithm>
#include <chrono>
#include <ctime>

namespace KvXmlLib16::internal {

LocalTime GetLocalTime() {
    using namespace std::chrono;
    const auto now = time_point_cast<milliseconds>(system_clock::now());
    const auto whole = floor<seconds>(now);
    const std::time_t seconds = system_clock::to_time_t(whole);
    std::tm fields{};
#if defined(_WIN32)
    localtime_s(&fields, &seconds);
#else
    if (localtime_r(&seconds, &fields) == nullptr) gmtime_r(&seconds, &fields);
#endif
    return {fields.tm_year + 1900,
            fields.tm_mon + 1,
            fields.tm_mday,
            fields.tm_hour,
            fields.tm_min,
            std::min(fields.tm_sec, 59),  // a leap second repeats the last one
            static_cast<int>((now - whole).count())};
}

}  // namespace KvXmlLib16::internal
