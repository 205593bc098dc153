// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/ini.h"
#include "zynaggr/ini_document_impl.h"

#include <string>

// What a save writes, made of the sections of an INI file.

namespace zyn {

// The prescribed text, in the code page.
CStringA ComposeText(const CzynINI::SectionArray& sections);
// The same in the file's bytes, with what the code page does not have where it was not edited.
std::string ComposeBytes(const CzynINI::SectionArray& sections, const IniDocument& document);

// The file as it was but for the edits. Lines without number are appended to the document and get theirs.
std::string ComposeFaithfully(const CzynINI::SectionArray& sections, IniDocument& document);

// The lines of an entry of a section, and of a section's header, with their ends: the line itself with what
// was edited replaced, or a new one like its neighbours. Name and value are given in the file's bytes.
std::string ComposeEntry(const CzynINI::SSection& section, int index, const IniDocument& document,
                         const std::string& key, const std::string& value);
std::string ComposeHeader(const CzynINI::SSection& section, const IniDocument& document,
                          const std::string& name);

} // namespace zyn
