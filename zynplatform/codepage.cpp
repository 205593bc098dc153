// SPDX-License-Identifier: MIT
#include "zynplatform/codepage.h"

#include "zynplatform/cp1251.h"
#include "zynplatform/systempage_impl.h"
#include "zynplatform/utf8.h"
#include "zynplatform/vectorcode_impl.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace zynplatform {
namespace {

// --- 1251 ---
//
// Blocks of ASCII and the letters А-я are computed, in loops that compilers turn into vector code; a block
// with any other character, and the end of the text, are looked up.

constexpr std::size_t blockLength = 32;

constexpr unsigned firstLetter = 0x0410; // А: from here on the letters stand in the same order in both
constexpr unsigned letterCount = 0x40;
constexpr unsigned letterDistance = firstLetter - 0xC0;

constexpr auto wideOfByte = [] {
    std::array<char16_t, 256> table{};
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = i < 0x80 ? static_cast<char16_t>(i) : cp1251Characters[i - 0x80];
    return table;
}();

// The byte of a character is found in two steps: by its high byte the row, by its low byte the place in the
// row.
struct ReverseTable {
    std::array<std::uint8_t, 256> rowOf{};
    std::array<std::array<char, 256>, 5> rows{}; // row 0: no character of the page
};
constexpr ReverseTable byteOfWide = [] {
    ReverseTable table;
    for (auto& row : table.rows)
        row.fill('?');
    std::uint8_t rows = 1;
    for (std::size_t byte = 0; byte < wideOfByte.size(); ++byte) {
        const char16_t character = wideOfByte[byte];
        std::uint8_t& row = table.rowOf[character >> 8];
        if (row == 0) row = rows++;
        table.rows[row][character & 0xFF] = static_cast<char>(byte);
    }
    return table;
}();

std::uint8_t Byte(char character) {
    return static_cast<std::uint8_t>(character);
}

bool IsPlainBlock(const char* text) {
    std::uint8_t others = 0; // what has bit 7 without bit 6
    for (std::size_t i = 0; i < blockLength; ++i)
        others = static_cast<std::uint8_t>(others | (Byte(text[i]) & ~(Byte(text[i]) << 1)));
    return (others & 0x80) == 0;
}

bool IsPlainBlock(const WCHAR* text) {
    std::uint16_t others = 0;
    for (std::size_t i = 0; i < blockLength; ++i) {
        const auto letter = static_cast<std::uint16_t>(text[i] - firstLetter);
        others = static_cast<std::uint16_t>(others | (letter < letterCount ? 0 : text[i]));
    }
    return others < 0x80;
}

void CopyPlainBlock(const char* __restrict text, WCHAR* __restrict target) {
    for (std::size_t i = 0; i < blockLength; ++i)
        target[i] = static_cast<char16_t>(Byte(text[i]) + (Byte(text[i]) >= 0x80 ? letterDistance : 0));
}

void CopyPlainBlock(const WCHAR* __restrict text, char* __restrict target) {
    for (std::size_t i = 0; i < blockLength; ++i)
        target[i] = static_cast<char>(text[i] - (text[i] >= 0x80 ? letterDistance : 0));
}

void LookUp(char byte, WCHAR& target) {
    target = wideOfByte[Byte(byte)];
}

void LookUp(WCHAR unit, char& target) {
    target = byteOfWide.rows[byteOfWide.rowOf[unit >> 8]][unit & 0xFF];
}

template <class From, class To> std::size_t Convert1251(const From* text, std::size_t length, To* target) {
    for (std::size_t at = 0; at < length; at += blockLength) {
        const std::size_t count = std::min(length - at, blockLength);
        if (count == blockLength && IsPlainBlock(text + at))
            CopyPlainBlock(text + at, target + at);
        else
            for (std::size_t i = at; i < at + count; ++i)
                LookUp(text[i], target[i]);
    }
    return length;
}

// The page that a number stands for: some name the system's pages by their part.
constexpr unsigned Resolved(unsigned codePage) {
    switch (codePage) {
    case 0: // the system's
    case 3: // the thread's
        return ansiCodePage;
    case 1: // of the console
        return 866;
    case 2:
        return 10007;
    default:
        return codePage;
    }
}

// What the vector instructions leave goes by way of so many 16-bit units.
constexpr std::size_t stepLength = 256;

// How much of a UTF-8 text, at most a step, ends between two characters.
std::size_t WholeCharacters(const char* text, std::size_t length) {
    if (length <= stepLength) return length;
    const auto isContinuation = [&](std::size_t at) { return (Byte(text[at]) & 0xC0) == 0x80; };
    std::size_t end = stepLength;
    while (end > stepLength - 3 && isContinuation(end))
        --end;
    return isContinuation(end) ? stepLength : end; // more than three of them are no character
}

} // namespace

