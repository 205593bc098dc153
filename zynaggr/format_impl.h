// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/types.h"

#include <cstddef>
#include <string_view>

// Formats as printf takes them, taken apart. Not a public header.

namespace zyn {

// What is read for a directive. None: the text at the format's end, or "%%".
enum class FormatType { none, integer, longInteger, longLong, realNumber, longReal, pointer };

template <class C> struct FormatDirective {
    std::basic_string_view<C> literal; // the text before it
    std::basic_string_view<C> flags;   // of "-+ #0"
    int width = -1;                    // -1: none
    int precision = -1;                // -1: none
    int widthArgument = 0;             // number of the argument that gives it, from 1 on; 0: none
    int precisionArgument = 0;
    int argument = 0;
    std::basic_string_view<C> written; // the length as the format has it
    const char* length = ""; // as the C library spells it: "h", "hh", "l", "ll", "L", "j", "z" or "t"
    char conversion = 0;     // 0: the text at the format's end
    FormatType type = FormatType::none;
};

// Whether a text or a character is 8-bit, in a format of C.
template <class C> bool IsNarrow(const FormatDirective<C>& directive);

inline constexpr int mostFormatArguments = 100;

// Takes a format apart. Arguments are numbered in order, or all by "n$", up to the number above.
template <class C> class FormatReader {
public:
    using View = std::basic_string_view<C>;

    explicit FormatReader(View format) : m_rest(format) {}

    // The next directive; false at the end, and where the format is ill-formed: so is "%n".
    bool Next(FormatDirective<C>& directive);
    bool IsWellFormed() const { return m_isWellFormed; }

private:
    bool Take(char c);
    int TakeNumber();
    bool TakeArgument(int& argument);
    bool TakeSize(int& size, int& argument);
    const char* TakeLength();
    bool TakeOptions(FormatDirective<C>& directive);
    bool Parse(FormatDirective<C>& directive);

    View m_rest;
    int m_next = 0;
    bool m_isWellFormed = true;
};

extern template class FormatReader<char>;
extern template class FormatReader<WCHAR>;

// Whether two formats read the same arguments in the same order, so that one can stand for the other. False
// when one is ill-formed. Nothing is allocated.
bool ReadSameArguments(std::string_view left, std::string_view right);

} // namespace zyn
