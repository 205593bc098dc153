#pragma once

// The test program's operator new can be made to fail. Linking failing_new.cpp replaces the global operators
// new and delete; nothing fails until an object of this class lives.
//
//     for (long n = 1, failures = 1; failures > 0; ++n) {   // until the operation comes through
//         FailingNew failing(n);                            // its n-th allocation fails
//         ... operation, which reports the failure ...
//         failures = failing.Failures();
//     }
//
// Only the thread that made the object is affected, one object a thread at a time. Test assertions allocate
// too.
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
