// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <string_view>
#include <type_traits>

// The growable array of element pointers that all object collections of the library are.
//
//     CzynTAggr<Item*, Item*, 6> items(8);       // removable one by one, owning
//     if (items.Add(item) < 0) delete item;      // a failed Add leaves the element with the caller
//
// Template arguments: the element type, always a pointer to a class; the type in which elements are passed,
// the same pointer type; and a mask of policy bits:
//
//     2   elements may be taken out one by one: Remove works
//     4   the array owns its elements: one that leaves it by Remove, RemoveAll or destruction is deleted
//
// To have every element only once, set m_bUnique after construction. A slot may hold null; deletion skips
// those.
//
// Growth: from the default capacity an array that is added to grows through 16, 34, 70, 142: to twice its
// size and two more. No operation shrinks the size to fit, but SetSize, and so Append, may lower the
// capacity.
//
// Running out of memory: the array stays as it was, and the failure is reported in one of two ways, by the
// switch SzynErrorDescription::SetRetranslateMemoryExeption. Off, a message box shows it, and the operation
// returns false or -1; no display flag keeps the box away. On, a SzynErrorDescription with code 27 is thrown
// (or std::bad_alloc where not even the record fits). More than 2^31 - 1 slots are a size that memory cannot
// hold.
//
// The array is copied only by assignment. It does not lock: one thread at a time.

namespace zyn {

// Failure reports name the element type with "class" or "struct" before it. The language cannot tell which it
// is, so the header of an element type that is a struct says so behind its definition, at global scope:
//
//     template <> inline constexpr bool zyn::isStruct<SKeyVal> = true;
template <class T> inline constexpr bool isStruct = false;

// The name of a type with its scopes, as the compiler writes it.
template <class T> constexpr std::string_view TypeName() {
    // "... [with T = Name; ...]" from one compiler, "... [T = Name]" from the other.
    constexpr std::string_view function = __PRETTY_FUNCTION__;
    constexpr std::size_t first = function.find("T = ") + 4;
    constexpr std::size_t last = std::min(function.find(';', first), function.size() - 1);
    return function.substr(first, last - first);
}

// What a failure report tells.
struct ArrayFailure {
    std::string_view element; // name of the element's class
    bool elementIsStruct;     // see isStruct
    int policy;               // the mask of bits
    std::int32_t size;        // slots in use
    std::int32_t wanted;      // slots asked for
};

// Reports that an array could not grow: throws the record, or shows the message box and returns false.
// Nothing is allocated for the message box.
ZYN_API bool ReportArrayFailure(const std::bad_alloc& failure, const ArrayFailure& array);

} // namespace zyn

