// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/zynmessagenames.h"
#include "zynhost/carray.h"
#include "zynhost/cstring.h"
#include "zynhost/decimal.h"
#include "zynplatform/automation.h"
#include "zynplatform/export.h"

#include <cstdint>
#include <string>
#include <string_view>

// Small helpers that the library and its hosts share. Texts are in the library's code page, paths are
// backslash paths unless "native" is said. A null pointer counts as an empty text. None of these functions
// throws, but for running out of memory, and all are safe from several threads.

// ---- Texts

// A digit; with `hex` also a hexadecimal digit of either case.
ZYN_API bool IsNumber(char character, bool hex = false);

// Whether a text consists of such digits. One minus may stand before them, or with `hex` the prefix "0x"
// (lower-case x, at least one digit behind it), not both. Hexadecimal digits need no prefix. An empty text is
// no number; a lone minus is one, so check the length before relying on a digit being there.
ZYN_API bool IsNumber(const CStringA& text, bool hex = false);
ZYN_API bool IsNumber(const char* text, bool hex = false);
ZYN_API bool IsNumber(std::string_view text, bool hex = false);

// True for null and for "".
ZYN_API bool zynIsStringEmpty(const char* text);

// As sprintf: writes the formatted text and a zero, without any bound, and returns the number of characters.
// The caller guarantees the room; where he can't, CStringA::Format or std::snprintf is the choice.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the name that callers know
ZYN_API int _sprintf(char* destination, const char* format, ...) __attribute__((format(printf, 2, 3)));

// Splits at every separator. Empty pieces are dropped: ",a,,b," gives "a" and "b". What `out` held before is
// lost.
ZYN_API void CStringSplit(CStringArray& out, const CStringA& text, char separator);

// Joins the elements that aren't empty: "a", "", "b" with ";" gives "a;b".
ZYN_API CStringA CStringJoin(const CStringArray& array, const char* separator);

// ---- Files and names

// The folder for temporary files with a backslash at its end: the environment variable TEMP, else TMPDIR.
// Empty when neither is set.
ZYN_API void zynGetTempPath(CStringA& out);

// The first of <temporary folder><prefix>1.<extension>, ...2.<extension> and so on that does not exist;
// relative to the current folder when there is no temporary folder. Always true. No file is created: another
// process may take the name first, so open it in a way that fails then.
ZYN_API bool zynGetTempFileName(const char* prefix, const char* extension, CStringA& out);

// The file name of the process's executable with its full path. False, with `out` empty, when the system does
// not tell or the name is longer than 259 characters: it is never cut.
ZYN_API bool zynGetModuleFileName(CStringA& out);

// The folder of the executable with a backslash at its end; fails likewise.
ZYN_API bool zynGetModuleFilePath(CStringA& out);

// Puts `replacement` in place of each character that a file name can't hold: line feed \ / : * ? " < > |. It
// is for the name of a file alone, since it takes the separators of a path too.
ZYN_API void zynCorrectFileName(CStringA& name, char replacement);

// Whether a connection (`database` false) or a database (true) may have this name: two characters at least,
// and none of : \ / = for a connection, of \ / < > * ? : " | for a database. `error` becomes empty, or the
// translated message that tells the user what is wrong.
ZYN_API bool IsNameCorrect(const CStringA& name, CStringA& error, bool database);

// Between the library's paths and the system's own (slashes, UTF-8). A path that begins with a slash is
// native already and stays as it is in zynToNativePath. Native names that the code page can't hold survive
// the way there and back.
ZYN_API CStringA zynFromNativePath(const char* nativePath);
ZYN_API CStringA zynFromNativePath(std::string_view nativePath);
ZYN_API std::string zynToNativePath(const char* path);
ZYN_API std::string zynToNativePath(std::string_view path);

// ---- System

// A translated text for a Windows error number (CFileException::m_lOsError, for example): "Описание ошибки:
// ..." with the system's description, which is empty for an unknown number; with `withCode` a line "Код
// ошибки: ...;" comes first. The text has no carriage return.
ZYN_API void zynGetDescriptionSystemError(int code, CStringA& out, bool withCode);

// A buffer size in bytes, whole MiB: `percent` (at most 40 counts) of the memory or the address space
// available, whichever is less. At most 4095 MiB; 16 MiB when the system does not tell; 0 when less than one
// MiB comes out.
ZYN_API unsigned zynGetOptimalBufSize(unsigned percent);

// Checks that automation works on this thread and that the spreadsheet application's server is registered: 0
// when so, else 1 and, with `showMessages`, a message box that says what is missing. No server is started and
// `dispatch` stays as it is. After a 0 automation remains initialised on the thread, until
// zynplatform::UninitializeAutomation undoes it.
ZYN_API int InitializeExcell(IDispatch*& dispatch, bool showMessages);

// InitializeExcell for a caller who wants just the answer; automation remains initialised here too.
ZYN_API bool zynCheckExcel(bool showMessages);
