// SPDX-License-Identifier: MIT
#include "zynplatform/criticalsection.h"

#include <atomic>

namespace {

constexpr std::int32_t stateFree = 0;
constexpr std::int32_t stateHeld = 1;
constexpr std::int32_t stateAwaited = 2;

// Its address tells the thread apart from every other living one. In this model it is found without a call;
// one byte finds room also when the library is loaded late.
[[gnu::tls_model("initial-exec")]] constinit thread_local char threadMark = 0;

} // namespace

namespace zynplatform {

void InitializeCriticalSection(_RTL_CRITICAL_SECTION* section) {
    *section = {};
}

void EnterCriticalSection(_RTL_CRITICAL_SECTION* section) {
    // Only this thread ever stores its own mark, so finding it is proof without any ordering.
    std::atomic_ref<const void*> owner(section->owner);
    if (owner.load(std::memory_order_relaxed) == &threadMark) {
        ++section->recursion;
        return;
    }

    std::atomic_ref<std::int32_t> lock(section->lock);
    std::int32_t found = stateFree;
    if (!lock.compare_exchange_strong(found, stateHeld, std::memory_order_acquire)) {
        // A thread that had to wait takes the section as "awaited": others may still be asleep.
        while (lock.exchange(stateAwaited, std::memory_order_acquire) != stateFree)
            lock.wait(stateAwaited);
    }
    owner.store(&threadMark, std::memory_order_relaxed);
    section->recursion = 1;
}

void LeaveCriticalSection(_RTL_CRITICAL_SECTION* section) {
    std::atomic_ref<const void*> owner(section->owner);
    if (owner.load(std::memory_order_relaxed) != &threadMark || --section->recursion > 0) return;
    owner.store(nullptr, std::memory_order_relaxed);
    // Sequentially consistent: the look for sleepers that notify_one begins with must not move before it.
    std::atomic_ref<std::int32_t> lock(section->lock);
    if (lock.exchange(stateFree) == stateAwaited) lock.notify_one();
}

// The owner is null too where a thread was between taking the section and saying so.
bool ResetInForkedChild(_RTL_CRITICAL_SECTION* section) {
    if (section->lock == stateFree || section->owner == &threadMark) return false;
    *section = {};
    return true;
}

void DeleteCriticalSection(_RTL_CRITICAL_SECTION* section) {
    *section = {};
}

} // namespace zynplatform
