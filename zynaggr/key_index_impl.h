// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/zynstrmap.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zyn {

// Places by the hashes of their keys; open addressing, at most two thirds in use.
class KeyIndex::Table {
public:
    explicit Table(std::size_t size) : m_slots(std::bit_ceil(size + size / 2 + 64)) {}

    // False when there is no room for it.
    bool Put(std::uint64_t hash, int place) {
        if (m_used + m_used / 2 >= m_slots.size()) return false;
        std::size_t at = static_cast<std::size_t>(hash) & Mask();
        while (m_slots[at] != 0)
            at = (at + 1) & Mask();
        m_slots[at] = TagOf(hash) | (static_cast<std::uint32_t>(place) + 1);
        ++m_used;
        return true;
    }

    // The place with this hash of which `isKey` is true, or -1.
    template <class IsKey> int Find(std::uint64_t hash, IsKey isKey) const {
        const std::uint32_t tag = TagOf(hash);
        for (std::size_t at = static_cast<std::size_t>(hash) & Mask(); m_slots[at] != 0;
             at = (at + 1) & Mask()) {
            const std::uint32_t difference = m_slots[at] ^ tag;
            if (difference <= Mask() && isKey(static_cast<int>(difference - 1)))
                return static_cast<int>(difference - 1);
        }
        return -1;
    }

private:
    std::size_t Mask() const { return m_slots.size() - 1; }
    std::uint32_t TagOf(std::uint64_t hash) const {
        return static_cast<std::uint32_t>(hash >> 32) & ~static_cast<std::uint32_t>(Mask());
    }

    std::vector<std::uint32_t> m_slots; // a place and 1, and above that bits of the hash; 0: free
    std::size_t m_used = 0;
};

} // namespace zyn
