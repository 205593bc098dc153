// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/zyntaggr.h"
#include "zynhost/cstring.h"
#include "zynplatform/export.h"

#include <atomic>
#include <cstdint>

// Two small sorted maps with 8-bit string keys: CzynStrMap holds a machine word for each key, CzynStrStrMap a
// string.
//
//     CzynStrMap ports(false); // letter case does not matter
//     ports.Add("Http", 80);
//     ports.Get("HTTP");       // 80
//
// Both keep their items sorted, every key once: adding a key that is there replaces its value, and looking up
// is a search by halving. Adding behind the last key is fast; adding elsewhere moves the items behind.
//
// Keys are zero-terminated text in code page 1251, compared byte by byte or, where case does not matter, by
// their lower-cased bytes (Cyrillic letters too). A null key or text is an empty one.
//
// The map owns its items. A pointer to one stays valid until that item is removed or the map is emptied,
// assigned to or destroyed. Copied only by assignment, which follows the item array's rule: an owning array
// gives nothing away, so the target takes the flags over and is empty.
//
// Running out of memory: where the item array cannot grow it reports that in its own way (zyntaggr.h), and
// Add gives -1; anything else throws std::bad_alloc. The map stays as it was. Several threads may look up in
// one map as long as nobody changes it.

namespace zyn {

// Where the keys of a map stand: written down by look-ups in a large one once they have cost more than that
// does, and given up when items move. A hint; the map checks what it says.
class ZYN_API KeyIndex {
public:
    KeyIndex() = default;
    ~KeyIndex() { Forget(); }
    KeyIndex(const KeyIndex&) = delete;
    KeyIndex& operator=(const KeyIndex&) { // of a map that gets other items
        Restart();
        return *this;
    }

    void Forget();  // items have moved
    void Restart(); // there are others, or they are sorted again

    // Null while there is none.
    class Table;
    mutable std::atomic<Table*> m_table = nullptr;
    // Those that it would have spared since items moved; `stopped` where none is to be made.
    static constexpr int stopped = -1;
    mutable std::atomic<int> m_searches = 0;
};

} // namespace zyn

// A machine word for each key.
class ZYN_API CzynStrMap {
public:
    // A key with its value.
    class CzynStrMapItem {
    public:
        CStringA m_sKey;            // lower-cased where case does not matter
        std::intptr_t m_nValue = 0; // an integer or a pointer
    };

    CzynStrMap() = default;
    // Whether letter case matters in the keys.
    explicit CzynStrMap(bool bCaseSensitive) : m_bCaseSensitive(bCaseSensitive) {}
    CzynStrMap(const CzynStrMap&) = delete;
    CzynStrMap& operator=(const CzynStrMap&) = default;

    // Inserts, or replaces the value; returns the index at which the key stands now.
    int Add(const char* key, int value) { return AddWord(key, value); }
    int Add(const char* key, void* value) { return AddWord(key, reinterpret_cast<std::intptr_t>(value)); }

    // In items.
    int GetSize() const { return m_aItems.GetSize(); }
    // Deletes all items; the capacity stays.
    void Clear() {
        m_aItems.RemoveAll();
        m_index.Restart();
    }
    // Sets the capacity, not below the number of items.
    void SetSize(int n) { m_aItems.SetSize(n); }

    // Sorts again, which changes something only with m_bSortAsInt. Afterwards the items are not in the order
    // that Add, Find, Get and GetP rely on; SetAt, GetAt and the search by value still work.
    void Sort();

    // The index of a key, or -1.
    int Find(const char* key) const;
    // The lowest index with this value, or -1; looks at every item.
    int Find(int value) const;

    // The value of a key. -1 or null when the key is not there, which a stored -1 or null cannot be told
    // from.
    long Get(const char* key) const;
    void* GetP(const char* key) const;

    // By index: null or false for one outside the map.
    CzynStrMapItem* GetAt(int index) const { return m_aItems.GetAt(index); }
    bool SetAt(int index, int value);
    bool Remove(int index) {
        m_index.Forget();
        return m_aItems.Remove(index);
    }

    // Of no effect here: both ways to search for a key that it chose from are the same search now.
    bool m_bOwnSearch = false;
    bool m_bCaseSensitive = true; // set it before the first key is added
    bool m_bSortAsInt = false;    // Sort orders by the number that a key begins with

protected:
    // The order of two items, each given by a pointer to its slot: negative, 0 or positive.
    static int compare_CzynStrMapItem(const void* left, const void* right);
    static int compare_CzynStrMapItem_NoCase(const void* left, const void* right);
    static int compare_CzynStrMapItem_AsInt(const void* left, const void* right);

    int AddWord(const char* key, std::intptr_t value);

    CzynTAggr<CzynStrMapItem*, CzynStrMapItem*, 6> m_aItems{8};
    zyn::KeyIndex m_index;
};

// As CzynStrMap, case always mattering, with a string for each key.
class ZYN_API CzynStrStrMap {
public:
    // A key with its text.
    class CzynStrStrMapItem {
    public:
        CStringA m_sKey;   // as given
        CStringA m_sValue; // as given
    };

    CzynStrStrMap() = default;
    CzynStrStrMap(const CzynStrStrMap&) = delete;
    CzynStrStrMap& operator=(const CzynStrStrMap&) = default;

    // As those of CzynStrMap.
    int Add(const char* key, const char* value);
    int GetSize() const { return m_aItems.GetSize(); }
    void Clear() {
        m_aItems.RemoveAll();
        m_index.Restart();
    }

    // Changes nothing as long as the keys of the items are left alone.
    void Sort();

    // The index of a key, or -1.
    int FindByIn(const char* key) const;
    // The lowest index with this value, or -1; looks at every item.
    int FindByOut(const char* value) const;

    // A copy of the value of a key, empty when the key is not there. With bNoCase the case of the key does
    // not matter; that is reliable only while the order of the keys is the same when all are lower-cased, for
    // example when all are in one case.
    CStringA Get(const char* key, bool bNoCase) const;

    // By index: null or false for one outside the map.
    CzynStrStrMapItem* GetAt(int index) const { return m_aItems.GetAt(index); }
    bool SetAt(int index, const char* value);
    bool Remove(int index) {
        m_index.Forget();
        return m_aItems.Remove(index);
    }

    bool m_bOwnSearch = false; // Get lets case matter whatever it is asked

protected:
    static int compare_CzynStrStrMapItem(const void* left, const void* right);
    static int compareNoCase_CzynStrStrMapItem(const void* left, const void* right);

    CzynTAggr<CzynStrStrMapItem*, CzynStrStrMapItem*, 6> m_aItems{8};
    zyn::KeyIndex m_index;
};
