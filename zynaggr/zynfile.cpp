// SPDX-License-Identifier: MIT
#include "zynaggr/zynfile.h"

#include "zynaggr/zynmessage.h"
#include "zynplatform/filesystem.h"
#include "zynplatform/syserror.h"

#include <cstring>
#include <limits>
#include <string>
#include <utility>

using zynplatform::accessRead;
using zynplatform::accessWrite;
using zynplatform::SeekFrom;
using zynplatform::Stream;

const zynplatform::FileHandle CzynFile::hFileNull = zynplatform::noFile;

namespace {

Stream::Mode ModeOf(unsigned int flags) {
    const bool create = (flags & CFile::modeCreate) != 0;
    const bool write = (flags & CFile::modeWrite) != 0;
    Stream::Mode mode;
    if (create)
        mode.start = flags & CFile::modeNoTruncate ? Stream::Start::append : Stream::Start::write;
    else
        mode.start = write ? Stream::Start::append : Stream::Start::read;
    mode.update = mode.start == Stream::Start::read ? (flags & CFile::modeReadWrite) != 0 : !write;
    mode.text = (flags & CFile::typeText) != 0;
    switch (flags & CFile::shareDenyRead) {
    case CFile::shareDenyRead:
        mode.deny = accessRead;
        break;
    case CFile::shareExclusive:
        mode.deny = accessRead | accessWrite;
        break;
    case CFile::shareDenyWrite:
        mode.deny = accessWrite;
        break;
    default:
        break;
    }
    return mode;
}

bool IsEmpty(const char* name) {
    return !name || !*name;
}

} // namespace

CzynFile::~CzynFile() = default;

int CzynFile::Open(const char* name, unsigned int flags, CFileException* error) {
    if (!name) {
        if (error) error->m_cause = CFileException::fileNotFound;
        return 0;
    }
    if (error) error->m_strFileName = name;
    auto stream = std::make_shared<Stream>();
    const std::uint32_t result = stream->Open(name, ModeOf(flags));
    m_pStream = result == 0 ? std::move(stream) : nullptr;
    if (result == 0) return 1;
    if (error) error->SetOsError(result);
    return 0;
}

bool CzynFile::Close() {
    if (!IsFileOpen()) return false;
    const bool closed = m_pStream->Close();
    m_pStream.reset();
    return closed;
}

bool CzynFile::Flush() {
    if (!IsFileOpen()) return false;
    m_pStream->Flush();
    return true;
}

unsigned int CzynFile::Read(void* buffer, unsigned int count) {
    if (!IsFileOpen() || !buffer) return std::numeric_limits<unsigned int>::max();
    return static_cast<unsigned int>(m_pStream->Read(buffer, count));
}

bool CzynFile::Write(const void* buffer, unsigned int count) {
    return IsFileOpen() && buffer && m_pStream->Write(buffer, count);
}

std::uint64_t CzynFile::Seek(std::int64_t offset, unsigned int from) {
    if (!IsFileOpen() || from > 2) return 0;
    constexpr SeekFrom origins[] = {SeekFrom::begin, SeekFrom::current, SeekFrom::end};
    return static_cast<std::uint64_t>(m_pStream->Seek(offset, origins[from]));
}

void CzynFile::SeekToBegin() {
    Seek(0, 0);
}

std::uint64_t CzynFile::SeekToEnd() {
    return Seek(0, 2);
}

std::int64_t CzynFile::GetPosition() const {
    return IsFileOpen() ? m_pStream->GetPosition() : -1;
}

std::int64_t CzynFile::GetLength() const {
    if (!IsFileOpen()) return -1;
    const std::int64_t position = m_pStream->GetPosition();
    if (position < 0) return -1;
    const std::int64_t length = m_pStream->Seek(0, SeekFrom::end);
    if (length < 0 || m_pStream->Seek(position, SeekFrom::begin) < 0) return -1;
    return length;
}

bool CzynFile::SetLength(std::uint64_t length) {
    if (!IsFileOpen() || length > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
        return false;
    const auto signedLength = static_cast<std::int64_t>(length);
    Seek(signedLength, 0);
    return m_pStream->SetLength(signedLength);
}

char* CzynFile::ReadString(char* buffer, unsigned int size) {
    if (!IsFileOpen() || !buffer || size == 0) return nullptr;
    std::string line;
    const bool ended = size == 1 ? m_pStream->AtEnd() : m_pStream->ReadLine(line, size - 1) == 0;
    if (ended) return nullptr;
    std::memcpy(buffer, line.data(), line.size());
    buffer[line.size()] = 0;
    return buffer;
}

bool CzynFile::ReadString(CStringA& line) {
    line.Empty();
    if (!IsFileOpen()) return false;
    std::string text;
    if (m_pStream->ReadLine(text, std::numeric_limits<int>::max()) == 0) return false;
    if (text.back() == '\n') text.pop_back();
    line = CStringA(std::string_view(text));
    return true;
}

bool CzynFile::WriteString(const char* text) {
    return text && Write(text, static_cast<unsigned int>(std::strlen(text)));
}

bool CzynFile::Rename(const char* from, const char* to) {
    return !IsEmpty(from) && !IsEmpty(to) && zynplatform::RenamePath(from, to) == 0;
}

bool CzynFile::Remove(const char* name) {
    return !IsEmpty(name) && zynplatform::RemoveFile(name) == 0;
}

bool CzynFile::CreateFolder(const char* path) {
    if (IsEmpty(path)) return false;
    const std::uint32_t result = zynplatform::MakeFolder(path);
    return result == 0 || result == zynplatform::errorFileExists;
}

bool CzynFile::IsFileExist(const char* name) {
    return !IsEmpty(name) && zynplatform::PathExists(name);
}

bool CzynFile::IsFileAttrAllowWrite(const char* name) {
    return !IsEmpty(name) && zynplatform::IsPathWritable(name);
}

bool CzynFile::CopyFile(const char* from, const char* to, bool failIfExists, bool copySecurity) {
    if (IsEmpty(from) || IsEmpty(to)) return false;
    const zynplatform::CopyOutcome outcome =
        zynplatform::CopyFileTo(from, to, {.failIfExists = failIfExists, .withRights = copySecurity});
    if (outcome.content != 0) return false;
    if (outcome.readingRights == 0 && outcome.settingRights == 0) return true;
    constexpr std::uint32_t warning = 48;
    zynMessageBoxConsole(outcome.readingRights != 0 ? "GetNamedSecurityInfo Error {CzynFile::CopyFile}"
                                                    : "SetNamedSecurityInfo Error {CzynFile::CopyFile}",
                         warning);
    return false;
}

void CzynFile::NormalizeFileName(CStringA& name) {
    constexpr std::string_view keptSigns = " -+_().,^~#!`'";
    const auto isKept = [&](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || byte >= 0xC0 ||
               byte == 0xA8 || byte == 0xB8 || byte == 0xB9 || keptSigns.find(c) != keptSigns.npos;
    };
    for (int i = 0; i < name.GetLength(); ++i) {
        const char c = name[i];
        if (isKept(c)) continue;
        const char replacement = c == '"'                            ? '\''
                                 : c == '*'                          ? 'x'
                                 : c == '?' || c == '\\' || c == '/' ? '_'
                                                                     : '~';
        name.SetAt(i, replacement);
    }
}
