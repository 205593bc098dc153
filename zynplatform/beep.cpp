// SPDX-License-Identifier: MIT
#include "zynplatform/beep.h"

#include "zynplatform/file.h"

#include <atomic>

#include <unistd.h>

namespace {

void RingTerminal(std::uint32_t /*frequency*/, std::uint32_t /*duration*/) {
    if (isatty(STDERR_FILENO))
        zynplatform::WriteFile(STDERR_FILENO, "\a", 1); // past stdio, which may be wide
}

std::atomic<void (*)(std::uint32_t, std::uint32_t)> beeper{RingTerminal};

} // namespace

namespace zynplatform {

void Beep(std::uint32_t frequency, std::uint32_t duration) {
    beeper.load(std::memory_order_acquire)(frequency, duration);
}

void SetBeep(void (*beep)(std::uint32_t, std::uint32_t)) {
    beeper.store(beep ? beep : RingTerminal, std::memory_order_release);
}

} // namespace zynplatform
