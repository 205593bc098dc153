// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <string>
#include <string_view>

// The one place where path names are translated. The library speaks backslash paths in code page 1251; the
// system speaks slash paths, in UTF-8 as everybody writes them here.
//
// The translation of a native name loses nothing: a byte of it that the library form cannot hold (part of a
// character outside the code page, ill-formed UTF-8, a backslash within a name) is written as byte 0x98,
// which is no character of the code page, and two upper-case hexadecimal digits.

namespace zynplatform {

// A library path for a system call. A name that begins with '/', or has a '/' and no backslash, is a native
// path already and stays as it is.
ZYN_API std::string ToNativePath(std::string_view libraryPath);

// What the system answered, in library form.
ZYN_API std::string FromNativePath(std::string_view nativePath);

// The name a caller gave, in library form: a native path is translated, every other name stays as it is.
ZYN_API std::string ToLibraryPath(std::string_view callersPath);

} // namespace zynplatform
