// SPDX-License-Identifier: MIT
#pragma once

// The system calls that the library makes for files, one of which can be made to go wrong. Linking
// failing_calls.cpp puts it between the program, shared libraries included, and the system; nothing goes
// wrong until an object of this class lives.
class FailingCall {
public:
    enum Kind {
        ioError,   // it fails with EIO
        noSpace,   // it and every later one that needs room on the disk fail with ENOSPC
        interrupt, // it is interrupted (a close, which is over then, is not)
        shorten,   // it reads or writes half of what it should
        kill,      // the process dies instead
    };

    // The n-th call from now on, counted from 1.
    FailingCall(int nth, Kind kind);
    ~FailingCall();
    FailingCall(const FailingCall&) = delete;
    FailingCall& operator=(const FailingCall&) = delete;

    // What the call was; empty when there were not so many.
    static const char* Name();
};
