// SPDX-License-Identifier: MIT
#include "zynaggr/zyndatabuf.h"

#include "zynaggr/zynmessage.h"
#include "zynaggr/zynstringadapter.h"
#include "zynhost/application.h"
#include "zynhost/memory.h"
#include "zynplatform/codepage.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

namespace {

constexpr std::int32_t initialCapacity = 4096;
constexpr std::int32_t slotSize = 4;
constexpr std::int64_t sizeLimit = std::numeric_limits<std::int32_t>::max();

char* NewMemory(std::int64_t capacity, std::int64_t bytes) {
    if (capacity > sizeLimit) AfxThrowMemoryException();
    return new char[static_cast<std::size_t>(bytes)];
}

// The capacity for `needed` bytes, by doubling where there is room to double.
std::int64_t GrownCapacity(std::int64_t needed, std::int32_t capacity) {
    return std::max(needed, std::min(2 * std::int64_t{capacity} + 2, sizeLimit));
}

std::string WireUnits(std::u16string_view units) {
    std::string wire(2 * units.size(), '\0');
    for (std::size_t i = 0; i < units.size(); ++i) {
        wire[2 * i] = static_cast<char>(units[i]);
        wire[2 * i + 1] = static_cast<char>(units[i] >> 8);
    }
    return wire;
}

std::u16string UnitsFromWire(const char* wire, std::int32_t count) {
    std::u16string units(static_cast<std::size_t>(count), 0);
    for (WCHAR& unit : units) {
        const unsigned low = static_cast<unsigned char>(*wire++);
        const unsigned high = static_cast<unsigned char>(*wire++);
        unit = static_cast<WCHAR>(high << 8 | low);
    }
    return units;
}

void ShowOutOfMemory() {
    char message[256];
    std::snprintf(message, sizeof(message), "Memory exeption in CzynDataBuf::Add : %s",
                  CMemoryException::Text());
    zynMessageBoxConsole(message, MB_ICONHAND);
}

} // namespace

CzynDataBuf::CzynDataBuf() : CzynDataBuf(initialCapacity) {}

CzynDataBuf::CzynDataBuf(int n) {
    SetSize(n);
}

CzynDataBuf::CzynDataBuf(char* data, int size) {
    Replace(data, size, 0, true);
}

CzynDataBuf::~CzynDataBuf() {
    if (!m_bExternalData) delete[] m_pBuf;
}

bool CzynDataBuf::SetSize(int n) {
    if (m_bExternalData || n < m_nSize) return false;
    if (n > m_nSize) Reallocate(n);
    return true;
}

std::unique_ptr<char[]> CzynDataBuf::Reallocate(std::int64_t capacity) {
    std::unique_ptr<char[]> old;
    const bool grows = capacity > m_nMaxSize;
    if (!grows || capacity > m_nReach) {
        // The iterator, above all, asks for little more each time: only so does that not copy all each time.
        const std::int64_t reach = std::max(capacity, grows ? std::min(2 * m_nReach, sizeLimit) : 0);
        char* const memory = NewMemory(capacity, reach + 1);
        std::copy_n(m_pBuf, m_nSize, memory);
        old.reset(std::exchange(m_pBuf, memory));
        m_nReach = reach;
    }
    m_pBuf[m_nSize] = 0;
    m_nMaxSize = static_cast<std::int32_t>(capacity);
    return old;
}

void CzynDataBuf::Replace(void* data, std::int32_t size, std::int32_t capacity, bool external) {
    if (!m_bExternalData && m_pBuf != data) delete[] m_pBuf;
    m_pBuf = static_cast<char*>(data);
    m_nSize = data ? std::max(size, 0) : 0;
    m_nMaxSize = data ? std::max(capacity, 0) : 0;
    m_nReach = m_nMaxSize;
    m_nCurPos = 0;
    m_bExternalData = external;
    m_nSizerPos = -1;
}

void CzynDataBuf::Clear() {
    if (m_bExternalData) return AttachExternalData(nullptr, 0);
    Replace(m_pBuf, 0, m_nMaxSize, false);
}

void CzynDataBuf::SetExternalData(void* data, int size) {
    Replace(data, size, size, true);
}

void CzynDataBuf::AttachExternalData(void* data, int size) {
    if (data && size > 0) return Replace(data, size, size, false);
    char* const memory = NewMemory(initialCapacity, initialCapacity + 1);
    memory[0] = 0;
    Replace(memory, 0, initialCapacity, false);
}

int CzynDataBuf::AppendGrowing(const void* data, std::size_t n) {
    try {
        const std::int64_t needed = m_nSize + static_cast<std::int64_t>(n) + 1;
        const auto old = Reallocate(GrownCapacity(needed, m_nMaxSize));
        return Append(data, n);
    } catch (const std::bad_alloc&) {
        ShowOutOfMemory();
        return m_nSize;
    }
}

