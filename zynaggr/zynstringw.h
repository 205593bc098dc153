// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/zynstring.h"

// 16-bit text: the operations of CzynStringA (zynstring.h) on UTF-16 units. Surrogate pairs are two
// characters.
namespace zyn {
extern template class BasicString<WCHAR>;
}

// 16-bit text.
using CzynStringW = zyn::BasicString<WCHAR>;
