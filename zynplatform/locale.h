// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <cstdint>
#include <string_view>

// The locale of a thread, as a locale identifier (LCID): 1049 is Russian (Russia), 1033 English (United
// States).

namespace zynplatform {

// What SetThreadLocale gave this thread; before that, the user's locale by the first of the environment
// variables LC_ALL, LC_MESSAGES and LANG that is set and not empty. Read anew each time.
ZYN_API std::uint32_t GetThreadLocale();

// For the calling thread only; 0 goes back to the user's locale.
ZYN_API void SetThreadLocale(std::uint32_t lcid);

// The identifier for a POSIX locale name, as "sr_RS.UTF-8@latin": the best match of language, region and
// script. An unknown region or script gives the language's usual one, as Spanish of Spain for "es_CU"; "C",
// an empty name and an unknown language give 1033.
ZYN_API std::uint32_t LocaleFromPosixName(std::string_view name);

} // namespace zynplatform
