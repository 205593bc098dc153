// SPDX-License-Identifier: MIT
#include "zynplatform/textscan_impl.h"

#include "zynplatform/vectorcode_impl.h"
#include "zynplatform/vectors.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace zynplatform {
namespace {

constexpr std::size_t unitsPerVector = sizeof(Units) / sizeof(WCHAR);

// From here on the widest vectors pay.
constexpr std::size_t longText = 64;

// A vector at an address that is a multiple of its size lies in one page of memory, and can be read whole
// when any unit of it can: so is a text the length of which isn't known. What stands beside the text is not
// looked at, but tools that watch over memory can't know that.
using AlignedUnits = std::uint16_t __attribute__((vector_size(16), may_alias));
#define ZYN_READS_WHOLE_VECTORS __attribute__((no_sanitize("address"), no_sanitize("thread")))

// How many units stand before `text` in its aligned vector.
std::size_t UnitsBefore(const WCHAR* text) {
    return reinterpret_cast<std::uintptr_t>(text) % sizeof(Units) / sizeof(WCHAR);
}
bool IsAligned(const void* text, std::size_t size = sizeof(Units)) {
    return reinterpret_cast<std::uintptr_t>(text) % size == 0;
}
// A text may stand at an odd address; then no vector is aligned.
bool HasVectors(const WCHAR* text) {
    return hasVectors && IsAligned(text, sizeof(WCHAR));
}

// In units, from a mask of bytes.
std::size_t FirstOf(unsigned bits) {
    return static_cast<std::size_t>(std::countr_zero(bits)) / sizeof(WCHAR);
}

// Of 16 bytes of two texts, what differs in other bits than those that tell the case of a letter.
struct Difference {
    Difference(Bytes left, Bytes right) : bytes(left) {
        using SignedBytes = std::int8_t __attribute__((vector_size(16)));
        const Bytes lower = bytes | 0x20;
        const auto isLatin = std::bit_cast<SignedBytes>(lower + (0x80 - 'a')) < 'z' + 1 - 'a' - 0x80;
        const auto isLetter = std::bit_cast<Bytes>(isLatin) | std::bit_cast<Bytes>(lower >= 0xE0);
        bits = (left ^ right) & ~(isLetter & 0x20);
    }
    // Ё and ё apart, which are rare.
    Bytes WithoutIo() const {
        return bits & ~std::bit_cast<Bytes>((bits == 0x10) & ((bytes | 0x10) == 0xB8));
    }

    Bytes bytes, bits;
};

} // namespace

ZYN_READS_WHOLE_VECTORS std::size_t common::FindDifference(const WCHAR* left, std::size_t length,
                                                           const WCHAR* right) {
    std::size_t at = 0;
    if (HasVectors(right)) {
        for (; UnitsBefore(right + at) != 0; ++at)
            if (left[at] != right[at] || left[at] == 0) return at;
        const std::size_t beyond = IsAligned(left + at) ? unitsPerVector : 0; // its last vector, too
        for (; at + unitsPerVector <= length + beyond; at += unitsPerVector) {
            Units one; // not by Load, which is watched
            __builtin_memcpy(&one, left + at, sizeof one);
            const Units other = *reinterpret_cast<const AlignedUnits*>(right + at);
            const unsigned same = Bits((one == other) & (other != 0));
            if (same != 0xFFFF) return at + FirstOf(~same);
        }
    }
    while (left[at] == right[at] && left[at] != 0)
        ++at;
    return at;
}

std::size_t common::SameWithoutCase(const char* left, const char* right, std::size_t length) {
    constexpr std::size_t block = sizeof(Bytes);
    if (!hasVectors || length < block) return 0;
    for (std::size_t at = 0;;) {
        const std::size_t next = std::min(at + block, length - block); // the last ones may overlap
        const Difference first(Load<Bytes>(left + at), Load<Bytes>(right + at));
        const Difference second(Load<Bytes>(left + next), Load<Bytes>(right + next));
        if (!IsZero(first.bits | second.bits) && !IsZero(first.WithoutIo() | second.WithoutIo())) return at;
        if (next + block == length) return length;
        at = std::min(next + block, length - block);
    }
}

ZYN_READS_WHOLE_VECTORS std::size_t LengthOf(const WCHAR* text, std::size_t most) {
    std::size_t length = 0;
    if (!HasVectors(text)) {
        while (length < most && text[length] != 0)
            ++length;
        return length;
    }
    const std::size_t before = UnitsBefore(text);
    const auto* vector = reinterpret_cast<const AlignedUnits*>(text - before);
    unsigned zeros = Bits(*vector == 0) >> before * sizeof(WCHAR);
    if (zeros != 0) return std::min(most, FirstOf(zeros));
    for (length = unitsPerVector - before; length < most; length += unitsPerVector) {
        zeros = Bits(*++vector == 0);
        if (zeros != 0) return std::min(most, length + FirstOf(zeros));
    }
    return most;
}

std::size_t FindCharacter(const WCHAR* text, std::size_t length, WCHAR character) {
    const auto wanted = static_cast<std::uint16_t>(character);
    std::size_t at = 0;
    for (; hasVectors && length - at >= 2 * unitsPerVector; at += 2 * unitsPerVector) {
        const auto first = Load<Units>(text + at) == wanted;
        const auto second = Load<Units>(text + at + unitsPerVector) == wanted;
        if (const unsigned bits = Bits(first) | Bits(second) << 16; bits != 0) return at + FirstOf(bits);
    }
    while (at < length && text[at] != character)
        ++at;
    return at;
}

std::size_t FindDifference(const WCHAR* left, std::size_t length, const WCHAR* right) {
    if (length < longText || !HasVectors(right)) return common::FindDifference(left, length, right);
    return CurrentVectorCode().findDifference(left, length, right);
}

std::size_t SameWithoutCase(const char* left, const char* right, std::size_t length) {
    if (length < longText) return common::SameWithoutCase(left, right, length);
    return CurrentVectorCode().sameWithoutCase(left, right, length);
}

} // namespace zynplatform
