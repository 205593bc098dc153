// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/ini.h"
#include "zynaggr/name_index_impl.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace zyn {

inline constexpr const char* iniCopyMark = "___copy";

// The lines of one section of an INI file, by key: found and changed as the rules of CzynINI have it.
//
// Where nobody else sees the section's array ("loose"), and it has been searched enough for an index, a line
// that goes leaves a free slot behind, and new lines come into a gap of free slots at the insertion point:
// neither moves the lines behind it. A free slot is null, and whoever walks through the array passes over it
// as over any other null slot, but it does not count in m_nInsertPos. The destructor takes the free slots
// out.
//
// Of a faithful model ("follows"), the insertion point stays behind the same line when a line above it goes
// or a comment comes.
class IniLines {
public:
    using SOption = CzynINI::SOption;

    IniLines(CzynINI::SSection& section, bool loose, bool follows);
    ~IniLines();
    IniLines(const IniLines&) = delete;
    IniLines& operator=(const IniLines&) = delete;

    CzynINI::SSection& Section() { return m_section; }

    // The first line with a key, or null; Claim spells it as asked and marks the later ones as copies.
    SOption* Find(const char* key);
    SOption* Claim(const char* key) { return m_names.Claim(key, iniCopyMark); }

    // Inserts a line at the section's insertion point, or above the one inserted last, given what Insert
    // returned for that one.
    int Insert(std::unique_ptr<SOption> line, int above = -1);
    // Removes every line with this key, if there is one; this line.
    void Remove(const char* key);
    void Remove(const SOption& line);

private:
    bool IsFree(int slot) const { return m_free[static_cast<std::size_t>(slot)]; }
    std::int32_t Size() const { return m_section.m_aOptions.m_nSize; }
    bool Loosen();
    void Tighten();
    void MakeGap();
    void FillToInsertionPoint();
    void MoveLine(int from, int to);
    void FreeLine(int slot);
    int InsertTightly(std::unique_ptr<SOption> line, int above);
    template <class Goes> void RemoveTightly(Goes goes);

    CzynINI::SSection& m_section;
    NameIndex<SOption, &SOption::m_sKey> m_names;
    bool m_bMayBeLoose, m_bFollows;
    bool m_bLoose = false; // what follows is of use

    std::vector<bool> m_free; // for each slot
    std::int32_t m_nFree = 0;
    // The insertion point as a slot: the slots from here to m_nGapEnd, not included, are free. At the end of
    // the array it may be beyond it, by what m_nInsertPos is greater than the number of slots that count.
    std::int32_t m_nGap = 0, m_nGapEnd = 0;
};

} // namespace zyn
