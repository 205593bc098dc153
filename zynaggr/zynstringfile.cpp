#include "zynaggr/zynstringfile.h"

#include "zynaggr/zyn_translate.h"
#include "zynplatform/cp1251.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <limits>
#include <new>

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

std::string_view MarkOf(zynTextEncoding encoding) {
    unsigned char* mark = nullptr;
    int length = 0;
    GetBomData(encoding, mark, length);
    return mark ? std::string_view(reinterpret_cast<const char*>(mark), static_cast<std::size_t>(length))
                : std::string_view();
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
    m_bCutPending = false;
    m_bLoadLackedMemory = false;
    m_nFileEncoding = zynEncUnknown;
    m_nWorkEncoding = zynEncCP1251;
    m_nEncodingIfNotBOM = zynEncUnknown;
}

void CzynStringFile::FreeBuffer() {
    FreeBuffer(m_pBuffer);
    m_pBuffer = nullptr;
    m_nCapacity = 0;
    m_nDataSize = 0;
    m_nPosition = 0;
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
    const bool empties = (flags & modeCreate) && !(flags & modeNoTruncate);
    const bool writes = (flags & (modeWrite | modeReadWrite)) != 0;
    CFileException error;
    const int opened = CFile::Open(name, empties && writes ? flags | modeNoTruncate : flags, &error);
    m_bCutPending = opened && empties && writes;
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
        if (m_bCutPending) SetLength(0);
        CFile::Close();
    }
    Reset();
}

int CzynStringFile::Load2Memory() {
    if (!IsFileOpen()) return 0;
    if (m_bLoaded) return 1;
    if (m_bModified) return 0;
    const std::int64_t length = m_bCutPending ? 0 : GetLength();
    if (length < 0 || length >= loadLimit) return 0;
    FreeBuffer();
    if (length == 0) return 1;
    const auto size = static_cast<std::uint32_t>(length);
    m_pBuffer = new (std::nothrow) unsigned char[size];
    m_bLoadLackedMemory = !m_pBuffer;
    if (!m_pBuffer) return 0;
    if (!CFile::SeekToBegin() || Read(m_pBuffer, size) != size) {
        FreeBuffer();
        return 0;
    }
    m_nCapacity = m_nDataSize = size;
    m_bLoaded = true;

    int bomLength = 0;
    m_nFileEncoding = zynGetBufferEncodeByBOM(m_pBuffer, static_cast<int>(size), &bomLength);
    if (bomLength == 0)
        m_nFileEncoding = m_nEncodingIfNotBOM != zynEncUnknown ? m_nEncodingIfNotBOM : EncodingByContent();
    try {
        if (!ConvertLoaded(bomLength)) {
            Reset();
            return 0;
        }
    } catch (const std::bad_alloc&) {
        Reset();
        m_bLoadLackedMemory = true;
        return 0;
    }
    SeekToBegin();
    return 1;
}

zynTextEncoding CzynStringFile::EncodingByContent() const {
    static constexpr struct {
        bool (*matches)(const unsigned char*, int);
        zynTextEncoding encoding;
    } tests[] = {
        {IsBufUCS4BE, zynEncUCS4BE}, {IsBufUCS4LE, zynEncUCS4LE}, {IsBufUtf8, zynEncUTF8},
        {IsBufUCS2, zynEncUCS2LE},   {IsBufUCS2BE, zynEncUCS2BE},
    };
    for (const auto& test : tests)
        if (test.matches(m_pBuffer, static_cast<int>(m_nDataSize))) return test.encoding;
    return zynEncCP1251;
}

// Turns what was read into the 8-bit form; the file's encoding stays what the file has.
bool CzynStringFile::ConvertLoaded(int bomLength) {
    zynTextEncoding encoding = m_nFileEncoding;
    auto offset = static_cast<std::uint32_t>(bomLength);
    if (encoding == zynEncUCS4BE || encoding == zynEncUCS4LE) {
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
        TakeBuffer(text, static_cast<unsigned>(textLength));
    }
    m_nWorkEncoding = zynEncCP1251;
    return true;
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
    const std::string_view source(text, length);
    const std::uint64_t added = source.size() + CountBareLineFeeds(source);
    const std::uint64_t needed = m_nDataSize + added + 1;
    if (needed > static_cast<std::uint64_t>(std::numeric_limits<int>::max()) ||
        !SetBufSize(static_cast<unsigned>(needed))) {
        m_bCutPending = false; // a text that is not whole is no reason to give up the old one
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
    if (m_nDataSize == 0 || !m_pBuffer) {
        m_bModified = false;
        return 1;
    }
    if (m_nFileEncoding == zynEncUnknown) m_nFileEncoding = zynEncCP1251;
    const std::string_view text(reinterpret_cast<const char*>(m_pBuffer), m_nDataSize);
    if (m_nFileEncoding == m_nWorkEncoding) {
        if (!WriteFromStart(text.starts_with(MarkOf(m_nFileEncoding)) ? "" : MarkOf(m_nFileEncoding), text))
            return 0;
    } else {
        const int bomLength = GetBomLength(m_nWorkEncoding, m_pBuffer, static_cast<int>(m_nDataSize));
        unsigned char* converted = nullptr;
        int length = 0;
        m_bCutPending = false;
        try {
            if (!ConvertEncoding(m_nWorkEncoding, m_pBuffer + bomLength,
                                 static_cast<int>(m_nDataSize) - bomLength, m_nFileEncoding, converted,
                                 length))
                return 0;
        } catch (const std::bad_alloc&) {
            return 0;
        }
        const std::string_view bytes(reinterpret_cast<const char*>(converted),
                                     static_cast<std::size_t>(length));
        const bool hasMark = GetBomLength(m_nFileEncoding, converted, length) != 0;
        const bool written = WriteFromStart(hasMark ? "" : MarkOf(m_nFileEncoding), bytes);
        FreeBuffer(converted);
        if (!written) return 0;
    }
    m_bModified = false;
    return 1;
}

// The file ends behind what was written. Nothing is written when there is no room for all of it.
bool CzynStringFile::WriteFromStart(std::string_view mark, std::string_view text) {
    m_bCutPending = false;
    const auto length = static_cast<std::int64_t>(mark.size() + text.size());
    return zynplatform::ReserveFile(m_hFile, length) == 0 && CFile::SeekToBegin() &&
           (mark.empty() || Write(mark.data(), mark.size())) && Write(text.data(), text.size()) &&
           SetLength(length);
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
