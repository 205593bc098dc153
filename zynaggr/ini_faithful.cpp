// SPDX-License-Identifier: MIT
#include "zynaggr/ini_compose_impl.h"

#include <optional>
#include <string>
#include <string_view>

namespace zyn {
namespace {

using Section = CzynINI::SSection;
using Option = CzynINI::SOption;

bool IsPair(const Option& option) {
    return !option.m_sKey.IsEmpty() || option.m_bEmptyKey;
}

template <class... Pieces> std::string Joined(const Pieces&... pieces) {
    std::string line;
    (line.append(pieces), ...);
    return line;
}

// The end of a new line that has no neighbour: that of the file's first one, in a new file that of this
// system.
std::string LineEnd(const IniDocument& document) {
    const std::string_view first =
        document.CountRead() > 0 ? IniDocumentLine(document, 0).End() : std::string_view();
    return first.empty() ? document.Encode("\n") : std::string(first);
}

// The line of a pair that a new one is to look like: the nearest in its section, rather above than below, or
// one of another section; -1 for none.
int FindModel(const Section& section, int index, const IniDocument& document) {
    const auto isModel = [&](int i) {
        const Option* const option = section.m_aOptions.GetAt(i);
        return option && document.Has(option->m_nLine) && !option->m_sKey.IsEmpty() &&
               !option->m_sValue.IsEmpty();
    };
    for (int i = index - 1; i >= 0; --i)
        if (isModel(i)) return section.m_aOptions.GetAt(i)->m_nLine;
    for (int i = index + 1; i < section.m_aOptions.GetSize(); ++i)
        if (isModel(i)) return section.m_aOptions.GetAt(i)->m_nLine;
    return document.FindPair(!section.m_sName.IsEmpty()); // new sections are the last ones
}

bool IsUntouched(const IniDocumentLine& line, const Option& option) {
    const IniLine& pieces = line.Pieces();
    return pieces.kind == (IsPair(option) ? IniLine::pair : IniLine::text) &&
           pieces.name.Of(line.Text()) == option.m_sKey.View() &&
           pieces.value.Of(line.Text()) == option.m_sValue.View();
}

bool IsUntouched(const IniDocumentLine& line, const Section& section) {
    return line.Pieces().kind == IniLine::header &&
           line.Pieces().NameIn(line.Text()) == section.m_sName.View() &&
           line.Pieces().value.Of(line.Text()) == section.m_sTail.View();
}

bool IsComment(std::string_view text) {
    return text.starts_with(';') || text.starts_with('#');
}

// Whether the headers of the file have blank lines above them, or above their comments; of a new file they
// will have.
bool HasBlankLinesAboveHeaders(const CzynINI::SectionArray& sections, const IniDocument& document) {
    int headers = 0, blanks = 0;
    for (int i = 0; i < sections.GetSize(); ++i) {
        const Section* const section = sections.GetAt(i);
        if (!section || section->m_nLine < 1 || section->m_nLine >= document.CountRead()) continue;
        int above = section->m_nLine - 1;
        while (above >= 0 && IsComment(IniDocumentLine(document, above).Text()))
            --above;
        if (above < 0) continue; // there is nothing to separate
        const IniDocumentLine line(document, above);
        ++headers;
        if (line.Pieces().kind == IniLine::text && line.Pieces().value.IsEmpty()) ++blanks;
    }
    return headers > 0 ? 2 * blanks > headers : document.CountRead() == 0;
}

// Writes the lines one after the other.
class FaithfulText {
public:
    FaithfulText(const CzynINI::SectionArray& sections, IniDocument& document)
        : m_sections(sections), m_document(document), m_lineEnd(LineEnd(document)) {}

    std::string Compose() {
        for (int i = 0; i < m_sections.GetSize(); ++i)
            if (Section* const section = m_sections.GetAt(i)) Write(*section);
        if (m_document.LacksLastEnd() && !m_lastIsBlank) m_text.resize(m_text.size() - m_endSize);
        return std::move(m_text.append(m_document.Tail()));
    }

private:
    void Write(Section& section) {
        if (!section.m_sName.IsEmpty() || m_document.Has(section.m_nLine)) WriteHeader(section);
        for (int i = 0; i < section.m_aOptions.GetSize(); ++i)
            if (Option* const option = section.m_aOptions.GetAt(i)) Write(section, *option, i);
    }

