// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

// Vector types of 16 bytes, which g++ and clang++ turn into whatever the machine has. Arithmetic is lane by
// lane; a comparison gives lanes of 0 and -1.

namespace zynplatform {

using Bytes = std::uint8_t __attribute__((vector_size(16)));
using Units = std::uint16_t __attribute__((vector_size(16)));

// Whether lanes stand in the order of the bits of a word, which what takes them one by one relies on.
inline constexpr bool hasVectors = std::endian::native == std::endian::little;

// The 16 bytes at any address.
template <class Vector> Vector Load(const void* from) {
    Vector vector;
    std::memcpy(&vector, from, sizeof vector);
    return vector;
}

// The vector as two words, in which lanes can be summed up or tested together.
template <class Vector> std::array<std::uint64_t, 2> Words(Vector vector) {
    return std::bit_cast<std::array<std::uint64_t, 2>>(vector);
}

// The highest bits of the 16 bytes, the first byte's as the lowest.
template <class Vector> unsigned Bits(Vector vector) {
#ifdef __SSE2__
    return static_cast<unsigned>(_mm_movemask_epi8(std::bit_cast<__m128i>(vector)));
#else
    const auto gathered = [](std::uint64_t word) {
        return static_cast<unsigned>((word & 0x8080808080808080) * 0x0002040810204081 >> 56);
    };
    return gathered(Words(vector)[0]) | gathered(Words(vector)[1]) << 8;
#endif
}

template <class Vector> bool IsZero(Vector vector) {
#ifdef __SSE2__
    return Bits(vector == 0) == 0xFFFF;
#else
    return (Words(vector)[0] | Words(vector)[1]) == 0;
#endif
}

} // namespace zynplatform
