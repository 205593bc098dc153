// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

// The lines of a text, with their ends: LF, CR LF or CR.
std::vector<std::string_view> LinesOf(std::string_view text);

// The change of a text as a unified diff with three lines around each change; empty when there is none.
std::string UnifiedDiff(std::string_view before, std::string_view after, std::string_view name);
