// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"
#include "zynplatform/types.h"

#include <cassert>
#include <concepts>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

// The library's own growable strings: CzynStringA holds 8-bit text in code page 1251, CzynStringW
// (zynstringw.h) 16-bit text. Both are this one template, and do the same; where they differ it is said.
//
//     CzynStringA text("  Отчёт за год  ");           // in code page 1251
//     text.Trim().MakeUpper();
//     int found = text.Find("ГОД", 0);
//
// A string owns a buffer on the heap, never null, in which a zero character stands behind the text. Lengths,
// indexes and sizes count characters: bytes, or 16-bit units. Zero characters may stand inside the text;
// operations work from the counted length and see them, but for those that say "to its first zero".
//
// The capacity (the size of the buffer, zero included) follows fixed rules. It grows to exactly what an
// operation needs and does not shrink, except that emptying gives the buffer up for one of a single
// character. Appending one character is the only operation that makes spare room, for 15 more. A text that
// grows is moved less often than that, to a block of twice its length, which the capacity doesn't show.
//
// Texts taken may be null, which counts as an empty text where nothing else is said, and may lie in the
// string's own buffer, also in the room behind the text; they count as they were when the operation began.
// Letters are folded by code page 1251, or as the same letters in Unicode: Latin, the Russian alphabet, Ё.
//
// An operation that runs out of memory, or would reach 2^32 bytes, throws std::bad_alloc and leaves the
// string as it was. Nothing else throws. One string is for one thread at a time.
//
// There is no equality operator: compare with Compare. `a == b` compares the addresses of the buffers.
namespace zyn {

// The template behind CzynStringA and CzynStringW; C is the character, char or WCHAR.
template <class C> class ZYN_API BasicString {
    static constexpr bool isNarrow = std::is_same_v<C, char>;
    using Other = std::conditional_t<isNarrow, WCHAR, char>; // the character of the other class

public:
    // ---- Making and assigning

    // An empty string, or a copy of a text.
    BasicString();
    BasicString(const BasicString& other);
    BasicString(const C* text);
    // Converts with the system's code page. Makes room for one character more than needed.
    BasicString(const Other* text);
    // A character, so many times.
    BasicString(C character, unsigned count);
    virtual ~BasicString();

    // As the constructors.
    BasicString& operator=(const BasicString& other);
    BasicString& operator=(const C* text);
    BasicString& operator=(C* text) { return *this = static_cast<const C*>(text); }
    BasicString& operator=(const Other* text);
    BasicString& operator=(Other* text) { return *this = static_cast<const Other*>(text); }
    BasicString& operator=(C character); // one character, also for 0

    // ---- Looking at it

    // The length in characters, without the zero behind them; whether it is 0.
    int GetLength() const { return static_cast<int>(m_nLength); }
    bool IsEmpty() const { return m_nLength == 0; }
    // The text with its zero, valid until the string changes.
    const C* GetCString() const { return m_pBuffer; }
    operator const C*() const { return m_pBuffer; }
    // The character at an index, 0 outside the text.
    C GetAt(int index) const;
    C operator[](int index) const { return GetAt(index); }
    template <std::integral Index> C operator[](Index index) const {
        return GetAt(std::cmp_equal(static_cast<int>(index), +index) ? static_cast<int>(index) : -1);
    }
    // CzynStringW only: stores a character; nothing happens outside the text. A template, so that no exported
    // name has the condition in it, which compilers spell differently.
    template <class = C> void SetAt(int index, C character) requires(!isNarrow) {
        const bool isInside = index >= 0 && static_cast<std::uint32_t>(index) < m_nLength;
        assert(isInside);
        if (isInside) m_pBuffer[index] = character;
    }

    // ---- Writing into the buffer

    // A buffer of at least `size` characters, zero included: so many may be written in all.
    C* GetBuffer(int size);
    // A buffer with room for `length` characters and the zero; the length is set at once.
    C* GetBufferSetLength(int length);
    // Sets the length after writing. A negative one leaves it as it is: it is not looked for.
    void ReleaseBuffer(int length);
    void Empty(); // gives the buffer up

    // ---- Editing; each returns the string

    BasicString& operator+=(const BasicString& other) { return AppendText(other.m_pBuffer, other.m_nLength); }
    BasicString& operator+=(const C* text) {
        // The string's own buffer counts as the string: zero characters inside are appended too.
        if (text == m_pBuffer && *text != 0) return AppendText(text, m_nLength);
        if constexpr (isNarrow) return AppendText(text, text ? std::strlen(text) : 0);
        return Append(text, -1);
    }
    BasicString& operator+=(C character) {
        if (std::uint64_t{m_nLength} + 2 > m_nSize) {
            const std::uint64_t size = std::uint64_t{m_nLength} + 16;
            if (size <= m_nRoom)
                m_nSize = static_cast<std::uint32_t>(size);
            else
                Reserve(size);
        }
        m_pBuffer[m_nLength++] = character;
        m_pBuffer[m_nLength] = 0;
        return *this;
    }
    // Appends `count` characters, all for a negative count, in any case only up to the text's first zero.
    BasicString& Append(const C* text, int count);
    // Fold the letters, or turn the text round.
    BasicString& MakeUpper();
    BasicString& MakeLower();
    BasicString& MakeReverse(); // CzynStringA: only up to the first zero

    // Take every leading or trailing character off that is equal to one, or in a set, or a blank (only
    // U+0020). Where a single character is given and nothing is left, the buffer is given up.
    BasicString& Trim() { return Trim(C(' ')); }
    BasicString& Trim(C character) { return TrimRight(character).TrimLeft(character); }
    BasicString& Trim(const C* set);
    BasicString& TrimLeft() { return TrimLeft(C(' ')); }
    BasicString& TrimLeft(C character);
    BasicString& TrimLeft(const C* set);
    BasicString& TrimRight() { return TrimRight(C(' ')); }
    BasicString& TrimRight(C character);
    BasicString& TrimRight(const C* set);

    // ---- Editing; each returns a number

    // The number of characters deleted, but the length when there was nothing to delete. A negative index
    // counts as 0.
    int Delete(unsigned index, unsigned count);
    // The length afterwards, also when nothing changed. The index is kept within the text.
    int Insert(int index, const C* text);
    int Insert(int index, C character); // 0 changes nothing
    // How many were removed or replaced. Replacements are not searched again.
    int Remove(C character);
    int Replace(const C* from, const C* to);
    int Replace(C from, C to);

    // ---- Searching; an index, or -1

    // An empty pattern is found at 0, wherever the search starts; an empty text holds no pattern.
    int Find(const C* pattern, unsigned start) const;
    int Find(C character, unsigned start) const;
    int ReverseFind(C character) const;

    // ---- Parts; to the part's first zero. What lies outside the text is left out

    BasicString Left(int count) const;
    BasicString Right(int count) const;
    BasicString Mid(int first) const;
    BasicString Mid(int first, int count) const;
    // The next piece without delimiters from `position` on; moves `position` behind its end, to -1 with an
    // empty result when there is none. Without delimiters, the rest of the text, and `position` stays.
    BasicString Tokenize(const C* delimiters, int& position) const;

    // ---- Comparing

    // Negative, 0 or positive, by the texts up to their first zeros. Null comes before every text (the result
    // is 1), but for an empty CzynStringW without case, to which it is equal. Without case, letters are
    // folded to upper case, and differing characters compare as signed bytes (CzynStringA) or as unsigned
    // units.
    int Compare(const C* text, bool caseSensitive) const;
    int CompareNoCase(const C* text) const { return Compare(text, false); }

    // As Compare with case, but null is an empty text. The string stands on the left: `text < string`
    // compares the addresses of the buffers.
    bool operator<(const BasicString& other) const { return Order(other) < 0; }
    bool operator<(const C* text) const { return Order(text) < 0; }
    bool operator<=(const BasicString& other) const { return Order(other) <= 0; }
    bool operator<=(const C* text) const { return Order(text) <= 0; }
    bool operator>(const BasicString& other) const { return Order(other) > 0; }
    bool operator>(const C* text) const { return Order(text) > 0; }
    bool operator>=(const BasicString& other) const { return Order(other) >= 0; }
    bool operator>=(const C* text) const { return Order(text) >= 0; }

    // The one text, then the other.
    friend BasicString operator+(const BasicString& left, const BasicString& right) {
        BasicString result(left);
        result += right;
        return result;
    }
    friend BasicString operator+(const BasicString& left, C right) {
        BasicString result(left);
        result += right;
        return result;
    }
    friend BasicString operator+(C left, const BasicString& right) {
        BasicString result(left, 1);
        result += right;
        return result;
    }

    // ---- Made from elsewhere

    // As printf, into at most 3999 characters: a longer result is cut there. The number of characters, -1
    // when cut or when the format is ill-formed, "%n" included. An empty format empties a CzynStringA and
    // returns 0; it leaves a CzynStringW as it is. %s and %c take text and characters of the string's own
    // kind, %S and %C of the other one, %hs and %hc 8-bit, %ls and %lc 16-bit ones. "I64", "I32" and "I"
    // stand before integers of 64 bits, of 32, and of the size of a pointer; "%2$d" picks an argument.
    int Format(const C* format, ...);
    // An environment variable's value: 1, or 0 with the string empty when there is none. A native absolute
    // path in it becomes a library path; makes room for one character more than needed.
    int GetEnvironmentVariableA(const C* name);
    // A string resource of a module; false, with the string unchanged, when there is none.
    bool LoadStringA(void* moduleHandle, unsigned id);

protected:
    // Sets the capacity, see above; returns it. 0 gives the buffer up.
    unsigned SetSize(unsigned size);
    // Sets the length, with room for it; what the buffer held behind the old one comes to light.
    void SetLength(unsigned length);

    enum Exactly { exactly };
    BasicString(Exactly, const C* text, std::uint64_t length); // so many characters, without room to spare
    static C* Allocated(std::uint64_t size);
    // Returns the old buffer, which is the caller's then, or null when it is still the one. Out of line, to
    // keep short what rarely comes to it.
    [[gnu::noinline]] const C* Grow(std::uint64_t size);
    unsigned Reserve(std::uint64_t size);
    BasicString& Assign(const C* text, std::uint64_t length);
    // In line where there is room.
    BasicString& AppendText(const C* text, std::uint64_t length) {
        if (m_nLength + length >= m_nRoom) return AppendGrowing(text, length);
        if (length != 0)
            std::memmove(m_pBuffer + m_nLength, text, static_cast<std::size_t>(length) * sizeof(C));
        m_nLength += static_cast<std::uint32_t>(length);
        m_pBuffer[m_nLength] = 0;
        if (m_nSize <= m_nLength) m_nSize = m_nLength + 1;
        return *this;
    }
    BasicString& AppendGrowing(const C* text, std::uint64_t length);
    bool IsOwn(const C* text) const { return text >= m_pBuffer && text < m_pBuffer + m_nSize; }
    BasicString& DropLeft(unsigned count);
    int Order(const C* text) const;

    C* m_pBuffer;
    std::uint32_t m_nLength; // without the zero
    std::uint32_t m_nSize;   // the capacity, at least m_nLength + 1
    std::uint32_t m_nRoom; // what the buffer really holds, at least m_nSize: growing within it moves nothing
};

extern template class BasicString<char>;

} // namespace zyn

// 8-bit text.
using CzynStringA = zyn::BasicString<char>;
