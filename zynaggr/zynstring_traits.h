// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/cp1251.h"
#include "zynplatform/types.h"

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <string>

// In what the two string classes differ. Not a public header.

namespace zyn {

template <class C> struct StringTraits;

template <> struct StringTraits<char> {
    static constexpr std::uint64_t sizeLimit = 0xFFFFFFFF; // characters that a buffer may hold

    // As the code page's tables have it, in a form that compilers turn into vector code.
    static constexpr char Upper(char c) {
        const auto byte = static_cast<std::uint8_t>(c);
        const bool isLetter = static_cast<std::uint8_t>(byte - 'a') < 26 || byte >= 0xE0;
        return static_cast<char>(byte - (isLetter ? 0x20 : byte == 0xB8 ? 0x10 : 0));
    }
    static constexpr char Lower(char c) {
        const auto byte = static_cast<std::uint8_t>(c);
        const bool isLetter = static_cast<std::uint8_t>(byte - 'A') < 26 || (byte & 0xE0) == 0xC0;
        return static_cast<char>(byte + (isLetter ? 0x20 : byte == 0xA8 ? 0x10 : 0));
    }

    // The order without case: folded bytes, compared as signed.
    static bool FoldedBefore(char left, char right) {
        return static_cast<signed char>(left) < static_cast<signed char>(right);
    }
    // Without case, the empty text does not equal null.
    static constexpr bool nullEqualsEmptyWithoutCase = false;
    // The length to which MakeReverse works and comparing without case is bounded.
    static constexpr bool reversesToFirstZero = true;
    static constexpr bool emptyFormatEmpties = true;

    // Formats into a buffer of `size` characters; the length, or -1 when it was cut or the format is
    // ill-formed.
    static int Format(char* buffer, std::size_t size, const char* format, std::va_list arguments);
    static bool Environment(const char* name, std::string& value);
};

template <> struct StringTraits<WCHAR> {
    static constexpr std::uint64_t sizeLimit = 0x7FFFFFFF; // the bytes must be countable in 32 bits

    static constexpr WCHAR Upper(WCHAR c) {
        if ((c >= u'a' && c <= u'z') || (c >= u'\u0430' && c <= u'\u044F'))
            return static_cast<WCHAR>(c - 0x20);
        return c == u'\u0451' ? u'\u0401' : c;
    }
    static constexpr WCHAR Lower(WCHAR c) {
        if ((c >= u'A' && c <= u'Z') || (c >= u'\u0410' && c <= u'\u042F'))
            return static_cast<WCHAR>(c + 0x20);
        return c == u'\u0401' ? u'\u0451' : c;
    }

    static bool FoldedBefore(WCHAR left, WCHAR right) { return left < right; }
    static constexpr bool nullEqualsEmptyWithoutCase = true;
    static constexpr bool reversesToFirstZero = false;
    static constexpr bool emptyFormatEmpties = false;

    static int Format(WCHAR* buffer, std::size_t size, const WCHAR* format, std::va_list arguments);
    static bool Environment(const WCHAR* name, std::u16string& value);
};

} // namespace zyn
