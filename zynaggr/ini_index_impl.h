#pragma once

#include "zynaggr/ini.h"
#include "zynaggr/zyntaggr.h"
#include "zynhost/cstring.h"

#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>
#include <vector>

// Where names stand in the model of an INI file.
//
// A model that is searched once is searched from its start. Only an array that has been walked through
// several times gets an index; what is found is the same with it and without it. Whoever changes the model
// drops the index.

namespace zyn {

// Names are equal when they differ in case only.
inline bool SameName(const CStringA& stored, const char* name, std::size_t length) {
    return stored.View() == std::string_view(name, length) || stored.CompareNoCase(name) == 0;
}

// Of one array: the sections of a file, or the lines of a section.
class NameIndex {
public:
    // The first position at which this name stands, or -1. The array and the member are the same each time.
    template <class T, int N>
    int Find(const CzynTAggr<T*, T*, N>& array, CStringA T::*name, const char* wanted) {
        const std::size_t length = std::strlen(wanted);
        if (m_slots.empty() && !Build(array, name)) {
            int i = 0;
            while (i < array.GetSize() &&
                   !(array.m_pData[i] && SameName(array.m_pData[i]->*name, wanted, length)))
                ++i;
            m_walked += i;
            return i < array.GetSize() ? i : -1;
        }
        const std::uint32_t hash = Hash(wanted, length);
        for (std::size_t at = hash & m_mask; m_slots[at].position >= 0; at = (at + 1) & m_mask) {
            const Slot& slot = m_slots[at];
            if (slot.hash == hash && SameName(array.m_pData[slot.position]->*name, wanted, length))
                return slot.position;
        }
        return -1;
    }

private:
    struct Slot {
        std::uint32_t hash;
        std::int32_t position = -1; // none: the slot is free
    };

    static constexpr int smallest = 16; // a shorter array is walked through as fast

    // The same for names that differ in case only: without the bits in which upper and lower case differ, bit
    // 5, and for a byte from 0x80 to 0xBF bit 4.
    static std::uint32_t Hash(const char* name, std::size_t length) {
        std::uint64_t hash = length;
        for (; length > 0;) {
            const std::size_t count = length < 8 ? length : 8;
            std::uint64_t block = 0;
            std::memcpy(&block, name, count);
            const std::uint64_t upperQuarter = block & ~(block << 1) & 0x8080808080808080;
            block &= ~(0x2020202020202020 | upperQuarter >> 3);
            hash = (hash ^ block) * 0x9E3779B97F4A7C15;
            hash ^= hash >> 32;
            name += count;
            length -= count;
        }
        return static_cast<std::uint32_t>(hash ^ hash >> 15);
    }

    // False as long as it doesn't pay.
    template <class T, int N> bool Build(const CzynTAggr<T*, T*, N>& array, CStringA T::*name) {
        const int size = array.GetSize();
        if (size < smallest || m_walked < 2 * std::int64_t{size}) return false;
        std::size_t room = 32;
        while (room < 2 * static_cast<std::size_t>(size))
            room *= 2;
        try {
            m_slots.resize(room);
        } catch (const std::bad_alloc&) {
            return false;
        }
        m_mask = room - 1;
        for (std::int32_t i = 0; i < size; ++i)
            if (array.m_pData[i]) Insert(array, name, i);
        return true;
    }

    // A name that is there already is met first, and so stays the one that is found.
    template <class T, int N>
    void Insert(const CzynTAggr<T*, T*, N>& array, CStringA T::*name, std::int32_t position) {
        const char* const text = array.m_pData[position]->*name;
        const std::size_t length = std::strlen(text); // a name ends at its first zero byte
        const std::uint32_t hash = Hash(text, length);
        std::size_t at = hash & m_mask;
        for (; m_slots[at].position >= 0; at = (at + 1) & m_mask)
            if (m_slots[at].hash == hash &&
                SameName(array.m_pData[m_slots[at].position]->*name, text, length))
                return;
        m_slots[at] = {hash, position};
    }

    std::int64_t m_walked = 0; // elements looked at so far
    std::size_t m_mask = 0;
    std::vector<Slot> m_slots;
};

// Of a whole file.
struct IniIndex {
    NameIndex sections;
    std::vector<NameIndex> options; // by position of the section
};

} // namespace zyn
