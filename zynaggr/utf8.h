// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/zynencoding.h"
#include "zynhost/cstring.h"
#include "zynplatform/export.h"

#include <string>
#include <string_view>

// Between UTF-8, in which most hosts have their texts here, and the library's own texts in code page 1251.
//
//     ini.WriteString("user", "name", zynFromUtf8(name), nullptr);
//     std::string greeting = zynToUtf8(ini.GetString("user", "greeting", "", false));
//
// Zero bytes are characters like others. Safe from several threads; only running out of memory throws.

// Loses nothing: every byte of the code page is a character.
ZYN_API std::string zynToUtf8(const CStringA& text);

// What the code page cannot hold becomes '?' (two for a character above U+FFFF), and so does ill-formed
// UTF-8; `isLost`, when given, becomes whether there was any.
ZYN_API CStringA zynFromUtf8(std::string_view utf8, bool* isLost = nullptr);

// The bytes of a text file in whatever encoding they are in, without the mark; what is ill-formed becomes
// U+FFFD. `found`, when given, becomes the encoding that was found, by the same rules as in a CzynStringFile.
ZYN_API std::string zynFileToUtf8(std::string_view bytes, const zynEncodingChoice& choice = {},
                                  zynTextEncoding* found = nullptr);
