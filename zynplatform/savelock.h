#pragma once

#include "zynplatform/export.h"
#include "zynplatform/file.h"

#include <cstdint>

namespace zynplatform {

// One saver of a file at a time, in this process and others. Whoever saves a file, or reads it in order to
// save it, holds its lock meanwhile; reading and the share modes have nothing to do with it. Where the file
// system has no locks, everybody gets it.
//
// The lock is released by its owner, by the end of the owner's process, and not by a child that was forked
// meanwhile. It is on the file, not on the name: once a save has put another file under the name, whoever
// waited gets the lock of that one.
class ZYN_API SaveLock {
public:
    SaveLock() = default;
    ~SaveLock() { Release(); }
    SaveLock(const SaveLock&) = delete;
    SaveLock& operator=(const SaveLock&) = delete;

    // Takes the lock of the file that has the name now, and waits for it up to a limit; with `create` a
    // missing file is made. 0; error 32 when the limit is over; or why the file cannot be opened for writing.
    std::uint32_t Take(const char* name, unsigned limitMilliseconds, bool create);
    bool IsHeld() const { return m_handle != noFile; }
    // Whether the file, whose lock is held, would open for writing now: no other open denies that.
    bool IsWritable() const;
    void Release();

private:
    FileHandle m_handle = noFile;
};

// Whether somebody holds the lock of a file now; he may also have the file open so that nobody else may.
ZYN_API bool IsBeingSaved(const char* name);

// How long a save waits for another one.
inline constexpr unsigned saveLockLimit = 1000; // milliseconds

} // namespace zynplatform