// The array.
template <class T, class ARG, int N> class ZYN_API CzynTAggr {
    static_assert(std::is_pointer_v<T>, "an array of pointers");

public:
    // Allocates nInitSize slots, 16 if that is below 1.
    explicit CzynTAggr(int nInitSize = 0) { SetSize(nInitSize < 1 ? 16 : nInitSize); }
    virtual ~CzynTAggr() {
        RemoveAll();
        delete[] m_pData;
    }
    CzynTAggr(const CzynTAggr&) = delete;

    // Empties this array, appends the other's elements under this one's flags, then takes over the flags.
    // Ownership is never shared: from an owning array no elements come, and this one ends empty and owning.
    CzynTAggr& operator=(const CzynTAggr& src) {
        if (this == &src) return *this;
        RemoveAll();
        Append(src);
        m_bUnique = src.m_bUnique;
        m_bCanRemove = src.m_bCanRemove;
        m_bOwner = src.m_bOwner;
        return *this;
    }

    // Adds every element of an array that does not own them, null slots included. Elements for which there is
    // no memory are left out. The source may be this array.
    void Append(const CzynTAggr& src) {
        const std::int32_t count = src.m_nSize;
        Resize(std::int64_t{m_nSize} + count);
        if (src.m_bOwner) return;
        for (std::int32_t i = 0; i < count; ++i)
            Add(src.m_pData[i]);
    }

    // Sets the capacity to exactly n, more or less than it was. False, and nothing changed, when n is below
    // the size in use or memory runs out; n equal to the size in use changes nothing and is true.
    bool SetSize(int n) { return Resize(n); }

    // Appends; returns the index of the element, or -1. With m_bUnique, an element that is there already is
    // not added again, and its index is returned.
    int Add(ARG p) {
        if (m_bUnique) {
            const std::int32_t nIndex = IndexOf(p);
            if (nIndex < m_nSize) return nIndex;
        }
        if (m_nSize == m_nMaxSize && !Resize(NextCapacity())) return -1;
        m_pData[m_nSize] = p;
        return m_nSize++;
    }

    // Puts an element at an index, moving up what stands there and behind; beyond the end, the gap is filled
    // with null. An index beyond the capacity makes the capacity nIndex + 1. False for a negative index, when
    // memory runs out, and, with m_bUnique, when another slot than nIndex holds the element (the capacity may
    // have grown then).
    bool InsertAt(int nIndex, ARG p) {
        if (nIndex < 0) return false;
        if (nIndex >= m_nMaxSize) {
            if (!Resize(std::int64_t{nIndex} + 1)) return false;
        } else if (m_nSize == m_nMaxSize) {
            if (!Resize(NextCapacity())) return false;
        }
        if (m_bUnique && IsElsewhere(p, nIndex)) return false;
        if (nIndex < m_nSize) {
            std::copy_backward(m_pData + nIndex, m_pData + m_nSize, m_pData + m_nSize + 1);
            ++m_nSize;
        } else {
            std::fill(m_pData + m_nSize, m_pData + nIndex, nullptr);
            m_nSize = nIndex + 1;
        }
        m_pData[nIndex] = p;
        return true;
    }

    // Takes an element out, and deletes it if the array owns it; the others keep their order. False for an
    // index outside the array and where the policy does not allow it. The capacity stays.
    bool Remove(int nIndex) {
        if (!m_bCanRemove || nIndex < 0 || nIndex >= m_nSize) return false;
        if (m_bOwner) delete m_pData[nIndex];
        std::copy(m_pData + nIndex + 1, m_pData + m_nSize, m_pData + nIndex);
        --m_nSize;
        return true;
    }

    // Empties the array and deletes the elements it owns. The capacity stays.
    void RemoveAll() {
        if (m_bOwner) {
            for (std::int32_t i = 0; i < m_nSize; ++i) {
                delete m_pData[i];
                m_pData[i] = nullptr;
            }
        }
        m_nSize = 0;
    }

    // The element, or null for an index outside the array.
    T GetAt(int nIndex) const { return nIndex < 0 || nIndex >= m_nSize ? nullptr : m_pData[nIndex]; }
    int GetSize() const { return m_nSize; } // slots in use

    // For loops over the slots in use, null ones included.
    T* begin() const { return m_pData; }
    T* end() const { return m_pData + m_nSize; }

    T* m_pData = nullptr;             // the slots; the first m_nSize are in use
    std::int32_t m_nSize = 0;         // at most m_nMaxSize
    bool m_bUnique = false;           // every element only once
    bool m_bCanRemove = (N & 2) != 0; // policy bit 2
    bool m_bOwner = (N & 4) != 0;     // policy bit 4
    std::int32_t m_nMaxSize = 0;      // slots allocated

protected:
    bool Resize(std::int64_t n) {
        if (n <= m_nSize) return n == m_nSize;
        constexpr std::int64_t limit = std::numeric_limits<std::int32_t>::max();
        T* pData = nullptr;
        try {
            if (n > limit) throw std::bad_array_new_length();
            pData = new T[static_cast<std::size_t>(n)];
        } catch (const std::bad_alloc& failure) {
            using Element = std::remove_pointer_t<T>;
            const auto wanted = static_cast<std::int32_t>(std::min(n, limit));
            return zyn::ReportArrayFailure(
                failure, {zyn::TypeName<Element>(), zyn::isStruct<Element>, N, m_nSize, wanted});
        }
        std::copy_n(m_pData, m_nSize, pData);
        delete[] m_pData;
        m_pData = pData;
        m_nMaxSize = static_cast<std::int32_t>(n);
        return true;
    }

    std::int64_t NextCapacity() const { return 2 * std::int64_t{m_nSize} + 2; }

    // The lowest index of the element, or m_nSize.
    std::int32_t IndexOf(ARG p) const {
        return static_cast<std::int32_t>(std::find(m_pData, m_pData + m_nSize, p) - m_pData);
    }

    bool IsElsewhere(ARG p, std::int32_t nIndex) const {
        for (std::int32_t i = 0; i < m_nSize; ++i)
            if (i != nIndex && m_pData[i] == p) return true;
        return false;
    }
};
