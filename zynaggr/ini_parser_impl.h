#pragma once

#include "zynaggr/ini.h"

#include <string_view>

namespace zyn {

// Appends the sections of a file's text. CR LF, LF CR, LF and CR each end a line; the last one needs no end.
// Running out of memory throws std::bad_alloc and leaves what was read so far.
void ParseIniText(std::string_view text, CzynINI::SectionArray& sections);

} // namespace zyn
