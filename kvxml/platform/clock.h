/// The host's clock.
#pragma once

namespace KvXmlLib16::internal {

struct LocalTime {
    int year;
    int month;  // 1 to 12
    int day;    // 1 to 31
    int hour;
    int minute;
    int second;  // 0 to 59
    int milli;
};

/// The present time in the host's own zone, to the millisecond.
LocalTime GetLocalTime();

}  // namespace KvXmlLib16::internal
