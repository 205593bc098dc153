// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/ini.h"

#include <string_view>

namespace zyn {

class IniDocument;

// Appends the sections of a file's text. CR LF, LF CR, LF and CR each end a line; the last one needs no end.
// With the document of the same file, sections and entries get the number of their line; when it is faithful,
// names come without the blanks around them, and new pairs go behind indented text that follows the last pair
// and seems to belong to it. Running out of memory throws std::bad_alloc and leaves what was read so far.
void ParseIniText(std::string_view text, CzynINI::SectionArray& sections, const IniDocument* document);

} // namespace zyn
