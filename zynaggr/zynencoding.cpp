// SPDX-License-Identifier: MIT
#include "zynaggr/zynencoding.h"

#include "zynplatform/vectors.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

using namespace std::string_view_literals;
using zynplatform::Bytes;
using zynplatform::Load;

struct Encoding {
    const char* name;
    unsigned minBytes;
    unsigned maxBytes;
    std::string_view mark;
};

// clang-format off
constexpr std::array<Encoding, 8> encodings{{
    {nullptr,   0, 0, {}},
    {"CP1251",  1, 1, {}},
    {"UTF-8",   1, 2, "\xEF\xBB\xBF"sv},
    {"UCS-2LE", 2, 2, "\xFF\xFE"sv},
    {"UCS-2BE", 2, 2, "\xFE\xFF"sv},
    {"UCS-4LE", 4, 4, "\xFF\xFE\x00\x00"sv},
    {"UCS-4BE", 4, 4, "\x00\x00\xFE\xFF"sv},
    {"CP866",   1, 1, {}},
}};

// The characters of UTF-8 text that is taken as Russian: a lead byte and the bytes that may follow it.
struct TwoByteRange { std::uint8_t lead, first, last; };
constexpr std::array<TwoByteRange, 9> twoByteRanges{{
    {0xD0, 0x90, 0xBF}, // А-п
    {0xD1, 0x80, 0x8F}, // р-я
    {0xD0, 0x81, 0x81}, // Ё
    {0xD1, 0x91, 0x91}, // ё
    {0xC2, 0xAB, 0xAB}, // «
    {0xC2, 0xBB, 0xBB}, // »
    {0xC2, 0xB1, 0xB1}, // ±
    {0xC2, 0xB5, 0xB5}, // µ
    {0xCE, 0xA9, 0xA9}, // Ω
}};
constexpr std::array<std::array<std::uint8_t, 3>, 4> threeByteCharacters{{
    {0xE2, 0x84, 0x96}, // №
    {0xE2, 0x80, 0x93}, // –
    {0xE2, 0x80, 0xA2}, // •
    {0xE2, 0x80, 0xA6}, // …
}};
// clang-format on

const Encoding& Describe(zynTextEncoding encoding) {
    const auto index = static_cast<std::size_t>(encoding);
    return encodings[index < encodings.size() ? index : 0];
}

// The length of the accepted character at `text`, 0 when there is none.
std::size_t AcceptedLength(const unsigned char* text, std::size_t length) {
    if (text[0] < 0x80) return text[0] != 0;
    for (const TwoByteRange& range : twoByteRanges)
        if (length >= 2 && text[0] == range.lead && text[1] >= range.first && text[1] <= range.last) return 2;
    for (const auto& character : threeByteCharacters)
        if (length >= 3 && std::equal(character.begin(), character.end(), text)) return 3;
    return 0;
}

constexpr std::size_t blockLength = 32;

// Whether the characters that begin in the block are ASCII and Russian letters; its bytes are joined into
// `joined`. `isInside`: the block begins with the second byte of the character before. The byte behind the
// block is read, too.
bool IsRussianBlock(const unsigned char* text, bool isInside, Bytes& joined) {
    Bytes bad{((text[0] & 0xC0) == 0x80) != isInside};
    for (const unsigned char* half = text; half < text + blockLength; half += sizeof(Bytes)) {
        const auto bytes = Load<Bytes>(half), next = Load<Bytes>(half + 1);
        const auto isLead = (bytes & 0xFE) == 0xD0, isContinued = (next & 0xC0) == 0x80;
        const auto isOther = (bytes == 0) | ((bytes >= 0xC0) & ~isLead);
        // D0 goes with 90 to BF, D1 with 80 to 8F, both with 81 and 91.
        const auto isLow = (next & 0xF0) == 0x80, isEither = (next & 0xEF) == 0x81;
        const auto isOtherLetter = isLead & ((bytes == 0xD1) ^ isLow) & ~isEither;
        bad |= std::bit_cast<Bytes>((isLead ^ isContinued) | isOther | isOtherLetter);
        joined |= bytes;
    }
    return zynplatform::IsZero(bad);
}

