// SPDX-License-Identifier: MIT

// The conversions of vectorcode_impl.h by AVX-512: 32 or 64 bytes at a time.

#ifdef __x86_64__

#include "zynplatform/vectorcode_impl.h"

#include <cstdint>

// g++ 12 finds fault with its own header.
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>

#define ZYN_AVX512 __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,bmi2")))

namespace zynplatform {
namespace {

std::size_t Count(std::uint64_t mask) {
    return static_cast<std::size_t>(__builtin_popcountll(mask));
}

std::uint64_t LowBits(std::size_t count) {
    return count < 64 ? (std::uint64_t{1} << count) - 1 : ~std::uint64_t{0};
}

ZYN_AVX512 inline __m512i All(int byte) {
    return _mm512_set1_epi8(static_cast<char>(byte));
}

// 64 bytes of UTF-8 after 64 others. A character belongs to the block in which it ends, so that blocks can
// follow each other in equal steps.
struct Utf8Block {
    __m512i bytes, before; // before: what precedes each byte
    std::uint64_t leads, continuations;

    bool EndsInside() const { return leads >> 63 != 0; }
};

// False when there is something other than whole characters of one and two bytes. `isInside`: the byte before
// the block begins a character; the first block of a text has none before it.
ZYN_AVX512 inline bool LoadUtf8(const char* text, bool isFirst, bool isInside, Utf8Block& block) {
    block.bytes = _mm512_loadu_si512(text);
    block.before = _mm512_maskz_loadu_epi8(~std::uint64_t{isFirst}, text - 1);
    const std::uint64_t others = _mm512_movepi8_mask(block.bytes);
    block.continuations = _mm512_cmplt_epi8_mask(block.bytes, All(0xC0));
    block.leads = _mm512_cmplt_epu8_mask(_mm512_sub_epi8(block.bytes, All(0xC2)), All(0xE0 - 0xC2));
    return (block.leads | block.continuations) == others &&
           (block.leads << 1 | std::uint64_t{isInside}) == block.continuations;
}

ZYN_AVX512 inline bool IsAscii(const char* text) {
    return _mm512_movepi8_mask(_mm512_loadu_si512(text)) == 0;
}

// Copies the ASCII at the start of a text, in whole blocks.
ZYN_AVX512 inline std::size_t CopyAscii(const char* text, std::size_t length, char* target) {
    std::size_t at = 0;
    for (; length - at >= 64 && IsAscii(text + at); at += 64)
        _mm512_storeu_si512(target + at, _mm512_loadu_si512(text + at));
    return at;
}

// Writes those of 32 units that the mask tells.
ZYN_AVX512 inline std::size_t StoreUnits(WCHAR* target, std::uint32_t mask, __m512i units) {
    const std::size_t count = Count(mask);
    _mm512_mask_storeu_epi16(target, static_cast<__mmask32>(LowBits(count)),
                             _mm512_maskz_compress_epi16(mask, units));
    return count;
}

// Writes those of 64 bytes that the mask tells.
ZYN_AVX512 inline std::size_t StoreBytes(char* target, std::uint64_t mask, __m512i bytes) {
    const std::size_t count = Count(mask);
    _mm512_mask_storeu_epi8(target, LowBits(count), _mm512_maskz_compress_epi8(mask, bytes));
    return count;
}

ZYN_AVX512 inline __m512i DecodeHalf(__m256i bytes, __m256i before, std::uint32_t continuations) {
    const __m512i units = _mm512_cvtepu8_epi16(bytes);
    const __m512i high = _mm512_and_si512(_mm512_cvtepu8_epi16(before), _mm512_set1_epi16(0x1F));
    const __m512i low = _mm512_and_si512(units, _mm512_set1_epi16(0x3F));
    return _mm512_mask_mov_epi16(units, continuations, _mm512_or_si512(_mm512_slli_epi16(high, 6), low));
}

// 32 units below 0x800 as UTF-8.
ZYN_AVX512 inline std::size_t StoreUtf8(char* target, __m512i units) {
    const std::uint32_t pairs = _mm512_cmpge_epu16_mask(units, _mm512_set1_epi16(0x80));
    if (pairs == 0) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(target), _mm512_cvtepi16_epi8(units));
        return 32;
    }
    const __m512i second = _mm512_slli_epi16(_mm512_and_si512(units, _mm512_set1_epi16(0x3F)), 8);
    const __m512i both = _mm512_or_si512(_mm512_or_si512(_mm512_srli_epi16(units, 6), second),
                                         _mm512_set1_epi16(static_cast<short>(0x80C0)));
    const std::uint64_t bytes = 0x5555555555555555 | _pdep_u64(pairs, 0xAAAAAAAAAAAAAAAA);
    return StoreBytes(target, bytes, _mm512_mask_mov_epi16(units, pairs, both));
}

