// SPDX-License-Identifier: MIT
#include "zynplatform/systempage_impl.h"

#include "zynplatform/fork.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstring>
#include <string>

#include <iconv.h>

namespace zynplatform {
namespace {

constexpr const char* wideName = std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

// The system's converter with the output of one conversion. Without a target the output is only counted.
class Converter {
public:
    Converter(const char* to, const char* from, void* target) : m_target(static_cast<char*>(target)) {
        const ForkGuard
            guard; // opening and closing take a lock that the child of a fork could wait for for ever
        m_converter = iconv_open(to, from);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter() {
        const ForkGuard guard;
        if (IsOpen()) iconv_close(m_converter);
    }

    bool IsOpen() const { return m_converter != reinterpret_cast<iconv_t>(-1); }
    std::size_t Written() const { return m_written; }

    // Takes off `text` what can be converted before a character that can't.
    void Convert(std::string_view& text) {
        char* source = const_cast<char*>(text.data()); // only read
        std::size_t length = text.size();
        Run(&source, &length);
        text = {source, length};
    }
    // Writes what is held back until it is known what follows.
    void Finish() { Run(nullptr, nullptr); }

    void Write(std::string_view bytes) {
        if (m_target) std::memcpy(m_target + m_written, bytes.data(), bytes.size());
        m_written += bytes.size();
    }

private:
    void Run(char** source, std::size_t* length) {
        bool isFull = true;
        while (isFull) {
            std::array<char, 1024> chunk;
            char* out = chunk.data();
            std::size_t room = chunk.size();
            const std::size_t result = iconv(m_converter, source, length, &out, &room);
            isFull = result == static_cast<std::size_t>(-1) && errno == E2BIG;
            Write({chunk.data(), chunk.size() - room});
        }
    }

    iconv_t m_converter;
    char* m_target;
    std::size_t m_written = 0;
};

// The pages that the system's converter does not know by "CP" and their number.
constexpr struct {
    unsigned page;
    const char* name;
} pageNames[] = {
    {37, "CP037"},     {708, "ASMO-708"}, {10000, "MACINTOSH"}, {20127, "US-ASCII"},
    {20866, "KOI8-R"}, {20932, "EUC-JP"}, {21866, "KOI8-U"},    {51932, "EUC-JP"},
    {51936, "EUC-CN"}, {51949, "EUC-KR"}, {54936, "GB18030"},   {65000, "UTF-7"},
};

std::string PageName(unsigned codePage) {
    for (const auto& [page, name] : pageNames)
        if (page == codePage) return name;
    if (codePage > 28590 && codePage < 28606)
        return std::string("ISO-8859-").append(std::to_string(codePage - 28590));
    return std::string("CP").append(std::to_string(codePage));
}

// How much stands before the first tag character, U+E0000 to U+E007F.
std::size_t LengthToTag(std::u16string_view text) {
    for (std::size_t at = 0; (at = text.find(u'\xDB40', at)) < text.size(); ++at)
        if (at + 1 < text.size() && text[at + 1] >= 0xDC00 && text[at + 1] <= 0xDC7F) return at;
    return text.size();
}

void ConvertUnits(Converter& converter, std::u16string_view units) {
    constexpr WCHAR replacement = u'?';
    std::string_view text(reinterpret_cast<const char*>(units.data()), units.size() * sizeof(WCHAR));
    converter.Convert(text);
    while (!text.empty()) {
        // In the page's own form, which need not be ASCII.
        std::string_view other(reinterpret_cast<const char*>(&replacement), sizeof replacement);
        converter.Convert(other);
        text.remove_prefix(sizeof(WCHAR));
        converter.Convert(text);
    }
}

} // namespace

std::size_t SystemToWide(unsigned codePage, std::string_view text, WCHAR* target) {
    constexpr WCHAR replacement = 0xFFFD;
    Converter converter(wideName, PageName(codePage).c_str(), target);
    if (!converter.IsOpen() || text.empty()) return 0;
    for (;; text.remove_prefix(1)) {
        converter.Convert(text);
        converter.Finish();
        if (text.empty()) return converter.Written() / sizeof(WCHAR);
        converter.Write({reinterpret_cast<const char*>(&replacement), sizeof replacement});
    }
}

std::size_t SystemToNarrow(unsigned codePage, std::u16string_view units, char* target) {
    Converter converter(PageName(codePage).c_str(), wideName, target);
    if (!converter.IsOpen() || units.empty()) return 0;
    while (true) {
        const std::size_t length = LengthToTag(units);
        ConvertUnits(converter, units.substr(0, length));
        units.remove_prefix(length);
        converter.Finish();
        if (units.empty()) return converter.Written();
        // The system's converter passes over a tag character that the page does not have.
        const std::size_t before = converter.Written();
        ConvertUnits(converter, units.substr(0, 2));
        if (converter.Written() == before) ConvertUnits(converter, u"??");
        units.remove_prefix(2);
    }
}

} // namespace zynplatform
