// SPDX-License-Identifier: MIT
#include "zynplatform/tick.h"

#include <atomic>
#include <ctime>

namespace {

// Of the clock that costs least, which moves on every few milliseconds.
std::uint32_t SystemTick() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return static_cast<std::uint32_t>(std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000);
}

std::atomic<std::uint32_t (*)()> tickSource{SystemTick};

} // namespace

namespace zynplatform {

std::uint32_t TickCount() {
    return tickSource.load(std::memory_order_acquire)();
}

void SetTickSource(std::uint32_t (*source)()) {
    tickSource.store(source ? source : SystemTick, std::memory_order_release);
}

} // namespace zynplatform
