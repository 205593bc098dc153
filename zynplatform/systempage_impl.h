// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/types.h"

#include <cstddef>
#include <string_view>

// Conversion of the code pages that the system knows. Used by codepage.cpp only, whose header has the rules.

namespace zynplatform {

// Each returns the length of the result, 0 for a page that the system does not know. Without a target nothing
// is written.
std::size_t SystemToWide(unsigned codePage, std::string_view text, WCHAR* target);
std::size_t SystemToNarrow(unsigned codePage, std::u16string_view units, char* target);

} // namespace zynplatform
