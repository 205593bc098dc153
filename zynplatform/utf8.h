// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/types.h"

#include <cstddef>

// UTF-8 to UTF-16 and back, with the rules and the use of lengths told in codepage.h. With a null target
// nothing is written: the result is the length that the target has to have.

namespace zynplatform {

std::size_t Utf8ToWide(const char* text, std::size_t length, WCHAR* target);
std::size_t WideToUtf8(const WCHAR* text, std::size_t length, char* target);

} // namespace zynplatform
