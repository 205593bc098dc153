// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"
#include "zynplatform/file.h"

#include <cstdint>

// Who saves a file, and who reads it meanwhile: for those who wait for each other instead of being refused.
// The share modes of file.h have nothing to do with it. Where the file system has no locks, everybody gets
// them.
//
// A lock is released by its owner, by the end of the owner's process, and not by a child that was forked
// meanwhile. It is on the file, not on the name: once a save has put another file under the name, whoever
// waited gets the lock of that one. Taking one gives 0; error 32 when the limit of the wait is over; or why
// the file cannot be opened.

namespace zynplatform {

// How long a save waits for another one, and a load and a save for each other.
inline constexpr unsigned saveLockLimit = 1000; // milliseconds

// One saver of a file at a time, in this process and others. Whoever saves a file, or reads it in order to
// save it, holds its lock meanwhile; others may read it but while it is written.
class ZYN_API SaveLock {
public:
    SaveLock() = default;
    ~SaveLock() { Release(); }
    SaveLock(const SaveLock&) = delete;
    SaveLock& operator=(const SaveLock&) = delete;

    // With `create` a missing file is made.
    std::uint32_t Take(const char* name, unsigned limitMilliseconds, bool create);
    void Release();

    // Waits for those who read the file, and keeps others from it until the end of that.
    std::uint32_t BeginWriting(unsigned limitMilliseconds);
    void EndWriting();

    // Whether the file would open for writing now: the lock is held, and no other open denies that.
    bool IsWritable() const;

private:
    FileHandle m_handle = noFile;
};

// Keeps a file from being written by a saver, for those who load it.
class ZYN_API LoadLock {
public:
    LoadLock() = default;
    ~LoadLock();
    LoadLock(const LoadLock&) = delete;
    LoadLock& operator=(const LoadLock&) = delete;

    // Of a pipe or a device there is none: 0.
    std::uint32_t Take(const char* name, unsigned limitMilliseconds);

    // Whether the file would open for writing that denies nobody anything. It is not opened for writing, so
    // that nobody who watches it is told of a change.
    bool IsWritable(const char* name) const;

private:
    FileHandle m_handle = noFile;
};

} // namespace zynplatform
