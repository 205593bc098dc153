// SPDX-License-Identifier: MIT
#pragma once

#include "zynhost/sharedtext.h"
#include "zynplatform/export.h"
#include "zynplatform/types.h"

#include <concepts>
#include <cstdarg>
#include <functional>
#include <string>
#include <string_view>
#include <type_traits>

namespace zyn {

// A std::string_view, a std::string and the like: a text with its length that is no zero-terminated one.
template <class T>
concept TextView =
    std::is_convertible_v<const T&, std::string_view> && !std::is_convertible_v<const T&, const char*>;

} // namespace zyn

// The host class library's counted 8-bit string: the working string type of the library.
//
// Text is bytes in the system's code page (1251), always followed by a zero byte; the length is counted, so
// zero bytes may stand inside. Letters are folded by the code page's own table, never by the process's
// locale. White space is blank, tab, line feed, vertical tab, form feed and carriage return.
//
// A null pointer counts as an empty text wherever a text is taken. Where a std::string_view is taken, it is
// with all its bytes, zeros too, and so is a std::string; it may be part of the string itself. Positions are
// counted in bytes; -1 means "not found". Running out of memory throws std::bad_alloc, and so does a text of
// 2 GiB or more, whose length an int can't tell. One object is for one thread at a time.
//
// A copy of a long text costs no memory: it is shared until one of the copies changes, which may belong to
// different threads. What GetBuffer gave is shared with nobody before ReleaseBuffer.
class ZYN_API CStringA {
public:
    CStringA() = default;
    // The text up to its zero, or so many bytes of it.
    CStringA(const char* text) : m_text(std::string_view(text ? text : "")) {}
    CStringA(const char* text, int length) : m_text(Piece(text, length)) {}
    // Converts with the system's code page; what it cannot hold becomes '?'.
    CStringA(const WCHAR* text);
    // A character, so many times, or a text with its length.
    explicit CStringA(char character) : m_text(character) {}
    explicit CStringA(char character, int count);
    explicit CStringA(std::string_view text) : m_text(text) {}

    // As the constructors.
    CStringA& operator=(const char* text) {
        m_text.Assign(text ? text : "");
        return *this;
    }
    CStringA& operator=(const WCHAR* text);
    template <zyn::TextView Text> CStringA& operator=(const Text& text) {
        m_text.Assign(text);
        return *this;
    }
    CStringA& operator=(char character) {
        m_text.Assign({&character, 1});
        return *this;
    }

    // The length in bytes; whether it is 0.
    int GetLength() const { return static_cast<int>(m_text.Length()); }
    bool IsEmpty() const { return m_text.Length() == 0; }
    void Empty() { m_text.Assign({}); } // the length is 0 afterwards
    // The text with the zero behind it, valid until the string changes.
    const char* GetString() const { return m_text.Get(); }
    operator const char*() const { return m_text.Get(); }
    // The text with its length, zero bytes inside included; valid until the string changes.
    std::string_view View() const { return m_text.View(); }

    // The character at an index from 0 to the length; there is none beyond it.
    char GetAt(int index) const { return m_text.Get()[index]; }
    char operator[](int index) const { return GetAt(index); }
    template <std::integral Index>
    char operator[](Index index) const { // or the conversion above would do as well
        return m_text.Get()[static_cast<std::size_t>(index)];
    }
    void SetAt(int index, char character) { Own()[index] = character; }

    // Append to the text.
    CStringA& operator+=(const CStringA& text) { return Append(text.View()); }
    CStringA& operator+=(const char* text) { return Append(text); }
    template <zyn::TextView Text> CStringA& operator+=(const Text& text) {
        return Append(std::string_view(text));
    }
    CStringA& operator+=(char character) { return Append(std::string_view(&character, 1)); }
    CStringA& Append(const CStringA& text) { return Append(text.View()); }
    CStringA& Append(const char* text) { return Append(std::string_view(text ? text : "")); }
    CStringA& Append(const char* text, int length) { return Append(Piece(text, length)); }
    CStringA& Append(std::string_view text) {
        m_text.Append(text);
        return *this;
    }
    // A new string of two texts, as operator+ makes it.
    static CStringA Joined(std::string_view left, std::string_view right);

