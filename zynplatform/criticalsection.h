// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <cstdint>

// The system's critical section: a lock that the thread holding it may enter again, and that opens when it
// has left as often as it entered. Waiting threads sleep; entering a free section is one compare-exchange.
//
// It is plain data. A zero-filled section is free and usable even if InitializeCriticalSection was never
// called, so a static one works before any constructor has run. It must not be moved or copied while somebody
// holds it or waits for it. The fields belong to the functions below.
struct _RTL_CRITICAL_SECTION { // NOLINT(bugprone-reserved-identifier): the system's name for it
    std::int32_t lock;         // 0 free, 1 held, 2 held and possibly waited for
    std::int32_t recursion;    // how often the owner has entered; its alone
    const void* owner;         // mark of the thread that holds it, or null
};

namespace zynplatform {

// Makes the section a free one, whatever its memory held. Not for a section that is in use.
ZYN_API void InitializeCriticalSection(_RTL_CRITICAL_SECTION* section);

// Waits until the section is free or already the calling thread's.
ZYN_API void EnterCriticalSection(_RTL_CRITICAL_SECTION* section);

// Undoes one Enter. Does nothing in a thread that does not hold the section.
ZYN_API void LeaveCriticalSection(_RTL_CRITICAL_SECTION* section);

// In the child of a fork: makes the section a free one if another thread held it when the process forked;
// that thread isn't here to leave it. True if so: what the section guards may then be half changed. Only
// while the child has no second thread.
ZYN_API bool ResetInForkedChild(_RTL_CRITICAL_SECTION* section);

// Ends the use of a section that nobody holds; it stays a free one, and there is nothing to release.
ZYN_API void DeleteCriticalSection(_RTL_CRITICAL_SECTION* section);

} // namespace zynplatform
