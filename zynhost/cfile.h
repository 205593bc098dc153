// SPDX-License-Identifier: MIT
#pragma once

#include "zynhost/cstring.h"
#include "zynplatform/export.h"
#include "zynplatform/file.h"

#include <cstdint>

// Why a file could not be opened.
class ZYN_API CFileException {
public:
    // What kind of failure it is.
    enum Cause {
        none,
        genericException,
        fileNotFound,
        badPath,
        tooManyOpenFiles,
        accessDenied,
        invalidFile,
        removeCurrentDir,
        directoryFull,
        badSeek,
        hardIO,
        sharingViolation,
        lockViolation,
        diskFull,
        endOfFile,
    };

    int m_cause = none;           // a Cause
    std::int32_t m_lOsError = -1; // system error number; -1 when the system was not asked
    CStringA m_strFileName;       // as it was given

    // Records a system error number and the cause that it means.
    void SetOsError(std::uint32_t osError);
    // Copies the error's text, cut to size - 1 characters, and a zero into `text`; false when there is no
    // room at all.
    bool GetErrorMessage(char* text, unsigned size) const;

    // The cause that a system error number means.
    static Cause OsErrorToException(std::uint32_t osError);
};

// The host class library's file: an open file without a buffer of its own. An object is for one thread at a
// time.
class ZYN_API CFile {
public:
    // Open flags: one access, one share mode, any of the rest.
    enum OpenFlags : unsigned {
        modeRead = 0x0000,
        modeWrite = 0x0001,
        modeReadWrite = 0x0002,
        shareCompat = 0x0000, // no share bits: exclusive
        shareExclusive = 0x0010,
        shareDenyWrite = 0x0020,
        shareDenyRead = 0x0030,
        shareDenyNone = 0x0040,
        modeNoInherit = 0x0080, // always so here
        modeCreate = 0x1000,
        modeNoTruncate = 0x2000,
        typeText = 0x4000,
        typeBinary = 0x8000,
    };

    // The handle of no file.
    static constexpr zynplatform::FileHandle hFileNull = zynplatform::noFile;

    CFile() = default;
    virtual ~CFile(); // closes
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;

    // 1, or 0 with `error`, when given, saying why. An open file is closed first.
    int Open(const char* name, unsigned flags, CFileException* error);
    // False when no file is open or the system reports a late error; closed afterwards in any case.
    bool Close();

    // -1 on failure.
    std::int64_t GetLength() const;
    bool SetLength(std::int64_t length); // cuts or extends with zero bytes; false on failure
    bool SeekToBegin();                  // false on failure
    // The number of bytes read: fewer than asked for only at the end of the file or on an error.
    std::size_t Read(void* buffer, std::size_t count);
    // True when all bytes were written.
    bool Write(const void* buffer, std::size_t count);

    zynplatform::FileHandle m_hFile = hFileNull; // hFileNull: no file is open

protected:
    // How flags open a file.
    static zynplatform::OpenMode ModeOf(unsigned flags);
    bool EmptyNow();

    // The file was opened to be emptied, and a derived class has put that off. Every operation above behaves
    // as if it were empty already, and empties it where it must.
    bool m_bEmptyingPutOff = false;
};
