// SPDX-License-Identifier: MIT
#pragma once

#include <malloc.h>

// For a benchmark, and what it is compared with, that goes through much memory: what was freed is used again.
// Left to itself the allocator gives it back to the system or not by a few bytes of difference, and the time
// goes into fresh pages.
inline bool KeepMemory() {
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    return true;
}