    void WriteHeader(Section& section) {
        if (!section.m_sComment.IsEmpty())
            Put(m_document.Encode((";" + section.m_sComment).View()) + m_lineEnd, m_lineEnd, false);
        if (!m_document.Has(section.m_nLine))
            section.m_nLine = m_document.Append(
                ComposeHeader(section, m_document, m_document.Encode(section.m_sName.View())));
        const bool isNew = section.m_nHeaderFlags == 0;
        if (isNew && !m_lastIsBlank && SeparatesSections()) Put(m_lineEnd, m_lineEnd, true);
        const IniDocumentLine line(m_document, section.m_nLine);
        if (IsUntouched(line, section)) return Put(line.Bytes(), line.End(), false);
        const std::string name =
            m_document.BytesOf(section.m_nLine, IniDocument::name, section.m_sName.View());
        Put(ComposeHeader(section, m_document, name), line.End(), false);
    }

    void Write(const Section& section, Option& option, int index) {
        const std::string_view key = option.m_sKey.View(), value = option.m_sValue.View();
        if (!m_document.Has(option.m_nLine))
            option.m_nLine = m_document.Append(
                ComposeEntry(section, index, m_document, m_document.Encode(key), m_document.Encode(value)));
        const int number = option.m_nLine;
        const IniDocumentLine line(m_document, number);
        const bool isBlank = value.empty() && !IsPair(option);
        if (IsUntouched(line, option)) return Put(line.Bytes(), line.End(), isBlank);
        Put(ComposeEntry(section, index, m_document, m_document.BytesOf(number, IniDocument::name, key),
                         m_document.BytesOf(number, IniDocument::value, value)),
            line.End(), isBlank);
    }

    bool SeparatesSections() {
        if (!m_separatesSections) m_separatesSections = HasBlankLinesAboveHeaders(m_sections, m_document);
        return *m_separatesSections;
    }

    void Put(std::string_view line, std::string_view end, bool isBlank) {
        if (m_lacksEnd) m_text += m_lineEnd;
        m_text += line;
        m_lacksEnd = end.empty() && !line.empty();
        m_endSize = end.size();
        m_lastIsBlank = isBlank;
    }

    const CzynINI::SectionArray& m_sections;
    IniDocument& m_document;
    std::string m_lineEnd; // of new lines
    std::optional<bool> m_separatesSections;
    std::string m_text;
    // Of the last line; none is a blank one.
    std::size_t m_endSize = 0;
    bool m_lacksEnd = false;
    bool m_lastIsBlank = true;
};

} // namespace

std::string ComposeEntry(const Section& section, int index, const IniDocument& document,
                         const std::string& key, const std::string& value) {
    const Option& option = *section.m_aOptions.GetAt(index);
    const bool isPair = IsPair(option), hasLine = document.Has(option.m_nLine);
    const int model = hasLine || !isPair ? option.m_nLine : FindModel(section, index, document);
    const std::string plain = isPair ? key + document.Encode("=") + value : value;
    if (!document.Has(model)) return plain + LineEnd(document);
    const IniDocumentLine line(document, model);
    const IniLine& pieces = line.Pieces();
    const std::string end = hasLine || !line.End().empty() ? std::string(line.End()) : LineEnd(document);
    if (pieces.kind != (isPair ? IniLine::pair : IniLine::text)) return plain + end;
    if (!isPair) return Joined(line.Before(pieces.value), value, line.Behind(pieces.value));
    const std::string_view between = line.Bytes({pieces.name.end, pieces.value.begin});
    return Joined(line.Before(pieces.name), key, between, value,
                  hasLine ? line.Behind(pieces.value) : std::string_view(end));
}

std::string ComposeHeader(const Section& section, const IniDocument& document, const std::string& name) {
    const std::string opening = document.Encode("["), closing = document.Encode("]");
    const std::string tail = document.BytesOf(section.m_nLine, IniDocument::value, section.m_sTail.View());
    if (!document.Has(section.m_nLine)) return Joined(opening, name, closing, tail, LineEnd(document));
    const IniDocumentLine line(document, section.m_nLine);
    const IniLine& pieces = line.Pieces();
    if (pieces.kind != IniLine::header || !pieces.prefix.IsEmpty())
        return Joined(opening, name, closing, tail, line.End());
    return Joined(line.Before(pieces.name), name, line.Bytes({pieces.name.end, pieces.value.begin}), tail,
                  line.End());
}

std::string ComposeFaithfully(const CzynINI::SectionArray& sections, IniDocument& document) {
    return FaithfulText(sections, document).Compose();
}

} // namespace zyn
