// SPDX-License-Identifier: MIT
#include "zynhost/sharedtext.h"

#include "zynhost/memory.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <new>

namespace zyn {

static_assert(sizeof(SharedText) == 24);

SharedText::SharedText(std::string_view text) : SharedText() {
    if (text.size() > std::size_t{inlineLimit}) {
        Allocate(text.size(), text);
    } else {
        std::copy(text.begin(), text.end(), m_bytes);
        SetLength(text.size());
    }
}

// Gives an object that has no block one, with a text in it.
void SharedText::Allocate(std::size_t room, std::string_view text) {
    assert(text.size() <= room);
    if (room > INT_MAX) AfxThrowMemoryException();
    auto* const block = new (::operator new(sizeof(Block) + room + 1)) Block;
    block->owners.store(1, std::memory_order_relaxed);
    block->room = static_cast<std::uint32_t>(room);
    const Place place{reinterpret_cast<char*>(block + 1), 0};
    std::copy(text.begin(), text.end(), place.text);
    std::memcpy(m_bytes, &place, sizeof place);
    m_bytes[markAt] = sharedMark;
    SetLength(text.size());
}

void SharedText::Free(const Place& place) {
    ::operator delete(&BlockOf(place));
}

// A block that somebody writes into stays his alone.
void SharedText::CopyLent() {
    const Place place = OfBlock();
    m_bytes[markAt] = inlineLimit; // nothing to free when there is no memory
    Allocate(place.length, {place.text, place.length});
}

char* SharedText::SetLength(std::size_t length) {
    assert(IsAlone() && length <= Room());
    if (IsInline()) {
        m_bytes[length] = 0;
        m_bytes[markAt] = static_cast<char>(std::size_t{inlineLimit} - length);
        return m_bytes;
    }
    char* const text = OfBlock().text;
    text[length] = 0;
    const auto stored = static_cast<std::uint32_t>(length);
    std::memcpy(m_bytes + offsetof(Place, length), &stored, sizeof stored);
    m_bytes[markAt] = sharedMark;
    return text;
}

void SharedText::AssignLong(std::string_view text) {
    if (Has(text.size())) {
        std::char_traits<char>::move(Text(), text.data(), text.size());
        SetLength(text.size());
    } else {
        SharedText(text).Swap(*this);
    }
}

// A copy with room for so many, or twice as many as there are now.
SharedText SharedText::Grown(std::size_t room) const {
    const std::size_t length = Length();
    SharedText grown;
    grown.Allocate(room > length ? std::max(room, std::min(2 * length, std::size_t{INT_MAX})) : length,
                   View());
    return grown;
}

void SharedText::Append(std::string_view text) {
    const std::size_t length = Length(), all = length + text.size();
    if (Has(all)) {
        std::char_traits<char>::move(Text() + length, text.data(), text.size());
        SetLength(all);
    } else {
        SharedText grown = Grown(all);
        grown.Append(text);
        Swap(grown);
    }
}

void SharedText::Reserve(std::size_t length) {
    if (!Has(length)) Grown(length).Swap(*this);
}

char* SharedText::Resize(std::size_t length) {
    const std::size_t old = Length();
    if (!IsAlone() && length < old)
        SharedText(View().substr(0, length)).Swap(*this);
    else
        Reserve(length);
    char* const text = SetLength(length);
    if (length > old) std::fill(text + old, text + length, '\0');
    return text;
}

char* SharedText::Lend(std::size_t length) {
    char* const text = Resize(length);
    if (!IsInline()) m_bytes[markAt] = lentMark;
    return text;
}

} // namespace zyn
