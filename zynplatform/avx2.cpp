// SPDX-License-Identifier: MIT

// The conversions of vectorcode_impl.h by AVX2: 32 characters or bytes at a time. Constants stand before the
// loops, where compilers leave them in registers.

#ifdef __x86_64__

#include "zynplatform/vectorcode_impl.h"

#include <array>
#include <cstdint>
#include <cstring>

#include <immintrin.h>

#define ZYN_AVX2 __attribute__((target("avx2,popcnt")))

namespace zynplatform {
namespace {

// Stores write whole words, and so up to eight characters too many, over which the next ones come: so many
// bytes or units of the text stand behind a block at least, as a character may take three bytes.
constexpr std::size_t blockLength = 32, behind = 24;

// For each choice of 8 bytes the places of those chosen, from the lowest on.
constexpr auto gatherings = [] {
    std::array<std::uint64_t, 256> places{};
    for (unsigned mask = 0; mask < places.size(); ++mask)
        for (unsigned place = 0, shift = 0; place < 8; ++place)
            if ((mask >> place & 1) != 0) {
                places[mask] |= std::uint64_t{place} << shift;
                shift += 8;
            }
    return places;
}();

// For each choice of 8 pairs of bytes the places of the first bytes, and of the second ones of those chosen.
constexpr auto pairings = [] {
    std::array<std::array<std::uint8_t, 16>, 256> places{};
    for (unsigned mask = 0; mask < places.size(); ++mask)
        for (unsigned pair = 0, next = 0; pair < 8; ++pair) {
            places[mask][next++] = static_cast<std::uint8_t>(2 * pair);
            if ((mask >> pair & 1) != 0) places[mask][next++] = static_cast<std::uint8_t>(2 * pair + 1);
        }
    return places;
}();

ZYN_AVX2 inline __m256i All(int byte) {
    return _mm256_set1_epi8(static_cast<char>(byte));
}

ZYN_AVX2 inline __m256i AllUnits(int unit) {
    return _mm256_set1_epi16(static_cast<short>(unit));
}

ZYN_AVX2 inline __m256i Load(const void* from) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}

ZYN_AVX2 inline void Store(void* target, __m256i bytes) {
    _mm256_storeu_si256(static_cast<__m256i*>(target), bytes);
}

// The highest bit of each byte.
ZYN_AVX2 inline std::uint32_t Bits(__m256i bytes) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes));
}

// How many of the first bytes a mask tells.
ZYN_AVX2 inline std::size_t CountBefore(std::uint32_t mask, unsigned bytes) {
    const std::uint64_t before = mask & ((std::uint64_t{1} << bytes) - 1);
    return static_cast<std::size_t>(_mm_popcnt_u64(before));
}

// The 16 bytes that begin at 0, 8, 16 and 24 of 32, when the bytes of two vectors alternate in them.
struct Interleaved {
    __m128i quarters[4];
};
ZYN_AVX2 inline Interleaved Interleave(__m256i first, __m256i second) {
    const __m256i even = _mm256_unpacklo_epi8(first, second), odd = _mm256_unpackhi_epi8(first, second);
    return {{_mm256_castsi256_si128(even), _mm256_castsi256_si128(odd), _mm256_extracti128_si256(even, 1),
             _mm256_extracti128_si256(odd, 1)}};
}

ZYN_AVX2 inline __m128i Gatherings(std::uint32_t mask) {
    return _mm_set_epi64x(static_cast<long long>(gatherings[mask >> 8 & 0xFF]),
                          static_cast<long long>(gatherings[mask & 0xFF]));
}

// For a shuffle that brings those of every 8 bytes that the mask tells to the front of the 8.
ZYN_AVX2 inline __m256i Gathering(std::uint32_t mask) {
    const __m256i places = _mm256_set_m128i(Gatherings(mask >> 16), Gatherings(mask));
    return _mm256_add_epi8(places, _mm256_setr_epi64x(0, 0x0808080808080808, 0, 0x0808080808080808));
}

// Writes those of 32 bytes that the mask tells.
ZYN_AVX2 inline std::size_t StoreBytes(char* target, std::uint32_t mask, __m256i bytes) {
    const __m256i gathered = _mm256_shuffle_epi8(bytes, Gathering(mask));
    const __m128i low = _mm256_castsi256_si128(gathered), high = _mm256_extracti128_si256(gathered, 1);
    const long long words[]{low[0], low[1], high[0], high[1]};
    for (unsigned i = 0; i < 4; ++i)
        std::memcpy(target + CountBefore(mask, 8 * i), &words[i], 8);
    return CountBefore(mask, 32);
}

// Writes those of 32 units, given by their low and high bytes, that the mask tells.
ZYN_AVX2 inline std::size_t StoreUnits(WCHAR* target, std::uint32_t mask, __m256i low, __m256i high) {
    const __m256i gathering = Gathering(mask);
    const Interleaved units =
        Interleave(_mm256_shuffle_epi8(low, gathering), _mm256_shuffle_epi8(high, gathering));
    for (unsigned i = 0; i < 4; ++i)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(target + CountBefore(mask, 8 * i)), units.quarters[i]);
    return CountBefore(mask, 32);
}

