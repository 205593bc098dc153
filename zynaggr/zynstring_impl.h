// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/zynstring.h"
#include "zynaggr/zynstring_traits.h"
#include "zynhost/cstring.h"
#include "zynhost/memory.h"
#include "zynhost/stringresources.h"
#include "zynplatform/codepage.h"
#include "zynplatform/textscan_impl.h"
#include "zynplatform/textsearch_impl.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

// The definitions behind zynstring.h, instantiated in zynstring.cpp and zynstringw.cpp. Not a public header.

namespace zyn {

namespace detail {

constexpr unsigned formatRoom = 4000;

template <class C> std::size_t LengthOf(const C* text) {
    return text ? zynplatform::LengthOf(text) : 0;
}

template <class C> void Copy(C* target, const C* source, std::uint64_t count) {
    std::char_traits<C>::copy(target, source, static_cast<std::size_t>(count));
}

template <class C> void Move(C* target, const C* source, std::uint64_t count) {
    std::char_traits<C>::move(target, source, static_cast<std::size_t>(count));
}

// Between the two widths, with the system's code page.
inline std::size_t ConvertedLength(const char* text, std::size_t length, WCHAR*) {
    return zynplatform::WideLength(zynplatform::ansiCodePage, text, length);
}
inline std::size_t ConvertedLength(const WCHAR* text, std::size_t length, char*) {
    return zynplatform::NarrowLength(zynplatform::ansiCodePage, text, length);
}
inline void Convert(const char* text, std::size_t length, WCHAR* target) {
    zynplatform::ToWide(zynplatform::ansiCodePage, text, length, target);
}
inline void Convert(const WCHAR* text, std::size_t length, char* target) {
    zynplatform::ToNarrow(zynplatform::ansiCodePage, text, length, target);
}

// The characters of a set, asked for often: a bitmap of their low bytes, which is all there is to 8-bit ones.
template <class C> class CharacterSet {
public:
    explicit CharacterSet(const C* set) {
        const C* end = set;
        for (; end && *end; ++end)
            m_bits[LowByte(*end) / 64] |= BitOf(*end);
        m_set = {set, static_cast<std::size_t>(end - set)};
    }
    bool Has(C character) const {
        const bool isLikely = (m_bits[LowByte(character) / 64] & BitOf(character)) != 0;
        return isLikely && (sizeof(C) == 1 || m_set.find(character) != m_set.npos);
    }
    bool IsEmpty() const { return m_set.empty(); }

private:
    static unsigned LowByte(C character) { return static_cast<unsigned char>(character); }
    static std::uint64_t BitOf(C character) { return std::uint64_t{1} << LowByte(character) % 64; }

    std::basic_string_view<C> m_set;
    std::uint64_t m_bits[4] = {};
};

} // namespace detail

// ---- Capacity

template <class C> unsigned BasicString<C>::Reserve(std::uint64_t size) {
    if (size > StringTraits<C>::sizeLimit) AfxThrowMemoryException();
    return SetSize(static_cast<unsigned>(size));
}

template <class C> C* BasicString<C>::Allocated(std::uint64_t size) {
    if (size > StringTraits<C>::sizeLimit) AfxThrowMemoryException();
    return new C[static_cast<std::size_t>(size)];
}

// A text that grows again and again doubles its block, and is not moved each time that its capacity grows.
template <class C> const C* BasicString<C>::Grow(std::uint64_t size) {
    if (size <= m_nRoom) {
        m_nSize = static_cast<std::uint32_t>(size);
        return nullptr;
    }
    std::uint64_t room = std::min(size + m_nLength, StringTraits<C>::sizeLimit);
    C* buffer = room > size ? new (std::nothrow) C[static_cast<std::size_t>(room)] : nullptr;
    if (!buffer) buffer = Allocated(room = size);
    detail::Copy(buffer, m_pBuffer, std::uint64_t{m_nLength} + 1);
    m_nSize = static_cast<std::uint32_t>(size);
    m_nRoom = static_cast<std::uint32_t>(room);
    return std::exchange(m_pBuffer, buffer);
}

template <class C> unsigned BasicString<C>::SetSize(unsigned size) {
    if (size == 0) {
        if (m_nLength == 0 && m_nSize == 1) return 1;
        C* const buffer = new C[1]{};
        delete[] m_pBuffer;
        m_pBuffer = buffer;
        m_nLength = 0;
        return m_nSize = m_nRoom = 1;
    }
    if (size <= m_nSize) return m_nSize; // never smaller; the length needs no more than there is
    delete[] Grow(size);
    return m_nSize;
}

template <class C> void BasicString<C>::SetLength(unsigned length) {
    if (length == m_nLength) return;
    if (length >= m_nSize) Reserve(std::uint64_t{length} + 1);
    m_nLength = length;
    m_pBuffer[length] = 0;
}

template <class C> void BasicString<C>::Empty() {
    SetSize(0);
}

// ---- Making and assigning

template <class C>
BasicString<C>::BasicString() : m_pBuffer(new C[1]{}), m_nLength(0), m_nSize(1), m_nRoom(1) {}

template <class C>
BasicString<C>::BasicString(const BasicString& other)
    : BasicString(exactly, other.m_pBuffer, other.m_nLength) {}
template <class C>
BasicString<C>::BasicString(const C* text) : BasicString(exactly, text, detail::LengthOf(text)) {}
// Delegates, so that the buffer is freed when the assignment throws.
template <class C> BasicString<C>::BasicString(const Other* text) : BasicString() {
    *this = text;
}
template <class C>
BasicString<C>::BasicString(Exactly, const C* text, std::uint64_t length)
    : m_pBuffer(Allocated(length + 1)),
      m_nLength(static_cast<std::uint32_t>(length)),
      m_nSize(m_nLength + 1),
      m_nRoom(m_nSize) {
    detail::Copy(m_pBuffer, text, length);
    m_pBuffer[m_nLength] = 0;
}
template <class C> BasicString<C>::BasicString(C character, unsigned count) : BasicString() {
    Reserve(std::uint64_t{count} + 1);
    std::fill_n(m_pBuffer, count, character);
    SetLength(count);
}

template <class C> BasicString<C>::~BasicString() {
    delete[] m_pBuffer;
}

// The old text is not copied when the buffer grows, and stays when it cannot.
template <class C> BasicString<C>& BasicString<C>::Assign(const C* text, std::uint64_t length) {
    if (length == 0) {
        Empty();
        return *this;
    }
    if (length < m_nRoom) {
        detail::Move(m_pBuffer, text, length);
        m_nSize = std::max(m_nSize, static_cast<std::uint32_t>(length) + 1);
    } else {
        C* const buffer = Allocated(length + 1);
        detail::Copy(buffer, text, length);
        delete[] m_pBuffer;
        m_pBuffer = buffer;
        m_nSize = m_nRoom = static_cast<std::uint32_t>(length) + 1;
    }
    m_nLength = static_cast<std::uint32_t>(length);
    m_pBuffer[m_nLength] = 0;
    return *this;
}

template <class C> BasicString<C>& BasicString<C>::operator=(const BasicString& other) {
    return this == &other ? *this : Assign(other.m_pBuffer, other.m_nLength);
}

template <class C> BasicString<C>& BasicString<C>::operator=(const C* text) {
    return text == m_pBuffer && *text != 0 ? *this : Assign(text, detail::LengthOf(text));
}

template <class C> BasicString<C>& BasicString<C>::operator=(const Other* text) {
    const std::size_t length = detail::LengthOf(text);
    const std::size_t converted = detail::ConvertedLength(text, length, static_cast<C*>(nullptr));
    if (converted == 0) {
        Empty();
        return *this;
    }
    Reserve(std::uint64_t{converted} + 2);
    detail::Convert(text, length, m_pBuffer);
    m_nLength = static_cast<std::uint32_t>(converted);
    m_pBuffer[m_nLength] = 0;
    return *this;
}

template <class C> BasicString<C>& BasicString<C>::operator=(C character) {
    Reserve(2);
    m_pBuffer[0] = character;
    m_pBuffer[1] = 0;
    m_nLength = 1;
    return *this;
}

// ---- Looking at it, writing into it

template <class C> C BasicString<C>::GetAt(int index) const {
    const bool isInside = index >= 0 && static_cast<std::uint32_t>(index) < m_nLength;
    assert(isInside);
    return isInside ? m_pBuffer[index] : C(0);
}

template <class C> C* BasicString<C>::GetBuffer(int size) {
    if (size > 0) SetSize(static_cast<unsigned>(size));
    return m_pBuffer;
}

template <class C> C* BasicString<C>::GetBufferSetLength(int length) {
    if (length < 0) length = 0;
    Reserve(std::uint64_t{static_cast<unsigned>(length)} + 1);
    SetLength(static_cast<unsigned>(length));
    return m_pBuffer;
}

template <class C> void BasicString<C>::ReleaseBuffer(int length) {
    if (length >= 0) SetLength(static_cast<unsigned>(length));
}

// ---- Appending

template <class C> BasicString<C>& BasicString<C>::AppendGrowing(const C* text, std::uint64_t length) {
    const std::uint64_t all = m_nLength + length;
    const C* const old = Grow(all + 1); // the text may lie in it
    detail::Move(m_pBuffer + m_nLength, text, length);
    m_pBuffer[all] = 0;
    m_nLength = static_cast<std::uint32_t>(all);
    delete[] old;
    return *this;
}

template <class C> BasicString<C>& BasicString<C>::Append(const C* text, int count) {
    std::size_t length = detail::LengthOf(text);
    if (count >= 0) length = std::min(length, static_cast<std::size_t>(count));
    return AppendText(text, length);
}

// ---- Changing in place

template <class C> BasicString<C>& BasicString<C>::MakeUpper() {
    std::transform(m_pBuffer, m_pBuffer + m_nLength, m_pBuffer, StringTraits<C>::Upper);
    return *this;
}

template <class C> BasicString<C>& BasicString<C>::MakeLower() {
    std::transform(m_pBuffer, m_pBuffer + m_nLength, m_pBuffer, StringTraits<C>::Lower);
    return *this;
}

template <class C> BasicString<C>& BasicString<C>::MakeReverse() {
    const std::size_t length = StringTraits<C>::reversesToFirstZero ? detail::LengthOf(m_pBuffer) : m_nLength;
    std::reverse(m_pBuffer, m_pBuffer + length);
    return *this;
}

template <class C> BasicString<C>& BasicString<C>::DropLeft(unsigned count) {
    if (count == 0) return *this;
    m_nLength -= count;
    detail::Move(m_pBuffer, m_pBuffer + count, std::uint64_t{m_nLength} + 1);
    return *this;
}

template <class C> BasicString<C>& BasicString<C>::Trim(const C* set) {
    if (IsOwn(set)) return Trim(std::basic_string<C>(set).c_str());
    return TrimRight(set).TrimLeft(set);
}

template <class C> BasicString<C>& BasicString<C>::TrimLeft(C character) {
    unsigned count = 0;
    while (count < m_nLength && m_pBuffer[count] == character)
        ++count;
    if (count != 0 && count == m_nLength) {
        Empty();
        return *this;
    }
    return DropLeft(count);
}

template <class C> BasicString<C>& BasicString<C>::TrimRight(C character) {
    unsigned length = m_nLength;
    while (length > 0 && m_pBuffer[length - 1] == character)
        --length;
    if (length == 0 && m_nLength != 0)
        Empty();
    else
        SetLength(length);
    return *this;
}

template <class C> BasicString<C>& BasicString<C>::TrimLeft(const C* set) {
    const detail::CharacterSet<C> members(set);
    if (members.IsEmpty()) return *this;
    unsigned count = 0;
    while (count < m_nLength && members.Has(m_pBuffer[count]))
        ++count;
    return DropLeft(count);
}

template <class C> BasicString<C>& BasicString<C>::TrimRight(const C* set) {
    const detail::CharacterSet<C> members(set);
    unsigned length = m_nLength;
    while (length > 0 && members.Has(m_pBuffer[length - 1]))
        --length;
    std::fill(m_pBuffer + length, m_pBuffer + m_nLength, C(0)); // the set may have stood there
    m_nLength = length;
    return *this;
}

// ---- Deleting, inserting, replacing

template <class C> int BasicString<C>::Delete(unsigned index, unsigned count) {
    if (static_cast<std::int32_t>(index) < 0) index = 0;
    if (count == 0 || index >= m_nLength) return GetLength();
    count = std::min(count, m_nLength - index);
    detail::Move(m_pBuffer + index, m_pBuffer + index + count, std::uint64_t{m_nLength} - index - count + 1);
    m_nLength -= count;
    return static_cast<int>(count);
}

template <class C> int BasicString<C>::Insert(int index, const C* text) {
    const std::size_t count = detail::LengthOf(text);
    if (count == 0) return GetLength();
    if (IsOwn(text)) return Insert(index, std::basic_string<C>(text, count).c_str());
    Reserve(std::uint64_t{m_nLength} + count + 1);
    const std::uint32_t at = index < 0 ? 0 : std::min(static_cast<std::uint32_t>(index), m_nLength);
    detail::Move(m_pBuffer + at + count, m_pBuffer + at, std::uint64_t{m_nLength} - at + 1);
    detail::Copy(m_pBuffer + at, text, count);
    m_nLength += static_cast<std::uint32_t>(count);
    return GetLength();
}

template <class C> int BasicString<C>::Insert(int index, C character) {
    const C text[2] = {character, 0};
    return Insert(index, text);
}

template <class C> int BasicString<C>::Remove(C character) {
    C* const end = std::remove(m_pBuffer, m_pBuffer + m_nLength, character);
    const auto length = static_cast<std::uint32_t>(end - m_pBuffer);
    const std::uint32_t removed = m_nLength - length;
    SetLength(length);
    return static_cast<int>(removed);
}

template <class C> int BasicString<C>::Replace(const C* from, const C* to) {
    using zynplatform::FindText;
    using View = std::basic_string_view<C>;
    const View text(m_pBuffer, m_nLength), pattern(from, detail::LengthOf(from)),
        with(to, detail::LengthOf(to));
    if (text.empty() || pattern.empty()) return 0;
    std::uint64_t hits = 0;
    std::array<std::uint32_t, 128> found; // the first ones, which are not looked for again
    for (std::size_t at = FindText(text, pattern, 0); at != text.npos;
         at = FindText(text, pattern, at + pattern.size())) {
        if (hits < found.size()) found[static_cast<std::size_t>(hits)] = static_cast<std::uint32_t>(at);
        ++hits;
    }
    if (hits == 0) return 0;

    const std::uint64_t length = m_nLength - hits * pattern.size() + hits * with.size();
    if (length + 1 > StringTraits<C>::sizeLimit) AfxThrowMemoryException();
    // In place where the result is no longer and neither text lies in the buffer; else into a new one.
    const bool inPlace = with.size() <= pattern.size() && !IsOwn(from) && !IsOwn(to);
    const auto size = std::max(m_nSize, static_cast<std::uint32_t>(length) + 1);
    std::unique_ptr<C[]> fresh(inPlace ? nullptr : new C[size]);
    C* const target = inPlace ? m_pBuffer : fresh.get();
    C* out = target;
    const auto put = [&out](View piece) {
        detail::Move(out, piece.data(), piece.size());
        out += piece.size();
    };
    std::size_t copied = 0;
    for (std::uint64_t hit = 0; hit < hits; ++hit) {
        const std::size_t at =
            hit < found.size() ? found[static_cast<std::size_t>(hit)] : FindText(text, pattern, copied);
        put(text.substr(copied, at - copied));
        put(with);
        copied = at + pattern.size();
    }
    put(text.substr(copied));
    *out = 0;
    if (!inPlace) {
        delete[] m_pBuffer;
        m_pBuffer = fresh.release();
        m_nSize = m_nRoom = size;
    }
    m_nLength = static_cast<std::uint32_t>(length);
    return static_cast<int>(hits);
}

template <class C> int BasicString<C>::Replace(C from, C to) {
    int replaced = 0;
    for (std::uint32_t i = 0; i < m_nLength; ++i)
        if (m_pBuffer[i] == from) {
            m_pBuffer[i] = to;
            ++replaced;
        }
    return replaced;
}

// ---- Searching

template <class C> int BasicString<C>::Find(const C* pattern, unsigned start) const {
    const std::basic_string_view<C> text(m_pBuffer, m_nLength), wanted(pattern, detail::LengthOf(pattern));
    if (text.empty()) return -1;
    if (wanted.empty()) return 0;
    const std::size_t at = zynplatform::FindText(text, wanted, start);
    return at == text.npos ? -1 : static_cast<int>(at);
}

template <class C> int BasicString<C>::Find(C character, unsigned start) const {
    if (start >= m_nLength) return -1;
    const std::size_t length = m_nLength - start,
                      at = zynplatform::FindCharacter(m_pBuffer + start, length, character);
    return at == length ? -1 : static_cast<int>(start + at);
}

template <class C> int BasicString<C>::ReverseFind(C character) const {
    const std::basic_string_view<C> text(m_pBuffer, m_nLength);
    const std::size_t at = text.rfind(character);
    return at == text.npos ? -1 : static_cast<int>(at);
}

// ---- Parts

template <class C> BasicString<C> BasicString<C>::Left(int count) const {
    if (m_nLength == 0 || count >= GetLength()) return *this;
    return Mid(0, count);
}

template <class C> BasicString<C> BasicString<C>::Right(int count) const {
    if (m_nLength == 0 || count >= GetLength()) return *this;
    return count <= 0 ? BasicString() : Mid(GetLength() - count, count);
}

template <class C> BasicString<C> BasicString<C>::Mid(int first) const {
    if (first < 0) first = 0;
    return Mid(first, std::max(GetLength() - first, 0));
}

template <class C> BasicString<C> BasicString<C>::Mid(int first, int count) const {
    if (first < 0) first = 0;
    if (count <= 0 || first >= GetLength()) return {};
    count = std::min(count, GetLength() - first);
    if (count == GetLength()) return *this;
    const C* const part = m_pBuffer + first;
    return BasicString(exactly, part,
                       zynplatform::FindCharacter(part, static_cast<std::size_t>(count), C(0)));
}

template <class C> BasicString<C> BasicString<C>::Tokenize(const C* delimiters, int& position) const {
    if (position < 0) return {};
    const detail::CharacterSet<C> set(delimiters);
    const auto length = static_cast<int>(m_nLength);
    int start = position;
    if (set.IsEmpty() && start < length) return Mid(start);
    while (start < length && set.Has(m_pBuffer[start]))
        ++start;
    if (start >= length) {
        position = -1;
        return {};
    }
    int end = start;
    while (m_pBuffer[end] != 0 && !set.Has(m_pBuffer[end]))
        ++end;
    position = end + 1;
    return BasicString(exactly, m_pBuffer + start, static_cast<std::uint64_t>(end - start));
}

// ---- Comparing

template <class C> int BasicString<C>::Order(const C* text) const {
    static constexpr C nothing[1] = {};
    if (!text) text = nothing;
    if constexpr (isNarrow) {
        return std::strcmp(m_pBuffer, text);
    } else {
        const std::size_t at = zynplatform::FindDifference(m_pBuffer, m_nLength, text);
        return m_pBuffer[at] == text[at] ? 0 : m_pBuffer[at] < text[at] ? -1 : 1;
    }
}

// How much of the beginning is the same without case, at least.
inline std::size_t SameWithoutCase(const char* left, std::size_t length, const char* right) {
    return zynplatform::SameWithoutCase(left, right, zynplatform::FindCharacter(right, length, 0));
}
inline std::size_t SameWithoutCase(const WCHAR* left, std::size_t length, const WCHAR* right) {
    constexpr std::size_t block = 32; // in a loop that becomes vector code
    const std::size_t common = zynplatform::LengthOf(right, length);
    std::size_t at = 0;
    for (; common - at >= block; at += block) {
        unsigned differing = 0;
        for (std::size_t i = at; i < at + block; ++i)
            differing |=
                StringTraits<WCHAR>::Upper(left[i]) ^ unsigned { StringTraits<WCHAR>::Upper(right[i]) };
        if (differing != 0) break;
    }
    return at;
}

template <class C> int BasicString<C>::Compare(const C* text, bool caseSensitive) const {
    using Traits = StringTraits<C>;
    if (!text) return !caseSensitive && m_nLength == 0 && Traits::nullEqualsEmptyWithoutCase ? 0 : 1;
    if (caseSensitive) return Order(text);
    std::size_t i = SameWithoutCase(m_pBuffer, m_nLength, text);
    for (;; ++i) {
        if (i == m_nLength) return text[i] == 0 ? 0 : -1;
        const C left = m_pBuffer[i], right = text[i];
        if (left == right) {
            if (left == 0) return 0;
            continue;
        }
        if (right == 0) return 1;
        const C foldedLeft = Traits::Upper(left), foldedRight = Traits::Upper(right);
        if (foldedLeft != foldedRight) return Traits::FoldedBefore(foldedLeft, foldedRight) ? -1 : 1;
    }
}

// ---- Made from elsewhere

template <class C> int BasicString<C>::Format(const C* format, ...) {
    if (!format || *format == 0) {
        if (StringTraits<C>::emptyFormatEmpties) Empty();
        return 0;
    }
    C buffer[detail::formatRoom];
    std::va_list arguments;
    va_start(arguments, format);
    const int length = StringTraits<C>::Format(buffer, detail::formatRoom, format, arguments);
    va_end(arguments);
    *this = static_cast<const C*>(buffer);
    return length;
}

template <class C> int BasicString<C>::GetEnvironmentVariableA(const C* name) {
    std::basic_string<C> value;
    const bool found = StringTraits<C>::Environment(name, value); // the name may lie in this string
    Empty();
    if (!found) return 0;
    Reserve(std::uint64_t{value.size()} + 2);
    detail::Copy(m_pBuffer, value.data(), value.size());
    SetLength(static_cast<unsigned>(value.size()));
    return 1;
}

template <class C> bool BasicString<C>::LoadStringA(void* moduleHandle, unsigned id) {
    const char* const text = moduleHandle && id != 0 ? zynFindStringResource(moduleHandle, id) : nullptr;
    if (!text) return false;
    *this = text;
    return true;
}

} // namespace zyn
