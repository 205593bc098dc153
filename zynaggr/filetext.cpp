// SPDX-License-Identifier: MIT
#include "zynaggr/filetext_impl.h"

#include "zynplatform/codepage.h"

#include <algorithm>
#include <cstdint>

namespace zyn {
namespace {

using zynplatform::ansiCodePage;
using zynplatform::utf8CodePage;

// Units of two or four bytes, either byte first.
struct Units {
    std::size_t size;
    bool highFirst;

    char32_t Get(const char* unit) const {
        char32_t value = 0;
        for (std::size_t i = 0; i < size; ++i)
            value = value << 8 | static_cast<std::uint8_t>(unit[highFirst ? i : size - 1 - i]);
        return value;
    }
    void Append(std::string& bytes, char32_t value) const {
        for (std::size_t i = 0; i < size; ++i)
            bytes += static_cast<char>(value >> 8 * (highFirst ? size - 1 - i : i));
    }
};

Units UnitsOf(zynTextEncoding encoding) {
    return {encoding == zynEncUCS4LE || encoding == zynEncUCS4BE ? 4u : 2u,
            encoding == zynEncUCS2BE || encoding == zynEncUCS4BE};
}

unsigned CodePageOf(zynTextEncoding encoding) {
    return encoding == zynEncUTF8 ? utf8CodePage : ansiCodePage;
}

bool HasUnits(zynTextEncoding encoding) {
    return encoding >= zynEncUCS2LE && encoding <= zynEncUCS4BE;
}

constexpr char16_t highSurrogate = 0xD800, lowSurrogate = 0xDC00;

// Without a zero byte, too. Whatever is ill-formed comes back as another character.
bool IsWellFormedUtf8(std::string_view bytes) {
    return bytes.find('\0') == bytes.npos && zynplatform::Recode(bytes, utf8CodePage, utf8CodePage) == bytes;
}

// The number of '?'; there are few of them.
template <class Char> std::size_t CountMarks(std::basic_string_view<Char> text) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find(Char{'?'}, at)) != text.npos; ++at)
        ++count;
    return count;
}

} // namespace

std::u16string DecodeText(zynTextEncoding encoding, std::string_view bytes) {
    std::u16string text;
    if (!HasUnits(encoding)) {
        text.resize(bytes.size()); // no character takes less bytes than it has units
        text.resize(zynplatform::ToWide(CodePageOf(encoding), bytes.data(), bytes.size(), text.data()));
        return text;
    }
    const Units units = UnitsOf(encoding);
    text.reserve(bytes.size() / units.size);
    for (std::size_t at = 0; at + units.size <= bytes.size(); at += units.size) {
        const char32_t c = units.Get(bytes.data() + at);
        if (c > 0xFFFF && c <= 0x10FFFF)
            text.append({static_cast<char16_t>(highSurrogate + ((c - 0x10000) >> 10)),
                         static_cast<char16_t>(lowSurrogate + (c & 0x3FF))});
        else
            text += c > 0x10FFFF ? u'\xFFFD' : static_cast<char16_t>(c);
    }
    return text;
}

std::string EncodeText(zynTextEncoding encoding, std::u16string_view text) {
    std::string bytes;
    if (!HasUnits(encoding)) {
        bytes.resize((encoding == zynEncUTF8 ? 3 : 1) * text.size());
        bytes.resize(zynplatform::ToNarrow(CodePageOf(encoding), text.data(), text.size(), bytes.data()));
        return bytes;
    }
    const Units units = UnitsOf(encoding);
    bytes.reserve(text.size() * units.size);
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        const bool isPair = units.size == 4 && (c & 0xFC00) == highSurrogate && i + 1 < text.size() &&
                            (text[i + 1] & 0xFC00) == lowSurrogate;
        if (isPair) c = 0x10000 + ((c & 0x3FF) << 10 | (text[++i] & 0x3FF));
        units.Append(bytes, c);
    }
    return bytes;
}

std::string DecodeTo1251(zynTextEncoding encoding, std::string_view bytes) {
    if (HasUnits(encoding)) return EncodeText(zynEncCP1251, DecodeText(encoding, bytes));
    if (encoding != zynEncUTF8) return std::string(bytes);
    std::string text(bytes.size(), '\0');
    text.resize(zynplatform::Utf8To1251(bytes.data(), bytes.size(), text.data()));
    return text;
}

// Each loss is one more '?'.
bool IsLost(zynTextEncoding encoding, std::string_view bytes, std::string_view text) {
    if (encoding == zynEncCP1251) return false;
    const std::size_t marks = CountMarks(text);
    if (!HasUnits(encoding)) return CountMarks(bytes) != marks;
    return CountMarks<char16_t>(DecodeText(encoding, bytes)) != marks;
}

std::string_view MarkOf(zynTextEncoding encoding) {
    unsigned char* mark = nullptr;
    int length = 0;
    GetBomData(encoding, mark, length);
    return mark ? std::string_view(reinterpret_cast<const char*>(mark), static_cast<std::size_t>(length))
                : std::string_view();
}

zynTextEncoding FindEncoding(std::string_view bytes, const zynEncodingChoice& choice,
                             std::size_t& markLength) {
    static constexpr struct {
        bool (*matches)(const unsigned char*, int);
        zynTextEncoding encoding;
    } tests[] = {
        {IsBufUCS4BE, zynEncUCS4BE}, {IsBufUCS4LE, zynEncUCS4LE}, {IsBufUtf8, zynEncUTF8},
        {IsBufUCS2, zynEncUCS2LE},   {IsBufUCS2BE, zynEncUCS2BE},
    };
    const auto* const buffer = reinterpret_cast<const unsigned char*>(bytes.data());
    const int size = static_cast<int>(bytes.size());
    int length = 0;
    const zynTextEncoding marked = zynGetBufferEncodeByBOM(buffer, size, &length);
    markLength = static_cast<std::size_t>(length);
    if (length > 0) return marked;
    if (choice.m_bPreferUtf8 && IsWellFormedUtf8(bytes)) return zynEncUTF8;
    if (choice.m_nUnmarked != zynEncUnknown) return choice.m_nUnmarked;
    for (const auto& test : tests)
        if (test.matches(buffer, size)) return test.encoding;
    return zynEncCP1251;
}

} // namespace zyn
