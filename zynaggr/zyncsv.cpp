// SPDX-License-Identifier: MIT
#include "zynaggr/zyncsv.h"

#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynmessage.h"
#include "zynhost/application.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/vectors.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string>
#include <utility>

using namespace zynplatform::literals;

namespace {

constexpr char quote = '"';
using Characters = char __attribute__((vector_size(16)));
constexpr std::string_view mark = "\xEF\xBB\xBF"; // of UTF-8

// Where one of four characters, some of which may be the same, stands first from `from` on; else the text's
// length.
std::size_t FindFirst(std::string_view text, std::size_t from, const std::array<char, 4>& wanted) {
    if (!zynplatform::hasVectors || text.size() < sizeof(Characters))
        return std::min(text.find_first_of({wanted.data(), wanted.size()}, from), text.size());
    const auto found = [&](std::size_t at) {
        const auto here = zynplatform::Load<Characters>(text.data() + at);
        return zynplatform::Bits((here == wanted[0]) | (here == wanted[1]) | (here == wanted[2]) |
                                 (here == wanted[3]));
    };
    const std::size_t last = text.size() - sizeof(Characters);
    std::size_t i = from;
    unsigned bits = 0;
    for (; i <= last && bits == 0; i += sizeof(Characters))
        bits = found(i);
    if (bits != 0) return i - sizeof(Characters) + static_cast<std::size_t>(std::countr_zero(bits));
    bits = found(last) >> (i - last); // those before have been looked at
    return bits != 0 ? i + static_cast<std::size_t>(std::countr_zero(bits)) : text.size();
}

// The field being read. While it is one stretch of the record it is not copied.
class Field {
public:
    bool IsEmpty() const { return m_text.empty(); }
    std::string_view Text() const { return m_text; }
    void Clear() { m_text = {}; }
    void Append(std::string_view piece) {
        if (piece.empty()) return;
        if (m_text.empty()) {
            m_text = piece;
            return;
        }
        if (m_text.data() != m_copy.data()) m_copy = m_text;
        m_copy += piece;
        m_text = m_copy;
    }

private:
    std::string_view m_text;
    std::string m_copy;
};

// Walks a record once and gives each field to `add`, as text that is valid for the call.
template <class Add> class Splitter {
public:
    Splitter(std::string_view text, char separator, bool escapes, Add add)
        : m_text(text), m_separator(separator), m_escapes(escapes), m_add(add) {}

    void Run() {
        m_next = PastSpaces(0);
        while (m_next < m_text.size())
            m_quoted ? InQuotes() : OutsideQuotes();
        m_add(m_field.Text());
    }

private:
    bool IsAt(std::size_t index, char c) const { return index < m_text.size() && m_text[index] == c; }
    std::size_t PastSpaces(std::size_t from) const {
        return std::min(m_text.find_first_not_of(' ', from), m_text.size());
    }
    void Keep(std::size_t from, std::size_t count) { m_field.Append(m_text.substr(from, count)); }
    void GoOn(bool quoted, std::size_t next) {
        m_quoted = quoted;
        m_next = next;
    }

    void OutsideQuotes() {
        const std::size_t i = FindFirst(m_text, m_next, {m_separator, quote, '\t', m_escapes ? '\\' : quote});
        Keep(m_next, i - m_next);
        if (i == m_text.size()) return GoOn(false, i);
        if (m_text[i] == m_separator) {
            m_add(m_field.Text());
            m_field.Clear();
            return GoOn(false, PastSpaces(i + 1));
        }
        GoOn(m_text[i] != '\t', i + 1);
    }

    void InQuotes() { // where separators are text; a quote as separator can't have opened them
        const char first = m_separator == quote ? '\\' : quote;
        const char second = m_escapes && m_separator != '\\' ? '\\' : first;
        const std::size_t i = FindFirst(m_text, m_next, {first, first, second, second});
        Keep(m_next, i - m_next);
        if (i + 1 >= m_text.size())
            return GoOn(true, m_text.size()); // a last quote or backslash says nothing
        m_text[i] == quote ? QuoteInQuotes(i) : BackslashInQuotes(i);
    }

    void BackslashInQuotes(std::size_t i) {
        if (m_text[i + 1] == 'n')
            m_field.Append("\n");
        else if (m_text[i + 1] == '\\')
            Keep(i, 1);
        else
            return GoOn(false, i + 1);
        GoOn(true, i + 2);
    }

    // What a quote means is decided by what follows it.
    void QuoteInQuotes(std::size_t i) {
        const bool isDoubled = m_text[i + 1] == quote;
        const std::size_t follower = PastSpaces(i + 1);
        if (m_field.IsEmpty() && m_text[i - 1] == quote) {
            if (IsAt(follower, m_separator)) return GoOn(false, i + 1);
            Keep(i, 1);
            return GoOn(true, i + (isDoubled ? 2 : 1));
        }
        if (IsAt(follower, ',')) {
            const std::size_t behind = PastSpaces(follower + 1);
            if (!IsAt(behind, quote)) return GoOn(false, i + 1);
            m_field.Append("\",\"");
            return GoOn(true, behind + 1);
        }
        if (!isDoubled) return GoOn(false, i + 1);
        Keep(i, 1);
        const std::size_t behind = PastSpaces(i + 2);
        if (behind == m_text.size()) return GoOn(false, i + 2);
        if (m_text[behind] == m_separator) return GoOn(false, behind);
        GoOn(true, i + 2);
    }

    std::string_view m_text;
    char m_separator;
    bool m_escapes;
    Add m_add;
    bool m_quoted = false;
    std::size_t m_next = 0;
    Field m_field;
};

// Follows a record of RFC 4180 line by line, to tell whether a quoted field is open at the end.
class OpenQuote {
public:
    explicit OpenQuote(char separator) : m_separator(separator) {}
    bool IsOpen() const { return m_isOpen; }

