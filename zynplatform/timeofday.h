#pragma once

#include "zynplatform/export.h"

namespace zynplatform {

struct TimeOfDay {
    int hour, minute, second, millisecond;
};

// The local wall-clock time, cheap enough for every line of a log. A change of the process's time zone shows
// from the next full second on. Safe from any thread.
ZYN_API TimeOfDay LocalTimeOfDay();

// Replaces the clock, for a test that needs a certain time; null restores the system's. The function is
// called from every thread that asks for the time.
ZYN_API void SetTimeOfDaySource(TimeOfDay (*source)());

} // namespace zynplatform
