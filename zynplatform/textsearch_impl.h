// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/vectors.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <string_view>
#include <type_traits>

// Searching a text for another one, in time linear in the two lengths whatever they hold, without memory of
// its own.

namespace zynplatform {

namespace detail {

// Where the greatest suffix of a pattern begins, by one order of the characters or the other, and its period.
struct Suffix {
    std::size_t begin, period;
};
template <class C> Suffix GreatestSuffix(std::basic_string_view<C> pattern, bool isReversed) {
    Suffix suffix{0, 1};
    std::size_t other = 1, same = 0; // `same` characters of the suffix at `other` equal those of the greatest
    while (other + same < pattern.size()) {
        const C left = pattern[suffix.begin + same], right = pattern[other + same];
        if (left == right) {
            if (++same < suffix.period) continue;
            other += same;
        } else if (isReversed ? left < right : right < left) {
            other += same + 1;
            suffix.period = other - suffix.begin;
        } else {
            suffix = {other, 1};
            ++other;
        }
        same = 0;
    }
    return suffix;
}

// The two-way algorithm of Crochemore and Perrin: the part of the pattern from a critical place on is
// compared forwards, then the part before it; what differs in the one or the other tells how far to move.
template <class C>
std::size_t FindTwoWay(std::basic_string_view<C> text, std::basic_string_view<C> pattern, std::size_t at) {
    const Suffix one = GreatestSuffix(pattern, false), two = GreatestSuffix(pattern, true);
    const auto [middle, period] = one.begin > two.begin ? one : two;
    const std::size_t size = pattern.size();
    const bool isPeriodic = pattern.substr(0, middle) == pattern.substr(period, middle);
    const std::size_t step = isPeriodic ? period : std::max(middle, size - middle) + 1;
    std::size_t known = 0; // so much of the beginning is equal, after a step of a period
    while (at + size <= text.size()) {
        std::size_t i = std::max(middle, known);
        while (i < size && pattern[i] == text[at + i])
            ++i;
        if (i < size) {
            at += i - middle + 1;
            known = 0;
            continue;
        }
        i = middle;
        while (i > known && pattern[i - 1] == text[at + i - 1])
            --i;
        if (i <= known) return at;
        at += step;
        known = isPeriodic ? size - period : 0;
    }
    return text.npos;
}

} // namespace detail

// Where a pattern, which is not empty, stands first from `start` on; npos for nowhere.
template <class C>
std::size_t FindText(std::basic_string_view<C> text, std::basic_string_view<C> pattern, std::size_t start) {
    using Vector = std::conditional_t<sizeof(C) == 1, Bytes, Units>;
    using Lane = std::conditional_t<sizeof(C) == 1, std::uint8_t, std::uint16_t>;
    constexpr std::size_t lanes = sizeof(Vector) / sizeof(C);
    if (start > text.size() || text.size() - start < pattern.size()) return text.npos;
    // The pattern is compared wherever its first and its last character stand, but for texts that mislead it
    // again and again.
    constexpr std::size_t patience = 4, advance = 256;
    const std::size_t last = pattern.size() - 1, end = text.size() - last;
    const C* const begin = text.data();
    std::size_t compared = 0;
    for (std::size_t at = start; at < end; at += lanes) {
        const std::size_t count = std::min(end - at, lanes);
        unsigned places = 0; // of those in view, a bit each
        if (hasVectors && count == lanes) {
            const auto same = (Load<Vector>(begin + at) == Lane(pattern[0])) &
                              (Load<Vector>(begin + at + last) == Lane(pattern[last]));
            places = Bits(same) & (sizeof(C) == 1 ? 0xFFFF : 0x5555);
        } else {
            for (std::size_t i = 0; i < count; ++i)
                if (begin[at + i] == pattern[0]) places |= 1U << i * sizeof(C);
        }
        for (; places != 0; places &= places - 1) {
            const std::size_t place = at + static_cast<std::size_t>(std::countr_zero(places)) / sizeof(C);
            std::size_t same = 1;
            while (same < pattern.size() && pattern[same] == begin[place + same])
                ++same;
            if (same == pattern.size()) return place;
            compared += same;
            if (compared > patience * (place - start) + advance)
                return detail::FindTwoWay(text, pattern, place + 1);
        }
    }
    return text.npos;
}

} // namespace zynplatform
