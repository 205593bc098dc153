// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <cstddef>
#include <cstdint>

// Open files: everything above reads and writes through these calls.
//
// Names are library paths (see paths.h). Results are system error numbers (see syserror.h), 0 for success.
// Interrupted calls and short transfers are retried here and nowhere else, and a failing write raises no
// signal. A handle is for one thread at a time.
//
// Share modes. Every open says what it does (reads, writes) and what it denies others meanwhile. Two opens
// conflict, in one process or in two, exactly when one does what the other denies; the one that comes second
// gets error 32 and has changed nothing: a file is truncated only once that is decided. The modes bind all
// who open files through this header and nobody else. They last until the handle is closed, whatever other
// handles on the file do, and need no right that the open itself does not need. A child of fork that closes
// a handle it has inherited does not end them. On a file system without locks there are no share modes.

namespace zynplatform {

// An open file; noFile is none.
using FileHandle = std::intptr_t;
inline constexpr FileHandle noFile = -1;

// Bits for OpenMode.
enum FileAccess : unsigned { accessNone = 0, accessRead = 1, accessWrite = 2 };

// How to open.
struct OpenMode {
    unsigned access = accessRead; // FileAccess bits: what this open does
    unsigned deny = accessNone;   // FileAccess bits: what others may not do meanwhile
    bool create = false;          // make the file when it is missing
    bool mustBeNew = false;       // with create: fail when it is not missing
    bool truncate = false;        // empty it when it is not; takes the right to write, whatever the access
    bool append = false;          // every write goes to the end, wherever the position is
    unsigned permissions = 0666;  // of a file that is made, less what the process's mask takes
};

// A folder does not open (error 5). Opening a pipe does not wait for its other end, reading from it does.
// What is open is the file that had the name when its share mode was taken, also when another one has just
// taken its place. Handles are not inherited by other programs that this process starts.
ZYN_API std::uint32_t OpenFile(const char* name, const OpenMode& mode, FileHandle& handle);
// The handle is closed also when an error, such as a late write error, is reported.
ZYN_API std::uint32_t CloseFile(FileHandle handle);

// Reads up to `count` bytes; fewer only at the end of the file or on an error.
ZYN_API std::uint32_t ReadFile(FileHandle handle, void* buffer, std::size_t count, std::size_t& done);
// Writes all of them or reports an error; how much arrived before the error is not told.
ZYN_API std::uint32_t WriteFile(FileHandle handle, const void* buffer, std::size_t count);

// Where an offset counts from.
enum class SeekFrom { begin, current, end };

// The new position, or -1 with nothing moved.
ZYN_API std::int64_t SeekFile(FileHandle handle, std::int64_t offset, SeekFrom from);
// The length, or -1.
ZYN_API std::int64_t GetFileLength(FileHandle handle);
// Cuts or extends (with zero bytes); the position stays.
ZYN_API std::uint32_t SetFileLength(FileHandle handle, std::int64_t length);
// Whether it is a plain file: not a pipe or a device, which have no length and no position.
ZYN_API bool IsPlainFile(FileHandle handle);

} // namespace zynplatform
