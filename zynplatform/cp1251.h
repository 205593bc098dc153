// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// The Windows Cyrillic code page: its characters, its case pairs, and Russian text literals in it.
// Everything here is a table or is computed at compile time.

namespace zynplatform {

// The character of each byte of 0x80 and above. Byte 0x98 has no character of its own and stands for U+0098.
// clang-format off
inline constexpr std::array<char16_t, 128> cp1251Characters{
    0x0402, 0x0403, 0x201A, 0x0453, 0x201E, 0x2026, 0x2020, 0x2021, 0x20AC, 0x2030, 0x0409, 0x2039, 0x040A, 0x040C, 0x040B, 0x040F,
    0x0452, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, 0x0098, 0x2122, 0x0459, 0x203A, 0x045A, 0x045C, 0x045B, 0x045F,
    0x00A0, 0x040E, 0x045E, 0x0408, 0x00A4, 0x0490, 0x00A6, 0x00A7, 0x0401, 0x00A9, 0x0404, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x0407,
    0x00B0, 0x00B1, 0x0406, 0x0456, 0x0491, 0x00B5, 0x00B6, 0x00B7, 0x0451, 0x2116, 0x0454, 0x00BB, 0x0458, 0x0405, 0x0455, 0x0457,
    0x0410, 0x0411, 0x0412, 0x0413, 0x0414, 0x0415, 0x0416, 0x0417, 0x0418, 0x0419, 0x041A, 0x041B, 0x041C, 0x041D, 0x041E, 0x041F,
    0x0420, 0x0421, 0x0422, 0x0423, 0x0424, 0x0425, 0x0426, 0x0427, 0x0428, 0x0429, 0x042A, 0x042B, 0x042C, 0x042D, 0x042E, 0x042F,
    0x0430, 0x0431, 0x0432, 0x0433, 0x0434, 0x0435, 0x0436, 0x0437, 0x0438, 0x0439, 0x043A, 0x043B, 0x043C, 0x043D, 0x043E, 0x043F,
    0x0440, 0x0441, 0x0442, 0x0443, 0x0444, 0x0445, 0x0446, 0x0447, 0x0448, 0x0449, 0x044A, 0x044B, 0x044C, 0x044D, 0x044E, 0x044F,
};
// clang-format on

// The byte for a character, or -1 when the code page has none.
constexpr int Cp1251FromChar(char16_t character) {
    if (character < 0x80) return character;
    if (character >= 0x0410 && character <= 0x044F) return character - 0x0410 + 0xC0;
    for (std::size_t i = 0; i < cp1251Characters.size(); ++i)
        if (cp1251Characters[i] == character) return static_cast<int>(i + 0x80);
    return -1;
}

namespace detail {
// Case pairs of the 8-bit text of the library: Latin a-z, Cyrillic 0xC0-0xFF, Ё/ё at 0xA8/0xB8.
constexpr std::array<std::uint8_t, 256> MakeFoldTable(bool toLower) {
    std::array<std::uint8_t, 256> table{};
    for (unsigned c = 0; c < 256; ++c)
        table[c] = static_cast<std::uint8_t>(c);
    const auto pair = [&](unsigned upper, unsigned lower) {
        if (toLower)
            table[upper] = static_cast<std::uint8_t>(lower);
        else
            table[lower] = static_cast<std::uint8_t>(upper);
    };
    for (unsigned c = 'A'; c <= 'Z'; ++c)
        pair(c, c + 0x20);
    for (unsigned c = 0xC0; c <= 0xDF; ++c)
        pair(c, c + 0x20);
    pair(0xA8, 0xB8);
    return table;
}
} // namespace detail

// For each byte the lower-case or upper-case letter of its pair, else the byte itself.
inline constexpr std::array<std::uint8_t, 256> cp1251ToLower = detail::MakeFoldTable(true);
inline constexpr std::array<std::uint8_t, 256> cp1251ToUpper = detail::MakeFoldTable(false);

// A character by those tables.
constexpr char Cp1251Lower(char c) {
    return static_cast<char>(cp1251ToLower[static_cast<std::uint8_t>(c)]);
}
constexpr char Cp1251Upper(char c) {
    return static_cast<char>(cp1251ToUpper[static_cast<std::uint8_t>(c)]);
}

namespace detail {
template <std::size_t N> struct Utf8Literal {
    char text[N]{};
    consteval Utf8Literal(const char (&literal)[N]) {
        for (std::size_t i = 0; i < N; ++i)
            text[i] = literal[i];
    }
};

void CharacterIsNotInCodePage(); // not constexpr: reaching it stops the compilation

template <Utf8Literal literal> consteval auto ToCp1251() {
    std::array<char, sizeof(literal.text)> bytes{};
    std::size_t out = 0;
    for (std::size_t i = 0; literal.text[i] != 0;) {
        const auto at = [&](std::size_t k) { return static_cast<unsigned char>(literal.text[i + k]); };
        unsigned character = at(0);
        std::size_t length = 1;
        if (character >= 0xE0) {
            character = (character & 0x0Fu) << 12 | (at(1) & 0x3Fu) << 6 | (at(2) & 0x3Fu);
            length = 3;
        } else if (character >= 0xC0) {
            character = (character & 0x1Fu) << 6 | (at(1) & 0x3Fu);
            length = 2;
        }
        const int byte = at(0) >= 0xF0 ? -1 : Cp1251FromChar(static_cast<char16_t>(character));
        if (byte < 0) CharacterIsNotInCodePage();
        bytes[out++] = static_cast<char>(byte);
        i += length;
    }
    return bytes;
}

template <Utf8Literal literal> inline constexpr auto cp1251Bytes = ToCp1251<literal>();
} // namespace detail

inline namespace literals {
// "Ошибка"_cp1251 is a zero-terminated const char* in the code page. The bytes are made from the UTF-8 source
// text at compile time; a character outside the code page does not compile. The operator itself is constexpr,
// not consteval, because clang 14 leaves calls of consteval functions in templates to the linker.
template <detail::Utf8Literal literal> constexpr const char* operator""_cp1251() {
    return detail::cp1251Bytes<literal>.data();
}
} // namespace literals

} // namespace zynplatform
