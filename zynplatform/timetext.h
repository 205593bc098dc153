// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <ctime>
#include <string>

// The system's texts for dates.

namespace zynplatform {

// The text that std::strftime makes, of any length, in code page 1251: names of months and days, which come
// from the process's locale, are converted when that is a UTF-8 one. %z and %Z name the standard time of the
// process's time zone, today's whatever the date. The format is not empty and lies in code page 1251. Texts
// of numbers and names are made here and cost a fraction of strftime's time; what has another conversion in
// it, or a flag or a width, is left to strftime.
//
// Empty when the text is empty, and when it is longer than 256 bytes and 64 times its format: only a field
// width makes it so, and a width may ask for gigabytes.
ZYN_API std::string FormatTime(const char* format, const std::tm& time);

// The same in the language of the thread's locale (see locale.h), whatever the process's locale is; where the
// system has no texts for it, in that of the environment (LC_ALL, LC_TIME, LANG), which may be English.
ZYN_API std::string FormatTimeForUser(const char* format, const std::tm& time);

} // namespace zynplatform
