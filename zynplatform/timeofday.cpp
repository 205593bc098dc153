#include "zynplatform/timeofday.h"

#include <atomic>

#include <time.h>

namespace {

using zynplatform::TimeOfDay;

TimeOfDay SystemTimeOfDay() {
    // Breaking a time down costs more than reading the clock, so each thread does it once a second.
    static constinit thread_local time_t brokenDown = -1;
    static constinit thread_local TimeOfDay time{};

    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (now.tv_sec != brokenDown) {
        tm local{};
        localtime_r(&now.tv_sec, &local);
        time = {local.tm_hour, local.tm_min, local.tm_sec, 0};
        brokenDown = now.tv_sec;
    }
    time.millisecond = static_cast<int>(now.tv_nsec / 1'000'000);
    return time;
}

std::atomic<TimeOfDay (*)()> timeOfDaySource{SystemTimeOfDay};

} // namespace

namespace zynplatform {

TimeOfDay LocalTimeOfDay() {
    return timeOfDaySource.load(std::memory_order_acquire)();
}

void SetTimeOfDaySource(TimeOfDay (*source)()) {
    timeOfDaySource.store(source ? source : SystemTimeOfDay, std::memory_order_release);
}

} // namespace zynplatform
