// SPDX-License-Identifier: MIT
#include "zynplatform/descriptor_impl.h"

#include "zynplatform/fork.h"

#include <csignal>
#include <ctime>
#include <memory>
#include <sys/sendfile.h>
#include <unistd.h>

namespace zynplatform {

namespace {

// A handle has room for a descriptor of 32 bits where it is wide, and of 20 bits, a million of them, else.
constexpr int descriptorBits = sizeof(FileHandle) > 4 ? 32 : 20;
constexpr FileHandle forksKept = (FileHandle{1} << 10) - 1;

FileHandle ForkMark() {
    return (static_cast<FileHandle>(ForkCount()) & forksKept) << descriptorBits;
}

constexpr int writeSignals[] = {SIGXFSZ, SIGPIPE};

} // namespace

int Descriptor(FileHandle handle) {
    return static_cast<int>(handle & ((FileHandle{1} << descriptorBits) - 1));
}

FileHandle HandleOf(int descriptor) {
    return ForkMark() | descriptor;
}

bool IsInherited(FileHandle handle) {
    return handle - Descriptor(handle) != ForkMark();
}

std::uint32_t UniqueDescriptor::Close() {
    if (m_descriptor < 0) return 0;
    // Not retried when interrupted: the descriptor is gone all the same.
    return close(Release()) == 0 || errno == EINTR ? 0 : LastError();
}

WriteSignalGuard::WriteSignalGuard() {
    sigset_t wanted, before;
    sigemptyset(&wanted);
    for (const int signal : writeSignals)
        sigaddset(&wanted, signal);
    if (pthread_sigmask(SIG_BLOCK, &wanted, &before) != 0) return;
    for (const int signal : writeSignals)
        if (!sigismember(&before, signal)) m_blocked |= 1u << signal;
}

WriteSignalGuard::~WriteSignalGuard() {
    const int error = errno;
    sigset_t blocked;
    sigemptyset(&blocked);
    for (const int signal : writeSignals)
        if (m_blocked & 1u << signal) sigaddset(&blocked, signal);
    const timespec now{0, 0};
    if (error == EFBIG || error == EPIPE)
        while (sigtimedwait(&blocked, nullptr, &now) > 0) {
        }
    pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr);
    errno = error;
}

// The system copies between descriptors by itself; what it cannot copy that way goes through a buffer.
std::uint32_t CopyBytes(FileHandle from, FileHandle to) {
    const WriteSignalGuard noSignals;
    for (;;) {
        const ssize_t part = sendfile(Descriptor(to), Descriptor(from), nullptr, std::size_t{1} << 30);
        if (part == 0) return 0;
        if (part > 0 || errno == EINTR) continue;
        if (errno != EINVAL && errno != ENOSYS) return LastError();
        break;
    }
    constexpr std::size_t size = std::size_t{64} * 1024;
    const std::unique_ptr<char[]> buffer(new char[size]);
    for (std::size_t done = size; done == size;) {
        if (const std::uint32_t error = ReadFile(from, buffer.get(), size, done)) return error;
        if (const std::uint32_t error = WriteFile(to, buffer.get(), done)) return error;
    }
    return 0;
}

} // namespace zynplatform