    void Follow(std::string_view line) {
        bool isFieldStart = !m_isOpen;
        for (std::size_t i = 0; i < line.size();) {
            if (isFieldStart && line[i] == quote) {
                m_isOpen = true;
                ++i;
            }
            isFieldStart = false;
            const std::size_t next = line.find(m_isOpen ? quote : m_separator, i);
            if (next == line.npos) return;
            const bool isDoubled = m_isOpen && next + 1 < line.size() && line[next + 1] == quote;
            i = next + 1 + isDoubled;
            isFieldStart = !m_isOpen;
            if (m_isOpen) m_isOpen = isDoubled;
        }
    }

private:
    char m_separator;
    bool m_isOpen = false;
};

// As Splitter, by the rules of RFC 4180.
template <class Add> void SplitRfc4180(std::string_view text, char separator, Add add) {
    for (bool isLast = false; !isLast;) {
        Field field;
        if (text.starts_with(quote)) {
            text.remove_prefix(1);
            for (bool isDoubled = true; isDoubled;) {
                const std::size_t next = std::min(text.find(quote), text.size());
                isDoubled = next + 1 < text.size() && text[next + 1] == quote;
                field.Append(text.substr(0, next + isDoubled));
                text.remove_prefix(std::min(next + 1 + isDoubled, text.size()));
            }
        }
        const std::size_t length = text.find(separator);
        isLast = length == text.npos;
        if (isLast && text.ends_with('\n')) text.remove_suffix(1);
        if (isLast && text.ends_with('\r')) text.remove_suffix(1);
        field.Append(text.substr(0, length));
        if (!isLast) text.remove_prefix(length + 1);
        add(field.Text());
    }
}

bool HasOddQuotes(const CStringA& line) {
    const std::string_view text = line.View();
    return std::count(text.begin(), text.end(), quote) % 2 != 0;
}

auto AddTo(CStringArray& fields) {
    return [&fields](std::string_view field) { fields[fields.Add(CStringA())].Append(field); };
}

} // namespace

bool CzynCSV::OpenFile(const char* name) {
    m_bAtStart = true;
    const unsigned type = m_bRFC4180 ? CFile::typeBinary : CFile::typeText;
    return m_file.Open(name, type | CFile::shareDenyWrite, nullptr) == 1;
}

void CzynCSV::CloseFile() {
    m_file.Close();
}

void CzynCSV::SeekToBegin() {
    m_bAtStart = true;
    m_file.SeekToBegin();
}

bool CzynCSV::ReadRecord(CStringA& record) {
    if (!m_file.ReadString(record)) return false;
    if (m_bRFC4180) {
        if (std::exchange(m_bAtStart, false) && record.View().starts_with(mark))
            record = record.Mid(static_cast<int>(mark.size()));
        OpenQuote open(m_cSeparator);
        open.Follow(record.View());
        for (CStringA line; open.IsOpen() && m_file.ReadString(line); open.Follow(line.View()))
            (record += '\n') += line;
        return true;
    }
    if (!HasOddQuotes(record)) return true;
    record += ' ';
    for (CStringA line; m_file.ReadString(line);) {
        record += line;
        record += ' ';
        if (HasOddQuotes(line)) return true;
    }
    return false;
}

bool CzynCSV::ReadString(CStringArray& fields) {
    fields.RemoveAll();
    CStringA record;
    if (!ReadRecord(record)) return false;
    Split(record, AddTo(fields));
    return true;
}

// Not as a zero-terminated text: zero bytes of the file are characters like others.
template <class Add> void CzynCSV::Split(const CStringA& record, Add add) const {
    if (m_bRFC4180)
        SplitRfc4180(record.View(), m_cSeparator, add);
    else
        Splitter(record.View(), m_cSeparator, false, add).Run();
}

bool CzynCSV::ReadFile(const char* name, std::vector<std::vector<CStringA>>& rows) {
    if (!OpenFile(name)) return false;
    rows.clear();
    for (CStringA record; ReadRecord(record);) {
        const std::size_t expected = rows.empty() ? 0 : rows.front().size();
        const std::size_t most = record.View().size() + 1;
        std::vector<CStringA>& row = rows.emplace_back();
        row.reserve(std::min(expected, most));
        Split(record, [&](std::string_view field) { row.emplace_back(field); });
    }
    CloseFile();
    const auto differs = [&](const std::vector<CStringA>& row) { return row.size() != rows.front().size(); };
    if (std::none_of(rows.begin(), rows.end(), differs)) return true;
    zynMessageBoxConsole(CzynTranslate::Translate("Количество колонок в строках неодинаково!"_cp1251),
                         MB_ICONHAND);
    return false;
}

bool CzynCSV::StrToArray(const char* text, CStringArray& fields, char separator, bool escapes) {
    fields.RemoveAll();
    if (!text) return false;
    Splitter(text, separator, escapes, AddTo(fields)).Run();
    return true;
}

void CzynCSV::StrToArrayRFC4180(std::string_view text, CStringArray& fields, char separator) {
    fields.RemoveAll();
    SplitRfc4180(text, separator, AddTo(fields));
}
