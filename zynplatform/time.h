#pragma once

#include "zynplatform/export.h"

#include <cstdint>
#include <ctime>
#include <string>

// The system's records of a moment in calendar fields, its clock, its time zone, and its texts for dates.

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
// (the variable TZ as it is at the time, else the system's). False when the year does not fit the record.
// Safe from any thread that does so while nobody changes the environment; this goes for all that looks at the
// zone.
ZYN_API bool LocalTime(std::int64_t seconds, std::tm& local);

// The text that std::strftime makes, of any length, in code page 1251: names of months and days, which come
// from the process's locale, are converted when that is a UTF-8 one. %z and %Z name the standard time of the
// process's time zone, today's whatever the date. The format is not empty and lies in code page 1251.
//
// Empty when the text is empty, and when it is longer than 256 bytes and 64 times its format: only a field
// width makes it so, and a width may ask for gigabytes.
ZYN_API std::string FormatTime(const char* format, std::tm time);

// The same in the language of the thread's locale (see locale.h), whatever the process's locale is; where the
// system has no texts for it, in that of the environment (LC_ALL, LC_TIME, LANG), which may be English.
ZYN_API std::string FormatTimeForUser(const char* format, std::tm time);

} // namespace zynplatform
