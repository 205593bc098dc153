#include "zynaggr/ini.h"

#include "zynaggr/ini_index_impl.h"
#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynfile.h"
#include "zynaggr/zynstringfile.h"
#include "zynhost/memory.h"
#include "zynplatform/cp1251.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>

// The model of the file in memory, and loading it.

using namespace zynplatform::literals;

namespace {

constexpr unsigned long reloadAfterMs = 1000;

constexpr std::uint8_t openingBracketRead = 1;
constexpr std::uint8_t closingBracketRead = 2;

// The characters that end a run of ordinary ones.
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

// Walks the text of a file and builds its sections. A text that does not end with a line feed is read as
// if one followed.
class Parser {
public:
    Parser(CzynINI::SectionArray& sections, std::string_view text)
        : m_sections(sections), m_text(text), m_lineFeed(std::min(text.find('\n'), text.size())) {}

    // False when a header line ended without a section.
    bool Run() {
        m_isLastLineOpen = !m_text.empty() && m_text.back() != '\n';
        for (std::size_t i = 0; i < m_text.size();) {
            if (IsAtLineStart() && TakePlainLine(i)) continue;
            if (!TakeRun(i)) return false;
        }
        return !m_isLastLineOpen || EndLine();
    }

private:
    bool IsAtLineStart() const { return m_token.empty() && !m_isHeader && !m_isValue && !m_isComment; }

    // A CR that is part of a line end of two characters does not end the line.
    bool IsPartOfLineEnd(std::size_t i) const {
        return i + 1 == m_text.size() || m_text[i + 1] == '\n' || (i > 0 && m_text[i - 1] == '\n');
    }

    std::size_t FindSpecial(std::size_t i) const {
        while (i < m_text.size() && !special[static_cast<unsigned char>(m_text[i])])
            ++i;
        return i;
    }

    // The first CR or LF, or the end of the text.
    std::size_t FindLineEnd(std::size_t i) {
        if (m_lineFeed < i) m_lineFeed = std::min(m_text.find('\n', i), m_text.size());
        return std::min(m_text.substr(0, m_lineFeed).find('\r', i), m_lineFeed);
    }

    // Takes a whole line at once, with its end, unless it begins like a header: false, and nothing is taken.
    bool TakePlainLine(std::size_t& i) {
        const std::size_t begin = m_text[i] == '\r' && IsPartOfLineEnd(i) ? i + 1 : i;
        const std::size_t mark = FindSpecial(begin);
        if (mark < m_text.size() && (m_text[mark] == '[' || m_text[mark] == ']')) return false;
        const std::size_t end = FindLineEnd(mark);
        if (mark < end && m_text[mark] == '=') {
            CzynINI::SOption& option = NewOption(m_text.substr(begin, mark - begin));
            option.m_bEmptyKey = mark == begin;
            option.m_sValue = Trimmed(m_text.substr(mark + 1, end - mark - 1));
        } else {
            NewOption({}).m_sValue = Trimmed(m_text.substr(begin, end - begin));
        }
        i = end + 1;
        if (i < m_text.size() && m_text[end] == '\r' && m_text[i] == '\n') ++i;
        if (i >= m_text.size()) m_isLastLineOpen = false;
        return true;
    }

    // Takes what comes next, up to and with the next special character.
    bool TakeRun(std::size_t& i) {
        const std::size_t mark = FindSpecial(i);
        m_token.append(m_text, i, mark - i);
        i = mark + 1;
        if (mark == m_text.size()) return true;
        switch (m_text[mark]) {
        case ';':
        case '#':
            if (!m_isValue && !m_isHeader) m_isComment = true;
            m_token += m_text[mark];
            return true;
        case '[':
            TakeOpeningBracket();
            return true;
        case ']':
            TakeClosingBracket();
            return true;
        case '=':
            TakeEqualsSign();
            return true;
        case '\r':
            if (IsPartOfLineEnd(mark)) return true;
            [[fallthrough]];
        default:
            return EndLine();
        }
    }

    CzynINI::SSection& NewSection(std::string_view name) {
        m_section = new CzynINI::SSection(m_sections, nullptr);
        m_section->m_sName = CStringA(name);
        return *m_section;
    }

    CzynINI::SOption& NewOption(std::string_view key) {
        if (!m_section) NewSection({});
        auto option = std::make_unique<CzynINI::SOption>(nullptr);
        option->m_sKey = CStringA(key);
        m_section->Add(option.get());
        return *option.release();
    }

