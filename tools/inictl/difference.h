#pragma once

#include <string>
#include <string_view>

// The change of a text as a unified diff with three lines around each change; empty when there is none.
std::string UnifiedDiff(std::string_view before, std::string_view after, std::string_view name);
