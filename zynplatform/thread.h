#pragma once

#include "zynplatform/export.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>

namespace zynplatform {

// The kernel's id of the calling thread. Once a thread has ended, its id may be given to a new one. Asked for
// once in a thread's life: in a forked child the forking thread keeps the id that it had.
ZYN_API std::uint32_t CurrentThreadId();

// Replaces the ids, for a test that needs certain ones; null restores the kernel's. The function is called
// from every thread that asks for its id.
ZYN_API void SetThreadIdSource(std::uint32_t (*source)());

// Tells a thread apart from every other one, also from a later thread of the same id, and knows when it has
// ended: that is when all its thread-local objects are destroyed. Copies refer to the same thread. Safe from
// any thread.
class ZYN_API ThreadHandle {
public:
    // A handle on the calling thread.
    static ThreadHandle OpenCurrent();

    bool IsCurrent() const; // the calling thread is the one that was opened
    // Whether the thread has ended, see above.
    bool IsEnded() const { return m_ended->load(std::memory_order_acquire); }

private:
    using Flag = std::atomic<bool>;

    explicit ThreadHandle(std::shared_ptr<const Flag> ended) : m_ended(std::move(ended)) {}

    std::shared_ptr<const Flag> m_ended; // one flag for each thread
};

} // namespace zynplatform
