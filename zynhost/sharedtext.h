// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace zyn {

// The text of a CStringA, with its length and a zero behind it. Up to 23 bytes stand in the object itself; a
// longer text stands in a block on the heap, which copies have in common until one of them is changed. So a
// copy asks for no memory.
//
// The objects that have a block in common may belong to different threads; one object is for one thread at a
// time. Running out of memory throws std::bad_alloc, and so does a length of 2^31 or more; the text stays as
// it was.
class ZYN_API SharedText {
public:
    // An empty text, a copy of one, one character, or a text that is taken over.
    SharedText() noexcept : m_bytes{} { m_bytes[markAt] = inlineLimit; }
    explicit SharedText(std::string_view text);
    explicit SharedText(char character) noexcept : m_bytes{character} { m_bytes[markAt] = inlineLimit - 1; }
    SharedText(const SharedText& other) {
        std::memcpy(m_bytes, other.m_bytes, sizeof m_bytes);
        if (!IsInline()) Share();
    }
    SharedText(SharedText&& other) noexcept : SharedText() { Swap(other); }
    ~SharedText() {
        if (!IsInline()) Release();
    }

    // As the constructors.
    SharedText& operator=(const SharedText& other) {
        SharedText(other).Swap(*this);
        return *this;
    }
    SharedText& operator=(SharedText&& other) noexcept {
        SharedText(static_cast<SharedText&&>(other)).Swap(*this);
        return *this;
    }

    // In bytes, without the zero.
    std::size_t Length() const {
        return IsInline() ? inlineLimit - static_cast<std::size_t>(m_bytes[markAt]) : OfBlock().length;
    }
    // With the zero behind it; valid until the text changes.
    const char* Get() const { return IsInline() ? m_bytes : OfBlock().text; }
    // The same with its length.
    std::string_view View() const { return {Get(), Length()}; }

    // Makes room for texts of that length: growing to it asks for no more memory.
    void Reserve(std::size_t length);
    // The text given may be part of this one.
    void Assign(std::string_view text) {
        if (!IsInline() || text.size() > std::size_t{inlineLimit}) return AssignLong(text);
        if (!text.empty()) std::memmove(m_bytes, text.data(), text.size());
        m_bytes[text.size()] = 0;
        m_bytes[markAt] = static_cast<char>(std::size_t{inlineLimit} - text.size());
    }
    void Append(std::string_view text);
    // Sets the length, with zeros behind the old end. Returns the text for writing, until the next change or
    // copy.
    char* Resize(std::size_t length);
    // As Resize; but for writing until the next change, whatever is copied meanwhile.
    char* Lend(std::size_t length);

private:
    static constexpr std::size_t size = 24, markAt = size - 1;
    static constexpr char inlineLimit = size - 1;
    // In place of what is left of the room inside, which is the zero behind a text that fills it.
    static constexpr char sharedMark = -1, lentMark = -2;

    // Stands before the text.
    struct Block {
        std::atomic<std::uint32_t> owners;
        std::uint32_t room; // without the zero
    };
    struct Place {
        char* text;
        std::uint32_t length;
    };

    bool IsInline() const { return static_cast<signed char>(m_bytes[markAt]) >= 0; }
    Place OfBlock() const {
        Place place;
        std::memcpy(&place, m_bytes, sizeof place);
        return place;
    }
    static Block& BlockOf(const Place& place) { return reinterpret_cast<Block*>(place.text)[-1]; }
    bool IsAlone() const {
        return IsInline() || BlockOf(OfBlock()).owners.load(std::memory_order_acquire) == 1;
    }
    std::size_t Room() const {
        return IsInline() ? std::size_t{inlineLimit} : std::size_t{BlockOf(OfBlock()).room};
    }

    void Share() {
        if (m_bytes[markAt] == lentMark) return CopyLent();
        BlockOf(OfBlock()).owners.fetch_add(1, std::memory_order_relaxed);
    }
    void Release() {
        const Place place = OfBlock();
        if (IsAlone() || BlockOf(place).owners.fetch_sub(1, std::memory_order_acq_rel) == 1) Free(place);
    }
    void Swap(SharedText& other) noexcept {
        char bytes[size];
        std::memcpy(bytes, m_bytes, size);
        std::memcpy(m_bytes, other.m_bytes, size);
        std::memcpy(other.m_bytes, bytes, size);
    }
    void CopyLent();
    static void Free(const Place& place);
    void Allocate(std::size_t room, std::string_view text);
    bool Has(std::size_t room) const { return IsAlone() && room <= Room(); }
    SharedText Grown(std::size_t room) const;
    char* Text() { return const_cast<char*>(Get()); } // where it is nobody else's
    char* SetLength(std::size_t length);
    void AssignLong(std::string_view text);

    alignas(Place) char m_bytes[size]; // the text, or a Place; and the mark
};

} // namespace zyn
