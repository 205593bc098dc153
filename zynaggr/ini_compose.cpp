// SPDX-License-Identifier: MIT
#include "zynaggr/ini_compose_impl.h"

#include "zynaggr/zynhelpers.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

namespace zyn {
namespace {

using Section = CzynINI::SSection;
using Option = CzynINI::SOption;

constexpr std::string_view lineEnd = "\r\n";

// The text as it grows. With a document it goes to the bytes before each piece that may have lost something.
class Composition {
public:
    explicit Composition(const IniDocument* document) : m_document(document) {}

    Composition& Append(std::string_view text) {
        m_text.Append(text);
        return *this;
    }
    Composition& AppendPiece(int line, IniDocument::Piece piece, const CStringA& now) {
        if (!m_document || now.Find('?') < 0) return Append(now.View());
        Flush();
        m_bytes += m_document->BytesOf(line, piece, now.View());
        return *this;
    }
    void Reserve(std::size_t size) {
        if (size < std::numeric_limits<int>::max()) m_text.Preallocate(static_cast<int>(size));
    }
    CStringA TakeText() { return std::move(m_text); }
    std::string TakeBytes() {
        Flush();
        return std::move(m_bytes);
    }

private:
    void Flush() {
        m_bytes += m_document->Encode(m_text.View());
        m_text.Empty();
    }

    const IniDocument* m_document;
    CStringA m_text;
    std::string m_bytes;
};

void AppendPair(Composition& text, const Option& option) {
    text.AppendPiece(option.m_nLine, IniDocument::name, option.m_sKey).Append("=");
    text.AppendPiece(option.m_nLine, IniDocument::value, option.m_sValue).Append(lineEnd);
}

void AppendHeader(Composition& text, const Section& section, bool afterPair) {
    if (!section.m_sComment.IsEmpty()) text.Append(";").Append(section.m_sComment.View()).Append(lineEnd);
    if (afterPair) text.Append(lineEnd);
    text.Append("[").AppendPiece(section.m_nLine, IniDocument::name, section.m_sName).Append("]");
    text.AppendPiece(section.m_nLine, IniDocument::value, section.m_sTail).Append(lineEnd);
}

// The digits of a decimal number, which may be of any length, without zeros before them.
std::string_view DigitsOf(std::string_view number) {
    const std::size_t first = number.find_first_not_of("-0");
    return first == number.npos ? std::string_view() : number.substr(first);
}

bool IsLess(const Option* left, const Option* right) {
    const std::string_view l = left->m_sKey.View(), r = right->m_sKey.View();
    const std::string_view leftDigits = DigitsOf(l), rightDigits = DigitsOf(r);
    const bool leftIsNegative = l[0] == '-' && !leftDigits.empty();
    const bool rightIsNegative = r[0] == '-' && !rightDigits.empty();
    if (leftIsNegative != rightIsNegative) return leftIsNegative;
    const auto size = [](std::string_view digits) { return std::pair(digits.size(), digits); };
    return leftIsNegative ? size(rightDigits) < size(leftDigits) : size(leftDigits) < size(rightDigits);
}

// Appends the entries: numbered ones first. `lastIsKeyless` becomes whether the last one stored has no key.
void AppendOptions(Composition& text, const CzynINI::OptionArray& options, bool& lastIsKeyless) {
    std::vector<const Option*> numbered;
    for (int i = 0; i < options.GetSize(); ++i) {
        const Option* const option = options.GetAt(i);
        if (!option) continue;
        if (IsNumber(option->m_sKey, false)) numbered.push_back(option);
        lastIsKeyless = option->m_sKey.IsEmpty();
    }
    std::stable_sort(numbered.begin(), numbered.end(), IsLess);
    for (const Option* option : numbered)
        if (!option->m_sValue.IsEmpty()) AppendPair(text, *option);
    for (int i = 0; i < options.GetSize(); ++i) {
        const Option* const option = options.GetAt(i);
        if (!option || (!numbered.empty() && IsNumber(option->m_sKey, false))) continue;
        if (!option->m_sKey.IsEmpty() || option->m_bEmptyKey)
            AppendPair(text, *option);
        else
            text.AppendPiece(option->m_nLine, IniDocument::value, option->m_sValue).Append(lineEnd);
    }
}

// An upper bound of what the section's lines take.
std::size_t Size(const Section& section) {
    std::size_t size =
        section.m_sName.View().size() + section.m_sTail.View().size() + section.m_sComment.View().size() + 16;
    for (int i = 0; i < section.m_aOptions.GetSize(); ++i)
        if (const Option* option = section.m_aOptions.GetAt(i))
            size += option->m_sKey.View().size() + option->m_sValue.View().size() + 4;
    return size;
}

void AppendSections(Composition& text, const CzynINI::SectionArray& sections) {
    std::size_t size = 0;
    for (int i = 0; i < sections.GetSize(); ++i)
        if (const Section* section = sections.GetAt(i)) size += Size(*section);
    text.Reserve(size);
    bool lastIsKeyless = true;
    for (int i = 0; i < sections.GetSize(); ++i) {
        const Section* const section = sections.GetAt(i);
        if (!section) continue;
        if (!section->m_sName.IsEmpty()) AppendHeader(text, *section, !lastIsKeyless);
        lastIsKeyless = false;
        AppendOptions(text, section->m_aOptions, lastIsKeyless);
    }
}

} // namespace

CStringA ComposeText(const CzynINI::SectionArray& sections) {
    Composition text(nullptr);
    AppendSections(text, sections);
    return text.TakeText();
}

std::string ComposeBytes(const CzynINI::SectionArray& sections, const IniDocument& document) {
    Composition text(&document);
    AppendSections(text, sections);
    return text.TakeBytes();
}

} // namespace zyn

CStringA CzynINI::ComposeText() {
    return zyn::ComposeText(m_aSections);
}
