#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

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
    // Comparing at every first character is the quickest, but for texts that mislead it again and again,
    // which costs little while the pattern is short; then the standard's search is the best for bytes.
    constexpr std::size_t patience = 4, advance = 256, shortPattern = sizeof(C) == 1 ? 16 : 0;
    if (pattern.size() <= shortPattern) return text.find(pattern, start);
    std::size_t at = text.find(pattern[0], start);
    for (std::size_t compared = 0; at < text.size() && text.size() - at >= pattern.size();
         at = text.find(pattern[0], at + 1)) {
        std::size_t same = 1;
        while (same < pattern.size() && pattern[same] == text[at + same])
            ++same;
        if (same == pattern.size()) return at;
        compared += same;
        if (compared > patience * (at - start) + advance) return detail::FindTwoWay(text, pattern, at + 1);
    }
    return text.npos;
}

} // namespace zynplatform
