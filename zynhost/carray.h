// SPDX-License-Identifier: MIT
#pragma once

#include "zynhost/cstring.h"

#include <vector>

// The host class library's array: ordered and growable. ARG is the type in which elements are passed. Indices
// run from 0 to GetSize() - 1 and are not checked.
template <class T, class ARG = const T&> class CArray {
public:
    // The number of elements; whether it is 0.
    int GetSize() const { return static_cast<int>(m_items.size()); }
    bool IsEmpty() const { return m_items.empty(); }
    // Appends; returns the element's index.
    int Add(ARG element) {
        m_items.push_back(element);
        return GetSize() - 1;
    }
    // The element at an index.
    const T& GetAt(int index) const { return m_items[static_cast<std::size_t>(index)]; }
    const T& operator[](int index) const { return GetAt(index); }
    T& operator[](int index) { return m_items[static_cast<std::size_t>(index)]; }
    void RemoveAll() { m_items.clear(); } // destroys the elements

    // For loops over the elements.
    auto begin() const { return m_items.begin(); }
    auto end() const { return m_items.end(); }
    auto begin() { return m_items.begin(); }
    auto end() { return m_items.end(); }

private:
    std::vector<T> m_items;
};

// An array of texts.
using CStringArray = CArray<CStringA, const CStringA&>;
