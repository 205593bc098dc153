// SPDX-License-Identifier: MIT
#include "zynplatform/thread.h"

#include "zynplatform/fork.h"

#include <atomic>
#include <cerrno>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

// Trivial: a thread that outlives the library finds nothing of it to destroy.
constinit thread_local std::uint64_t currentNumber = 0; // 0: not opened yet
constinit thread_local std::uint32_t currentId = 0;     // 0: not asked for yet
constinit thread_local std::uint32_t forksAtId = 0;

constinit std::atomic<std::uint64_t> opened{0};

std::uint32_t SystemThreadId() {
    if (currentId == 0 || forksAtId != zynplatform::ForkCount()) {
        forksAtId = zynplatform::ForkCount();
        currentId = static_cast<std::uint32_t>(gettid());
    }
    return currentId;
}

constinit std::atomic<std::uint32_t (*)()> threadIdSource{SystemThreadId};

bool IsInThisProcess(std::uint32_t id) {
    return syscall(SYS_tgkill, getpid(), id, 0) == 0 || errno != ESRCH;
}

// The C library tells the kernel of each thread's list of robust locks when it starts. The kernel drops it
// when the thread has run its last instruction, and only then wakes whoever joins it: the id lives on for a
// moment.
bool HasLockList(std::uint32_t id) {
    const void* list = nullptr;
    std::size_t length = 0;
    return syscall(SYS_get_robust_list, id, &list, &length) == 0 && list;
}

} // namespace

namespace zynplatform {

std::uint32_t CurrentThreadId() {
    return threadIdSource.load(std::memory_order_acquire)();
}

void SetThreadIdSource(std::uint32_t (*source)()) {
    threadIdSource.store(source ? source : SystemThreadId, std::memory_order_release);
}

ThreadHandle ThreadHandle::OpenCurrent() {
    if (currentNumber == 0) currentNumber = ++opened;
    ThreadHandle handle;
    handle.m_number = currentNumber;
    handle.m_id = SystemThreadId();
    handle.m_hasLockList = HasLockList(handle.m_id);
    return handle;
}

bool ThreadHandle::IsCurrent() const {
    return m_number == currentNumber;
}

bool ThreadHandle::IsEnded() const {
    if (IsCurrent()) return false;
    return m_id == SystemThreadId() || !IsInThisProcess(m_id) || (m_hasLockList && !HasLockList(m_id));
}

} // namespace zynplatform
