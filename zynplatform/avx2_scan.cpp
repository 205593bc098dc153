// SPDX-License-Identifier: MIT

// Going through texts by AVX2: 32 bytes at a time.

#ifdef __x86_64__

#include "zynplatform/vectorcode_impl.h"

#include <algorithm>
#include <bit>
#include <cstdint>

#include <immintrin.h>

#define ZYN_AVX2 __attribute__((target("avx2")))

namespace zynplatform {
namespace {

ZYN_AVX2 inline __m256i All(int byte) {
    return _mm256_set1_epi8(static_cast<char>(byte));
}

ZYN_AVX2 inline __m256i Load(const void* from) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}

// 32 bytes of two texts: what differs in other bits than those that tell the case of a letter.
struct Difference {
    ZYN_AVX2 Difference(const char* left, const char* right) : bytes(Load(left)) {
        const __m256i differing = _mm256_xor_si256(bytes, Load(right));
        const __m256i lower = _mm256_or_si256(bytes, All(0x20));
        // a to z as signed bytes from the lowest one on; and all from 0xE0 on
        const __m256i isLatin = _mm256_cmpgt_epi8(All(0x9A), _mm256_add_epi8(lower, All(0x1F)));
        const __m256i isRussian = _mm256_cmpeq_epi8(_mm256_max_epu8(lower, All(0xE0)), lower);
        const __m256i isLetter = _mm256_or_si256(isLatin, isRussian);
        bits = _mm256_andnot_si256(_mm256_and_si256(isLetter, All(0x20)), differing);
    }
    // Ё and ё apart, which are rare.
    ZYN_AVX2 __m256i WithoutIo() const {
        const __m256i isIo =
            _mm256_and_si256(_mm256_cmpeq_epi8(bits, All(0x10)),
                             _mm256_cmpeq_epi8(_mm256_or_si256(bytes, All(0x10)), All(0xB8)));
        return _mm256_andnot_si256(isIo, bits);
    }

    __m256i bytes, bits;
};

} // namespace

ZYN_AVX2 std::size_t avx2::SameWithoutCase(const char* left, const char* right, std::size_t length) {
    constexpr std::size_t block = 64;
    for (std::size_t at = 0;;) {
        const Difference first(left + at, right + at), second(left + at + 32, right + at + 32);
        __m256i bits = _mm256_or_si256(first.bits, second.bits);
        if (_mm256_testz_si256(bits, bits) == 0) {
            bits = _mm256_or_si256(first.WithoutIo(), second.WithoutIo());
            if (_mm256_testz_si256(bits, bits) == 0) return at;
        }
        if (at + block == length) return length;
        at = std::min(at + block, length - block);
    }
}

// The right text is read by vectors at addresses that are a multiple of their size: see textscan.cpp.
ZYN_AVX2 __attribute__((no_sanitize("address"), no_sanitize("thread"))) std::size_t
avx2::FindDifference(const WCHAR* left, std::size_t length, const WCHAR* right) {
    constexpr std::size_t units = sizeof(__m256i) / sizeof(WCHAR);
    std::size_t at = 0;
    for (; reinterpret_cast<std::uintptr_t>(right + at) % sizeof(__m256i) != 0; ++at)
        if (left[at] != right[at] || left[at] == 0) return at;
    for (; length - at >= units; at += units) {
        const __m256i other = *reinterpret_cast<const __m256i*>(right + at);
        const __m256i same = _mm256_andnot_si256(_mm256_cmpeq_epi16(other, _mm256_setzero_si256()),
                                                 _mm256_cmpeq_epi16(Load(left + at), other));
        const auto differs = ~static_cast<std::uint32_t>(_mm256_movemask_epi8(same));
        if (differs != 0) return at + static_cast<std::size_t>(std::countr_zero(differs)) / sizeof(WCHAR);
    }
    while (left[at] == right[at] && left[at] != 0)
        ++at;
    return at;
}

} // namespace zynplatform

#endif