// Writes 32 characters of UTF-8: a pair of bytes where the mask tells, else the first byte.
ZYN_AVX2 inline std::size_t StorePairs(char* target, std::uint32_t mask, const Interleaved& pairs) {
    for (unsigned i = 0; i < 4; ++i) {
        const auto* const places = reinterpret_cast<const __m128i*>(&pairings[mask >> 8 * i & 0xFF]);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(target + std::size_t{8} * i + CountBefore(mask, 8 * i)),
                         _mm_shuffle_epi8(pairs.quarters[i], _mm_loadu_si128(places)));
    }
    return 32 + CountBefore(mask, 32);
}

// How 32 bytes of UTF-8 fall into characters of one and two bytes. A character belongs to the block in which
// it begins.
struct Utf8Block {
    std::uint32_t others, leads; // others: not ASCII

    // False when there is something else. `isInside`: the block begins with the second byte of a character;
    // `next` is the block that begins a byte later.
    ZYN_AVX2 bool IsWhole(bool isInside, __m256i next, __m256i all_C0) const {
        return leads == Bits(_mm256_cmpgt_epi8(all_C0, next)) && (Continuations(isInside) | leads) == others;
    }
    std::uint32_t Continuations(bool isInside) const { return leads << 1 | std::uint32_t{isInside}; }
    bool EndsInside() const { return leads >> 31 != 0; }
};

ZYN_AVX2 Progress Utf8ToWide(const char* text, std::size_t length, WCHAR* target) {
    const __m256i all_03 = All(0x03), all_07 = All(0x07), all_3F = All(0x3F), all_42 = All(0x42),
                  all_9E = All(0x9E), all_C0 = All(0xC0), zero = _mm256_setzero_si256();
    std::size_t read = 0, written = 0;
    bool isInside = false;
    for (; length - read >= blockLength + behind; read += blockLength) {
        FetchAhead(text + read);
        const __m256i bytes = Load(text + read), next = Load(text + read + 1);
        WCHAR* const out = target + written;
        // C2 to DF as signed bytes from the lowest one on
        const Utf8Block block{Bits(bytes), Bits(_mm256_cmpgt_epi8(all_9E, _mm256_sub_epi8(bytes, all_42)))};
        if (block.others == 0) {
            Store(out, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(bytes)));
            Store(out + 16, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(bytes, 1)));
            written += blockLength;
            continue;
        }
        if (!block.IsWhole(isInside, next, all_C0)) break;
        const __m256i isLong = _mm256_cmpgt_epi8(zero, bytes);
        const __m256i low = _mm256_or_si256(_mm256_slli_epi16(_mm256_and_si256(bytes, all_03), 6),
                                            _mm256_and_si256(next, all_3F));
        const __m256i high = _mm256_and_si256(_mm256_srli_epi16(bytes, 2), all_07);
        written += StoreUnits(out, ~block.Continuations(isInside), _mm256_blendv_epi8(bytes, low, isLong),
                              _mm256_and_si256(high, isLong));
        isInside = block.EndsInside();
    }
    return {read + isInside, written};
}

ZYN_AVX2 Progress Utf8To1251(const char* text, std::size_t length, char* target) {
    // What stands for U+0400 to U+040F and U+0450 to U+045F; the letters between them are in order.
    const __m256i first = _mm256_setr_epi8(
                      // clang-format off
        '?', -88, -128, -127, -86, -67, -78, -81, -93, -118, -116, -114, -115, '?', -95, -113,
        '?', -88, -128, -127, -86, -67, -78, -81, -93, -118, -116, -114, -115, '?', -95, -113),
        last = _mm256_setr_epi8(
        '?', -72, -112, -125, -70, -66, -77, -65, -68, -102, -100, -98, -99, '?', -94, -97,
        '?', -72, -112, -125, -70, -66, -77, -65, -68, -102, -100, -98, -99, '?', -94, -97);
    // clang-format on
    const __m256i all_01 = All(0x01), all_3F = All(0x3F), all_50 = All(0x50), all_5F = All(0x5F),
                  all_70 = All(0x70), all_B0 = All(0xB0), all_C0 = All(0xC0), all_D0 = All(0xD0),
                  all_FE = All(0xFE), zero = _mm256_setzero_si256();
    std::size_t read = 0, written = 0;
    bool isInside = false;
    for (; length - read >= blockLength + behind; read += blockLength) {
        FetchAhead(text + read);
        const __m256i bytes = Load(text + read), next = Load(text + read + 1);
        char* const out = target + written;
        const Utf8Block block{Bits(bytes), Bits(_mm256_cmpeq_epi8(_mm256_and_si256(bytes, all_FE), all_D0))};
        if (block.others == 0) {
            Store(out, bytes);
            written += blockLength;
            continue;
        }
        // From U+0400 on
        const __m256i place = _mm256_or_si256(_mm256_slli_epi16(_mm256_and_si256(bytes, all_01), 6),
                                              _mm256_and_si256(next, all_3F));
        const bool isBeyond = (Bits(_mm256_cmpgt_epi8(place, all_5F)) & block.leads) != 0;
        if (isBeyond || !block.IsWhole(isInside, next, all_C0)) break;
        const __m256i others = _mm256_or_si256(_mm256_shuffle_epi8(first, _mm256_adds_epu8(place, all_70)),
                                               _mm256_shuffle_epi8(last, _mm256_sub_epi8(place, all_50)));
        const __m256i letters =
            _mm256_blendv_epi8(others, _mm256_add_epi8(place, all_B0), _mm256_cmpeq_epi8(others, zero));
        written += StoreBytes(out, ~block.Continuations(isInside), _mm256_blendv_epi8(bytes, letters, bytes));
        isInside = block.EndsInside();
    }
    return {read + isInside, written};
}

