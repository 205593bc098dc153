// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

// Hashes of short texts, for tables within one process. They differ from process to process, so that nobody
// can make a file whose texts all share one.

namespace zyn {

template <class T> std::uint64_t LoadBlock(const char* text) {
    T block;
    std::memcpy(&block, text, sizeof block);
    return block;
}

struct HashSeed {
    std::uint64_t start, lower, upper; // the factors are odd
};

HashSeed MakeHashSeed();

inline const HashSeed& ProcessHashSeed() {
    static const HashSeed seed = MakeHashSeed();
    return seed;
}

// The two halves are multiplied apart, with carries that only the seed knows: one product would keep a change
// of its highest bit in sight, and the next block could undo it.
inline std::uint64_t MixHash(std::uint64_t hash, std::uint64_t block, const HashSeed& seed) {
    hash ^= block;
    hash = (hash & 0xFFFFFFFF) * seed.lower + (hash >> 32) * seed.upper;
    return hash ^ hash >> 32;
}

// Takes the text in blocks of 8 bytes, the last one overlapping the one before; texts that `fold` makes the
// same, block by block, have the same hash.
template <class Fold> std::uint64_t HashText(std::string_view text, Fold fold) {
    const HashSeed& seed = ProcessHashSeed();
    const std::size_t size = text.size();
    const char* const bytes = text.data();
    std::uint64_t hash = seed.start ^ size, last = 0;
    if (size >= 8) {
        for (std::size_t i = 0; i + 8 < size; i += 8)
            hash = MixHash(hash, fold(LoadBlock<std::uint64_t>(bytes + i)), seed);
        last = LoadBlock<std::uint64_t>(bytes + size - 8);
    } else if (size >= 4) {
        last = LoadBlock<std::uint32_t>(bytes) << 32 | LoadBlock<std::uint32_t>(bytes + size - 4);
    } else if (size > 0) {
        last = LoadBlock<std::uint8_t>(bytes) << 16 | LoadBlock<std::uint8_t>(bytes + size / 2) << 8 |
               LoadBlock<std::uint8_t>(bytes + size - 1);
    }
    return MixHash(hash, fold(last), seed);
}

// For HashText, the same for texts that differ in letter case only, eight bytes at a time: upper-case letters
// become lower-case ones, as CStringA::CompareNoCase folds them, and every other byte stays.
constexpr std::uint64_t FoldedBlock(std::uint64_t block) {
    constexpr std::uint64_t ones = 0x0101010101010101, highest = 0x80 * ones;
    const std::uint64_t low = block & ~highest;
    const std::uint64_t latin = (low + (0x80 - 'A') * ones) & ~(low + (0x7F - 'Z') * ones) & ~block;
    const std::uint64_t russian = block & block << 1 & ~(block << 2); // 0xC0 to 0xDF
    const std::uint64_t yo = ~((low ^ 0x28 * ones) + 0x7F * ones) & block;
    return block | ((latin | russian) & highest) >> 2 | (yo & highest) >> 3;
}

// For texts that are the same when their bytes are.
struct TextHash {
    std::size_t operator()(std::string_view text) const {
        return static_cast<std::size_t>(HashText(text, [](std::uint64_t block) { return block; }));
    }
};

} // namespace zyn