    // The first bracket of a line begins a new section.
    void BeginHeader() {
        if (!m_isHeader) m_section = nullptr;
        m_isHeader = true;
    }

    void TakeOpeningBracket() {
        if (m_isValue || m_isComment) {
            m_token += '[';
            return;
        }
        BeginHeader();
        if (m_section)
            m_token += '[';
        else
            NewSection({}).m_nHeaderFlags |= openingBracketRead; // text before the bracket joins the name
    }

    void TakeClosingBracket() {
        if (m_isValue || m_isComment) {
            m_token += ']';
            return;
        }
        BeginHeader();
        if (!m_section) NewSection(m_token);
        m_section->m_nHeaderFlags |= closingBracketRead;
        m_section->m_sName = CStringA(std::string_view(m_token));
        m_token.clear();
    }

    void TakeEqualsSign() {
        if (m_isHeader || m_isComment || m_isValue) {
            m_token += '=';
            return;
        }
        m_isValue = true;
        m_option = &NewOption(m_token);
        m_option->m_bEmptyKey = m_token.empty();
        m_token.clear();
    }

    bool EndLine() {
        m_isValue = m_isComment = false;
        if (m_isHeader) {
            if (!m_section) return false;
            const bool closed = (m_section->m_nHeaderFlags & closingBracketRead) != 0;
            (closed ? m_section->m_sTail : m_section->m_sName) = CStringA(std::string_view(m_token));
            m_isHeader = false;
        } else {
            if (!m_option) m_option = &NewOption({});
            m_option->m_sValue = Trimmed(m_token);
            m_option = nullptr;
        }
        m_token.clear();
        return true;
    }

    CzynINI::SectionArray& m_sections;
    std::string_view m_text;
    std::size_t m_lineFeed; // the next one
    bool m_isLastLineOpen = false;
    CzynINI::SSection* m_section = nullptr;
    CzynINI::SOption* m_option = nullptr;
    std::string m_token;
    bool m_isHeader = false;
    bool m_isValue = false; // an "=" has been taken on this line
    bool m_isComment = false;
};

} // namespace

CzynINI::SSection::SSection(SectionArray& aSections, const char* szName) : m_sName(szName) {
    if (aSections.Add(this) < 0) throw std::bad_alloc();
}

int CzynINI::SSection::Add(SOption* pOpt) {
    if (!pOpt) return -1;
    const int nIndex = m_aOptions.Add(pOpt);
    if (nIndex < 0) throw std::bad_alloc();
    if (!pOpt->m_sKey.IsEmpty()) m_nInsertPos = nIndex + 1;
    return nIndex;
}

int CzynINI::SSection::Insert(SOption* pOpt, int nPos) {
    if (!pOpt) return -1;
    if (nPos == -1) nPos = m_nInsertPos;
    if (!m_aOptions.InsertAt(nPos, pOpt)) throw std::bad_alloc();
    if (!pOpt->m_sKey.IsEmpty()) ++m_nInsertPos;
    return nPos;
}

bool CzynINI::Parse() {
    if (!m_bWriteMode || !m_TimeMeter.CheckTimeOut(reloadAfterMs)) return true;
    const CzynEnterCriticalSection lock(&m_CS);
    if (!CzynFile::IsFileExist(m_sIniName)) return true;
    m_bFileExist = true;
    CheckWrite();

    CzynStringFile file;
    if (!file.Open(m_sIniName, CFile::modeRead | CFile::shareDenyNone, zynEncUnknown)) {
        m_TimeMeter.Zero();
        m_sErr = file.GetErrorMessage();
        return false;
    }
    m_sErr.Empty();
    m_TimeMeter.Start();
    m_pIndex.reset();
    m_aSections.RemoveAll();
    try {
        const std::string_view text = file.ReadAllData();
        // Not to be taken for a file that cannot be decoded: the next save would leave nothing of it.
        if (text.empty() && file.LoadLackedMemory()) AfxThrowMemoryException();
        if (text.empty()) return true;
        m_nEncoding = file.GetFileEncoding();
        return ParseText(text);
    } catch (...) {
        m_TimeMeter.Zero(); // half a model must not be saved over the file
        throw;
    }
}

bool CzynINI::ParseText(std::string_view text) {
    if (Parser(m_aSections, text).Run()) return true;
    m_sErr.Format(
        CzynTranslate::TranslateFormat(
            "Ошибка при разборе ini %s: строка помечена как содержащая секцию, но объекта секции нет"_cp1251),
        m_sIniName.GetString());
    return false;
}