ZYN_AVX2 Progress WideToUtf8(const WCHAR* text, std::size_t length, char* target) {
    const __m256i all_3F = AllUnits(0x3F), all_7F = AllUnits(0x7F), all_80C0 = AllUnits(0x80C0),
                  all_F800 = AllUnits(0xF800), all_FF80 = AllUnits(0xFF80);
    std::size_t read = 0, written = 0;
    for (; length - read >= blockLength + behind; read += blockLength) {
        FetchAhead(text + read);
        __m256i halves[]{Load(text + read), Load(text + read + 16)}, isLong[2];
        const __m256i joined = _mm256_or_si256(halves[0], halves[1]);
        char* const out = target + written;
        if (_mm256_testz_si256(joined, all_FF80) != 0) {
            Store(out, _mm256_permute4x64_epi64(_mm256_packus_epi16(halves[0], halves[1]), 0xD8));
            written += blockLength;
            continue;
        }
        if (_mm256_testz_si256(joined, all_F800) == 0) break;
        for (int i = 0; i < 2; ++i) {
            isLong[i] = _mm256_cmpgt_epi16(halves[i], all_7F);
            const __m256i second = _mm256_slli_epi16(_mm256_and_si256(halves[i], all_3F), 8);
            const __m256i both =
                _mm256_or_si256(_mm256_or_si256(_mm256_srli_epi16(halves[i], 6), second), all_80C0);
            halves[i] = _mm256_blendv_epi8(halves[i], both, isLong[i]);
        }
        const __m256i pairs = _mm256_permute4x64_epi64(_mm256_packs_epi16(isLong[0], isLong[1]), 0xD8);
        written += StorePairs(out, Bits(pairs),
                              {{_mm256_castsi256_si128(halves[0]), _mm256_extracti128_si256(halves[0], 1),
                                _mm256_castsi256_si128(halves[1]), _mm256_extracti128_si256(halves[1], 1)}});
    }
    return {read, written};
}

ZYN_AVX2 Progress From1251ToUtf8(const char* text, std::size_t length, char* target) {
    const __m256i all_01 = All(0x01), all_09 = All(0x09), all_3F = All(0x3F), all_49 = All(0x49),
                  all_80 = All(0x80), all_A8 = All(0xA8), all_B0 = All(0xB0), all_B8 = All(0xB8),
                  all_D0 = All(0xD0);
    std::size_t read = 0, written = 0;
    for (; length - read >= blockLength + behind; read += blockLength) {
        FetchAhead(text + read);
        const __m256i bytes = Load(text + read);
        char* const out = target + written;
        const std::uint32_t others = Bits(bytes);
        if (others == 0) {
            Store(out, bytes);
            written += blockLength;
            continue;
        }
        const __m256i upperIo = _mm256_cmpeq_epi8(bytes, all_A8), lowerIo = _mm256_cmpeq_epi8(bytes, all_B8);
        const __m256i isFromC0 = _mm256_and_si256(bytes, _mm256_slli_epi16(bytes, 1)); // its highest bit
        if (Bits(_mm256_or_si256(isFromC0, _mm256_or_si256(upperIo, lowerIo))) != others) break;
        // From U+0400 on; Ё is U+0401 and ё U+0451.
        const __m256i place = _mm256_add_epi8(
            _mm256_sub_epi8(bytes, all_B0),
            _mm256_or_si256(_mm256_and_si256(upperIo, all_09), _mm256_and_si256(lowerIo, all_49)));
        const __m256i lead = _mm256_or_si256(_mm256_and_si256(_mm256_srli_epi16(place, 6), all_01), all_D0);
        const __m256i second = _mm256_or_si256(_mm256_and_si256(place, all_3F), all_80);
        written += StorePairs(out, others, Interleave(_mm256_blendv_epi8(bytes, lead, bytes), second));
    }
    return {read, written};
}

} // namespace

extern const VectorCode avx2Code;
constexpr VectorCode avx2Code{Utf8ToWide,     WideToUtf8,           Utf8To1251,
                              From1251ToUtf8, avx2::FindDifference, avx2::SameWithoutCase};

} // namespace zynplatform

#endif