int CzynDataBuf::AddRecordGrowing(std::size_t count, const void* data, std::size_t n) {
    const std::int32_t start = m_nSize;
    char countBytes[4];
    zyn::StoreInt32(countBytes, static_cast<std::int32_t>(count));
    const std::int32_t text = Append(countBytes, sizeof(countBytes));
    // Where memory has run out the size stands still, or the host's message box throws; a count without its
    // text must not stay.
    try {
        if (n == 0 || text == start || Append(data, n) > text) return m_nSize;
    } catch (...) {
        CutTo(start);
        throw;
    }
    CutTo(start);
    return start;
}

int CzynDataBuf::AddStr(const char* text) {
    if (!text) return -1;
    if (!*text) return m_nSize;
    return m_bExternalData ? -1 : Append(text, std::strlen(text));
}

int CzynDataBuf::AddStr(const WCHAR* text) {
    if (!text) return -1;
    if (!*text) return m_nSize;
    if (m_bExternalData) return -1;
    const std::u16string_view units(text);
    std::string bytes;
    if (m_bStoreAnsi) {
        CzynStringAdapter adapter(text);
        bytes = static_cast<const char*>(adapter);
        bytes.resize(units.size());
    } else {
        bytes = WireUnits(units);
    }
    return Append(bytes.data(), bytes.size());
}

int CzynDataBuf::AddUnitsRecord(const char* text, std::size_t count) {
    std::u16string units(count, 0); // a unit for every byte of the system's code page
    zynplatform::ToWide(zynplatform::ansiCodePage, text, count, units.data());
    const std::string bytes = WireUnits(units);
    return AddRecord(count, bytes.data(), bytes.size());
}

void* CzynDataBuf::GetNewBuffer(int n) {
    if (n < 0) return nullptr;
    const std::int64_t needed = std::int64_t{m_nSize} + n;
    if (needed > m_nMaxSize) {
        if (m_bExternalData) return nullptr;
        Reallocate(GrownCapacity(needed, m_nMaxSize));
    }
    char* const start = m_pBuf ? m_pBuf + m_nSize : nullptr;
    std::fill_n(start, n, '\0');
    m_nSize += n;
    return start;
}

bool CzynDataBuf::BeginPosSizer() {
    const std::int64_t end = std::int64_t{m_nSize} + slotSize;
    if (end > m_nMaxSize) {
        if (m_bExternalData) return false;
        Reallocate(end);
    }
    zyn::StoreInt32(m_pBuf + m_nSize, 0);
    m_nSizerPos = m_nSize;
    m_nSize += slotSize;
    // Nobody checks the position: near the end of its range it wraps, and reads nothing.
    m_nCurPos = static_cast<std::int32_t>(static_cast<std::uint32_t>(m_nCurPos) + slotSize);
    return true;
}

void CzynDataBuf::EndSiezer(int n) {
    if (m_nSizerPos < 0 || m_nSizerPos > m_nSize - slotSize) return;
    const std::int32_t start = m_nSizerPos + slotSize;
    const std::int32_t written = m_nSize - start;
    if (n == -1) n = written;
    if (n < 0 || n > written) return;
    m_nSize = start + n;
    zyn::StoreInt32(m_pBuf + m_nSizerPos, n);
}

bool CzynDataBuf::Read(void* out, int n) {
    if (!m_pBuf || !out || n < 1) return false;
    const void* const bytes = GetCurBuffer(n);
    if (bytes)
        std::memcpy(out, bytes, static_cast<std::size_t>(n));
    else
        std::memset(out, 0, static_cast<std::size_t>(n));
    return bytes != nullptr;
}

bool CzynDataBuf::ReadUnits(CStringA& line, std::int32_t n) {
    if (!HasBytes(n) || n > (m_nSize - m_nCurPos) / 2) return false;
    const std::u16string units = UnitsFromWire(static_cast<const char*>(GetCurBuffer(2 * n)), n);
    CzynStringAdapter adapter(units.c_str()); // up to the first zero unit
    line = static_cast<const char*>(adapter);
    return true;
}

bool CzynDataBuf::ReadString(CStringA& line) {
    line.Empty();
    if (!m_pBuf || !HasBytes(1)) return false;
    const char* const start = m_pBuf + m_nCurPos;
    const char* const dataEnd = m_pBuf + m_nSize;
    const char* end = std::find_if(start, dataEnd, [](char c) { return c == '\r' || c == '\n' || c == 0; });
    const char* next = end;
    if (end != dataEnd) {
        ++next;
        if (*end == 0)
            end = next;
        else if (next != dataEnd && *next == (*end == '\r' ? '\n' : '\r'))
            ++next;
    }
    line.Append(start, static_cast<int>(end - start));
    m_nCurPos = static_cast<std::int32_t>(next - m_pBuf);
    return true;
}
