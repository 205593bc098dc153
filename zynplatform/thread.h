// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <cstdint>

namespace zynplatform {

// The kernel's id of the calling thread. Once a thread has ended, its id may be given to a new one. The child
// of a fork has an id of its own.
ZYN_API std::uint32_t CurrentThreadId();

// Replaces the ids, for a test that needs certain ones; null restores the kernel's. The function is called
// from every thread that asks for its id.
ZYN_API void SetThreadIdSource(std::uint32_t (*source)());

// Tells a thread apart from every other one, also from a later thread of the same id, and knows when it has
// ended: when nothing of it runs any more, neither its function nor the destructors of what it kept, and
// before whoever joins it goes on. Plain data: copies refer to the same thread, and nothing is kept in the
// thread itself. Safe from any thread.
//
// In the child of a fork, handles refer to threads of the parent, which have ended here. The thread that
// forked is current in its handles there too; other threads see it in one that it opens in the child.
class ZYN_API ThreadHandle {
public:
    // A handle on the calling thread.
    static ThreadHandle OpenCurrent();

    bool IsCurrent() const; // the calling thread is the one that was opened
    // Whether the thread has ended, see above. While its id is that of another thread of this process that
    // does not ask, this is not noticed.
    bool IsEnded() const;

private:
    ThreadHandle() = default;

    std::uint64_t m_number = 0; // among all threads opened
    std::uint32_t m_id = 0;     // the kernel's
    bool m_hasLockList = false; // the kernel knows its robust locks
};

} // namespace zynplatform
