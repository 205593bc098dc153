// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/types.h"

#include <cstddef>
#include <cstring>

// Going through a text. For bytes mostly the C library's functions; for 16-bit units by vectors, where the
// standard library goes one by one.

namespace zynplatform {

// The characters before the zero of a text, or `most`, which is as far as it looks.
std::size_t LengthOf(const WCHAR* text, std::size_t most = static_cast<std::size_t>(-1));
inline std::size_t LengthOf(const char* text) {
    return std::strlen(text);
}

// Where a character stands first; `length` for nowhere.
std::size_t FindCharacter(const WCHAR* text, std::size_t length, WCHAR character);
inline std::size_t FindCharacter(const char* text, std::size_t length, char character) {
    const void* const found = std::memchr(text, character, length);
    return found ? static_cast<std::size_t>(static_cast<const char*>(found) - text) : length;
}

// Where two texts differ, or where both have a zero. The left one has a length, and a zero behind it.
std::size_t FindDifference(const WCHAR* left, std::size_t length, const WCHAR* right);

// So many bytes at least are the same when case is folded as page 1251 has it.
std::size_t SameWithoutCase(const char* left, const char* right, std::size_t length);

} // namespace zynplatform
