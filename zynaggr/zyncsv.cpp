#include "zynaggr/zyncsv.h"

#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynmessage.h"
#include "zynhost/application.h"
#include "zynplatform/cp1251.h"

#include <algorithm>
#include <string>

using namespace zynplatform::literals;

namespace {

constexpr char quote = '"';

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
    static constexpr std::size_t end = std::string_view::npos;

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
        std::size_t i = m_next;
        const auto isPlain = [&](char c) {
            return c != m_separator && c != quote && c != '\t' && !(c == '\\' && m_escapes);
        };
        while (i < m_text.size() && isPlain(m_text[i]))
            ++i;
        Keep(m_next, i - m_next);
        if (i == m_text.size()) return GoOn(false, i);
        if (m_text[i] == m_separator) {
            m_add(m_field.Text());
            m_field.Clear();
            return GoOn(false, PastSpaces(i + 1));
        }
        GoOn(m_text[i] != '\t', i + 1);
    }

    void InQuotes() {
        std::size_t i = m_next;
        const auto isPlain = [&](char c) {
            return c == m_separator || (c != quote && !(c == '\\' && m_escapes));
        };
        while (i < m_text.size() && isPlain(m_text[i]))
            ++i;
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

bool HasOddQuotes(const CStringA& line) {
    const std::string_view text = line.View();
    return std::count(text.begin(), text.end(), quote) % 2 != 0;
}

void SplitIntoArray(std::string_view text, CStringArray& fields, char separator, bool escapes) {
    Splitter(text, separator, escapes, [&](std::string_view field) {
        fields[fields.Add(CStringA())].Append(field);
    }).Run();
}

} // namespace

bool CzynCSV::OpenFile(const char* name) {
    return m_file.Open(name, CFile::typeText | CFile::shareDenyWrite, nullptr) == 1;
}

void CzynCSV::CloseFile() {
    m_file.Close();
}

void CzynCSV::SeekToBegin() {
    m_file.SeekToBegin();
}

bool CzynCSV::ReadRecord(CStringA& record) {
    if (!m_file.ReadString(record)) return false;
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
    // Not as a zero-terminated text: zero bytes of the file are characters like others.
    SplitIntoArray(record.View(), fields, m_cSeparator, false);
    return true;
}

bool CzynCSV::ReadFile(const char* name, std::vector<std::vector<CStringA>>& rows) {
    if (!OpenFile(name)) return false;
    rows.clear();
    for (CStringA record; ReadRecord(record);) {
        const std::size_t expected = rows.empty() ? 0 : rows.front().size();
        const std::size_t most = record.View().size() + 1;
        std::vector<CStringA>& row = rows.emplace_back();
        row.reserve(std::min(expected, most));
        Splitter(record.View(), m_cSeparator, false, [&](std::string_view field) {
            row.emplace_back(field);
        }).Run();
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
    SplitIntoArray(text, fields, separator, escapes);
    return true;
}
