// SPDX-License-Identifier: MIT
#include "zynhost/cfile.h"

#include "zynplatform/paths.h"
#include "zynplatform/syserror.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

using zynplatform::accessNone;
using zynplatform::accessRead;
using zynplatform::accessWrite;

unsigned DeniedBy(unsigned flags) {
    switch (flags & 0x70) {
    case CFile::shareDenyWrite:
        return accessWrite;
    case CFile::shareDenyRead:
        return accessRead;
    case CFile::shareDenyNone:
        return accessNone;
    default:
        return accessRead | accessWrite;
    }
}

unsigned AccessOf(unsigned flags) {
    switch (flags & 0x03) {
    case CFile::modeRead:
        return accessRead;
    case CFile::modeWrite:
        return accessWrite;
    default:
        return accessRead | accessWrite;
    }
}

struct CauseCodes {
    CFileException::Cause cause;
    std::uint32_t codes[20]; // zeros fill the rest
};

// clang-format off
constexpr CauseCodes causes[] = {
    {CFileException::fileNotFound,     {2, 6, 18, 107}},
    {CFileException::badPath,          {3, 15, 17, 34, 52, 53, 55, 67, 70, 85, 111, 123, 124, 125, 144, 154, 161, 206, 208, 267}},
    {CFileException::tooManyOpenFiles, {4, 36, 68, 113}},
    {CFileException::accessDenied,     {5, 12, 19, 29, 54, 58, 64, 65, 71, 80, 82, 86, 170, 183, 999}},
    {CFileException::invalidFile,      {11, 26, 60, 66, 114, 182, 191, 193}},
    {CFileException::removeCurrentDir, {16, 145}},
    {CFileException::directoryFull,    {62}},
    {CFileException::badSeek,          {24, 25, 27, 30, 131, 132}},
    {CFileException::hardIO,           {20, 21, 22, 23, 57, 59, 88, 117, 995, 996, 997}},
    {CFileException::sharingViolation, {32}},
    {CFileException::lockViolation,    {33, 108, 167}},
    {CFileException::diskFull,         {39, 112}},
    {CFileException::endOfFile,        {38}},
};
// clang-format on

} // namespace

CFileException::Cause CFileException::OsErrorToException(std::uint32_t osError) {
    if (osError == 0) return none;
    for (const CauseCodes& row : causes)
        if (std::find(std::begin(row.codes), std::end(row.codes), osError) != std::end(row.codes))
            return row.cause;
    return genericException;
}

void CFileException::SetOsError(std::uint32_t osError) {
    m_lOsError = static_cast<std::int32_t>(osError);
    m_cause = OsErrorToException(osError);
}

bool CFileException::GetErrorMessage(char* text, unsigned size) const {
    if (!text || size == 0) return false;
    CStringA message(m_lOsError > 0 ? zynplatform::DescribeSystemError(static_cast<std::uint32_t>(m_lOsError))
                                    : "");
    if (message.IsEmpty()) message.Format("%i", m_lOsError);
    const std::size_t length = std::min<std::size_t>(message.View().size(), size - 1);
    std::memcpy(text, message.GetString(), length);
    text[length] = 0;
    return true;
}

CFile::~CFile() {
    Close();
}

zynplatform::OpenMode CFile::ModeOf(unsigned flags) {
    const bool create = (flags & modeCreate) != 0;
    return {.access = AccessOf(flags),
            .deny = DeniedBy(flags),
            .create = create,
            .truncate = create && !(flags & modeNoTruncate)};
}

int CFile::Open(const char* name, unsigned flags, CFileException* error) {
    Close();
    const std::uint32_t result = zynplatform::OpenFile(name ? name : "", ModeOf(flags), m_hFile);
    if (error) {
        error->m_strFileName = name;
        error->SetOsError(result);
    }
    return result == 0 ? 1 : 0;
}

bool CFile::EmptyNow() {
    return !std::exchange(m_bEmptyingPutOff, false) || zynplatform::SetFileLength(m_hFile, 0) == 0;
}

bool CFile::Close() {
    const bool isEmptied = EmptyNow();
    const zynplatform::FileHandle handle = std::exchange(m_hFile, hFileNull);
    return handle != hFileNull && zynplatform::CloseFile(handle) == 0 && isEmptied;
}

std::int64_t CFile::GetLength() const {
    if (m_bEmptyingPutOff) return 0;
    return m_hFile == hFileNull ? -1 : zynplatform::GetFileLength(m_hFile);
}

bool CFile::SetLength(std::int64_t length) {
    return m_hFile != hFileNull && EmptyNow() && zynplatform::SetFileLength(m_hFile, length) == 0;
}

bool CFile::SeekToBegin() {
    return m_hFile != hFileNull && zynplatform::SeekFile(m_hFile, 0, zynplatform::SeekFrom::begin) == 0;
}

std::size_t CFile::Read(void* buffer, std::size_t count) {
    std::size_t done = 0;
    if (m_hFile != hFileNull && !m_bEmptyingPutOff) zynplatform::ReadFile(m_hFile, buffer, count, done);
    return done;
}

bool CFile::Write(const void* buffer, std::size_t count) {
    return m_hFile != hFileNull && EmptyNow() && zynplatform::WriteFile(m_hFile, buffer, count) == 0;
}
