// SPDX-License-Identifier: MIT
#include "zynaggr/ini_parser_impl.h"

#include "zynaggr/ini_document_impl.h"

#include <algorithm>
#include <array>
#include <memory>

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

class Parser {
public:
    Parser(std::string_view text, CzynINI::SectionArray& sections, const IniDocument* document)
        : m_sections(sections),
          m_text(text),
          m_lineFeed(std::min(text.find('\n'), text.size())),
          m_isNumbered(document),
          m_isFaithful(document && document->IsFaithful()) {}

    void Run() {
        for (; m_at < m_text.size(); ++m_line)
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
        const IniLine pieces = SplitIniLine(line, mark, m_isFaithful);
        if (pieces.kind == IniLine::header) return TakeHeader(line, pieces);
        if (!m_section) NewSection();
        auto option = std::make_unique<CzynINI::SOption>(nullptr);
        if (m_isNumbered) option->m_nLine = m_line;
        if (pieces.kind == IniLine::pair) {
            option->m_sKey = CStringA(pieces.name.Of(line));
            option->m_bEmptyKey = pieces.name.IsEmpty();
        }
        option->m_sValue = CStringA(pieces.value.Of(line));
        const int index = m_section->Add(option.get());
        static_cast<void>(option.release());
        const bool isIndentedText = pieces.kind == IniLine::text && pieces.value.begin > 0 &&
                                    !pieces.value.IsEmpty() && line[pieces.value.begin] != ';' &&
                                    line[pieces.value.begin] != '#';
        if (m_isFaithful && isIndentedText && index > 0 && m_section->m_nInsertPos == index)
            ++m_section->m_nInsertPos;
    }

    void TakeHeader(std::string_view line, const IniLine& pieces) {
        NewSection();
        if (m_isNumbered) m_section->m_nLine = m_line;
        if (pieces.hasOpening) m_section->m_nHeaderFlags |= openingBracketRead;
        if (pieces.hasClosing) m_section->m_nHeaderFlags |= closingBracketRead;
        m_section->m_sName = CStringA(std::string_view(pieces.NameIn(line)));
        m_section->m_sTail = CStringA(pieces.value.Of(line));
    }

    void NewSection() { m_section = new CzynINI::SSection(m_sections, nullptr); }

    CzynINI::SectionArray& m_sections;
    std::string_view m_text;
    std::size_t m_at = 0;   // where the next line begins
    std::size_t m_lineFeed; // the next one
    std::int32_t m_line = 0;
    bool m_isNumbered, m_isFaithful;
    CzynINI::SSection* m_section = nullptr;
};

} // namespace

void ParseIniText(std::string_view text, CzynINI::SectionArray& sections, const IniDocument* document) {
    Parser(text, sections, document).Run();
}

} // namespace zyn
