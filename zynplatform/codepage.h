// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"
#include "zynplatform/types.h"

#include <cstddef>
#include <string>
#include <string_view>

// Conversion between 8-bit and 16-bit text.
//
// Code pages 1251 and 65001 (UTF-8) are converted by tables and loops of our own, every other one by the
// system's converter; a code page that the system does not know converts to nothing: each function answers 0.
// The numbers that name a page by its part are known too: 0 and 3, the system's and the thread's page, are
// 1251, 1 and 2, those of the console and of the other desktop, 866 and 10007.
//
// What has no counterpart is replaced, never refused:
// - a character that an 8-bit page cannot hold becomes '?', one for each 16-bit unit: two for a surrogate
//   pair;
// - ill-formed UTF-8 becomes U+FFFD, one for each maximal ill-formed part, and so does a byte of another page
//   that stands for no character; byte 0x98 of 1251 is U+0098 and back;
// - UTF-8 beyond U+FFFF becomes a surrogate pair and back; an unpaired surrogate becomes U+FFFD in UTF-8.
//
// Lengths are given, never found by a terminating zero, and no terminator is written; zero bytes convert like
// any other character, a byte-order mark, too. A null text of length 0 is an empty one. Text and target don't
// overlap. Nothing is allocated for the two pages of our own. All functions are safe from several threads.

namespace zynplatform {

inline constexpr unsigned ansiCodePage = 1251;  // the system's 8-bit code page: always this one
inline constexpr unsigned utf8CodePage = 65001; // UTF-8

// The number of 16-bit units that `length` bytes at `text` convert to: what ToWide writes.
ZYN_API std::size_t WideLength(unsigned codePage, const char* text, std::size_t length);
// Converts into `target`, which has room for WideLength() units; returns the units written.
ZYN_API std::size_t ToWide(unsigned codePage, const char* text, std::size_t length, WCHAR* target);

// The number of bytes that `length` units at `text` convert to: what ToNarrow writes.
ZYN_API std::size_t NarrowLength(unsigned codePage, const WCHAR* text, std::size_t length);
// Converts into `target`, which has room for NarrowLength() bytes; returns the bytes written.
ZYN_API std::size_t ToNarrow(unsigned codePage, const WCHAR* text, std::size_t length, char* target);

// From UTF-8 to code page 1251 and back, with the same result as by way of 16-bit text. Utf8To1251 writes up
// to `length` bytes, From1251ToUtf8 up to three times as many; both return how many.
ZYN_API std::size_t Utf8To1251(const char* text, std::size_t length, char* target);
ZYN_API std::size_t From1251ToUtf8(const char* text, std::size_t length, char* target);

// A text of one code page in another one.
ZYN_API std::string Recode(std::string_view text, unsigned from, unsigned to);

} // namespace zynplatform
