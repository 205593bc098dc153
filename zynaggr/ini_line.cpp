// SPDX-License-Identifier: MIT
#include "zynaggr/ini_line_impl.h"

#include <algorithm>

namespace zyn {
namespace {

constexpr std::string_view whiteSpace = " \t\n\v\f\r";

// Without white space at its ends; nothing but that is empty at its end.
IniSpan Trimmed(std::string_view line, IniSpan span) {
    while (span.begin < span.end && whiteSpace.find(line[span.begin]) != line.npos)
        ++span.begin;
    while (span.begin < span.end && whiteSpace.find(line[span.end - 1]) != line.npos)
        --span.end;
    return span;
}

// The first "[" goes, and what stands before it joins the name; the name ends at the last "]" and begins
// behind the one before that.
IniLine SplitHeader(std::string_view line, std::size_t mark, bool trimNames) {
    IniLine header{.kind = IniLine::header, .name = {0, line.size()}, .value = {line.size(), line.size()}};
    header.hasOpening = line[mark] == '[';
    if (header.hasOpening) {
        header.prefix = {0, mark};
        header.name.begin = mark + 1;
    }
    const std::size_t close = line.rfind(']');
    header.hasClosing = close != line.npos;
    if (header.hasClosing) {
        header.name.end = close;
        header.value.begin = close + 1;
        const std::size_t before = close > 0 ? line.rfind(']', close - 1) : line.npos;
        if (before != line.npos) {
            header.name.begin = before + 1;
            header.prefix = {};
        }
    }
    if (!trimNames) return header;
    const IniSpan prefix = Trimmed(line, header.prefix);
    if (prefix.IsEmpty()) {
        header.prefix = prefix;
        header.name = Trimmed(line, header.name);
    } else {
        header.prefix.begin = prefix.begin;
        header.name.end = Trimmed(line, {prefix.begin, header.name.end}).end;
    }
    return header;
}

} // namespace

std::string_view TrimmedBlanks(std::string_view text) {
    return Trimmed(text, {0, text.size()}).Of(text);
}

std::size_t FindIniMark(std::string_view line) {
    const auto isMark = [](char c) { return c == ';' || c == '#' || c == '[' || c == ']' || c == '='; };
    return static_cast<std::size_t>(std::find_if(line.begin(), line.end(), isMark) - line.begin());
}

IniLine SplitIniLine(std::string_view line, std::size_t mark, bool trimNames) {
    const char kind = mark < line.size() ? line[mark] : '\0';
    if (kind == '[' || kind == ']') return SplitHeader(line, mark, trimNames);
    if (kind != '=') return {.kind = IniLine::text, .value = Trimmed(line, {0, line.size()})};
    const IniSpan name{0, mark};
    return {.kind = IniLine::pair,
            .name = trimNames ? Trimmed(line, name) : name,
            .value = Trimmed(line, {mark + 1, line.size()})};
}

} // namespace zyn
