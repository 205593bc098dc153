// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <string>

namespace zynplatform {

// Reads an environment variable as it is set, by its name as the system has it (in UTF-8). Where the variable
// itself is not set, or empty, "TEMP" is answered with TMPDIR and "USERPROFILE" with HOME. False, with
// `value` empty, when it is not set.
ZYN_API bool GetEnvironmentValue(const char* name, std::string& value);

// Reads an environment variable that holds a path, in library form (see paths.h), by its name in the
// library's code page: a native path is translated, one written with backslashes and without a slash is taken
// as it stands. False, with `value` empty, when it is not set or empty.
ZYN_API bool GetEnvironmentPath(const char* name, std::string& value);

// The folder for temporary files in library form, a backslash at its end; empty when none is set.
ZYN_API std::string GetTempFolder();

} // namespace zynplatform
