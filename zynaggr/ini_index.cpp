#include "zynaggr/ini_index_impl.h"

#include "zynaggr/hash_impl.h"

#include <new>

namespace zyn {
namespace {

using SSection = CzynINI::SSection;
using SOption = CzynINI::SOption;

// Names are equal when they differ in case only. One ends at its first zero byte.
bool SameName(const CStringA& stored, std::string_view name) {
    return stored.View() == name || stored.CompareNoCase(name.data()) == 0;
}

std::string_view Name(const CStringA& stored) {
    return stored.GetString();
}

// The same for blocks that differ in case only: without the bits in which upper and lower case differ, bit 5,
// and for a byte from 0x80 to 0xBF bit 4.
std::uint64_t Folded(std::uint64_t block) {
    const std::uint64_t thirdQuarter = block & ~(block << 1) & 0x8080808080808080;
    return block & ~(0x2020202020202020 | thirdQuarter >> 3);
}

std::uint64_t Hash(std::string_view name) {
    return HashText(name, Folded);
}

// Of a line, given the hashes of its section's name and of its key.
std::uint64_t Combined(std::uint64_t section, std::uint64_t key) {
    return MixHash(section, key);
}

std::uint32_t Tag(std::uint64_t hash) {
    return static_cast<std::uint32_t>(hash >> 32) | 1;
}

} // namespace

SSection* IniIndex::FindSection(const SectionArray& sections, std::string_view name) {
    return IsBuilt(sections) ? SectionAt(sections, name) : WalkToSection(sections, name);
}

SOption* IniIndex::FindOption(const SectionArray& sections, std::string_view section, std::string_view key) {
    if (!IsBuilt(sections)) {
        const SSection* const found = WalkToSection(sections, section);
        return found ? WalkToOption(*found, key) : nullptr;
    }
    const auto isWanted = [&](const Entry& entry) {
        return entry.option && SameName(entry.option->m_sKey, key) &&
               SameName(sections.m_pData[entry.section]->m_sName, section);
    };
    return EntryAt(Combined(Hash(section), Hash(key)), isWanted).option;
}

SSection* IniIndex::WalkToSection(const SectionArray& sections, std::string_view name) {
    for (int i = 0; i < sections.GetSize(); ++i, ++m_nWalked)
        if (sections.m_pData[i] && SameName(sections.m_pData[i]->m_sName, name)) return sections.m_pData[i];
    return nullptr;
}

SOption* IniIndex::WalkToOption(const SSection& section, std::string_view key) {
    const CzynINI::OptionArray& options = section.m_aOptions;
    for (int i = 0; i < options.GetSize(); ++i, ++m_nWalked)
        if (options.m_pData[i] && SameName(options.m_pData[i]->m_sKey, key)) return options.m_pData[i];
    return nullptr;
}

bool IniIndex::IsBuilt(const SectionArray& sections) {
    if (!m_entries.empty()) return true;
    constexpr std::int64_t fewest = 256; // so much walking is never worth a table
    if (m_nWalked < fewest) return false;
    std::size_t count = 0;
    for (int i = 0; i < sections.GetSize(); ++i)
        if (const SSection* section = sections.m_pData[i])
            count += 1 + static_cast<std::size_t>(section->m_aOptions.GetSize());
    m_nWalked += sections.GetSize();
    if (m_nWalked < static_cast<std::int64_t>(4 * count)) return false;
    try {
        Build(sections, count);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void IniIndex::Build(const SectionArray& sections, std::size_t count) {
    std::size_t room = 64;
    while (2 * room < 3 * count)
        room *= 2;
    m_entries.resize(room);
    for (std::int32_t i = 0; i < sections.GetSize(); ++i) {
        SSection* const section = sections.m_pData[i];
        // Nobody finds the lines of a second section of a name.
        if (!section || SectionAt(sections, Name(section->m_sName))) continue;
        const std::uint64_t hash = Hash(Name(section->m_sName));
        Insert(hash, i, nullptr, [](const Entry&) { return false; });
        for (int k = 0; k < section->m_aOptions.GetSize(); ++k) {
            SOption* const option = section->m_aOptions.m_pData[k];
            if (!option) continue;
            const std::string_view key = Name(option->m_sKey);
            Insert(Combined(hash, Hash(key)), i, option, [&](const Entry& other) {
                return other.option && other.section == i && SameName(other.option->m_sKey, key);
            });
        }
    }
}

SSection* IniIndex::SectionAt(const SectionArray& sections, std::string_view name) {
    const Entry& entry = EntryAt(Hash(name), [&](const Entry& other) {
        return !other.option && SameName(sections.m_pData[other.section]->m_sName, name);
    });
    return entry.tag != 0 ? sections.m_pData[entry.section] : nullptr;
}

// What is there already is the first of its name, and stays.
template <class IsSame>
void IniIndex::Insert(std::uint64_t hash, std::int32_t section, SOption* option, IsSame isSame) {
    Entry& entry = EntryAt(hash, isSame);
    if (entry.tag == 0) entry = {Tag(hash), section, option};
}

// The entry that is wanted, or a free one.
template <class IsWanted> IniIndex::Entry& IniIndex::EntryAt(std::uint64_t hash, IsWanted isWanted) {
    const std::uint32_t tag = Tag(hash);
    const std::size_t mask = m_entries.size() - 1;
    std::size_t at = static_cast<std::size_t>(hash) & mask;
    while (m_entries[at].tag != 0 && !(m_entries[at].tag == tag && isWanted(m_entries[at])))
        at = (at + 1) & mask;
    return m_entries[at];
}

} // namespace zyn
