// SPDX-License-Identifier: MIT
#include "zynplatform/savelock.h"

#include "zynplatform/descriptor_impl.h"
#include "zynplatform/paths.h"
#include "zynplatform/patience_impl.h"
#include "zynplatform/sharelock.h"

#include <ctime>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace zynplatform {

namespace {

std::uint32_t WaitForTurn(int descriptor, Turn turn, bool isAlone, Patience& patience) {
    if (TakeTurn(descriptor, turn, isAlone)) return 0;
    BeginWaiting(descriptor, !isAlone);
    bool isTaken = false;
    while (!isTaken && patience.Wait())
        isTaken = TakeTurn(descriptor, turn, isAlone);
    EndWaiting(descriptor);
    return isTaken ? 0 : errorSharingViolation;
}

// Opens the file that has the name once the turn is had.
std::uint32_t OpenInTurn(const std::string& name, int flags, Turn turn, unsigned limit, FileHandle& handle) {
    for (Patience patience(limit);;) {
        UniqueDescriptor descriptor(Uninterrupted(
            [&] { return open(name.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666); }));
        struct stat opened, named;
        if (!descriptor || fstat(descriptor.Get(), &opened) != 0) return LastError();
        const bool isAlone = (flags & O_ACCMODE) != O_RDONLY;
        if (S_ISREG(opened.st_mode))
            if (const std::uint32_t error = WaitForTurn(descriptor.Get(), turn, isAlone, patience))
                return error;
        if (stat(name.c_str(), &named) == 0 && IsSameFile(opened, named)) {
            handle = HandleOf(descriptor.Release());
            return 0;
        }
        ReleaseLocks(descriptor.Get());
        if (!patience.Wait()) return errorSharingViolation;
    }
}

void CloseHeld(FileHandle& handle) {
    if (handle != noFile) CloseFile(std::exchange(handle, noFile));
}

} // namespace

std::uint32_t SaveLock::Take(const char* name, unsigned limitMilliseconds, bool create) {
    Release();
    return OpenInTurn(ToNativePath(name), O_WRONLY | (create ? O_CREAT : 0), Turn::saving, limitMilliseconds,
                      m_handle);
}

void SaveLock::Release() {
    if (m_handle == noFile) return;
    const bool isWaitedFor = !IsInherited(m_handle) && IsWaitedFor(Descriptor(m_handle));
    CloseHeld(m_handle);
    // Whoever saves again and again would have the lock back before a waiting process is awake.
    const timespec pause{0, 1'000'000};
    if (isWaitedFor) nanosleep(&pause, nullptr);
}

std::uint32_t SaveLock::BeginWriting(unsigned limitMilliseconds) {
    Patience patience(limitMilliseconds);
    return m_handle == noFile || !IsPlainFile(m_handle)
               ? 0
               : WaitForTurn(Descriptor(m_handle), Turn::text, true, patience);
}

void SaveLock::EndWriting() {
    if (m_handle != noFile && !IsInherited(m_handle)) ReleaseTurn(Descriptor(m_handle), Turn::text);
}

bool SaveLock::IsWritable() const {
    return m_handle != noFile && !IsWritingDenied(Descriptor(m_handle));
}

LoadLock::~LoadLock() {
    CloseHeld(m_handle);
}

std::uint32_t LoadLock::Take(const char* name, unsigned limitMilliseconds) {
    const std::string nativeName = ToNativePath(name);
    struct stat status;
    if (stat(nativeName.c_str(), &status) != 0) return LastError();
    if (!S_ISREG(status.st_mode)) return 0; // opening it might be noticed
    return OpenInTurn(nativeName, O_RDONLY, Turn::text, limitMilliseconds, m_handle);
}

bool LoadLock::IsWritable(const char* name) const {
    return (m_handle == noFile || !IsWritingDenied(Descriptor(m_handle))) &&
           faccessat(AT_FDCWD, ToNativePath(name).c_str(), W_OK, AT_EACCESS) == 0;
}

} // namespace zynplatform