// Whether there is something in the buffer, and every unit of it passes.
template <std::size_t unitLength, class Test>
bool AllUnits(const unsigned char* buffer, int length, Test test) {
    if (!buffer || length <= 0 || static_cast<std::size_t>(length) % unitLength != 0) return false;
    for (const unsigned char* unit = buffer; unit < buffer + length; unit += unitLength)
        if (!test(unit)) return false;
    return true;
}

bool IsRussianUnit(unsigned low, unsigned high) {
    return low != 0 && (high == 0x04 || (high == 0 && low < 0x80));
}

} // namespace

zynTextEncoding zynGetBufferEncodeByBOM(const unsigned char* buffer, int length, int* bomLength) {
    if (bomLength) *bomLength = 0;
    if (!buffer || length <= 0) return zynEncUnknown;
    if (length < 3) return zynEncCP1251;
    // The longer mark before the one that it begins with.
    for (const auto encoding : {zynEncUCS4LE, zynEncUCS2LE, zynEncUCS2BE, zynEncUTF8, zynEncUCS4BE}) {
        const int mark = GetBomLength(encoding, buffer, length);
        if (mark == 0) continue;
        if (bomLength) *bomLength = mark;
        return encoding;
    }
    return zynEncCP1251;
}

void GetBomData(zynTextEncoding encoding, unsigned char*& bom, int& bomLength) {
    const std::string_view mark = Describe(encoding).mark;
    bom = reinterpret_cast<unsigned char*>(const_cast<char*>(mark.data()));
    bomLength = static_cast<int>(mark.size());
}

int GetBomLength(zynTextEncoding encoding, const unsigned char* buffer, int length) {
    if (!buffer || length <= 0) return 0;
    const std::string_view mark = Describe(encoding).mark;
    const std::string_view text(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(length));
    return text.starts_with(mark) ? static_cast<int>(mark.size()) : 0;
}

bool IsBufUtf8(const unsigned char* buffer, int length) {
    if (!buffer || length <= 0) return false;
    const auto size = static_cast<std::size_t>(length);
    Bytes joined{};        // all bytes
    bool isInside = false; // the character that begins before `at` is done
    for (std::size_t at = 0; at < size;) {
        if (size - at > blockLength && IsRussianBlock(buffer + at, isInside, joined)) {
            at += blockLength;
            isInside = (buffer[at] & 0xC0) == 0x80;
            continue;
        }
        const std::size_t end = std::min(size, at + blockLength);
        at += isInside;
        isInside = false;
        while (at < end) {
            const std::size_t accepted = AcceptedLength(buffer + at, size - at);
            if (accepted == 0) return false;
            joined[0] |= buffer[at];
            at += accepted;
        }
    }
    return !zynplatform::IsZero(joined & 0x80); // pure ASCII is not UTF-8 here
}

bool IsBufUCS2(const unsigned char* buffer, int length) {
    return AllUnits<2>(buffer, length,
                       [](const unsigned char* unit) { return IsRussianUnit(unit[0], unit[1]); });
}

bool IsBufUCS2BE(const unsigned char* buffer, int length) {
    return AllUnits<2>(buffer, length,
                       [](const unsigned char* unit) { return IsRussianUnit(unit[1], unit[0]); });
}

bool IsBufUCS4LE(const unsigned char* buffer, int length) {
    return AllUnits<4>(buffer, length, [](const unsigned char* unit) { return (unit[2] | unit[3]) == 0; });
}

bool IsBufUCS4BE(const unsigned char* buffer, int length) {
    return AllUnits<4>(buffer, length, [](const unsigned char* unit) { return (unit[0] | unit[1]) == 0; });
}

unsigned zynGetMinBYTEInCharForEncoding(zynTextEncoding encoding) {
    return Describe(encoding).minBytes;
}

unsigned zynGetMaxBYTEInCharForEncoding(zynTextEncoding encoding) {
    return Describe(encoding).maxBytes;
}

const char* zynGetCodingNameForIcov(zynTextEncoding encoding) {
    return Describe(encoding).name;
}
