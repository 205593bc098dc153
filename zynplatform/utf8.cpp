// SPDX-License-Identifier: MIT
#include "zynplatform/utf8.h"

#include "zynplatform/vectorcode_impl.h"
#include "zynplatform/vectors.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

// Text is taken in blocks of 32 characters, unless the processor can do better (vectorcode_impl.h). A block
// that is neither ASCII nor made of characters of at most two bytes, and the end of the text, are done one by
// one.
//
// Characters of one and two bytes, such as blanks among Russian letters, alternate too irregularly for a
// branch to be predicted. So a result is made for each pair of places, shifted together, and always written
// in full; the next one begins where the real length says, over the surplus of the one before.

namespace zynplatform {
namespace {

constexpr std::size_t blockLength = 32;
constexpr bool hasBlocks = std::endian::native == std::endian::little; // they take pairs apart by shifts
constexpr char32_t replacementCharacter = 0xFFFD;

using SixteenUnits = std::uint16_t __attribute__((vector_size(32)));
using Pairs = std::uint32_t __attribute__((vector_size(16)));

std::uint8_t Byte(char character) {
    return static_cast<std::uint8_t>(character);
}

bool IsContinuation(char byte) {
    return (Byte(byte) & 0xC0) == 0x80;
}

struct Character {
    char32_t value;
    std::size_t length; // what it takes of the text
};

// --- UTF-8 to UTF-16 ---

// The first character of a text that is not empty, or U+FFFD for the maximal ill-formed part.
Character DecodeUtf8(const char* text, std::size_t length) {
    const unsigned lead = Byte(text[0]);
    if (lead < 0x80) return {lead, 1};
    if (lead < 0xC2 || lead > 0xF4) return {replacementCharacter, 1};

    // The second byte's own range keeps out overlong forms, surrogates and what is above U+10FFFF.
    unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    const std::size_t tail = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    char32_t value = lead & (0x3Fu >> tail);
    for (std::size_t i = 1; i <= tail; ++i, low = 0x80, high = 0xBF) {
        if (i == length || Byte(text[i]) < low || Byte(text[i]) > high) return {replacementCharacter, i};
        value = value << 6 | (Byte(text[i]) & 0x3Fu);
    }
    return {value, tail + 1};
}

bool IsAsciiBlock(const char* text) {
    return IsZero((Load<Bytes>(text) | Load<Bytes>(text + 16)) & 0x80);
}

void CopyAsciiBlock(const char* text, WCHAR* target) {
    for (std::size_t i = 0; i < blockLength; i += 16) {
        const auto units = __builtin_convertvector(Load<Bytes>(text + i), SixteenUnits);
        std::memcpy(target + i, &units, sizeof units);
    }
}

// `isInside`: the block begins with the second byte of the character before it. The byte behind the block is
// read, too, as the last character may end there.
bool IsTwoByteBlock(const char* text, bool isInside) {
    Bytes bad{IsContinuation(text[0]) != isInside};
    for (const char* half = text; half < text + blockLength; half += 16) {
        const auto bytes = Load<Bytes>(half), next = Load<Bytes>(half + 1);
        const auto isLead = (bytes & 0xE0) == 0xC0, isContinued = (next & 0xC0) == 0x80;
        const auto isOther = ((bytes & 0xFE) == 0xC0) | ((bytes & 0xE0) == 0xE0);
        bad |= std::bit_cast<Bytes>((isLead ^ isContinued) | isOther);
    }
    return IsZero(bad);
}

// Of the characters that begin in the block.
std::size_t CountTwoByteBlock(const char* text) {
    Bytes count{}; // of continuation bytes, negative
    for (const char* half = text; half < text + blockLength; half += 16)
        count += std::bit_cast<Bytes>((Load<Bytes>(half) & 0xC0) == 0x80);
    const auto words = Words(-count);
    return blockLength - static_cast<std::size_t>((words[0] + words[1]) * 0x0101010101010101 >> 56);
}

// The characters that begin in the block. May write one unit more than it returns, in the place of the
// character that follows.
std::size_t CopyTwoByteBlock(const char* text, WCHAR* target) {
    WCHAR* out = target;
    for (const char* half = text; half < text + blockLength; half += 16) {
        const auto two = Load<Units>(half), next = Load<Units>(half + 1);
        const Units a = two & 0xFF, b = two >> 8, c = next >> 8;
        const Units first = a < 0x80 ? a : ((a & 0x1F) << 6 | (b & 0x3F));
        const Units second = b < 0x80 ? b : ((b & 0x1F) << 6 | (c & 0x3F));
        const auto skipsFirst = (a & 0xC0) == 0x80, skipsSecond = (b & 0xC0) == 0x80;
        const Units low = skipsFirst ? second : first;
        const std::array<Units, 2> pairs{__builtin_shufflevector(low, second, 0, 8, 1, 9, 2, 10, 3, 11),
                                         __builtin_shufflevector(low, second, 4, 12, 5, 13, 6, 14, 7, 15)};
        const auto values = std::bit_cast<std::array<std::uint32_t, 8>>(pairs);
        const auto steps = std::bit_cast<std::array<std::int16_t, 8>>(skipsFirst + skipsSecond + 2);
        for (std::size_t i = 0; i < steps.size(); ++i) {
            std::memcpy(out, &values[i], sizeof values[i]);
            out += steps[i];
        }
    }
    return static_cast<std::size_t>(out - target);
}

std::size_t EncodeUtf16(char32_t character, WCHAR* target) {
    if (character < 0x10000) {
        if (target) target[0] = static_cast<char16_t>(character);
        return 1;
    }
    if (target) {
        target[0] = static_cast<char16_t>(0xD7C0 + (character >> 10));
        target[1] = static_cast<char16_t>(0xDC00 | (character & 0x3FF));
    }
    return 2;
}

// --- UTF-16 to UTF-8 ---

// The first character of a text that is not empty, or U+FFFD for an unpaired surrogate.
Character DecodeUtf16(const WCHAR* text, std::size_t length) {
    const char32_t unit = text[0];
    if ((unit & 0xF800) != 0xD800) return {unit, 1};
    if (unit >= 0xDC00 || length < 2 || (text[1] & 0xFC00) != 0xDC00) return {replacementCharacter, 1};
    return {0x10000 + ((unit & 0x3FF) << 10 | (text[1] & 0x3FFu)), 2};
}

// Whether no unit has one of the bits.
bool IsBlockWithout(std::uint16_t bits, const WCHAR* text) {
    Units joined{};
    for (std::size_t i = 0; i < blockLength; i += 8)
        joined |= Load<Units>(text + i);
    return IsZero(joined & bits);
}

void CopyAsciiBlock(const WCHAR* text, char* target) {
    for (std::size_t i = 0; i < blockLength; i += 16) {
        SixteenUnits units;
        std::memcpy(&units, text + i, sizeof units);
        const auto bytes = __builtin_convertvector(units, Bytes);
        std::memcpy(target + i, &bytes, sizeof bytes);
    }
}

std::size_t CountTwoByteBlock(const WCHAR* text) {
    Units count{}; // of characters of two bytes, negative
    for (std::size_t i = 0; i < blockLength; i += 8)
        count += std::bit_cast<Units>(Load<Units>(text + i) >= 0x80);
    const auto words = Words(-count);
    return blockLength + static_cast<std::size_t>((words[0] + words[1]) * 0x0001000100010001 >> 48);
}

// May write two bytes more than it returns, in the place of the characters that follow.
std::size_t CopyTwoByteBlock(const WCHAR* text, char* target) {
    char* out = target;
    for (std::size_t at = 0; at < blockLength; at += 8) {
        const auto units = Load<Units>(text + at);
        const auto isLong = units >= 0x80;
        const Units bytes = isLong ? (0x80C0 | units >> 6 | (units & 0x3F) << 8) : units;
        const auto both = std::bit_cast<Pairs>(bytes), areLong = std::bit_cast<Pairs>(isLong);
        const Pairs pairs = (areLong & 1) == 0 ? ((both & 0xFF) | both >> 16 << 8) : both;
        const auto values = std::bit_cast<std::array<std::uint32_t, 4>>(pairs);
        const auto steps = std::bit_cast<std::array<std::uint32_t, 4>>((areLong & 1) + (areLong >> 31) + 2);
        for (std::size_t i = 0; i < steps.size(); ++i) {
            std::memcpy(out, &values[i], sizeof values[i]);
            out += steps[i];
        }
    }
    return static_cast<std::size_t>(out - target);
}

std::size_t EncodeUtf8(char32_t character, char* target) {
    const std::size_t length = character < 0x80 ? 1 : character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
    if (!target) return length;
    for (std::size_t i = length - 1; i > 0; --i, character >>= 6)
        target[i] = static_cast<char>(0x80 | (character & 0x3F));
    const unsigned mark = length == 1 ? 0 : 0xF00u >> length & 0xF0;
    target[0] = static_cast<char>(mark | character);
    return length;
}

} // namespace

std::size_t Utf8ToWide(const char* text, std::size_t length, WCHAR* target) {
    const VectorCode& code = CurrentVectorCode();
    std::size_t units = 0;
    bool isInside = false; // the character that begins before `at` is done
    const auto place = [&] { return target ? target + units : nullptr; };
    for (std::size_t at = 0; at < length;) {
        if (target && !isInside) {
            const Progress done = code.utf8ToWide(text + at, length - at, place());
            at += done.read;
            units += done.written;
        }
        const char* const block = text + at;
        const bool isWhole = hasBlocks && length - at > blockLength + 1; // with a character behind it
        if (isWhole && IsAsciiBlock(block)) {
            if (target) CopyAsciiBlock(block, place());
            units += blockLength;
            at += blockLength;
        } else if (isWhole && IsTwoByteBlock(block, isInside)) {
            units += target ? CopyTwoByteBlock(block, place()) : CountTwoByteBlock(block);
            at += blockLength;
            isInside = IsContinuation(text[at]);
        } else {
            const std::size_t end = std::min(length, at + blockLength);
            at += std::exchange(isInside, false);
            while (at < end) {
                const Character character = DecodeUtf8(text + at, length - at);
                units += EncodeUtf16(character.value, place());
                at += character.length;
            }
        }
    }
    return units;
}

std::size_t WideToUtf8(const WCHAR* text, std::size_t length, char* target) {
    const VectorCode& code = CurrentVectorCode();
    std::size_t bytes = 0;
    const auto place = [&] { return target ? target + bytes : nullptr; };
    for (std::size_t at = 0; at < length;) {
        if (target) {
            const Progress done = code.wideToUtf8(text + at, length - at, place());
            at += done.read;
            bytes += done.written;
        }
        const WCHAR* const block = text + at;
        const bool isWhole = hasBlocks && length - at > blockLength + 1; // with two units behind it
        if (isWhole && IsBlockWithout(0xFF80, block)) {
            if (target) CopyAsciiBlock(block, place());
            bytes += blockLength;
            at += blockLength;
        } else if (isWhole && IsBlockWithout(0xF800, block)) {
            bytes += target ? CopyTwoByteBlock(block, place()) : CountTwoByteBlock(block);
            at += blockLength;
        } else {
            for (const std::size_t end = std::min(length, at + blockLength); at < end;) {
                const Character character = DecodeUtf16(text + at, length - at);
                bytes += EncodeUtf8(character.value, place());
                at += character.length;
            }
        }
    }
    return bytes;
}

} // namespace zynplatform
