// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <cstdint>

// How much memory the process could still use, for sizing buffers. The figures are a snapshot: other
// processes and threads change them at any moment, and nothing is reserved.

namespace zynplatform {

// Both in bytes.
struct MemoryStatus {
    std::uint64_t availablePhysical = 0; // memory that can be had without swapping
    std::uint64_t availableVirtual =
        0; // address space not yet used: of the process's limit, else of the machine
};

// False, with `status` unchanged, when the system does not tell. Safe from several threads.
ZYN_API bool GetMemoryStatus(MemoryStatus& status);

// What answers GetMemoryStatus in place of the system; null puts the system back. For tests: no other thread
// may ask meanwhile.
using MemoryStatusSource = bool (*)(MemoryStatus& status);
ZYN_API void SetMemoryStatusSource(MemoryStatusSource source);

} // namespace zynplatform
