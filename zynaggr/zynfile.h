// SPDX-License-Identifier: MIT
#pragma once

#include "zynhost/cfile.h"
#include "zynhost/cstring.h"
#include "zynplatform/export.h"
#include "zynplatform/stream.h"

#include <cstdint>
#include <memory>

// A file with a buffer, opened with a share mode, and helpers for files by name.
//
//     CzynFile file;
//     CFileException error;
//     if (!file.Open("prices\\today.txt", CFile::typeText | CFile::shareDenyWrite, &error)) ...
//     for (CStringA line; file.ReadString(line);) ...
//
// Names are paths with backslashes in code page 1251; a name that begins with '/' is a native path. Failures
// come back as false, 0, null or -1; nothing throws but running out of memory. Positions and lengths are 64
// bits wide.
//
// Two opens conflict exactly when one does what the other denies, in one process or in two; the later one
// fails with error 32 and changes nothing, also when it would have emptied the file. The share modes bind
// users of this library, not other programs. Files are never inherited by other programs that the process
// starts.
//
// An object is for one thread at a time.
class ZYN_API CzynFile {
public:
    // The handle of no file.
    static const zynplatform::FileHandle hFileNull;

    CzynFile() = default;
    virtual ~CzynFile();
    // A copy refers to the same stream, position included; closing either closes it for both. Left to
    // themselves, the last of them closes it.
    CzynFile(const CzynFile&) = default;
    CzynFile& operator=(const CzynFile&) = default;

    // Whether Open succeeded and no Close came since.
    bool IsFileOpen() const { return m_pStream && m_pStream->IsOpen(); }

    // Opens by flags of CFile::OpenFlags; flags 0 read, share with everybody, binary. 1 on success; 0 on
    // failure, and `error`, which may be null, says why.
    //
    //   0x1000  create: empties the file, with 0x2000 it appends instead. Without it, 0x0001 appends too (and
    //           makes a missing file), anything else opens an existing file
    //   0x0002  both reading and writing of an existing file; creating without 0x0001 allows both as well
    //   0x4000  text: CR LF is read as LF, LF is written as CR LF
    //
    // Close first: the share mode of a stream that is still open counts against this open, and the stream is
    // left behind afterwards, whether this succeeds or not.
    int Open(const char* name, unsigned int flags, CFileException* error);

    virtual bool Flush(); // false only when no file is open
    // False when no file is open or something written earlier did not reach the file; closed afterwards in
    // any case.
    virtual bool Close();
    // `from`: 0 begin, 1 current position, 2 end. The new position; all ones when the seek fails; 0 when
    // `from` is none of these or no file is open.
    virtual std::uint64_t Seek(std::int64_t offset, unsigned int from);
    virtual std::int64_t GetPosition() const; // -1 on failure
    // Cuts or extends (with zero bytes) the file and moves to its end.
    virtual bool SetLength(std::uint64_t length);
    virtual std::int64_t GetLength() const; // -1 on failure
    // True when all bytes were taken. A full disk may show only at Close.
    virtual bool Write(const void* buffer, unsigned int count);
    // The number of bytes read, 0 at the end; all ones when no file is open or `buffer` is null.
    virtual unsigned int Read(void* buffer, unsigned int count);

    // SeekToEnd returns what Seek does.
    void SeekToBegin();
    std::uint64_t SeekToEnd();

    // Reads a line of at most size - 1 bytes with its line feed; null at the end. A size of 1 reads nothing.
    char* ReadString(char* buffer, unsigned int size);
    // Reads a line of any length and drops its line feed; false, with `line` empty, at the end.
    bool ReadString(CStringA& line);
    // Writes the text as it is, without a line end.
    bool WriteString(const char* text);

    // Each returns false for a null or empty name.

    static bool Rename(const char* from, const char* to); // or move; an existing `to` makes it fail
    static bool Remove(const char* name);                 // a file, not a folder
    static bool CreateFolder(const char* path);           // one folder; true also when it exists already
    static bool IsFileExist(const char* name);            // a file or a folder
    static bool IsFileAttrAllowWrite(const char* name);
    // Copies content, and with `copySecurity` who may do what with the file: permission bits and access list.
    // Without it a new file gets the source's permission bits, less what the process's mask takes. A failure
    // in copying the rights shows a warning and leaves the copy in place.
    static bool CopyFile(const char* from, const char* to, bool failIfExists, bool copySecurity);
    // Keeps up to `count` (at least 1) copies of the file: the newest in `name`.bak, older ones in
    // `name`.01.bak and so on. Each takes its name in one step, in place of what had it, and has the file's
    // owner, group and rights, or fewer rights where those cannot be given. When the copy cannot be made
    // beside the file it is made in the temporary folder, and the older ones are looked for there; in \tmp
    // when there is no such folder, readable for its owner only. Savers of the file are waited for, for a
    // second. False when there is no file or no copy could be made.
    static bool CreateBackupFile(const char* name, int count);
    // Replaces, in place, what a file name may not hold: '"' by an apostrophe, '*' by 'x', '?' and slashes by
    // '_', other such bytes by '~'.
    static void NormalizeFileName(CStringA& name);

protected:
    std::shared_ptr<zynplatform::Stream> m_pStream;
};
