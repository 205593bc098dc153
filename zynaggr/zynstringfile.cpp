// SPDX-License-Identifier: MIT
#include "zynaggr/zynstringfile.h"

#include "zynaggr/backup_impl.h"
#include "zynaggr/filetext_impl.h"
#include "zynaggr/zyn_translate.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/replace.h"
#include "zynplatform/syserror.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <utility>

using namespace zynplatform::literals;

namespace {

constexpr std::int64_t loadLimit = 0x40000000;

bool EndsLine(unsigned char c) {
    return c == 0 || c == '\r' || c == '\n';
}

// The number of LFs in the text that have no CR before them.
std::size_t CountBareLineFeeds(std::string_view text) {
    std::size_t count = 0;
    for (std::size_t i = text.find('\n'); i != text.npos; i = text.find('\n', i + 1))
        if (i == 0 || text[i - 1] != '\r') ++count;
    return count;
}

void CopyWithCarriageReturns(std::string_view text, unsigned char* out) {
    std::size_t copied = 0;
    for (std::size_t i = text.find('\n'); i != text.npos; i = text.find('\n', i + 1)) {
        if (i != 0 && text[i - 1] == '\r') continue;
        std::memcpy(out, text.data() + copied, i - copied);
        out += i - copied;
        *out++ = '\r';
        copied = i;
    }
    std::memcpy(out, text.data() + copied, text.size() - copied);
}

} // namespace

CzynStringFile::CzynStringFile() : m_pBuffer(nullptr) {
    Reset();
}

CzynStringFile::CzynStringFile(const char* name, unsigned flags) : CzynStringFile() {
    Open(name, flags, zynEncUnknown);
}

CzynStringFile::~CzynStringFile() {
    Close();
}

void CzynStringFile::Reset() {
    FreeBuffer();
    m_bLoaded = false;
    m_bModified = false;
    m_nLoadFailure = loadDone;
    m_nFileEncoding = zynEncUnknown;
    m_nWorkEncoding = zynEncCP1251;
    m_choice = {};
    m_bKeepsOriginal = false;
}

void CzynStringFile::FreeBuffer() {
    FreeBuffer(m_pBuffer);
    m_pBuffer = nullptr;
    m_nCapacity = 0;
    m_nDataSize = 0;
    m_nPosition = 0;
    m_pOriginal.reset();
    m_nOriginalSize = m_nMarkLength = 0;
}

bool CzynStringFile::SetBufSize(unsigned size) {
    if (size == 0) {
        FreeBuffer();
        return false;
    }
    if (m_nCapacity >= size) return true;
    const std::uint32_t capacity = std::max<std::uint32_t>(size, m_nCapacity + 4096);
    auto* const buffer = new (std::nothrow) unsigned char[capacity];
    if (!buffer) return false;
    if (m_nDataSize != 0) std::memcpy(buffer, m_pBuffer, m_nDataSize);
    FreeBuffer(m_pBuffer);
    m_pBuffer = buffer;
    m_nCapacity = capacity;
    return true;
}

bool CzynStringFile::IsFileOpen() const {
    return m_hFile != hFileNull;
}

int CzynStringFile::Open(const char* name, unsigned flags, zynTextEncoding encoding) {
    if (IsFileOpen()) Close();
    flags = (flags & ~static_cast<unsigned>(typeText)) | typeBinary;
    m_nFileEncoding = encoding;
    m_sName = name;
    m_mode = ModeOf(flags);
    constexpr unsigned everything = zynplatform::accessRead | zynplatform::accessWrite;
    const bool putsOff =
        m_mode.truncate && (m_mode.access & zynplatform::accessWrite) && m_mode.deny == everything;
    CFileException error;
    const int opened = CFile::Open(name, putsOff ? flags | modeNoTruncate : flags, &error);
    m_bEmptyingPutOff = opened && putsOff;
    if (!opened) {
        char text[256];
        error.GetErrorMessage(text, sizeof text);
        m_sErrorMessage = CzynTranslate::Translate("Ошибка при открытии файла: "_cp1251);
        m_sErrorMessage += text;
    }
    return opened;
}

void CzynStringFile::Close() {
    if (IsFileOpen()) {
        if (m_bModified) Flush();
        CFile::Close();
    }
    Reset();
}

int CzynStringFile::FailLoad(LoadFailure failure) {
    m_nLoadFailure = failure;
    return 0;
}