ZYN_AVX512 Progress Utf8ToWide(const char* text, std::size_t length, WCHAR* target) {
    std::size_t read = 0, written = 0;
    bool isInside = false;
    for (Utf8Block block; length - read >= 64; read += 64) {
        FetchAhead(text + read);
        WCHAR* const out = target + written;
        if (!isInside && IsAscii(text + read)) {
            for (std::size_t i = 0; i < 64; i += 32)
                _mm512_storeu_si512(out + i, _mm512_cvtepu8_epi16(_mm256_loadu_si256(
                                                 reinterpret_cast<const __m256i*>(text + read + i))));
            written += 64;
            continue;
        }
        if (!LoadUtf8(text + read, read == 0, isInside, block)) break;
        const __m512i first =
            DecodeHalf(_mm512_castsi512_si256(block.bytes), _mm512_castsi512_si256(block.before),
                       static_cast<std::uint32_t>(block.continuations));
        const __m512i second =
            DecodeHalf(_mm512_extracti64x4_epi64(block.bytes, 1), _mm512_extracti64x4_epi64(block.before, 1),
                       static_cast<std::uint32_t>(block.continuations >> 32));
        const std::size_t count = StoreUnits(out, static_cast<std::uint32_t>(~block.leads), first);
        written += count + StoreUnits(out + count, static_cast<std::uint32_t>(~block.leads >> 32), second);
        isInside = block.EndsInside();
    }
    return {read - isInside, written};
}

ZYN_AVX512 Progress WideToUtf8(const WCHAR* text, std::size_t length, char* target) {
    Progress done{0, 0};
    for (; length - done.read >= 32; done.read += 32) {
        FetchAhead(text + done.read);
        const __m512i units = _mm512_loadu_si512(text + done.read);
        if (_mm512_cmpge_epu16_mask(units, _mm512_set1_epi16(0x800)) != 0) break;
        done.written += StoreUtf8(target + done.written, units);
    }
    return done;
}

ZYN_AVX512 Progress Utf8To1251(const char* text, std::size_t length, char* target) {
    std::size_t read = 0, written = 0;
    bool isInside = false;
    for (Utf8Block block; length - read >= 64; read += 64) {
        FetchAhead(text + read);
        if (!isInside) {
            const std::size_t ascii = CopyAscii(text + read, length - read, target + written);
            read += ascii;
            written += ascii;
            if (length - read < 64) break;
        }
        if (!LoadUtf8(text + read, read == 0, isInside, block)) break;
        // D0 90..BF are 0xC0 to 0xEF, D1 80..8F 0xF0 to 0xFF, D0 81 is 0xA8 and D1 91 0xB8.
        const std::uint64_t afterD0 = block.continuations & _mm512_cmpeq_epi8_mask(block.before, All(0xD0));
        const std::uint64_t afterD1 = block.continuations & _mm512_cmpeq_epi8_mask(block.before, All(0xD1));
        const std::uint64_t io = (afterD0 & _mm512_cmpeq_epi8_mask(block.bytes, All(0x81))) |
                                 (afterD1 & _mm512_cmpeq_epi8_mask(block.bytes, All(0x91)));
        const std::uint64_t isFrom90 = _mm512_cmpge_epu8_mask(block.bytes, All(0x90));
        if (((afterD0 & isFrom90) | (afterD1 & ~isFrom90) | io) != block.continuations) break;
        __m512i bytes = _mm512_mask_add_epi8(block.bytes, afterD0, block.bytes, All(0x30));
        bytes = _mm512_mask_add_epi8(bytes, afterD1, block.bytes, All(0x70));
        bytes = _mm512_mask_add_epi8(bytes, io, block.bytes, All(0x27));
        written += StoreBytes(target + written, ~block.leads, bytes);
        isInside = block.EndsInside();
    }
    return {read - isInside, written};
}

ZYN_AVX512 Progress From1251ToUtf8(const char* text, std::size_t length, char* target) {
    Progress done{0, 0};
    for (; length - done.read >= 32; done.read += 32) {
        FetchAhead(text + done.read);
        const std::size_t ascii = CopyAscii(text + done.read, length - done.read, target + done.written);
        done.read += ascii;
        done.written += ascii;
        if (length - done.read < 32) break;
        const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text + done.read));
        const std::uint32_t letters =
            _mm256_cmpge_epu8_mask(bytes, _mm256_set1_epi8(static_cast<char>(0xC0)));
        const std::uint32_t upperIo =
            _mm256_cmpeq_epi8_mask(bytes, _mm256_set1_epi8(static_cast<char>(0xA8)));
        const std::uint32_t lowerIo =
            _mm256_cmpeq_epi8_mask(bytes, _mm256_set1_epi8(static_cast<char>(0xB8)));
        if (static_cast<std::uint32_t>(_mm256_movepi8_mask(bytes)) != (letters | upperIo | lowerIo)) break;
        __m512i units = _mm512_cvtepu8_epi16(bytes);
        units = _mm512_mask_add_epi16(units, letters, units, _mm512_set1_epi16(0x410 - 0xC0));
        units = _mm512_mask_mov_epi16(units, upperIo, _mm512_set1_epi16(0x401));
        units = _mm512_mask_mov_epi16(units, lowerIo, _mm512_set1_epi16(0x451));
        done.written += StoreUtf8(target + done.written, units);
    }
    return done;
}

} // namespace

extern const VectorCode avx512Code;
constexpr VectorCode avx512Code{Utf8ToWide,     WideToUtf8,           Utf8To1251,
                                From1251ToUtf8, avx2::FindDifference, avx2::SameWithoutCase};

} // namespace zynplatform

#endif
