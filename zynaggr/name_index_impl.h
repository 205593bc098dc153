// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/hash_impl.h"
#include "zynhost/cstring.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

namespace zyn {

// Where names stand in an array of named elements.
//
// Names are equal when they differ in letter case only, and end at their first zero byte. An array that is
// searched a few times is walked through; once that has cost about as much as a table of all its names, the
// table is made, and has to be told of every change from then on. What is found is the same either way. A
// slot may be null.
template <class T, CStringA T::*name> class NameIndex {
public:
    // The two fields of the array that say where its slots are and how many.
    NameIndex(T** const& slots, const std::int32_t& size) : m_slots(slots), m_size(size) {}

    // The first slot with a name, and the next one with the same name behind that; -1 when there is none.
    int First(const char* wanted);
    int Next(int slot, const char* wanted) { return IsBuilt() ? LinkAt(slot).next : Walk(slot + 1, wanted); }

    // The first element of a name takes the caller's spelling, and the mark is put behind the name of every
    // later one. The first one, or null.
    T* Claim(const char* wanted, const char* mark);

    // The table is made by First alone, and is only a help: without memory for it there is none.
    bool IsBuilt() const { return !m_heads.empty(); }
    void Drop();

    // What to call when there is a table. An element has come to stand in a slot; is about to leave it, by
    // its name or altogether; and stands in another slot, with none between that has a name.
    void Enter(int slot);
    void Leave(int slot);
    void Move(int from, int to);
    // Makes room for the slots from 0 to size - 1 and `more` names, so that Enter cannot fail.
    void Reserve(int size, std::size_t more);

private:
    // Those of one name form a list, in the order of their slots.
    struct Link {
        std::uint32_t tag = 0; // of the name; 0: the slot is not in the table
        std::int32_t previous = -1, next = -1;
    };
    struct Head {
        std::uint32_t tag = 0; // 0: free
        std::int32_t first = -1;
    };

    static std::uint32_t Tag(std::string_view text) {
        const auto hash = static_cast<std::uint32_t>(HashText(text, FoldedBlock));
        return hash != 0 ? hash : 1;
    }
    bool HasName(int slot, std::string_view wanted) const {
        const CStringA& stored = m_slots[slot]->*name;
        const std::string_view text = stored.View();
        if (text.size() < wanted.size() || text.data()[wanted.size()] != 0) return false;
        return text.starts_with(wanted) || stored.CompareNoCase(wanted.data()) == 0;
    }
    Link& LinkAt(int slot) { return m_links[static_cast<std::size_t>(slot)]; }
    std::size_t Mask() const { return m_heads.size() - 1; }

    int Walk(int slot, const char* wanted);
    void Build();
    std::size_t Find(std::uint32_t tag, std::string_view wanted) const;
    int FindBefore(int slot, int first, std::string_view wanted);
    Head& HeadOf(int slot, std::uint32_t tag);
    void Erase(std::size_t at);

    T** const& m_slots;
    const std::int32_t& m_size;
    std::int64_t m_nWalked = 0; // elements looked at so far
    std::vector<Head> m_heads;  // a table by tag, a power of two of them, at most two thirds in use
    std::size_t m_nHeads = 0;   // in use
    std::vector<Link> m_links;  // one a slot
};

template <class T, CStringA T::*name> int NameIndex<T, name>::First(const char* wanted) {
    constexpr std::int64_t fewest = 256; // so much walking is never worth a table
    if (!IsBuilt() && m_nWalked >= fewest && m_nWalked >= 4 * std::int64_t{m_size}) Build();
    if (!IsBuilt()) return Walk(0, wanted);
    const std::string_view text(wanted);
    return m_heads[Find(Tag(text), text)].first;
}

template <class T, CStringA T::*name> T* NameIndex<T, name>::Claim(const char* wanted, const char* mark) {
    const int first = First(wanted);
    if (first < 0) return nullptr;
    T* const found = m_slots[first];
    int copy = Next(first, wanted);
    if (copy < 0 && (found->*name).View() == wanted) return found;
    const CStringA spelling(wanted); // it may be one of the names that change
    while (copy >= 0) {
        const int next = Next(copy, spelling);
        CStringA marked = m_slots[copy]->*name + mark;
        if (IsBuilt()) Reserve(copy + 1, 1);
        if (IsBuilt()) Leave(copy);
        m_slots[copy]->*name = std::move(marked);
        if (IsBuilt()) Enter(copy);
        copy = next;
    }
    found->*name = spelling;
    return found;
}

template <class T, CStringA T::*name> int NameIndex<T, name>::Walk(int slot, const char* wanted) {
    const std::string_view text(wanted);
    for (; slot < m_size; ++slot, ++m_nWalked)
        if (m_slots[slot] && HasName(slot, text)) return slot;
    return -1;
}

template <class T, CStringA T::*name> void NameIndex<T, name>::Build() {
    m_nWalked = 0;
    try {
        Reserve(m_size, static_cast<std::size_t>(m_size));
        for (int slot = m_size - 1; slot >= 0; --slot) // so that each comes before those of its name
            if (m_slots[slot]) Enter(slot);
    } catch (const std::bad_alloc&) {
        Drop();
    }
}

template <class T, CStringA T::*name> void NameIndex<T, name>::Drop() {
    m_heads = {};
    m_nHeads = 0;
    m_links = {};
}

template <class T, CStringA T::*name> void NameIndex<T, name>::Reserve(int size, std::size_t more) {
    if (static_cast<std::size_t>(size) > m_links.size()) m_links.resize(static_cast<std::size_t>(size));
    std::size_t room = std::max<std::size_t>(m_heads.size(), 16);
    while (2 * room < 3 * (m_nHeads + more))
        room *= 2;
    if (room == m_heads.size()) return;
    std::vector<Head> old(room);
    old.swap(m_heads);
    for (const Head& head : old) {
        if (head.tag == 0) continue;
        std::size_t at = head.tag & Mask();
        while (m_heads[at].tag != 0)
            at = (at + 1) & Mask();
        m_heads[at] = head;
    }
}

// The head of a name, or the free one where it would be.
template <class T, CStringA T::*name>
std::size_t NameIndex<T, name>::Find(std::uint32_t tag, std::string_view wanted) const {
    std::size_t at = tag & Mask();
    while (m_heads[at].tag != 0 && !(m_heads[at].tag == tag && HasName(m_heads[at].first, wanted)))
        at = (at + 1) & Mask();
    return at;
}

template <class T, CStringA T::*name> void NameIndex<T, name>::Enter(int slot) {
    Reserve(slot + 1, 1);
    const std::string_view text((m_slots[slot]->*name).GetString());
    Link link{Tag(text)};
    Head& head = m_heads[Find(link.tag, text)];
    if (head.tag == 0) {
        head = {link.tag, slot};
        ++m_nHeads;
    } else if (slot < head.first) {
        link.next = std::exchange(head.first, slot);
    } else {
        link.previous = FindBefore(slot, head.first, text);
        link.next = std::exchange(LinkAt(link.previous).next, slot);
    }
    if (link.next >= 0) LinkAt(link.next).previous = slot;
    LinkAt(slot) = link;
}

// The last slot of that name before this one, when the first is known: along the list or back through the
// slots, whichever comes there sooner.
template <class T, CStringA T::*name>
int NameIndex<T, name>::FindBefore(int slot, int first, std::string_view wanted) {
    const std::uint32_t tag = LinkAt(first).tag;
    for (int near = slot - 1;; --near) {
        const int next = LinkAt(first).next;
        if (next < 0 || next > slot) return first;
        if (LinkAt(near).tag == tag && HasName(near, wanted)) return near;
        first = next;
    }
}

template <class T, CStringA T::*name> void NameIndex<T, name>::Leave(int slot) {
    const Link link = LinkAt(slot);
    if (link.next >= 0) LinkAt(link.next).previous = link.previous;
    if (link.previous >= 0)
        LinkAt(link.previous).next = link.next;
    else if (Head& head = HeadOf(slot, link.tag); link.next >= 0)
        head.first = link.next;
    else
        Erase(static_cast<std::size_t>(&head - m_heads.data()));
    LinkAt(slot) = {};
}

template <class T, CStringA T::*name> void NameIndex<T, name>::Move(int from, int to) {
    const Link link = std::exchange(LinkAt(from), {});
    if (link.tag == 0) return;
    LinkAt(to) = link;
    if (link.next >= 0) LinkAt(link.next).previous = to;
    (link.previous >= 0 ? LinkAt(link.previous).next : HeadOf(from, link.tag).first) = to;
}

template <class T, CStringA T::*name> auto NameIndex<T, name>::HeadOf(int slot, std::uint32_t tag) -> Head& {
    std::size_t at = tag & Mask();
    while (m_heads[at].first != slot)
        at = (at + 1) & Mask();
    return m_heads[at];
}

// Frees a head; those behind that it kept from their places move up.
template <class T, CStringA T::*name> void NameIndex<T, name>::Erase(std::size_t at) {
    for (std::size_t next = (at + 1) & Mask(); m_heads[next].tag != 0; next = (next + 1) & Mask()) {
        const std::size_t home = m_heads[next].tag & Mask();
        if (((next - home) & Mask()) < ((next - at) & Mask())) continue;
        m_heads[at] = m_heads[next];
        at = next;
    }
    m_heads[at] = {};
    --m_nHeads;
}

} // namespace zyn
