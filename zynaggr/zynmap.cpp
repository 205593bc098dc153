// SPDX-License-Identifier: MIT
#include "zynaggr/zynmap.h"

#include "zynhost/memory.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace {

constexpr int leastCapacity = 32;
constexpr int leastSizeForHalving = 10;

bool KeyLess(const zynMap_element& left, const zynMap_element& right) {
    return left.in < right.in;
}

} // namespace

CzynMap::~CzynMap() {
    RemoveAll();
}

bool CzynMap::SetSize(int n) {
    if (n <= m_nSize) return n == m_nSize;
    n = std::max(n, leastCapacity);
    auto* pData = new zynMap_element[static_cast<std::size_t>(n)];
    std::copy_n(m_pData, m_nSize, pData);
    delete[] m_pData;
    m_pData = pData;
    m_nMaxSize = n;
    return true;
}

int CzynMap::AddPair(zynMap_element pair) {
    if (m_nSize == m_nMaxSize) {
        if (m_nMaxSize > (std::numeric_limits<std::int32_t>::max() - 2) / 2) AfxThrowMemoryException();
        SetSize(2 * m_nMaxSize + 2);
    }
    if (m_bAutoSort) return AddSorted(pair);
    const bool known = m_bSorted ? m_nAdded == 1 : m_nAdded > 1;
    m_nAdded =
        known ? static_cast<std::uint16_t>(m_nAdded + 1) : 0; // too many for the field are as good as none
    m_bSorted = false;
    return InsertPair(m_nSize, pair);
}

int CzynMap::AddSorted(zynMap_element pair) {
    if (!m_bSorted) m_nAdded = 0;
    if (m_nSize == 0) return InsertPair(0, pair);

    const auto replace = [&](int index) {
        m_pData[index] = pair;
        return index;
    };
    const int last = m_nSize - 1;
    if (pair.in == m_pData[0].in) return replace(0);
    if (pair.in < m_pData[0].in) return InsertPair(0, pair);
    if (pair.in == m_pData[last].in) return replace(last);
    if (pair.in > m_pData[last].in) return InsertPair(m_nSize, pair);

    int low = 0;
    int high = last;
    while (high - low >= 2) {
        const int middle = std::midpoint(low, high);
        if (pair.in == m_pData[middle].in) return replace(middle);
        (pair.in > m_pData[middle].in ? low : high) = middle;
    }
    return InsertPair(high, pair);
}

int CzynMap::InsertPair(int index, zynMap_element pair) {
    std::copy_backward(m_pData + index, m_pData + m_nSize, m_pData + m_nSize + 1);
    m_pData[index] = pair;
    ++m_nSize;
    return index;
}

void CzynMap::SortIn() {
    if (!m_pData || m_nSize < 2) return;
    // Stable, so that what is written in this order is the same every time.
    if (!std::is_sorted(m_pData, m_pData + m_nSize, KeyLess))
        std::stable_sort(m_pData, m_pData + m_nSize, KeyLess);
    m_bSorted = true;
    m_nAdded = 1;
}

// As SortIn, when all but the pairs added last are in order.
void CzynMap::SortAdded() {
    const int added = m_nAdded - 1, ordered = m_nSize - added;
    // A caller may have made the order a descending one.
    if (added < 1 || ordered < 1 || m_pData[0].in > m_pData[ordered - 1].in) return SortIn();
    zynMap_element* const first = m_pData + ordered;
    zynMap_element* const end = m_pData + m_nSize;
    std::stable_sort(first, end, KeyLess);
    if (KeyLess(*first, first[-1])) {
        zynMap_element* const place = std::upper_bound(m_pData, first, *first, KeyLess);
        if (added == 1)
            std::rotate(place, first, end);
        else
            std::inplace_merge(place, first, end, KeyLess);
    }
    m_bSorted = true;
    m_nAdded = 1;
}

int CzynMap::FindKey(std::intptr_t key) {
    if (!m_pData || m_nSize == 0) return -1;
    if (m_nSize < leastSizeForHalving) return FindKeyLinear(key);
    if (!m_bSorted) SortAdded();
    const bool ascending = m_nAdded == 1 && m_pData[0].in <= m_pData[m_nSize - 1].in;
    const int index = ascending ? FindKeyInOrder(key) : FindKeyByHalving(key);
    return index >= 0 || m_bNoLinearSearch ? index : FindKeyLinear(key);
}

// The result of FindKeyByHalving where a sort has put the pairs in order, at half its cost: without a branch
// on each comparison, which could only be guessed.
int CzynMap::FindKeyInOrder(std::intptr_t key) const {
    const auto size = static_cast<std::size_t>(m_nSize);
    std::size_t lowest = 0;
    for (std::size_t length = size; length > 1;) {
        const std::size_t half = length / 2, behind = lowest + half;
        lowest = m_pData[behind - 1].in < key ? behind : lowest;
        length -= half;
    }
    if (m_pData[lowest].in != key) return -1;
    const bool single = lowest + 1 == size || m_pData[lowest + 1].in != key;
    return single ? static_cast<int>(lowest) : FindKeyByHalving(key);
}

// Of several equal keys the first one met is the answer, and callers see which: the steps are part of the
// behaviour.
int CzynMap::FindKeyByHalving(std::intptr_t key) const {
    const bool ascending = m_pData[0].in <= m_pData[1].in;
    int low = 0;
    int high = m_nSize - 1;
    for (int middle = 0;;) {
        const int previous = middle;
        middle = std::midpoint(low, high);
        if (middle == previous) break;
        if (m_pData[middle].in == key) return middle;
        ((key > m_pData[middle].in) == ascending ? low : high) = middle;
    }
    if (m_pData[high].in == key) return high;
    return m_pData[low].in == key ? low : -1;
}

int CzynMap::FindKeyLinear(std::intptr_t key) const {
    for (int i = 0; i < m_nSize; ++i)
        if (m_pData[i].in == key) return i;
    return -1;
}

int CzynMap::FindByOut(int out) const {
    for (int i = 0; i < m_nSize; ++i)
        if (m_pData[i].out == out) return i;
    return -1;
}

int CzynMap::GetByOut(int out) const {
    const int index = FindByOut(out);
    return index < 0 ? -1 : static_cast<int>(m_pData[index].in);
}

bool CzynMap::Remove(int index) {
    if (index < 0 || index >= m_nSize) return false;
    std::copy(m_pData + index + 1, m_pData + m_nSize, m_pData + index);
    --m_nSize;
    return true;
}

void CzynMap::RemoveAll() {
    m_nSize = 0;
    m_nMaxSize = 0;
    delete[] m_pData;
    m_pData = nullptr;
}
