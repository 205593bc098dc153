// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <cstdint>

namespace zynplatform {

// Sounds a tone, in hertz and milliseconds: rings the terminal's bell where standard error is a terminal, and
// does nothing elsewhere. A terminal chooses pitch and length itself. Returns at once.
ZYN_API void Beep(std::uint32_t frequency, std::uint32_t duration);

// Replaces the bell, for a test or for a host with a better one; null restores it.
ZYN_API void SetBeep(void (*beep)(std::uint32_t frequency, std::uint32_t duration));

} // namespace zynplatform