int CzynStringFile::Load2Memory() {
    if (!IsFileOpen()) return FailLoad(loadNotRead);
    if (m_bLoaded) return 1;
    m_nLoadFailure = loadDone;
    if (!m_bModified) return LoadFile();

    // What was written comes to stand behind what is read, and is kept when there is nothing.
    std::unique_ptr<unsigned char[]> written(std::exchange(m_pBuffer, nullptr));
    const std::uint32_t size = m_nDataSize, capacity = m_nCapacity;
    const zynTextEncoding encoding = m_nFileEncoding;
    m_bModified = false;
    int result = LoadFile();
    if (m_bLoaded && SetBufSize(m_nDataSize + size + 1)) {
        std::memcpy(m_pBuffer + m_nDataSize, written.get(), size + std::size_t{1});
        m_nDataSize += size;
    } else {
        if (m_bLoaded) result = FailLoad(loadNoMemory);
        m_bLoaded = false;
        TakeBuffer(written.release(), size);
        m_nCapacity = capacity;
        m_nFileEncoding = encoding;
    }
    m_bModified = true;
    return result;
}

int CzynStringFile::LoadFile() {
    FreeBuffer();
    if (!ReadWhole()) return 0;
    if (m_nDataSize == 0) return 1;
    m_bLoaded = true;
    std::size_t markLength = 0;
    m_nFileEncoding =
        zyn::FindEncoding({reinterpret_cast<const char*>(m_pBuffer), m_nDataSize}, m_choice, markLength);
    LoadFailure failure = loadNotDecoded;
    try {
        if (ConvertLoaded(static_cast<std::uint32_t>(markLength))) {
            SeekToBegin();
            return 1;
        }
    } catch (const std::bad_alloc&) {
        failure = loadNoMemory;
    }
    Reset();
    return FailLoad(failure);
}

// Reads what the file holds into the buffer.
bool CzynStringFile::ReadWhole() {
    const bool isPlain = zynplatform::IsPlainFile(m_hFile);
    const std::int64_t length = isPlain ? GetLength() : 0;
    if (length < 0 || length >= loadLimit || (isPlain && !CFile::SeekToBegin())) return FailLoad(loadNotRead);
    if (length == 0) return m_bEmptyingPutOff || ReadToEnd();
    const auto size = static_cast<std::uint32_t>(length);
    TakeBuffer(new (std::nothrow) unsigned char[size], size);
    if (m_pBuffer && Read(m_pBuffer, size) == size) return true;
    const bool lacksMemory = !m_pBuffer;
    FreeBuffer();
    return FailLoad(lacksMemory ? loadNoMemory : loadNotRead);
}

// A pipe has no length, and some files of the system say that they have none.
bool CzynStringFile::ReadToEnd() {
    constexpr std::uint32_t least = 65536;
    for (std::size_t done = least, wanted = least; done == wanted;
         m_nDataSize += static_cast<unsigned>(done)) {
        wanted = std::max(least, m_nDataSize);
        if (m_nDataSize + wanted >= loadLimit || !SetBufSize(m_nDataSize + static_cast<unsigned>(wanted)) ||
            zynplatform::ReadFile(m_hFile, m_pBuffer + m_nDataSize, wanted, done) != 0) {
            FreeBuffer();
            return FailLoad(loadNotRead);
        }
    }
    if (m_nDataSize == 0) FreeBuffer();
    return true;
}

// Turns what was read into the 8-bit form; the file's encoding stays what the file has.
bool CzynStringFile::ConvertLoaded(std::uint32_t offset) {
    zynTextEncoding encoding = m_nFileEncoding;
    m_nMarkLength = offset;
    if (offset > 0) // the converters skip another one
        m_nMarkLength += static_cast<std::uint32_t>(
            GetBomLength(encoding, m_pBuffer + offset, static_cast<int>(m_nDataSize - offset)));
    if (m_bKeepsOriginal) m_nOriginalSize = m_nDataSize;
    const bool is32Bit = encoding == zynEncUCS4BE || encoding == zynEncUCS4LE;
    if (is32Bit && m_bKeepsOriginal) return Convert32Bit();
    if (is32Bit) {
        if (encoding == zynEncUCS4BE) BufConvert_Utf32_BE2LE(m_pBuffer, m_nDataSize);
        unsigned char* units = nullptr;
        unsigned unitsLength = 0;
        if (!BufConvert_Utf32le_to_UCS2(m_pBuffer + offset, m_nDataSize - offset, units, unitsLength))
            return false;
        TakeBuffer(units, unitsLength);
        encoding = zynEncUCS2LE;
        offset = 0;
    }
    if (encoding != zynEncCP1251) {
        unsigned char* text = nullptr;
        int textLength = 0;
        if (!ConvertEncoding(encoding, m_pBuffer + offset, static_cast<int>(m_nDataSize - offset),
                             zynEncCP1251, text, textLength))
            return false;
        if (m_bKeepsOriginal) m_pOriginal.reset(std::exchange(m_pBuffer, nullptr));
        TakeBuffer(text, static_cast<unsigned>(textLength));
    }
    m_nWorkEncoding = zynEncCP1251;
    return true;
}