std::size_t Utf8To1251(const char* text, std::size_t length, char* target) {
    const VectorCode& code = CurrentVectorCode();
    std::size_t written = 0;
    for (std::size_t at = 0; at < length;) {
        const Progress done = code.utf8To1251(text + at, length - at, target + written);
        at += done.read;
        written += done.written;
        WCHAR units[stepLength];
        const std::size_t count = WholeCharacters(text + at, length - at);
        written += Convert1251(units, Utf8ToWide(text + at, count, units), target + written);
        at += count;
    }
    return written;
}

std::size_t From1251ToUtf8(const char* text, std::size_t length, char* target) {
    const VectorCode& code = CurrentVectorCode();
    std::size_t written = 0;
    for (std::size_t at = 0; at < length;) {
        const Progress done = code.from1251ToUtf8(text + at, length - at, target + written);
        at += done.read;
        written += done.written;
        WCHAR units[stepLength];
        const std::size_t count = std::min(length - at, stepLength);
        Convert1251(text + at, count, units);
        written += WideToUtf8(units, count, target + written);
        at += count;
    }
    return written;
}

std::size_t WideLength(unsigned codePage, const char* text, std::size_t length) {
    switch (codePage = Resolved(codePage)) {
    case ansiCodePage:
        return length;
    case utf8CodePage:
        return Utf8ToWide(text, length, nullptr);
    default:
        return SystemToWide(codePage, {text, length}, nullptr);
    }
}

std::size_t ToWide(unsigned codePage, const char* text, std::size_t length, WCHAR* target) {
    switch (codePage = Resolved(codePage)) {
    case ansiCodePage:
        return Convert1251(text, length, target);
    case utf8CodePage:
        return target ? Utf8ToWide(text, length, target) : 0;
    default:
        return SystemToWide(codePage, {text, length}, target);
    }
}

std::size_t NarrowLength(unsigned codePage, const WCHAR* text, std::size_t length) {
    switch (codePage = Resolved(codePage)) {
    case ansiCodePage:
        return length;
    case utf8CodePage:
        return WideToUtf8(text, length, nullptr);
    default:
        return SystemToNarrow(codePage, {text, length}, nullptr);
    }
}

std::size_t ToNarrow(unsigned codePage, const WCHAR* text, std::size_t length, char* target) {
    switch (codePage = Resolved(codePage)) {
    case ansiCodePage:
        return Convert1251(text, length, target);
    case utf8CodePage:
        return target ? WideToUtf8(text, length, target) : 0;
    default:
        return SystemToNarrow(codePage, {text, length}, target);
    }
}

std::string Recode(std::string_view text, unsigned from, unsigned to) {
    std::u16string wide(WideLength(from, text.data(), text.size()), u'\0');
    ToWide(from, text.data(), text.size(), wide.data());
    std::string result(NarrowLength(to, wide.data(), wide.size()), '\0');
    ToNarrow(to, wide.data(), wide.size(), result.data());
    return result;
}

} // namespace zynplatform
