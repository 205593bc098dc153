// SPDX-License-Identifier: MIT
#include "zynplatform/paths.h"

#include "zynplatform/cp1251.h"

namespace zynplatform {

namespace {

constexpr unsigned char escapeByte = 0x98;
constexpr std::string_view hexDigits = "0123456789ABCDEF";

void AppendEscaped(std::string& out, std::string_view bytes) {
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        out += static_cast<char>(escapeByte);
        out += hexDigits[byte >> 4];
        out += hexDigits[byte & 0x0F];
    }
}

// The byte that an escape at the start of `text` stands for, or -1 when there is none.
int EscapedByte(std::string_view text) {
    if (text.size() < 3 || static_cast<unsigned char>(text[0]) != escapeByte) return -1;
    const std::size_t high = hexDigits.find(text[1]);
    const std::size_t low = hexDigits.find(text[2]);
    if (high == hexDigits.npos || low == hexDigits.npos) return -1;
    return static_cast<int>(high << 4 | low);
}

void AppendUtf8(std::string& out, char16_t character) {
    if (character < 0x80) {
        out += static_cast<char>(character);
    } else if (character < 0x800) {
        out += static_cast<char>(0xC0 | character >> 6);
        out += static_cast<char>(0x80 | (character & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | character >> 12);
        out += static_cast<char>(0x80 | (character >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (character & 0x3F));
    }
}

// The length of the UTF-8 sequence of two or three bytes at the start of `text`, with its character; 1 and
// U+FFFF for anything else, which the code page does not have either way.
std::size_t DecodeUtf8(std::string_view text, char16_t& character) {
    const auto continuation = [&](std::size_t i) {
        return i < text.size() && (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80;
    };
    const auto bits = [&](std::size_t i) { return static_cast<unsigned char>(text[i]) & 0x3Fu; };
    const auto lead = static_cast<unsigned char>(text[0]);
    if (lead >= 0xC2 && lead < 0xE0 && continuation(1)) {
        character = static_cast<char16_t>((lead & 0x1Fu) << 6 | bits(1));
        return 2;
    }
    if ((lead & 0xF0) == 0xE0 && continuation(1) && continuation(2)) {
        character = static_cast<char16_t>((lead & 0x0Fu) << 12 | bits(1) << 6 | bits(2));
        if (character >= 0x800) return 3;
    }
    character = 0xFFFF;
    return 1;
}

bool IsNative(std::string_view path) {
    return path.starts_with('/') || (path.find('/') != path.npos && path.find('\\') == path.npos);
}

} // namespace

std::string ToNativePath(std::string_view libraryPath) {
    if (IsNative(libraryPath)) return std::string(libraryPath);
    std::string native;
    native.reserve(libraryPath.size());
    for (std::size_t i = 0; i < libraryPath.size(); ++i) {
        const auto byte = static_cast<unsigned char>(libraryPath[i]);
        if (byte == '\\') {
            native += '/';
        } else if (byte < 0x80) {
            native += static_cast<char>(byte);
        } else if (const int escaped = EscapedByte(libraryPath.substr(i)); escaped >= 0) {
            native += static_cast<char>(escaped);
            i += 2;
        } else {
            AppendUtf8(native, cp1251Characters[byte - 0x80u]);
        }
    }
    return native;
}

std::string FromNativePath(std::string_view nativePath) {
    std::string library;
    library.reserve(nativePath.size());
    for (std::size_t i = 0; i < nativePath.size();) {
        const char c = nativePath[i];
        if (static_cast<unsigned char>(c) < 0x80 && c != '\\') {
            library += c == '/' ? '\\' : c;
            ++i;
            continue;
        }
        char16_t character;
        const std::size_t length = DecodeUtf8(nativePath.substr(i), character);
        const int byte = Cp1251FromChar(character);
        if (byte < 0 || byte == escapeByte)
            AppendEscaped(library, nativePath.substr(i, length));
        else
            library += static_cast<char>(byte);
        i += length;
    }
    return library;
}

std::string ToLibraryPath(std::string_view callersPath) {
    return IsNative(callersPath) ? FromNativePath(callersPath) : std::string(callersPath);
}

} // namespace zynplatform
