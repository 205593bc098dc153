// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zyn {

// A part of a line, from its first place to the one behind its last.
struct IniSpan {
    std::size_t begin = 0, end = 0;

    bool IsEmpty() const { return begin == end; }
    std::string_view Of(std::string_view line) const { return line.substr(begin, end - begin); }
};

// What a line of an INI file is made of, given without its end:
//     <blanks>name<blanks>=<blanks>value<blanks>        a pair
//     prefix[<blanks>name<blanks>]value                 a header; without "]" the value is empty
//     <blanks>value<blanks>                             any other text
struct IniLine {
    enum Kind { text, pair, header };

    Kind kind = text;
    IniSpan prefix{}; // what stands before the "[" is the first part of the name
    IniSpan name{};
    IniSpan value{};
    bool hasOpening = false, hasClosing = false; // brackets of a header

    // The name of a section in the line.
    std::string NameIn(std::string_view line) const {
        return std::string(prefix.Of(line)).append(name.Of(line));
    }
};

// Without the white space at its ends.
std::string_view TrimmedBlanks(std::string_view text);

// The place of the character that decides what the line is, or the line's length.
std::size_t FindIniMark(std::string_view line);

// With `trimNames`, blanks around a name do not belong to it.
IniLine SplitIniLine(std::string_view line, std::size_t mark, bool trimNames);

} // namespace zyn
