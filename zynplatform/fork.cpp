// SPDX-License-Identifier: MIT
#include "zynplatform/fork.h"

#include "zynplatform/criticalsection.h"

#include <atomic>

#include <pthread.h>

namespace zynplatform {
namespace {

constinit _RTL_CRITICAL_SECTION guard{};
constinit std::atomic<const AtFork*> latest{nullptr};
constinit std::atomic<std::uint32_t> forks{0};

void EnterGuard() {
    EnterCriticalSection(&guard);
}

void LeaveGuard() {
    LeaveCriticalSection(&guard);
}

// The system forgets it when the library is unloaded. Without memory for it forks go unnoticed.
[[maybe_unused]] const int registered = pthread_atfork(EnterGuard, LeaveGuard, AtFork::RunInChild);

} // namespace

AtFork::AtFork(void (*inChild)()) : m_inChild(inChild), m_next(latest) {
    latest = this; // static objects are made one at a time
}

void AtFork::RunInChild() {
    forks.fetch_add(1, std::memory_order_relaxed);
    LeaveGuard();
    for (const AtFork* unit = latest; unit; unit = unit->m_next)
        unit->m_inChild();
}

ForkGuard::ForkGuard() {
    EnterGuard();
}

ForkGuard::~ForkGuard() {
    LeaveGuard();
}

std::uint32_t ForkCount() {
    return forks.load(std::memory_order_relaxed);
}

} // namespace zynplatform
