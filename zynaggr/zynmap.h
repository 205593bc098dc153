// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <cstdint>
#include <type_traits>

// One pair of a CzynMap: two machine words, each an integer or a pointer. Keys compare as signed integers.
struct zynMap_element {
    std::intptr_t in;  // the key
    std::intptr_t out; // the value
};

// How callers give a key or a value: as a pointer, or as what converts to int. NULL is the integer 0.
struct zynMap_word {
    template <class T>
    requires std::is_convertible_v<T, int> zynMap_word(T number) : word(static_cast<int>(number)) {}
    zynMap_word(void* pointer) : word(reinterpret_cast<std::intptr_t>(pointer)) {}

    std::intptr_t word;
};

// A small associative index from one machine word to another: append pairs, sort once, look up by halving.
//
//     CzynMap map;
//     map.Add(10, option);
//     map.SortIn();
//     for (int i = 0; i < map.m_nSize; ++i) use(map.m_pData[i].out);
//
// Keys and values are given as int or as pointer. Pointers survive in full; the operations that return an int
// return the low 32 bits. Values are never freed by the map. A stored -1 or null cannot be told from "not
// found".
//
// Looking up by key sorts: the first search of a map of ten pairs or more that is not known to be sorted
// reorders it, and indices obtained before no longer hold. Below ten pairs the search goes from the first to
// the last and leaves the order alone. Pairs of equal keys keep the order in which they were added; among
// them, a search by halving returns whichever it meets first, below ten pairs the lowest.
//
// With m_bAutoSort the array is kept ascending with every key once: adding a key that is there replaces its
// value. Set it on an empty or ascending map; without it equal keys are kept.
//
// Adding and looking up in turn costs a search and a move of the pairs with greater keys, as in a map that
// keeps itself sorted, not a sort. Whoever changes keys through m_pData calls SortIn afterwards.
//
// Running out of memory throws std::bad_alloc and changes nothing. Not copied; one thread at a time.
class ZYN_API CzynMap {
public:
    CzynMap() = default;
    // With room for n pairs, as SetSize.
    explicit CzynMap(int n) { SetSize(n); }
    virtual ~CzynMap();
    CzynMap(const CzynMap&) = delete;
    CzynMap& operator=(const CzynMap&) = delete;

    // Sets the capacity to n pairs, at least 32. False, with nothing changed, when n is below the size in
    // use; true, with nothing changed, when it equals that.
    bool SetSize(int n);
    int GetSize() const { return m_nSize; } // pairs in use

    // Adds a pair; returns the index at which it stands now. The capacity runs 32, 66, 134, 270.
    int Add(zynMap_word in, zynMap_word out) { return AddPair({in.word, out.word}); }

    // The index of a pair with this key, or -1.
    int QFindByIn(zynMap_word in) { return FindKey(in.word); }
    int FindByIn(zynMap_word in) { return FindKey(in.word); }

    // The value of the pair that QFindByIn finds, or -1.
    int QGetByIn(zynMap_word in) { return ValueOr(FindKey(in.word)); }
    int GetByIn(zynMap_word in) { return ValueOr(FindKey(in.word)); }

    // The same as a pointer, or null.
    void* QGetByInP(zynMap_word in) { return PointerOr(FindKey(in.word)); }
    void* QGetPointerByIn(zynMap_word in) { return PointerOr(FindKey(in.word)); }
    void* GetByInP(zynMap_word in) { return PointerOr(FindKey(in.word)); }

    // The lowest index of a pair with this value, and that pair's key; -1 when there is none. Never sorts.
    int FindByOut(int out) const;
    int GetByOut(int out) const;

    // Sorts ascending by key.
    void SortIn();

    // Takes a pair out, keeping the order of the others. False for an index outside the map.
    bool Remove(int index);
    // Empties the map and keeps its storage.
    void Clear() { m_nSize = 0; }
    // Empties the map and frees its storage. Neither touches the flags.
    void RemoveAll();

    // A copy of the pair at an index, which is not checked.
    zynMap_element operator[](int index) const { return m_pData[index]; }

    zynMap_element* m_pData = nullptr; // the pairs, owned; null while nothing is allocated
    std::int32_t m_nSize = 0;          // pairs in use
    bool m_bAutoSort = false;          // keep ascending, every key once; see above
    bool m_bNoLinearSearch = true; // when false, a halving that misses is followed by a search from the start
    std::uint16_t m_nAdded = 1;  // of our own: one more than the pairs behind those that a sort put in order
                                 // and nothing else changed; 0 when that is not known
    std::int32_t m_nMaxSize = 0; // pairs allocated
    bool m_bSorted = true; // known to be ordered by key; ascending, or descending if the caller made it so

protected:
    int AddPair(zynMap_element pair);
    int AddSorted(zynMap_element pair);
    int InsertPair(int index, zynMap_element pair);
    void SortAdded();
    int FindKey(std::intptr_t key);
    int FindKeyInOrder(std::intptr_t key) const;
    int FindKeyByHalving(std::intptr_t key) const;
    int FindKeyLinear(std::intptr_t key) const;
    int ValueOr(int index) const { return index < 0 ? -1 : static_cast<int>(m_pData[index].out); }
    void* PointerOr(int index) const {
        return index < 0 ? nullptr
                         : reinterpret_cast<void*>(m_pData[index].out); // NOLINT(performance-no-int-to-ptr)
    }
};
