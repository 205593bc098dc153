// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <cstdint>

namespace zyn {

// The decimal number at the start of a text, after white space and one sign; 0 when there is none, or for
// null. A number that 32 bits cannot hold becomes the nearest that they can.
ZYN_API std::int32_t DecimalValue(const char* text);

} // namespace zyn
