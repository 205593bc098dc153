// SPDX-License-Identifier: MIT
#include "faults/failing_calls.h"

#include <cerrno>
#include <csignal>
#include <dlfcn.h>
#include <unistd.h>

namespace {

int callsLeft = 0;
FailingCall::Kind wanted;
const char* failed = nullptr;

// Of a call. Those that can't be interrupted never wait, or close, which is over all the same.
enum Traits { none = 0, needsRoom = 1, canBeInterrupted = 2, hasLength = 4 };

// Whether this call goes wrong; errno is set then. Otherwise `length` may have become shorter, if it has one.
bool Fails(const char* name, int traits, long* length = nullptr) {
    const bool isDiskFull = failed && wanted == FailingCall::noSpace;
    if (!isDiskFull && (callsLeft == 0 || --callsLeft != 0)) return false;
    if (!failed) failed = name;
    switch (wanted) {
    case FailingCall::kill:
        raise(SIGKILL);
        return true;
    case FailingCall::shorten:
        if ((traits & hasLength) != 0 && *length > 1) *length /= 2;
        return false;
    case FailingCall::interrupt:
        errno = EINTR;
        return (traits & canBeInterrupted) != 0;
    case FailingCall::noSpace:
        errno = ENOSPC;
        return (traits & needsRoom) != 0;
    case FailingCall::ioError:
        errno = EIO;
        return true;
    }
    return false;
}

// Each of the calls takes words, and leaves those alone that it doesn't take.
using Call = long long(long, long, long, long, long, long);

Call* Real(const char* name) {
    return reinterpret_cast<Call*>(dlsym(RTLD_NEXT, name));
}

} // namespace

FailingCall::FailingCall(int nth, Kind kind) {
    wanted = kind;
    failed = nullptr;
    callsLeft = nth;
}

FailingCall::~FailingCall() {
    callsLeft = 0;
    if (wanted == noSpace) wanted = ioError;
}

const char* FailingCall::Name() {
    return failed ? failed : "";
}

#define PASSED_ON(name, traits)                                                                              \
    extern "C" long long Passed_##name(long, long, long, long, long, long) __asm__(#name);                   \
    long long Passed_##name(long a, long b, long c, long d, long e, long f) {                                \
        static Call* const real = Real(#name);                                                               \
        return Fails(#name, traits, &c) ? -1 : real(a, b, c, d, e, f);                                       \
    }

PASSED_ON(faccessat, none)
PASSED_ON(fallocate64, needsRoom | canBeInterrupted)
PASSED_ON(fchmod, none)
PASSED_ON(fchown, none)
PASSED_ON(fcntl64, none)
PASSED_ON(fgetxattr, none)
PASSED_ON(flistxattr, none)
PASSED_ON(flock, canBeInterrupted)
PASSED_ON(fstat64, none)
PASSED_ON(fstatat64, none)
PASSED_ON(fsync, needsRoom | canBeInterrupted)
PASSED_ON(ftruncate64, canBeInterrupted)
PASSED_ON(linkat, needsRoom)
PASSED_ON(lseek64, none)
PASSED_ON(open64, needsRoom | canBeInterrupted)
PASSED_ON(openat64, needsRoom | canBeInterrupted)
PASSED_ON(read, canBeInterrupted | hasLength)
PASSED_ON(readlink, none)
PASSED_ON(rename, none)
PASSED_ON(renameat, none)
PASSED_ON(sendfile64, needsRoom | canBeInterrupted)
PASSED_ON(stat64, none)
PASSED_ON(unlink, none)
PASSED_ON(unlinkat, none)
PASSED_ON(write, needsRoom | canBeInterrupted | hasLength)

// Closed it is in any case.
extern "C" int close(int file) {
    static Call* const real = Real("close");
    const bool fails = Fails("close", none);
    const int error = errno, result = static_cast<int>(real(file, 0, 0, 0, 0, 0));
    if (fails) errno = error;
    return fails ? -1 : result;
}
