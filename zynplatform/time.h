// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <cstdint>
#include <ctime>

// The system's records of a moment in calendar fields, its clock and its time zone.

// A date and time of day of the Gregorian calendar. Plain data: nothing checks it.
struct SYSTEMTIME {
    std::uint16_t wYear;      // in full: 2024
    std::uint16_t wMonth;     // 1 to 12
    std::uint16_t wDayOfWeek; // 0 Sunday to 6 Saturday
    std::uint16_t wDay;       // 1 to 31
    std::uint16_t wHour;
    std::uint16_t wMinute;
    std::uint16_t wSecond;
    std::uint16_t wMilliseconds;
};

// The same with the day of the year.
struct UDATE {
    SYSTEMTIME st;
    std::uint16_t wDayOfYear; // 1 for 1 January
};

namespace zynplatform {

// Seconds since 1970-01-01 00:00 UTC by the system's clock. Safe from any thread.
ZYN_API std::int64_t CurrentTime();

// Parts of a time of day, in the ranges usual for them.
struct TimeOfDay {
    int hour;
    int minute;
    int second;
    int millisecond;
};

// The local time of the same clock, cheap enough for every line of a log. A change of the process's time zone
// shows from the next full second on. Safe from any thread.
ZYN_API TimeOfDay LocalTimeOfDay();

// Replaces that clock, for a test that needs a certain time: milliseconds since 1970-01-01 00:00 UTC. Null
// restores the system's. The function is called from every thread that asks for the time.
ZYN_API void SetTimeSource(std::int64_t (*milliseconds)());

// Breaks a count of seconds since 1970-01-01 00:00 UTC down into local time, by the time zone of the process
// (the variable TZ as it is at the time, else the system's, whose change shows within a second). False when
// the year does not fit the record.
// Safe from any thread that does so while nobody changes the environment; this goes for all that looks at the
// zone.
ZYN_API bool LocalTime(std::int64_t seconds, std::tm& local);

} // namespace zynplatform
