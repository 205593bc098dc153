#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

// Vector types of 16 bytes, which g++ and clang++ turn into whatever the machine has. Arithmetic is lane by
// lane; a comparison gives lanes of 0 and -1.

namespace zynplatform {

using Bytes = std::uint8_t __attribute__((vector_size(16)));
using Units = std::uint16_t __attribute__((vector_size(16)));

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

template <class Vector> bool IsZero(Vector vector) {
    return (Words(vector)[0] | Words(vector)[1]) == 0;
}

} // namespace zynplatform
