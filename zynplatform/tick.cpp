#include "zynplatform/tick.h"

#include <atomic>
#include <chrono>

namespace {

std::uint32_t SystemTick() {
    using namespace std::chrono;
    const auto sinceStart = duration_cast<milliseconds>(steady_clock::now().time_since_epoch());
    return static_cast<std::uint32_t>(sinceStart.count());
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
