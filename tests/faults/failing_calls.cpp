#include "faults/failing_calls.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <dlfcn.h>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

int callsLeft = 0;
FailingCall::Kind wanted;
const char* failed = nullptr;

constexpr std::string_view needRoom[] = {"open64",      "openat64", "write",     "sendfile64",
                                         "fallocate64", "linkat",   "fsetxattr", "fsync"};
// The others never wait, or close, which is over all the same.
constexpr std::string_view canBeInterrupted[] = {
    "open64", "openat64", "read", "write", "sendfile64", "fsync", "ftruncate64", "fallocate64", "flock"};

// Whether this call goes wrong; errno is set then. Otherwise `length`, when given, may have become shorter.
bool Fails(const char* name, std::size_t* length = nullptr) {
    const bool isDiskFull = failed && wanted == FailingCall::noSpace;
    if (!isDiskFull && (callsLeft == 0 || --callsLeft != 0)) return false;
    if (!failed) failed = name;
    switch (wanted) {
    case FailingCall::kill:
        raise(SIGKILL);
        return true;
    case FailingCall::shorten:
        if (length && *length > 1) *length /= 2;
        return false;
    case FailingCall::interrupt:
        errno = EINTR;
        return std::ranges::count(canBeInterrupted, name) != 0;
    case FailingCall::noSpace:
        errno = ENOSPC;
        return std::ranges::count(needRoom, name) != 0;
    case FailingCall::ioError:
        errno = EIO;
        return true;
    }
    return false;
}

template <class Function> Function* Real(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
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

bool FailingCall::Happened() {
    return failed != nullptr;
}

const char* FailingCall::Name() {
    return failed ? failed : "";
}

#define PASSED_ON(result, name, parameters, arguments)                                                       \
    extern "C" result name parameters {                                                                      \
        static const auto real = Real<result parameters>(#name);                                             \
        return Fails(#name) ? -1 : real arguments;                                                           \
    }

PASSED_ON(int, faccessat, (int folder, const char* name, int mode, int flags), (folder, name, mode, flags))
PASSED_ON(int, fallocate64, (int file, int mode, off64_t begin, off64_t length), (file, mode, begin, length))
PASSED_ON(int, fchmod, (int file, mode_t mode), (file, mode))
PASSED_ON(int, fchown, (int file, uid_t user, gid_t group), (file, user, group))
PASSED_ON(ssize_t, fgetxattr, (int file, const char* name, void* value, size_t size),
          (file, name, value, size))
PASSED_ON(ssize_t, flistxattr, (int file, char* list, size_t size), (file, list, size))
PASSED_ON(int, flock, (int file, int operation), (file, operation))
PASSED_ON(int, fstat64, (int file, struct stat64* status), (file, status))
PASSED_ON(int, fstatat64, (int folder, const char* name, struct stat64* status, int flags),
          (folder, name, status, flags))
PASSED_ON(int, ftruncate64, (int file, off64_t length), (file, length))
PASSED_ON(int, linkat, (int from, const char* old, int to, const char* name, int flags),
          (from, old, to, name, flags))
PASSED_ON(off64_t, lseek64, (int file, off64_t offset, int whence), (file, offset, whence))
PASSED_ON(ssize_t, readlink, (const char* name, char* target, size_t size), (name, target, size))
PASSED_ON(int, rename, (const char* from, const char* to), (from, to))
PASSED_ON(int, renameat, (int from, const char* old, int to, const char* name), (from, old, to, name))
PASSED_ON(ssize_t, sendfile64, (int to, int from, off64_t* offset, size_t size), (to, from, offset, size))
PASSED_ON(int, stat64, (const char* name, struct stat64* status), (name, status))
PASSED_ON(int, unlink, (const char* name), (name))
PASSED_ON(int, unlinkat, (int folder, const char* name, int flags), (folder, name, flags))

// Whether it is called counts here, not what it does for so long.
extern "C" int fsync(int) {
    return Fails("fsync") ? -1 : 0;
}

// Closed it is in any case.
extern "C" int close(int file) {
    static const auto real = Real<int(int)>("close");
    const bool fails = Fails("close");
    const int error = errno;
    const int result = real(file);
    if (!fails) return result;
    errno = error;
    return -1;
}

#define PASSED_ON_WITH_LENGTH(name, type)                                                                    \
    extern "C" ssize_t name(int file, type* buffer, size_t size) {                                           \
        static const auto real = Real<ssize_t(int, type*, size_t)>(#name);                                   \
        return Fails(#name, &size) ? -1 : real(file, buffer, size);                                          \
    }

PASSED_ON_WITH_LENGTH(read, void)
PASSED_ON_WITH_LENGTH(write, const void)

// These have one argument more now and then.
#define PASSED_ON_WITH_MORE(name, parameters, last, ...)                                                     \
    extern "C" int name parameters {                                                                         \
        static const auto real = Real<int parameters>(#name);                                                \
        std::va_list arguments;                                                                              \
        va_start(arguments, last);                                                                           \
        void* const more = va_arg(arguments, void*);                                                         \
        va_end(arguments);                                                                                   \
        return Fails(#name) ? -1 : real(__VA_ARGS__, more);                                                  \
    }

PASSED_ON_WITH_MORE(open64, (const char* name, int flags, ...), flags, name, flags)
PASSED_ON_WITH_MORE(openat64, (int folder, const char* name, int flags, ...), flags, folder, name, flags)
PASSED_ON_WITH_MORE(fcntl64, (int file, int command, ...), command, file, command)
