// SPDX-License-Identifier: MIT
#pragma once

#include "zynhost/carray.h"

#include <string>
#include <string_view>
#include <vector>

// How CzynCSV splits a record, the slow way.

using Row = std::vector<std::string>;

inline Row Texts(const CStringArray& fields) {
    Row row;
    for (const CStringA& field : fields)
        row.emplace_back(field.View());
    return row;
}

inline std::string WithoutLeadingSpaces(std::string text) {
    return text.erase(0, text.find_first_not_of(' '));
}

// The rules, one character at a time, on copies of what is left. What is missing at the end reads as 0.
inline Row SplitPlainly(const std::string& text, char separator, bool escapes) {
    std::string rest = WithoutLeadingSpaces(text);
    Row row{""};
    bool quoted = false;
    for (char before = 0, c = 0; !rest.empty(); before = c) {
        c = rest[0];
        rest.erase(0, 1);
        std::string& field = row.back();
        const std::string follows = WithoutLeadingSpaces(rest),
                          behind = WithoutLeadingSpaces(rest[0] ? rest.substr(1) : "");
        if (c == separator && !quoted) {
            row.emplace_back();
            rest = follows;
        } else if (c == '"' && c != separator && (!quoted || rest.empty())) {
            quoted = true;
        } else if (c == '"' && c != separator && before == '"' && field.empty()) {
            quoted = follows[0] != separator;
            if (quoted) field += '"';
            if (quoted && rest[0] == '"') rest.erase(0, 1);
        } else if (c == '"' && c != separator && follows[0] == ',') {
            const std::string afterComma = WithoutLeadingSpaces(follows.substr(1));
            quoted = afterComma[0] == '"';
            if (quoted) field += "\",\"";
            if (quoted) rest = afterComma.substr(1);
        } else if (c == '"' && c != separator) {
            quoted = rest[0] == '"' && !behind.empty() && behind[0] != separator;
            if (rest[0] != '"') continue;
            field += '"';
            rest = behind[0] == separator && !behind.empty() ? behind : rest.substr(1);
        } else if (c == '\\' && escapes && c != separator) {
            const bool isEscape = quoted && (rest[0] == '\\' || rest[0] == 'n');
            if (isEscape) field += rest[0] == 'n' ? '\n' : '\\';
            if (isEscape) rest.erase(0, 1);
            quoted = !quoted || isEscape;
        } else if (c != '\t' || quoted) {
            field += c;
        }
    }
    return row;
}
