// SPDX-License-Identifier: MIT
#include "zynaggr/ini_index_impl.h"

namespace zyn {

IniIndex::IniIndex(CzynINI::SectionArray& sections, bool loose, bool follows)
    : m_sections(sections),
      m_names(sections.m_pData, sections.m_nSize),
      m_bLoose(loose),
      m_bFollows(follows) {}

IniLines* IniIndex::FindSection(const char* name) {
    const int section = m_names.First(name);
    return section < 0 ? nullptr : &LinesOf(section);
}

IniLines* IniIndex::ClaimSection(const char* name) {
    return m_names.Claim(name, iniCopyMark) ? FindSection(name) : nullptr;
}

IniLines& IniIndex::AddSection(const char* name) {
    if (m_names.IsBuilt()) m_names.Reserve(m_sections.m_nSize + 1, 1);
    new CzynINI::SSection(m_sections, name);
    if (m_names.IsBuilt()) m_names.Enter(m_sections.m_nSize - 1);
    return LinesOf(m_sections.m_nSize - 1);
}

IniLines& IniIndex::LinesOf(int section) {
    const auto at = static_cast<std::size_t>(section);
    if (at >= m_lines.size()) m_lines.resize(static_cast<std::size_t>(m_sections.m_nSize));
    if (!m_lines[at])
        m_lines[at] = std::make_unique<IniLines>(*m_sections.m_pData[section], m_bLoose, m_bFollows);
    return *m_lines[at];
}

} // namespace zyn
