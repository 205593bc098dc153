#include "zynplatform/codepage.h"

#include "zynplatform/avx512.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/utf8.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include <iconv.h>

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

// --- Every page but our own ---

constexpr const char* wideName = std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

// The system's converter with the output of one conversion. Without a target the output is only counted.
class Converter {
public:
    Converter(const char* to, const char* from, void* target)
        : m_converter(iconv_open(to, from)), m_target(static_cast<char*>(target)) {}
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter() {
        if (IsOpen()) iconv_close(m_converter);
    }

    bool IsOpen() const { return m_converter != reinterpret_cast<iconv_t>(-1); }
    std::size_t Written() const { return m_written; }

    // Takes off `text` what can be converted before a character that can't. A null text ends the output.
    void Convert(std::string_view& text) {
        char* source = const_cast<char*>(text.data()); // only read
        std::size_t length = text.size();
        bool isFull = true;
        while (isFull) {
            std::array<char, 1024> chunk;
            char* out = chunk.data();
            std::size_t room = chunk.size();
            const std::size_t result = iconv(m_converter, source ? &source : nullptr, &length, &out, &room);
            isFull = result == static_cast<std::size_t>(-1) && errno == E2BIG;
            Write({chunk.data(), chunk.size() - room});
        }
        text = {source, length};
    }

    void Write(std::string_view bytes) {
        if (m_target) std::memcpy(m_target + m_written, bytes.data(), bytes.size());
        m_written += bytes.size();
    }

private:
    iconv_t m_converter;
    char* m_target;
    std::size_t m_written = 0;
};

std::string PageName(unsigned codePage) {
    if (codePage == 20866) return "KOI8-R";
    if (codePage == 21866) return "KOI8-U";
    if (codePage > 28590 && codePage < 28606)
        return std::string("ISO-8859-").append(std::to_string(codePage - 28590));
    return std::string("CP").append(std::to_string(codePage));
}

std::size_t SystemToWide(unsigned codePage, std::string_view text, WCHAR* target) {
    constexpr WCHAR replacement = 0xFFFD;
    Converter converter(wideName, PageName(codePage).c_str(), target);
    if (!converter.IsOpen() || text.empty()) return 0;
    converter.Convert(text);
    while (!text.empty()) {
        converter.Write({reinterpret_cast<const char*>(&replacement), sizeof replacement});
        text.remove_prefix(1);
        converter.Convert(text);
    }
    return converter.Written() / sizeof(WCHAR);
}

std::size_t SystemToNarrow(unsigned codePage, const WCHAR* units, std::size_t length, char* target) {
    constexpr WCHAR replacement = u'?';
    Converter converter(PageName(codePage).c_str(), wideName, target);
    if (!converter.IsOpen() || length == 0) return 0;
    std::string_view text(reinterpret_cast<const char*>(units), length * sizeof(WCHAR));
    converter.Convert(text);
    while (!text.empty()) {
        // In the page's own form, which need not be ASCII.
        std::string_view other(reinterpret_cast<const char*>(&replacement), sizeof replacement);
        converter.Convert(other);
        text.remove_prefix(sizeof(WCHAR));
        converter.Convert(text);
    }
    converter.Convert(text = {});
    return converter.Written();
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
    std::size_t written = 0;
    for (std::size_t at = 0; at < length;) {
        const avx512::Progress done = avx512::Utf8To1251(text + at, length - at, target + written);
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
    std::size_t written = 0;
    for (std::size_t at = 0; at < length;) {
        const avx512::Progress done = avx512::From1251ToUtf8(text + at, length - at, target + written);
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
    switch (codePage) {
    case ansiCodePage:
        return length;
    case utf8CodePage:
        return Utf8ToWide(text, length, nullptr);
    default:
        return SystemToWide(codePage, {text, length}, nullptr);
    }
}

std::size_t ToWide(unsigned codePage, const char* text, std::size_t length, WCHAR* target) {
    switch (codePage) {
    case ansiCodePage:
        return Convert1251(text, length, target);
    case utf8CodePage:
        return target ? Utf8ToWide(text, length, target) : 0;
    default:
        return SystemToWide(codePage, {text, length}, target);
    }
}

std::size_t NarrowLength(unsigned codePage, const WCHAR* text, std::size_t length) {
    switch (codePage) {
    case ansiCodePage:
        return length;
    case utf8CodePage:
        return WideToUtf8(text, length, nullptr);
    default:
        return SystemToNarrow(codePage, text, length, nullptr);
    }
}

std::size_t ToNarrow(unsigned codePage, const WCHAR* text, std::size_t length, char* target) {
    switch (codePage) {
    case ansiCodePage:
        return Convert1251(text, length, target);
    case utf8CodePage:
        return target ? WideToUtf8(text, length, target) : 0;
    default:
        return SystemToNarrow(codePage, text, length, target);
    }
}

} // namespace zynplatform
