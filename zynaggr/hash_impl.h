#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

// Hashes of short texts, for tables within one process.

namespace zyn {

template <class T> std::uint64_t LoadBlock(const char* text) {
    T block;
    std::memcpy(&block, text, sizeof block);
    return block;
}

inline std::uint64_t MixHash(std::uint64_t hash, std::uint64_t block) {
    hash = (hash ^ block) * 0x9E3779B97F4A7C15;
    return hash ^ hash >> 32;
}

// Takes the text in blocks of 8 bytes, the last one overlapping the one before; texts that `fold` makes the
// same, block by block, have the same hash.
template <class Fold> std::uint64_t HashText(std::string_view text, Fold fold) {
    const std::size_t size = text.size();
    const char* const bytes = text.data();
    std::uint64_t hash = size, last = 0;
    if (size >= 8) {
        for (std::size_t i = 0; i + 8 < size; i += 8)
            hash = MixHash(hash, fold(LoadBlock<std::uint64_t>(bytes + i)));
        last = LoadBlock<std::uint64_t>(bytes + size - 8);
    } else if (size >= 4) {
        last = LoadBlock<std::uint32_t>(bytes) << 32 | LoadBlock<std::uint32_t>(bytes + size - 4);
    } else if (size > 0) {
        last = LoadBlock<std::uint8_t>(bytes) << 16 | LoadBlock<std::uint8_t>(bytes + size / 2) << 8 |
               LoadBlock<std::uint8_t>(bytes + size - 1);
    }
    return MixHash(hash, fold(last));
}

} // namespace zyn
