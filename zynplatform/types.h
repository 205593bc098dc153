// SPDX-License-Identifier: MIT
#pragma once

// The 16-bit character of the whole library. wchar_t is 32 bits wide here and is used nowhere.
using WCHAR = char16_t;
