// SPDX-License-Identifier: MIT
#include "zynaggr/zynstringadapter.h"

#include "zynplatform/codepage.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <string>

namespace {

template <class T> std::uint32_t SetSize(T*& text, std::uint32_t& room, std::uint32_t size) {
    assert(text || room == 0);
    if (size == 0) {
        if (room != 0) delete[] text;
        text = nullptr;
        room = 0;
        return 0;
    }
    if (size <= room) return room;

    T* const larger = new T[size];
    std::size_t kept = 0;
    if (text) kept = std::min<std::size_t>(room != 0 ? room : std::char_traits<T>::length(text), size - 1);
    std::copy_n(text, kept, larger);
    larger[kept] = 0;
    if (room != 0) delete[] text;
    text = larger;
    room = size;
    return room;
}

// The room for a text converted to that length: the terminating zero counts as converted, and another one
// follows what is converted. A conversion that fails leaves room for the zero alone.
std::uint32_t RoomFor(std::size_t length) {
    constexpr std::size_t most = std::numeric_limits<std::int32_t>::max();
    return length == 0 || length >= most ? 1 : static_cast<std::uint32_t>(length) + 2;
}

} // namespace

std::uint32_t CzynStringAdapter::m_st_encoding = zynplatform::ansiCodePage;

CzynStringAdapter::~CzynStringAdapter() {
    SetSizeANSI(0);
    SetSizeUTF(0);
}

CzynStringAdapter& CzynStringAdapter::operator=(const char* text) {
    SetSizeANSI(0);
    SetSizeUTF(0);
    m_pTextANSI = const_cast<char*>(text);
    return *this;
}

CzynStringAdapter& CzynStringAdapter::operator=(const WCHAR* text) {
    SetSizeANSI(0);
    SetSizeUTF(0);
    m_pTextUTF = const_cast<WCHAR*>(text);
    return *this;
}

CzynStringAdapter::operator char*() {
    if (m_pTextANSI || !m_pTextUTF) return m_pTextANSI;
    const unsigned codePage = m_bUTF8 ? zynplatform::utf8CodePage : m_st_encoding;
    const std::size_t units = std::char_traits<WCHAR>::length(m_pTextUTF);
    const std::size_t room = SetSizeANSI(RoomFor(zynplatform::NarrowLength(codePage, m_pTextUTF, units)));
    const std::size_t length = room > 1 ? zynplatform::ToNarrow(codePage, m_pTextUTF, units, m_pTextANSI) : 0;
    m_pTextANSI[length] = 0;
    return m_pTextANSI;
}

CzynStringAdapter::operator WCHAR*() {
    if (m_pTextUTF || !m_pTextANSI) return m_pTextUTF;
    const unsigned codePage = m_bUTF8 ? zynplatform::utf8CodePage : m_st_encoding;
    const std::size_t bytes = std::char_traits<char>::length(m_pTextANSI);
    const std::size_t room = SetSizeUTF(RoomFor(zynplatform::WideLength(codePage, m_pTextANSI, bytes)));
    const std::size_t length = room > 1 ? zynplatform::ToWide(codePage, m_pTextANSI, bytes, m_pTextUTF) : 0;
    m_pTextUTF[length] = 0;
    return m_pTextUTF;
}

std::uint32_t CzynStringAdapter::SetSizeANSI(std::uint32_t size) {
    return SetSize(m_pTextANSI, m_nSizeANSI, size);
}

std::uint32_t CzynStringAdapter::SetSizeUTF(std::uint32_t size) {
    return SetSize(m_pTextUTF, m_nSizeUTF, size);
}
