// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <cstdint>

namespace zynplatform {

// Milliseconds of a clock that never goes back, in 32 bits: the count starts again at 0 about every 49.7
// days, so only differences modulo 2^32 mean anything. Safe from any thread.
ZYN_API std::uint32_t TickCount();

// Replaces the clock, for a test that needs a certain tick; null restores the system's. The function is
// called from every thread that asks for the tick.
ZYN_API void SetTickSource(std::uint32_t (*source)());

} // namespace zynplatform
