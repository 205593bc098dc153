// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <cstdint>

// How the library tells the user something: on the console or in a message box.
//
// The icon bits of the style word make the class of a message:
//
//     style                          class        console prefix     in Russian                colour
//     0x10 and 0x20 set              warning      "zyn Warning: "    "Предупреждение: "        bright yellow
//     0x10 set, 0x20 not             error        "zyn Error: "      "Ошибка: "                bright red
//     0x10 not set, 0x40 set         information  "zyn Info: "       " "                       as usual
//     neither 0x10 nor 0x40          plain        none               none                      as usual
//
// (So 0x70 is a warning, 0x50 an error, and the question icon 0x20 plain.) Two line feeds come before the
// prefix, none after the text. Texts are in code page 1251 and shown as they stand: a percent sign is a
// percent sign. What a terminal shows in place of these bytes is said in zynplatform/console.h.
//
// Both functions may be called from any thread and in the child of a fork, and console messages of several
// threads do not mix. The flags
// are not guarded: set them before other threads use the library. (CzynINI sets the second one while it
// warns: a warning of another thread is then shown as well.)

// While its flag is false, a class is shown by neither function. Plain messages are always shown.
ZYN_API extern bool g_bShow_zynMessageBox_Error;
ZYN_API extern bool g_bShow_zynMessageBox_Warning;
ZYN_API extern bool g_bShow_zynMessageBox_Information;
// For host programs that wait for a key; the library does not look at it.
ZYN_API extern bool g_bShow_zynMessageBox_WaitEnter;
// Once zynMessagePrint has been called with this flag true, even for a message that is not shown, the console
// prefixes are Russian for the rest of the process, whatever the flag becomes. Initially false, the others
// true.
ZYN_API extern bool g_bShow_zynMessageBox_InRussian;

// Writes a message to the console, through the C library's standard output and behind what is pending there.
// A null or empty text is not shown. Always returns 1.
ZYN_API int zynMessagePrint(const char* szText, std::uint32_t uStyle);

// Shows a message box through the application object (zynhost/application.h) with the style word as given,
// and returns the button pressed; 1, as for OK, when the class is not shown. An empty text is shown too. Only
// the OK button may be asked for: the low three bits of the style word are 0.
ZYN_API int zynMessageBoxConsole(const char* szText, std::uint32_t uStyle);