bool CzynStringFile::Convert32Bit() {
    const std::string text = zyn::DecodeTo1251(m_nFileEncoding, GetOriginal().substr(m_nMarkLength));
    if (text.empty()) return false;
    auto* const buffer = new unsigned char[text.size()];
    std::copy(text.begin(), text.end(), buffer);
    m_pOriginal.reset(std::exchange(m_pBuffer, nullptr));
    TakeBuffer(buffer, static_cast<unsigned>(text.size()));
    return true;
}

std::string_view CzynStringFile::GetOriginal() const {
    return {reinterpret_cast<const char*>(m_pOriginal ? m_pOriginal.get() : m_pBuffer), m_nOriginalSize};
}

void CzynStringFile::TakeBuffer(unsigned char* buffer, unsigned length) {
    FreeBuffer(m_pBuffer);
    m_pBuffer = buffer;
    m_nCapacity = m_nDataSize = length;
}

int CzynStringFile::ReadString(CStringA& line) {
    line.Empty();
    if (!IsFileOpen() || !Load2Memory() || !m_bLoaded || m_nPosition >= m_nDataSize) return 0;
    assert(m_nWorkEncoding == zynEncCP1251);
    if (m_nWorkEncoding != zynEncCP1251) return 0;
    const unsigned char* const begin = m_pBuffer + m_nPosition;
    const unsigned char* const end = m_pBuffer + m_nDataSize;
    const unsigned char* const lineEnd = std::find_if(begin, end, EndsLine);
    line = CStringA(
        std::string_view(reinterpret_cast<const char*>(begin), static_cast<std::size_t>(lineEnd - begin)));
    m_nPosition = static_cast<std::uint32_t>(std::find_if_not(lineEnd, end, EndsLine) - m_pBuffer);
    return 1;
}

std::string_view CzynStringFile::ReadAllData() {
    if (!IsFileOpen() || !Load2Memory() || !m_bLoaded || m_nPosition >= m_nDataSize) return {};
    assert(m_nWorkEncoding == zynEncCP1251);
    if (m_nWorkEncoding != zynEncCP1251) return {};
    return {reinterpret_cast<const char*>(m_pBuffer + m_nPosition), m_nDataSize - m_nPosition};
}

int CzynStringFile::ReadAllDataToString(CStringA& text) {
    const std::string_view data = ReadAllData();
    text = CStringA(data);
    return !data.empty();
}

int CzynStringFile::WriteString(const char* text) {
    return WriteString(text, text ? std::strlen(text) : 0);
}

int CzynStringFile::WriteString(const char* text, std::size_t length) {
    if (!IsFileOpen() || !text || length == 0) return 0;
    if (m_nWorkEncoding == zynEncUnknown && m_nDataSize == 0) m_nWorkEncoding = zynEncCP1251;
    assert(m_nWorkEncoding == zynEncCP1251);
    if (m_nWorkEncoding != zynEncCP1251) return 0;
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text);
    const std::less<> isBefore;
    if (m_pBuffer && !isBefore(bytes, m_pBuffer) && isBefore(bytes, m_pBuffer + m_nCapacity)) {
        const std::string copy(text, length); // the buffer is about to move
        return WriteString(copy.data(), length);
    }
    const std::string_view source(text, length);
    const std::uint64_t added = source.size() + CountBareLineFeeds(source);
    const std::uint64_t needed = m_nDataSize + added + 1;
    if (needed > static_cast<std::uint64_t>(std::numeric_limits<int>::max()) ||
        !SetBufSize(static_cast<unsigned>(needed))) {
        m_bEmptyingPutOff = false; // a text that is not whole is no reason to give up the old one
        return 0;
    }
    CopyWithCarriageReturns(source, m_pBuffer + m_nDataSize);
    m_nDataSize += static_cast<std::uint32_t>(added);
    m_pBuffer[m_nDataSize] = 0;
    m_bModified = true;
    return 1;
}

int CzynStringFile::Flush() {
    if (!IsFileOpen()) return 0;
    if (!m_bModified) return 1;
    if (m_nDataSize == 0 || !m_pBuffer || WriteText([this] { return ConvertAndWrite(false); }))
        m_bModified = false;
    return !m_bModified;
}

