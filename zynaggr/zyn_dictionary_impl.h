// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/zynstrmap.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace zyn {

// The process's translation dictionary, shared by the units that fill it and that look things up in it: a
// sorted map, and a table of its items by hash for looking up. Finding is safe from several threads as long
// as nobody changes it.
class Dictionary {
public:
    using Item = CzynStrStrMap::CzynStrStrMapItem;

    // Replaces the translation of a text that is there.
    void Add(const char* text, const char* translation);
    void Clear();
    int GetSize() const { return m_map.GetSize(); }
    // The item whose key is exactly this text, or null.
    const Item* Find(std::string_view text) const;

private:
    struct Entry {
        std::uint32_t tag = 0; // part of the hash
        std::string_view key;  // of the item
        const Item* item = nullptr;
    };
    std::size_t Place(std::string_view text, std::uint64_t hash) const;
    void Enter(const Item* item);
    void Grow();

    CzynStrStrMap m_map;
    std::vector<Entry> m_entries; // a power of two of them, at most half of them in use
};

inline constexpr std::uint32_t noLocale = 0xFFFFFFFF;

extern Dictionary& dictionary;
extern std::uint32_t dictionaryLocale; // see CzynTranslate::GetGurLocale

} // namespace zyn
