#include "zynaggr/ini_parser_impl.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>

namespace zyn {
namespace {

constexpr std::uint8_t openingBracketRead = 1;
constexpr std::uint8_t closingBracketRead = 2;

// The characters of which the first one in a line decides what the line is.
constexpr std::array<bool, 256> special = [] {
    std::array<bool, 256> table{};
    for (const char c : {';', '#', '[', ']', '=', '\r', '\n'})
        table[static_cast<unsigned char>(c)] = true;
    return table;
}();

CStringA Trimmed(std::string_view text) {
    constexpr std::string_view whiteSpace = " \t\n\v\f\r";
    const std::size_t first = text.find_first_not_of(whiteSpace);
    if (first == text.npos) return {};
    return CStringA(text.substr(first, text.find_last_not_of(whiteSpace) - first + 1));
}

class Parser {
public:
    Parser(std::string_view text, CzynINI::SectionArray& sections)
        : m_sections(sections), m_text(text), m_lineFeed(std::min(text.find('\n'), text.size())) {}

    void Run() {
        while (m_at < m_text.size())
            TakeLine();
    }

private:
    // The first CR or LF, or the end of the text.
    std::size_t FindLineEnd(std::size_t from) {
        if (m_lineFeed < from) m_lineFeed = std::min(m_text.find('\n', from), m_text.size());
        return std::min(m_text.substr(0, m_lineFeed).find('\r', from), m_lineFeed);
    }

    void TakeLine() {
        // Of a line end of two characters the CR belongs to neither line, on whichever side it is.
        const bool endsBefore = m_at > 0 && m_text[m_at - 1] == '\n';
        const std::size_t begin = m_text[m_at] == '\r' && endsBefore ? m_at + 1 : m_at;
        std::size_t mark = begin;
        while (mark < m_text.size() && !special[static_cast<unsigned char>(m_text[mark])])
            ++mark;
        const std::size_t end = FindLineEnd(mark);
        m_at = end + 1;
        if (m_at < m_text.size() && m_text[end] == '\r' && m_text[m_at] == '\n') ++m_at;
        const std::string_view line = m_text.substr(begin, end - begin);
        TakeLine(line, mark - begin);
    }

    void TakeLine(std::string_view line, std::size_t mark) {
        const char kind = mark < line.size() ? line[mark] : '\0';
        if (kind == '[' || kind == ']') return TakeHeader(line, mark);
        if (!m_section) NewSection();
        auto option = std::make_unique<CzynINI::SOption>(nullptr);
        if (kind == '=') {
            option->m_sKey = CStringA(line.substr(0, mark));
            option->m_bEmptyKey = mark == 0;
            line.remove_prefix(mark + 1);
        }
        option->m_sValue = Trimmed(line);
        m_section->Add(option.get());
        static_cast<void>(option.release());
    }

    // The first "[" goes, and what stands before it joins the name; the name ends at the last "]" and begins
    // behind the one before that.
    void TakeHeader(std::string_view line, std::size_t mark) {
        NewSection();
        std::string joined;
        if (line[mark] == '[') {
            m_section->m_nHeaderFlags |= openingBracketRead;
            if (mark > 0) joined.append(line, 0, mark).append(line, mark + 1);
            line = mark > 0 ? joined : line.substr(1);
        }
        const std::size_t close = line.rfind(']');
        if (close != line.npos) {
            m_section->m_nHeaderFlags |= closingBracketRead;
            m_section->m_sTail = CStringA(line.substr(close + 1));
            line = line.substr(0, close);
            line.remove_prefix(line.rfind(']') + 1);
        }
        m_section->m_sName = CStringA(line);
    }

    void NewSection() { m_section = new CzynINI::SSection(m_sections, nullptr); }

    CzynINI::SectionArray& m_sections;
    std::string_view m_text;
    std::size_t m_at = 0;   // where the next line begins
    std::size_t m_lineFeed; // the next one
    CzynINI::SSection* m_section = nullptr;
};

} // namespace

void ParseIniText(std::string_view text, CzynINI::SectionArray& sections) {
    Parser(text, sections).Run();
}

} // namespace zyn
