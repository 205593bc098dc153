// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/file.h"
#include "zynplatform/syserror.h"

#include <cerrno>
#include <sys/stat.h>
#include <utility>

// What the sources of this storey share about the system's descriptors.

namespace zynplatform {

// The error of the call that has just failed.
inline std::uint32_t LastError() {
    return SystemErrorFromErrno(errno);
}

inline bool IsSameFile(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Makes a system call again for as long as it is interrupted.
template <class Call> auto Uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

// A handle is a descriptor and, above it, how often the process had been forked when it was opened: a child
// must not release the locks of handles that it inherits, for they are its parent's.
int Descriptor(FileHandle handle);
FileHandle HandleOf(int descriptor);
bool IsInherited(FileHandle handle); // opened by the process that this one was forked from

// Closes a descriptor at the end of the scope.
class UniqueDescriptor {
public:
    explicit UniqueDescriptor(int descriptor = -1) : m_descriptor(descriptor) {}
    UniqueDescriptor(UniqueDescriptor&& other) noexcept : m_descriptor(other.Release()) {}
    UniqueDescriptor& operator=(UniqueDescriptor&& other) noexcept {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    ~UniqueDescriptor() { Close(); }

    explicit operator bool() const { return m_descriptor >= 0; }
    int Get() const { return m_descriptor; }
    int Release() { return std::exchange(m_descriptor, -1); }
    // Closes it now; an error that closing reports, such as a late write error.
    std::uint32_t Close();

private:
    int m_descriptor;
};

// Copies from the one's position to its end, to the other's position.
std::uint32_t CopyBytes(FileHandle from, FileHandle to);

// Keeps a write from ending the process: no signal comes for a file that is longer than the process may write
// or a pipe that nobody reads, only the error.
class WriteSignalGuard {
public:
    WriteSignalGuard();
    ~WriteSignalGuard();
    WriteSignalGuard(const WriteSignalGuard&) = delete;
    WriteSignalGuard& operator=(const WriteSignalGuard&) = delete;

private:
    unsigned m_blocked = 0; // bits: which of the signals this guard has blocked
};

} // namespace zynplatform
