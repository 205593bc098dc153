// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

// What a fork does to a library with locks. The child has one thread, a copy of the one that forked. A lock
// that some other thread held at that moment is held in the child too, by nobody, and what it guards may have
// been caught in the middle of a change.
//
// One registration with the system stands behind all of this. No lock is taken before a fork but the one of
// ForkGuard, so that a fork never waits for a host's callback, a terminal or a file.

namespace zynplatform {

// Puts a unit's state right in the child of every fork: opens its locks (ResetInForkedChild of
// criticalsection.h), and leaves alone or replaces what they guarded. A static object:
//
//     const AtFork atFork([] { lock.ResetInForkedChild(); });
//
// The function runs before fork returns in the child, when the library's code may use all services of the
// lower storeys but those of units that register too: their order is not settled. It may allocate. Nothing
// undoes the registration, the object must last as long as the library.
class AtFork {
public:
    explicit AtFork(void (*inChild)());
    AtFork(const AtFork&) = delete;
    AtFork& operator=(const AtFork&) = delete;

    // In the child, by the system.
    static void RunInChild();

private:
    void (*m_inChild)();
    const AtFork* m_next;
};

// While one of these lives, in whatever thread, a fork waits: for a few instructions after which alone a
// child could use the state again, and for calls to the C library that take a lock of which it doesn't open
// the child's copy. May be nested. Nothing inside may wait for another thread or call the host.
class ForkGuard {
public:
    ForkGuard();
    ~ForkGuard();
    ForkGuard(const ForkGuard&) = delete;
    ForkGuard& operator=(const ForkGuard&) = delete;
};

// How many forks lie between the process that loaded the library and this one. Whoever keeps an id of the
// process or of a thread, or owns something that a child must not take for its own, keeps this number beside
// it. Already counted when the functions above run.
std::uint32_t ForkCount();

} // namespace zynplatform