    // The first `count` bytes, the last `count`, or `count` from `first` on; what lies outside the text is
    // left out.
    CStringA Left(int count) const;
    CStringA Right(int count) const;
    CStringA Mid(int first) const;
    CStringA Mid(int first, int count) const;

    // Where it stands first, from `start` on, or last; -1 for nowhere.
    int Find(char character, int start = 0) const;
    int Find(const char* text, int start = 0) const;
    int Find(std::string_view text, int start = 0) const;
    int ReverseFind(char character) const;

    // Each returns how many places it changed.
    int Replace(char from, char to);
    int Replace(const char* from, const char* to);
    int Remove(char character);

    // Take white space, or every one of a character, off one end or both.
    CStringA& Trim() { return TrimRight().TrimLeft(); }
    CStringA& TrimLeft();
    CStringA& TrimRight();
    CStringA& Trim(char character) { return TrimRight(character).TrimLeft(character); }
    CStringA& TrimLeft(char character);
    CStringA& TrimRight(char character);

    // Fold the letters; return the string.
    CStringA& MakeLower();
    CStringA& MakeUpper();

    // Negative, 0 or positive, byte by byte; CompareNoCase compares lower-cased bytes.
    int Compare(const char* text) const;
    int Compare(std::string_view text) const { return View().compare(text); }
    int CompareNoCase(const char* text) const;

    // As printf. The text may be an argument of its own format.
    void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void FormatV(const char* format, std::va_list arguments);
    void AppendFormat(const char* format, ...) __attribute__((format(printf, 2, 3)));

    // The next piece from `position` on that holds none of the delimiters; moves `position` behind it, and to
    // -1 with an empty result when there is none.
    CStringA Tokenize(const char* delimiters, int& position) const;

    // Makes room for so many characters, where they are known to come.
    void Preallocate(int length) { m_text.Reserve(length > 0 ? static_cast<std::size_t>(length) : 0); }
    // Room to write at least `length` characters in place; ReleaseBuffer then takes the length given, or with
    // -1 the text up to its first zero.
    char* GetBuffer(int length);
    void ReleaseBuffer(int length = -1);

    // Reads an environment variable that holds a path, in library form; false, with the text empty, when
    // there is none.
    bool GetEnvironmentVariable(const char* name);

private:
    static std::string_view Piece(const char* text, int length) {
        return text && length > 0 ? std::string_view(text, static_cast<std::size_t>(length)) : "";
    }
    // The text for writing in place.
    char* Own() { return m_text.Resize(m_text.Length()); }
    CStringA& Keep(std::string_view part);

    zyn::SharedText m_text;
};

// The one text, then the other. A sum of several grows in one place.
inline CStringA operator+(const CStringA& left, std::string_view right) {
    return CStringA::Joined(left.View(), right);
}
inline CStringA operator+(CStringA&& left, std::string_view right) {
    return std::move(left.Append(right));
}
inline CStringA operator+(const CStringA& left, const CStringA& right) {
    return CStringA::Joined(left.View(), right.View());
}
inline CStringA operator+(CStringA&& left, const CStringA& right) {
    return std::move(left.Append(right.View()));
}
inline CStringA operator+(const CStringA& left, const char* right) {
    return CStringA::Joined(left.View(), right ? right : "");
}
inline CStringA operator+(CStringA&& left, const char* right) {
    return std::move(left.Append(right));
}
inline CStringA operator+(const char* left, const CStringA& right) {
    return CStringA::Joined(left ? left : "", right.View());
}
inline CStringA operator+(const CStringA& left, char right) {
    return CStringA::Joined(left.View(), {&right, 1});
}
inline CStringA operator+(CStringA&& left, char right) {
    return std::move(left += right);
}

// Byte by byte.
inline bool operator==(const CStringA& left, const CStringA& right) {
    return left.View() == right.View();
}
inline bool operator==(const CStringA& left, const char* right) {
    return left.Compare(right) == 0;
}
inline bool operator==(const CStringA& left, std::string_view right) {
    return left.View() == right;
}
inline bool operator<(const CStringA& left, const CStringA& right) {
    return left.View() < right.View();
}

namespace std {
// Equal texts have equal hashes.
template <> struct hash<CStringA> {
    // Of the whole text, zero bytes included.
    size_t operator()(const CStringA& text) const noexcept { return hash<string_view>()(text.View()); }
};
} // namespace std