int CzynStringFile::FlushWithBackup() {
    if (!IsFileOpen() || !WriteText([this] { return ConvertAndWrite(true); })) return 0;
    m_bModified = false;
    return 1;
}

int CzynStringFile::FlushBytes(std::string_view mark, std::string_view bytes, bool withBackup) {
    if (!IsFileOpen() || !WriteText([&] { return PutInPlace(mark, bytes, withBackup, true); })) return 0;
    m_bModified = false;
    return 1;
}

template <class Step> bool CzynStringFile::WriteText(Step step) {
    m_nWriteError = 0;
    try {
        if (step()) return true;
    } catch (const std::bad_alloc&) {
        m_nWriteError = zynplatform::errorNotEnoughMemory;
    }
    m_bEmptyingPutOff = false; // a text that is not whole is no reason to give up the old one
    return false;
}

bool CzynStringFile::ConvertAndWrite(bool withBackup) {
    if (m_nFileEncoding == zynEncUnknown) m_nFileEncoding = m_choice.m_nNewFile;
    if (m_nFileEncoding == zynEncUnknown) m_nFileEncoding = zynEncCP1251;
    const std::string_view text(reinterpret_cast<const char*>(m_pBuffer), m_nDataSize);
    if (text.empty()) return PutInPlace({}, {}, withBackup, withBackup);
    const zynMarkChoice choice = m_choice.m_nMark;
    const bool isMarked = choice == zynMarkAsFound ? m_nMarkLength != 0
                                                   : choice != zynMarkNever || m_nFileEncoding != zynEncUTF8;
    const std::string_view mark = isMarked ? zyn::MarkOf(m_nFileEncoding) : "";
    if (m_nFileEncoding == m_nWorkEncoding)
        return PutInPlace(text.starts_with(mark) ? "" : mark, text, withBackup, withBackup);

    const int bomLength = GetBomLength(m_nWorkEncoding, m_pBuffer, static_cast<int>(m_nDataSize));
    unsigned char* converted = nullptr;
    int length = 0;
    if (!ConvertEncoding(m_nWorkEncoding, m_pBuffer + bomLength, static_cast<int>(m_nDataSize) - bomLength,
                         m_nFileEncoding, converted, length))
        return false;
    const std::unique_ptr<unsigned char[]> owned(converted);
    const std::string_view bytes(reinterpret_cast<const char*>(converted), static_cast<std::size_t>(length));
    return PutInPlace(GetBomLength(m_nFileEncoding, converted, length) != 0 ? "" : mark, bytes, withBackup,
                      withBackup);
}

// Of a text that cannot be put in the place of the old one nothing is written, as far as that can be known.
bool CzynStringFile::PutInPlace(std::string_view mark, std::string_view text, bool withBackup,
                                bool keepsTurns) {
    const CStringA backup = m_sName + ".bak", newestBackup = backup + ".tmp";
    zynplatform::Replacement replacement;
    m_nWriteError = replacement.Prepare(m_hFile, m_sName, m_mode, {mark, text}, {backup, newestBackup});
    if (m_nWriteError == 0) {
        const auto linkOrCopy = [&](const char* to, bool isPrivate) {
            return (!isPrivate && replacement.LinkOldFile(to)) ||
                   zynplatform::CopyToNewFile(m_hFile, to, isPrivate) == 0;
        };
        if (withBackup) zyn::KeepBackup(m_sName, 1, linkOrCopy);
        m_nWriteError = replacement.Commit(m_hFile, keepsTurns);
    }
    if (m_nWriteError == zynplatform::errorNotSupported) {
        const auto copy = [this](const char* to, bool isPrivate) {
            return zynplatform::CopyToNewFile(m_hFile, to, isPrivate) == 0;
        };
        if (keepsTurns) zyn::KeepBackup(m_sName, 1, copy); // or a failure would leave no whole text
        m_nWriteError = zynplatform::OverwriteFile(m_hFile, {mark, text});
    }
    if (m_nWriteError == 0) m_bEmptyingPutOff = false;
    return m_nWriteError == 0;
}

void CzynStringFile::SeekToBegin() {
    m_nPosition =
        static_cast<std::uint32_t>(GetBomLength(m_nWorkEncoding, m_pBuffer, static_cast<int>(m_nDataSize)));
}

unsigned CzynStringFile::SetPosition(unsigned position) {
    const auto first =
        static_cast<unsigned>(GetBomLength(m_nWorkEncoding, m_pBuffer, static_cast<int>(m_nDataSize)));
    const unsigned last = m_nDataSize == 0 ? 0 : m_nDataSize - 1;
    m_nPosition = std::min(std::max(position, first), last);
    return m_nPosition;
}
