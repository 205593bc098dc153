// SPDX-License-Identifier: MIT
#include "zynaggr/ini_lines_impl.h"

#include <algorithm>
#include <limits>
#include <new>

namespace zyn {

IniLines::IniLines(CzynINI::SSection& section, bool loose, bool follows)
    : m_section(section),
      m_names(section.m_aOptions.m_pData, section.m_aOptions.m_nSize),
      m_bMayBeLoose(loose),
      m_bFollows(follows) {}

IniLines::~IniLines() {
    if (m_nFree > 0) Tighten();
}

CzynINI::SOption* IniLines::Find(const char* key) {
    const int slot = m_names.First(key);
    return slot < 0 ? nullptr : m_section.m_aOptions.m_pData[slot];
}

int IniLines::Insert(std::unique_ptr<SOption> line, int above) {
    if (!Loosen()) return InsertTightly(std::move(line), above);
    const bool keyed = !line->m_sKey.IsEmpty();
    if (above < 0) FillToInsertionPoint();
    // A pair stands in front of the insertion point; a line above it pushes it behind, or moves the point.
    const bool pushes = above >= 0 && above == m_nGap - 1;
    const bool follows = pushes && m_bFollows;
    if (m_nGap == m_nGapEnd) MakeGap();
    m_names.Reserve(Size(), 1);
    if (follows)
        MoveLine(m_nGap - 1, m_nGap);
    else if (pushes)
        MoveLine(--m_nGap, --m_nGapEnd);
    const int slot = follows ? m_nGap++ - 1 : pushes || keyed ? m_nGap++ : --m_nGapEnd;
    m_section.m_aOptions.m_pData[slot] = line.release();
    m_free[static_cast<std::size_t>(slot)] = false;
    --m_nFree;
    m_names.Enter(slot);
    if (keyed || follows) ++m_section.m_nInsertPos;
    return slot;
}

template <class Goes> void IniLines::RemoveTightly(Goes goes) {
    CzynINI::OptionArray& options = m_section.m_aOptions;
    const int insertPos = m_section.m_nInsertPos;
    int to = 0;
    for (int slot = 0; slot < Size(); ++slot) {
        SOption* const line = options.m_pData[slot];
        if (line && goes(*line)) {
            delete line;
            if (m_bFollows && slot < insertPos) --m_section.m_nInsertPos;
        } else {
            options.m_pData[to++] = line;
        }
    }
    options.m_nSize = to;
    m_names.Drop();
}

void IniLines::Remove(const char* key) {
    if (m_names.First(key) < 0) return;
    const CStringA wanted(key); // it may be the key of a line that goes
    if (!Loosen())
        return RemoveTightly([&](const SOption& line) { return line.m_sKey.CompareNoCase(wanted) == 0; });
    for (int slot; (slot = m_names.First(wanted)) >= 0;)
        FreeLine(slot);
}

void IniLines::Remove(const SOption& line) {
    if (!Loosen()) return RemoveTightly([&](const SOption& other) { return &other == &line; });
    SOption** const slots = m_section.m_aOptions.m_pData;
    FreeLine(static_cast<int>(std::find(slots, slots + Size(), &line) - slots));
}

// The array as everybody sees it.

int IniLines::InsertTightly(std::unique_ptr<SOption> line, int above) {
    const int slot = m_section.Insert(line.get(), above);
    const CzynINI::SOption* const inserted = line.release();
    if (m_bFollows && above >= 0 && inserted->m_sKey.IsEmpty()) ++m_section.m_nInsertPos;
    if (!m_names.IsBuilt()) return slot;
    try {
        if (slot == Size() - 1)
            m_names.Enter(slot);
        else
            m_names.Drop();
    } catch (const std::bad_alloc&) {
        m_names.Drop();
    }
    return slot;
}

// The array with free slots.

// Whether the array is loose from now on.
bool IniLines::Loosen() {
    if (m_bLoose || !m_bMayBeLoose || !m_names.IsBuilt()) return m_bLoose;
    m_free.assign(static_cast<std::size_t>(Size()), false);
    m_nGap = m_nGapEnd = std::min(m_section.m_nInsertPos, Size());
    return m_bLoose = true;
}

void IniLines::Tighten() {
    int to = 0, gap = 0;
    for (int slot = 0; slot < Size(); ++slot) {
        if (slot == m_nGap) gap = to;
        if (IsFree(slot)) continue;
        if (to < slot) MoveLine(slot, to);
        ++to;
    }
    m_nGap = m_nGapEnd = m_nGap < Size() ? gap : to;
    m_section.m_aOptions.m_nSize = to;
    m_nFree = 0;
}

void IniLines::MakeGap() {
    Tighten();
    CzynINI::OptionArray& options = m_section.m_aOptions;
    const std::int32_t size = Size(), gap = size / 2 + 16;
    if (gap > std::numeric_limits<std::int32_t>::max() - size) throw std::bad_alloc();
    const std::int32_t total = size + gap;
    if (total > options.m_nMaxSize && !options.SetSize(total)) throw std::bad_alloc();
    m_names.Reserve(total, 1);
    m_free.resize(static_cast<std::size_t>(total));
    std::fill(m_free.begin() + size, m_free.end(), true);
    std::fill_n(options.m_pData + size, gap, nullptr);
    options.m_nSize = total;
    m_nFree = gap;
    for (int slot = size - 1; slot >= m_nGap; --slot)
        MoveLine(slot, slot + gap);
    m_nGapEnd = m_nGap + gap;
}

// An insertion point beyond the end has null slots before it.
void IniLines::FillToInsertionPoint() {
    while (m_nGapEnd == Size() && m_section.m_nInsertPos > Size() - m_nFree) {
        if (m_nGap == m_nGapEnd) MakeGap();
        m_free[static_cast<std::size_t>(m_nGap++)] = false;
        --m_nFree;
    }
}

void IniLines::MoveLine(int from, int to) {
    SOption** const slots = m_section.m_aOptions.m_pData;
    m_names.Move(from, to);
    slots[to] = std::exchange(slots[from], nullptr);
    m_free[static_cast<std::size_t>(to)] = false;
    m_free[static_cast<std::size_t>(from)] = true;
}

void IniLines::FreeLine(int slot) {
    m_names.Leave(slot);
    delete std::exchange(m_section.m_aOptions.m_pData[slot], nullptr);
    m_free[static_cast<std::size_t>(slot)] = true;
    ++m_nFree;
    if (slot < m_nGap && m_bFollows) {
        --m_section.m_nInsertPos;
    } else if (slot < m_nGap) { // the insertion point stays so many slots behind the start
        while (m_nGapEnd < Size() && IsFree(m_nGapEnd))
            ++m_nGapEnd;
        if (m_nGapEnd < Size()) {
            if (m_nGap < m_nGapEnd) MoveLine(m_nGapEnd, m_nGap);
            ++m_nGap;
            ++m_nGapEnd;
        }
    }
    if (m_nFree > Size() / 2 + 64) Tighten();
}

} // namespace zyn
