// SPDX-License-Identifier: MIT
#pragma once

// The test program's operator new can be made to fail: linking failing_new.cpp replaces the global operators
// new and delete; nothing fails until an object of this class lives, and then on the thread that made it, one
// object a thread at a time. Test assertions allocate too. An operation is tried with n from 1 on until there
// are no Failures.
class FailingNew {
public:
    enum Kind { once, onwards }; // only the n-th allocation, or all from the n-th on

    explicit FailingNew(long nth, Kind kind = once);
    ~FailingNew();
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;

    // Allocations refused so far.
    long Failures() const;
};
