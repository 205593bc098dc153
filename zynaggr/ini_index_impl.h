#pragma once

#include "zynaggr/ini.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace zyn {

// Where names stand in the model of an INI file.
//
// A model that is searched a few times is walked through from its start. Only when that has cost about as
// much as a table of all its names does the table get made; what is found is the same either way: the first
// of a name. Whoever changes the model drops the index.
class IniIndex {
public:
    using SectionArray = CzynINI::SectionArray;

    // Null when there is none of that name. Names are zero-terminated.
    CzynINI::SSection* FindSection(const SectionArray& sections, std::string_view name);
    CzynINI::SOption* FindOption(const SectionArray& sections, std::string_view section,
                                 std::string_view key);

private:
    // A section, or a line of one.
    struct Entry {
        std::uint32_t tag = 0;    // part of the hash; 0: the entry is free
        std::int32_t section = 0; // position
        CzynINI::SOption* option = nullptr;
    };

    CzynINI::SSection* WalkToSection(const SectionArray& sections, std::string_view name);
    CzynINI::SOption* WalkToOption(const CzynINI::SSection& section, std::string_view key);

    bool IsBuilt(const SectionArray& sections);
    void Build(const SectionArray& sections, std::size_t count);
    CzynINI::SSection* SectionAt(const SectionArray& sections, std::string_view name);
    template <class IsSame>
    void Insert(std::uint64_t hash, std::int32_t section, CzynINI::SOption* option, IsSame isSame);
    template <class IsWanted> Entry& EntryAt(std::uint64_t hash, IsWanted isWanted);

    std::int64_t m_nWalked = 0;   // elements looked at so far
    std::vector<Entry> m_entries; // a power of two of them, never all in use
};

} // namespace zyn
