// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/ini_lines_impl.h"

#include <memory>
#include <vector>

namespace zyn {

// Where names stand in the model of an INI file, kept up to date through edits.
//
// Whoever else changes the model destroys the index before that. A change behind its back cannot be found out
// at a price below that of a walk through all names: a line found may still be right in every respect while
// an earlier one has become the first of its name. So there is none for an object whose class may do so.
class IniIndex {
public:
    // loose: nobody else sees the model; follows: it is a faithful one. See IniLines.
    IniIndex(CzynINI::SectionArray& sections, bool loose, bool follows);

    // The first section of a name, or null; ClaimSection spells it as asked and marks the later ones as
    // copies. AddSection makes one behind the last.
    IniLines* FindSection(const char* name);
    IniLines* ClaimSection(const char* name);
    IniLines& AddSection(const char* name);
    IniLines& LinesOf(int section); // by its place

private:
    CzynINI::SectionArray& m_sections;
    NameIndex<CzynINI::SSection, &CzynINI::SSection::m_sName> m_names;
    bool m_bLoose, m_bFollows;
    std::vector<std::unique_ptr<IniLines>> m_lines; // of each section; null before it was asked for
};

} // namespace zyn
