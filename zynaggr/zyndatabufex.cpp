// SPDX-License-Identifier: MIT
#include "zynaggr/zyndatabufex.h"

#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynerror.h"
#include "zynaggr/zynstringadapter.h"
#include "zynplatform/cp1251.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

using namespace zynplatform::literals;

namespace {

constexpr std::int32_t countSize = 4;
constexpr std::int32_t capacityAfterMove = 100;
constexpr int readErrorCode = 101;
constexpr int moduleServer = 4;

} // namespace

CzynDataBufEx::~CzynDataBufEx() = default;

void CzynDataBufEx::SetExternalData(void* data, int size, int capacity) {
    Replace(data, size, capacity == 0 ? size : capacity, true);
}

void CzynDataBufEx::Set2Begin() {
    m_nSize = 0;
    m_nCurPos = 0;
    m_nSizerPos = -1;
}

std::int64_t CzynDataBufEx::GrownFor(std::int64_t end) {
    constexpr std::int64_t limit = std::numeric_limits<std::int32_t>::max();
    return std::max(end + 1, std::min(end + spareOnGrowth, limit));
}

int CzynDataBufEx::WriteGrowing(const void* data, std::int64_t n) {
    if (m_bExternalData) return 0;
    const auto old = Reallocate(GrownFor(m_nCurPos + n));
    return WriteWithin(data, n);
}

int CzynDataBufEx::WriteCount(std::int64_t count) {
    char bytes[countSize];
    zyn::StoreInt32(bytes, static_cast<std::int32_t>(count));
    return Write(bytes, countSize);
}

// Makes the room that writing a count and n bytes behind it comes to take, so that not just one of them finds
// none.
void CzynDataBufEx::ReserveRecord(std::int64_t n) {
    if (m_bExternalData || m_nCurPos < 0) return;
    std::int64_t capacity = m_nMaxSize;
    for (const std::int64_t end : {m_nCurPos + std::int64_t{countSize}, m_nCurPos + countSize + n})
        if (end + 1 >= capacity) capacity = GrownFor(end);
    if (capacity > m_nMaxSize) Reallocate(capacity);
}

int CzynDataBufEx::AddStrBuf_TCHAR_2Iterator(CStringA& text) {
    std::int64_t count = std::int64_t{text.GetLength()} + 1;
    if (m_bExternalData && m_nCurPos + count + countSize >= m_nMaxSize) {
        if (std::int64_t{m_nCurPos} + countSize > m_nMaxSize) return 0;
        count = 0;
    }
    ReserveRecord(count);
    const int written = WriteCount(count);
    return count == 0 ? written : Write(text.GetString(), count);
}

int CzynDataBufEx::ReadStrBuf_TCHAR_(CStringA& text) {
    const int count = ReadStrBuf_TCHAR_r(text);
    if (count == -1)
        throw SzynErrorDescription(readErrorCode, "zynaggr.cpp", __DATE__, __LINE__,
                                   CzynTranslate::Translate("Ошибка при чтении строки из буфера"_cp1251),
                                   moduleServer, "CzynDataBufEx::ReadStrBuf_TCHAR_", nullptr, nullptr);
    return count;
}

bool CzynDataBufEx::Utf8StringAdd2Iterator(CStringA text) { // NOLINT(performance-unnecessary-value-param)
    CzynStringAdapter wide(text.GetString());
    CzynStringAdapter utf8(static_cast<const WCHAR*>(wide));
    utf8.m_bUTF8 = true;
    const std::string_view bytes(static_cast<const char*>(utf8));
    ReserveRecord(static_cast<std::int64_t>(bytes.size()));
    WriteCount(static_cast<std::int64_t>(bytes.size()));
    Write(bytes.data(), static_cast<std::int64_t>(bytes.size()));
    return true;
}

bool CzynDataBufEx::Utf8StringReadFromIterator(CStringA& text) {
    text.Empty();
    char countBytes[countSize];
    if (ReadFromIterator(countBytes, countSize) != countSize) return true;
    const std::int32_t count = zyn::LoadInt32(countBytes);
    if (count == 0) return true;
    CStringA bytes;
    if (count < 0 || !ReadText(bytes, count)) {
        if (count > 0) m_nCurPos = m_nSize;
        return false;
    }
    CzynStringAdapter utf8(bytes.GetString());
    utf8.m_bUTF8 = true;
    CzynStringAdapter narrow(static_cast<const WCHAR*>(utf8));
    text = static_cast<const char*>(narrow);
    return true;
}

bool CzynDataBufEx::CopyDataTo(int offset, void* data, int n) {
    if (!data || offset < 0 || n < 0 || std::int64_t{offset} + n > m_nMaxSize) return false;
    if (n > 0) std::memmove(m_pBuf + offset, data, static_cast<std::size_t>(n));
    return true;
}

bool CzynDataBufEx::IsWithin(int from, int n) const {
    return from >= 0 && n >= 0 && std::int64_t{from} + n <= m_nSize;
}

int CzynDataBufEx::FindBytes(int from, void* pattern, int n) const {
    if (!pattern || !IsWithin(from, n)) return -1;
    const std::string_view data(m_pBuf, static_cast<std::size_t>(m_nSize));
    const std::string_view bytes(static_cast<const char*>(pattern), static_cast<std::size_t>(n));
    const std::size_t found = data.find(bytes, static_cast<std::size_t>(from));
    return found == data.npos ? -1 : static_cast<int>(found);
}

bool CzynDataBufEx::GetBytes(int from, int n, CzynDataBufEx& out) {
    if (&out == this || n < 1 || !IsWithin(from, n)) {
        out.Clear();
        return false;
    }
    out.SetExternalData(m_pBuf + from, n, n);
    return true;
}

bool CzynDataBufEx::GetBytes(int from, int n, CStringA& text, bool utf8) const {
    text.Empty();
    if (n < 1 || !IsWithin(from, n)) return false;
    const std::string bytes(m_pBuf + from, static_cast<std::size_t>(n));
    if (!utf8) {
        text = bytes.c_str();
        return true;
    }
    CzynStringAdapter adapter(bytes.c_str());
    adapter.m_bUTF8 = true;
    text = static_cast<const WCHAR*>(adapter);
    return true;
}

bool CzynDataBufEx::EnMaskTail(int from, const char* mask, int maskLength) {
    if (from < 0 || from >= m_nSize || !mask || maskLength < 1) return false;
    int next = maskLength;
    for (std::int32_t i = from; i < m_nSize; ++i) {
        m_pBuf[i] = static_cast<char>(m_pBuf[i] ^ mask[--next]);
        if (next == 0) next = maskLength;
    }
    return true;
}

bool CzynDataBufEx::MoveData2DBuf(CzynDataBuf& target) {
    if (m_bExternalData || !m_pBuf || m_nMaxSize == 0 || &target == this) return false;
    CzynDataBuf fresh(capacityAfterMove);
    target.AttachExternalData(m_pBuf, m_nSize);
    if (m_nSize > 0) m_pBuf = nullptr; // else it was not taken
    Replace(std::exchange(fresh.m_pBuf, nullptr), 0, capacityAfterMove, false);
    return true;
}
