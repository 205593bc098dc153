// SPDX-License-Identifier: MIT
#include "zynplatform/console.h"

#include "zynplatform/codepage.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/file.h"

#include <atomic>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cwchar>

#include <unistd.h>

namespace {

using namespace zynplatform;

constexpr unsigned defaultAttribute = 15;

std::atomic<bool> terminalEncodingEverywhere{false};

bool IsTerminal(std::FILE* stream) {
    return isatty(fileno(stream)) == 1;
}

bool EqualNoCase(std::string_view left, std::string_view right) {
    if (left.size() != right.size()) return false;
    for (std::size_t i = 0; i < left.size(); ++i)
        if (Cp1251Lower(left[i]) != Cp1251Lower(right[i])) return false;
    return true;
}

std::string_view TerminalCodeset() {
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* value = std::getenv(variable);
        if (!value || !*value) continue;
        const std::string_view locale(value);
        const std::size_t dot = locale.find('.');
        if (dot == locale.npos) return {};
        return locale.substr(dot + 1, locale.find('@', dot) - dot - 1);
    }
    return {};
}

unsigned TerminalCodePage() {
    constexpr unsigned koi8r = 20866;
    const std::string_view codeset = TerminalCodeset();
    if (EqualNoCase(codeset, "KOI8-R")) return koi8r;
    if (EqualNoCase(codeset.substr(0, 2), "CP")) {
        unsigned page = 0;
        const char* end = codeset.data() + codeset.size();
        const auto [last, error] = std::from_chars(codeset.data() + 2, end, page);
        if (error == std::errc() && last == end) return page;
    }
    return utf8CodePage;
}

// Between a code page that the system may not know and another one.
std::string RecodeIfKnown(std::string_view text, unsigned from, unsigned to) {
    std::string recoded = from == to ? std::string() : Recode(text, from, to);
    return recoded.empty() ? std::string(text) : recoded;
}

// Hands library text to `sink` in the terminal's encoding, in pieces from a buffer on the stack. Library text
// is one byte a character, so it may be cut anywhere.
template <class Sink> void Encode(std::string_view text, Sink sink) {
    constexpr std::size_t pieceLength = 256;
    const unsigned page = TerminalCodePage();
    while (!text.empty()) {
        WCHAR wide[pieceLength];
        char bytes[pieceLength * 8];
        const std::string_view piece = text.substr(0, pieceLength);
        const std::size_t units = ToWide(ansiCodePage, piece.data(), piece.size(), wide);
        const std::size_t length = NarrowLength(page, wide, units);
        if (length == 0 || length > sizeof(bytes))
            sink(piece);
        else
            sink(std::string_view(bytes, ToNarrow(page, wide, units, bytes)));
        text.remove_prefix(piece.size());
    }
}

void WriteBytes(std::FILE* stream, std::string_view bytes) {
    flockfile(stream);
    if (std::fwide(stream, 0) <= 0) {
        std::fwrite(bytes.data(), 1, bytes.size(), stream);
    } else {
        std::fflush(stream);
        WriteFile(fileno(stream), bytes.data(), bytes.size());
    }
    funlockfile(stream);
}

void WriteTo(std::FILE* stream, std::string_view text) {
    const auto write = [stream](std::string_view bytes) { WriteBytes(stream, bytes); };
    if (terminalEncodingEverywhere.load(std::memory_order_relaxed) || IsTerminal(stream))
        Encode(text, write);
    else
        write(text);
}

} // namespace

namespace zynplatform {

void SetTextAttribute(unsigned attribute) {
    if (!IsTerminal(stdout)) return;
    if (attribute == defaultAttribute) {
        WriteBytes(stdout, "\x1b[0m");
        return;
    }
    // The terminal counts red as 1 and blue as 4.
    const unsigned colour = (attribute >> 2 & 1) | (attribute & 2) | (attribute << 2 & 4);
    const char ink[]{'\x1b', '[', attribute & 8 ? '9' : '3', static_cast<char>('0' + colour), 'm', 0};
    WriteBytes(stdout, ink);
}

void Write(std::string_view text) {
    WriteTo(stdout, text);
}

void Flush() {
    std::fflush(stdout);
}

void ShowMessage(const char* text, const char* caption) {
    flockfile(stderr);
    if (caption && *caption) {
        WriteTo(stderr, caption);
        WriteTo(stderr, ": ");
    }
    WriteTo(stderr, text ? text : "");
    WriteTo(stderr, "\n");
    funlockfile(stderr);
}

void UseTerminalEncoding(bool use) {
    terminalEncodingEverywhere.store(use, std::memory_order_relaxed);
}

std::string ToTerminal(std::string_view text) {
    std::string result;
    Encode(text, [&result](std::string_view bytes) { result += bytes; });
    return result;
}

std::string FromTerminal(std::string_view text) {
    const unsigned page = TerminalCodePage();
    std::u16string wide(WideLength(page, text.data(), text.size()), u'\0');
    if (wide.empty()) return std::string(text);
    wide.resize(ToWide(page, text.data(), text.size(), wide.data()));
    std::string result(NarrowLength(ansiCodePage, wide.data(), wide.size()), '\0');
    result.resize(ToNarrow(ansiCodePage, wide.data(), wide.size(), result.data()));
    return result;
}

std::string Utf8ToTerminal(std::string_view utf8) {
    return RecodeIfKnown(utf8, utf8CodePage, TerminalCodePage());
}

std::string TerminalToUtf8(std::string_view text) {
    return RecodeIfKnown(text, TerminalCodePage(), utf8CodePage);
}

} // namespace zynplatform
