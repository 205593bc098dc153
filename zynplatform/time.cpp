// SPDX-License-Identifier: MIT
#include "zynplatform/time.h"

#include "zynplatform/fork.h"

#include <atomic>
#include <cstdlib>
#include <ctime>

namespace zynplatform {

namespace {

std::int64_t SystemTime() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

std::atomic<std::int64_t (*)()> timeSource{SystemTime};

std::int64_t Milliseconds() {
    return timeSource.load(std::memory_order_acquire)();
}

// The C library reads TZ, and looks whether the file of the zone is another one. That costs more than all
// else about a time, so while TZ stays the same the file is looked at once a second.
void ReadZone() {
    static constinit std::atomic<std::uint64_t> known = 0; // when, and which TZ
    std::uint64_t hash = 14695981039346656037U;
    if (const char* zone = std::getenv("TZ"))
        for (; *zone; ++zone)
            hash = (hash ^ static_cast<unsigned char>(*zone)) * 1099511628211U;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    const std::uint64_t current = hash + static_cast<std::uint64_t>(now.tv_sec) * 0x9E3779B97F4A7C15U + 1;
    if (known.load(std::memory_order_relaxed) == current) return;
    tzset();
    known.store(current, std::memory_order_relaxed);
}

} // namespace

std::int64_t CurrentTime() {
    return Milliseconds() / 1000;
}

TimeOfDay LocalTimeOfDay() {
    // Breaking a time down costs more than reading the clock, so each thread does it once a second.
    static constinit thread_local std::int64_t brokenDown = -1;
    static constinit thread_local TimeOfDay time{};

    const std::int64_t now = Milliseconds();
    if (now / 1000 != brokenDown) {
        std::tm local{};
        LocalTime(now / 1000, local);
        time = {local.tm_hour, local.tm_min, local.tm_sec, 0};
        brokenDown = now / 1000;
    }
    time.millisecond = static_cast<int>(now % 1000);
    return time;
}

void SetTimeSource(std::int64_t (*milliseconds)()) {
    timeSource.store(milliseconds ? milliseconds : SystemTime, std::memory_order_release);
}

bool LocalTime(std::int64_t seconds, std::tm& local) {
    const ForkGuard guard; // the child of a fork could wait for the C library's lock for ever
    ReadZone();            // localtime_r need not look at TZ again
    const std::time_t time = seconds;
    return localtime_r(&time, &local) != nullptr;
}

} // namespace zynplatform
