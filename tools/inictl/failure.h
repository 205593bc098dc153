// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

// What ends a command, and how the program tells.

enum Status : int {
    statusDone = 0,
    statusNotFound = 1, // also: differences, or oddities, were found
    statusUsage = 2,
    statusRefused = 3, // the file would lose something, or could not hold it
    statusFile = 4,    // a file could not be read or written
};

struct Failure {
    Status status;
    std::string message; // UTF-8; empty for none
};

// A text of the program, given in Russian and in the code page, in the user's language and UTF-8. With
// `name`, this stands in the place of "%s".
std::string Message(const char* text, std::string_view name = {});

// That there is no such section, or entry of it.
[[noreturn]] void FailNotFound(const std::string& section, const std::string& key = {});

// Has texts of the library come in the user's language, too, from now on. Most runs have none.
void UseLanguageOfUser();

// Writes in the terminal's encoding, to standard output.
void Print(std::string_view utf8);
void PrintLine(std::string_view utf8);
// Whether that encoding is UTF-8.
bool IsTerminalUtf8();
