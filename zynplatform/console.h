// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <string>
#include <string_view>

// The console of the process: text and colours to the C library's standard output, and messages to standard
// error.
//
// Text of the library is in code page 1251. Into a pipe or a file it goes byte for byte and without colours,
// so that what reads it gets the library's bytes. Only where the stream is a terminal is it turned into the
// terminal's encoding, and attribute words into colours.
//
// The terminal's encoding is the part after the dot in the first of LC_ALL, LC_CTYPE and LANG that is set and
// not empty: "CP" with a number, or "KOI8-R", is that code page; everything else, also no such part, is
// UTF-8.
//
// Everything goes through stdio, after what the host has pending there, and failures to write are ignored. To
// a stream on which the host has printed wide characters (wprintf), which takes no bytes, it goes past stdio
// at once. The other way round the C library allows nothing: a host that prints wide characters says so
// before anything else is printed, by fwide(stdout, 1).
//
// One call is safe from any thread; whoever needs several in a row to stay together holds a lock around them.

namespace zynplatform {

// The colours of what follows: 1 blue, 2 green, 4 red, 8 bright, added up. 15 is the terminal's own colour
// again.
ZYN_API void SetTextAttribute(unsigned attribute);

// Writes library text as it stands; nothing in it is expanded. Does not allocate.
ZYN_API void Write(std::string_view text);

// Hands over what Write has written, and what the host has pending in standard output.
ZYN_API void Flush();

// Shows a message where there is no window to show it in: "caption: text" and a line end, to standard error.
// A null or empty caption is left out, a null text is an empty one. Does not allocate, so that it can tell of
// lacking memory.
ZYN_API void ShowMessage(const char* text, const char* caption);

// With true, text is in the terminal's encoding also in a pipe or file: for a host program that writes its
// own text in that encoding and wants one encoding in one stream. Initially false.
ZYN_API void UseTerminalEncoding(bool use);

// Library text to the terminal's encoding, and back: for what a host writes itself, and for its arguments.
// What the target cannot hold becomes '?'; with a code page that the system does not know the bytes stay as
// they are.
ZYN_API std::string ToTerminal(std::string_view text);
ZYN_API std::string FromTerminal(std::string_view text);
// The same for texts in UTF-8; where that is the terminal's encoding, they stay as they are.
ZYN_API std::string Utf8ToTerminal(std::string_view utf8);
ZYN_API std::string TerminalToUtf8(std::string_view text);

} // namespace zynplatform
