// SPDX-License-Identifier: MIT
#include "zynaggr/filetext_impl.h"
#include "zynaggr/ini.h"
#include "zynaggr/ini_compose_impl.h"
#include "zynaggr/ini_index_impl.h"
#include "zynaggr/zyn_translate.h"
#include "zynplatform/cp1251.h"

#include <algorithm>

// Queries and edits in UTF-8: of the file's own bytes, where the code page has lost something.

using namespace zynplatform::literals;

namespace {

const char* const notStorable = "Этот текст был бы прочитан из файла ini иначе"_cp1251;
const char* const nameTaken = "Такое имя в файле ini уже есть"_cp1251;

// A text in UTF-8 and as the model has it. Without '?' the latter is as exact; without a zero byte, at which
// a name would end, too.
struct Text {
    explicit Text(std::string_view text)
        : utf8(text), model(std::string_view(zyn::DecodeTo1251(zynEncUTF8, text))) {}

    bool HasZero() const { return model.View().find('\0') != std::string_view::npos; }
    bool IsExact() const { return model.Find('?') < 0 && !HasZero(); }

    std::string utf8;
    CStringA model;
};

} // namespace

class zyn::IniUtf8 {
public:
    using Section = CzynINI::SSection;
    using Option = CzynINI::SOption;

    explicit IniUtf8(CzynINI& ini) : m_ini(ini) {}

    Text Name(std::string_view name) const { return Text(m_ini.m_bFaithful ? TrimmedBlanks(name) : name); }
    std::string NameOf(const Section& section) const {
        return Decode(section.m_nLine, IniDocument::name, section.m_sName);
    }
    std::string NameOf(const Option& option) const {
        return Decode(option.m_nLine, IniDocument::name, option.m_sKey);
    }
    std::string ValueOf(const Option& option) const {
        return Decode(option.m_nLine, IniDocument::value, option.m_sValue);
    }

    IniLines* FindSection(const Text& name) const;
    template <class Visit> bool VisitPairs(std::string_view section, Visit visit) const;
    Option* FindOption(IniLines& lines, const Text& key) const;
    bool IsStorable(const Text* section, const Text* key = nullptr, const Text* value = nullptr,
                    const Text* comment = nullptr);
    IniLines* AddSection(const Text& name);
    Option* AddOption(IniLines& lines, const Text& key, const Text& comment);
    // Of something in the model; what the code page does not have goes to the document.
    void SetName(Section& section, const Text& name);
    void SetPiece(Section& section, Option& option, IniDocument::Piece piece, const Text& text);
    void Remove(IniLines& lines, const Text& key);
    bool Fail(const char* message) const {
        m_ini.m_sErr = CzynTranslate::Translate(message);
        return false;
    }

private:
    std::string Decode(int line, IniDocument::Piece piece, const CStringA& now) const {
        if (!m_ini.m_pDocument) return EncodeText(zynEncUTF8, DecodeText(zynEncCP1251, now.View()));
        return m_ini.m_pDocument->Utf8(m_ini.m_pDocument->BytesOf(line, piece, now.View()));
    }
    template <class Named> bool IsNamed(const Named& named, const CStringA& stored, const Text& name) const;
    // Whether the file holds the same as the model.
    bool IsExact(const Text& text) const {
        return text.IsExact() || m_ini.Document().Encoding() == zynEncCP1251;
    }

    CzynINI& m_ini;
};

// Letter case does not count where the code page has the letter.
template <class Named>
bool zyn::IniUtf8::IsNamed(const Named& named, const CStringA& stored, const Text& name) const {
    if (stored.CompareNoCase(name.model) != 0) return false;
    if (name.IsExact()) return true;
    const std::u16string units = DecodeText(zynEncUTF8, NameOf(named));
    const std::u16string wanted = DecodeText(zynEncUTF8, name.utf8);
    if (units.size() != wanted.size()) return false;
    const bool hasZero = name.HasZero();
    for (std::size_t i = 0; i < units.size(); ++i)
        if (units[i] != wanted[i] && (hasZero || name.model[static_cast<int>(i)] == '?')) return false;
    return true;
}

zyn::IniLines* zyn::IniUtf8::FindSection(const Text& name) const {
    IniIndex& index = m_ini.Index();
    if (name.IsExact()) return index.FindSection(name.model);
    for (int i = 0; i < m_ini.m_aSections.GetSize(); ++i)
        if (const Section* section = m_ini.m_aSections.GetAt(i);
            section && IsNamed(*section, section->m_sName, name))
            return &index.LinesOf(i);
    return nullptr;
}

template <class Visit> bool zyn::IniUtf8::VisitPairs(std::string_view section, Visit visit) const {
    IniLines* const lines = FindSection(Name(section));
    if (!lines) return m_ini.FailSectionLookup();
    const CzynINI::OptionArray& options = lines->Section().m_aOptions;
    for (int i = 0; i < options.GetSize(); ++i)
        if (const Option* option = options.GetAt(i); option && !option->m_sKey.IsEmpty()) visit(*option);
    return true;
}

CzynINI::SOption* zyn::IniUtf8::FindOption(IniLines& lines, const Text& key) const {
    if (key.model.IsEmpty()) return nullptr;
    if (key.IsExact()) return lines.Find(key.model);
    const CzynINI::OptionArray& options = lines.Section().m_aOptions;
    for (int i = 0; i < options.GetSize(); ++i)
        if (Option* option = options.GetAt(i); option && IsNamed(*option, option->m_sKey, key)) return option;
    return nullptr;
}

// Reads each line that would be written.
bool zyn::IniUtf8::IsStorable(const Text* section, const Text* key, const Text* value, const Text* comment) {
    IniDocument trial(m_ini.Document().Encoding(), m_ini.m_bFaithful);
    for (const Text* text : {section, key, value, comment}) {
        if (!text) continue;
        if (trial.Utf8(trial.EncodeUtf8(text->utf8)) != text->utf8)
            return Fail("В кодировке файла ini нет символа этого текста"_cp1251);
    }
    const auto holds = [&](std::string_view text, IniLine::Kind kind, std::string_view name,
                           std::string_view valueOfLine) {
        if (text.find_first_of("\r\n") != text.npos || name.find('\0') != name.npos) return false;
        const IniDocumentLine line(trial, trial.Append(trial.EncodeUtf8(text)));
        return line.Pieces().kind == kind && trial.Utf8(line.NameBytes()) == name &&
               trial.Utf8(line.Bytes(line.Pieces().value)) == valueOfLine;
    };
    const bool isHeld =
        (!section || section->utf8.empty() ||
         holds("[" + section->utf8 + "]", IniLine::header, section->utf8, "")) &&
        (!key || (!key->utf8.empty() && holds(key->utf8 + "=" + (value ? value->utf8 : ""), IniLine::pair,
                                              key->utf8, value ? value->utf8 : ""))) &&
        (!comment || holds(comment->utf8, IniLine::text, "", comment->utf8));
    return isHeld || Fail(notStorable);
}

zyn::IniLines* zyn::IniUtf8::AddSection(const Text& name) {
    IniLines* const lines = m_ini.AddSection(name.model, true);
    if (lines) SetName(lines->Section(), name);
    return lines;
}

CzynINI::SOption* zyn::IniUtf8::AddOption(IniLines& lines, const Text& key, const Text& comment) {
    Option* note = nullptr;
    Option* const option = m_ini.AddOption(lines, key.model, comment.model, &note);
    if (!option) return nullptr;
    SetPiece(lines.Section(), *option, IniDocument::name, key);
    if (note) SetPiece(lines.Section(), *note, IniDocument::value, comment);
    return option;
}

void zyn::IniUtf8::SetName(Section& section, const Text& name) {
    section.m_sName = name.model;
    if (IsExact(name)) return;
    IniDocument& document = m_ini.Document();
    section.m_nLine = document.Append(ComposeHeader(section, document, document.EncodeUtf8(name.utf8)));
}

void zyn::IniUtf8::SetPiece(Section& section, Option& option, IniDocument::Piece piece, const Text& text) {
    CStringA& stored = piece == IniDocument::name ? option.m_sKey : option.m_sValue;
    if (IsExact(text)) {
        stored = text.model;
        return;
    }
    IniDocument& document = m_ini.Document();
    std::string key = document.BytesOf(option.m_nLine, IniDocument::name, option.m_sKey.View());
    std::string value = document.BytesOf(option.m_nLine, IniDocument::value, option.m_sValue.View());
    (piece == IniDocument::name ? key : value) = document.EncodeUtf8(text.utf8);
    stored = text.model;
    int index = 0;
    while (section.m_aOptions.GetAt(index) != &option)
        ++index;
    option.m_nLine = document.Append(ComposeEntry(section, index, document, key, value));
}

void zyn::IniUtf8::Remove(IniLines& lines, const Text& key) {
    if (key.model.IsEmpty()) return;
    if (key.IsExact()) return lines.Remove(key.model);
    while (const Option* const option = FindOption(lines, key))
        lines.Remove(*option);
}

bool CzynINI::GetStringUtf8(std::string_view section, std::string_view key, std::string& value) {
    const std::string sSection(section), sKey(key); // may stand in the value
    value.clear();
    const CzynEnterCriticalSection lock(&m_CS);
    if (!Parse()) return false;
    const zyn::IniUtf8 model(*this);
    zyn::IniLines* const lines = model.FindSection(model.Name(sSection));
    const SOption* const option = lines ? model.FindOption(*lines, model.Name(sKey)) : nullptr;
    if (option) value = model.ValueOf(*option);
    return option;
}

bool CzynINI::GetListSectionsUtf8(std::vector<std::string>& sections) {
    sections.clear();
    const CzynEnterCriticalSection lock(&m_CS);
    if (!Parse()) return false;
    const zyn::IniUtf8 model(*this);
    for (int i = 0; i < m_aSections.GetSize(); ++i)
        if (const SSection* section = m_aSections.GetAt(i); section && !section->m_sName.IsEmpty())
            sections.push_back(model.NameOf(*section));
    return true;
}

bool CzynINI::GetListKeysUtf8(std::string_view section, std::vector<std::string>& keys) {
    const std::string sSection(section); // may stand in the list
    keys.clear();
    const CzynEnterCriticalSection lock(&m_CS);
    if (!Parse()) return false;
    const zyn::IniUtf8 model(*this);
    return model.VisitPairs(sSection, [&](const SOption& option) { keys.push_back(model.NameOf(option)); });
}

bool CzynINI::GetListKeysValsUtf8(std::string_view section,
                                  std::vector<std::pair<std::string, std::string>>& pairs) {
    const std::string sSection(section);
    pairs.clear();
    const CzynEnterCriticalSection lock(&m_CS);
    if (!Parse()) return false;
    const zyn::IniUtf8 model(*this);
    return model.VisitPairs(sSection, [&](const SOption& option) {
        pairs.emplace_back(model.NameOf(option), model.ValueOf(option));
    });
}

bool CzynINI::WriteStringUtf8(std::string_view section, std::string_view key, std::string_view value,
                              std::string_view comment) {
    const CzynEnterCriticalSection lock(&m_CS);
    if (!Parse()) return false;
    zyn::IniUtf8 model(*this);
    const Text name = model.Name(section), keyName = model.Name(key), text(zyn::TrimmedBlanks(value));
    const bool isNote = comment.size() < 2 || comment.starts_with(';');
    const Text note(zyn::TrimmedBlanks(isNote ? std::string(comment) : std::string(";").append(comment)));
    zyn::IniLines* lines = model.FindSection(name);
    SOption* option = lines ? model.FindOption(*lines, keyName) : nullptr;
    const bool isNoted = !option && comment.size() >= 2;
    if (!model.IsStorable(lines ? nullptr : &name, &keyName, &text, isNoted ? &note : nullptr)) return false;
    if (!lines) lines = model.AddSection(name);
    if (!lines) return false;
    if (!option) option = model.AddOption(*lines, keyName, isNoted ? note : Text(""));
    if (!option) return false;
    model.SetPiece(lines->Section(), *option, zyn::IniDocument::value, text);
    return SaveEdit();
}

bool CzynINI::DeleteUtf8(std::string_view section, std::string_view key) {
    const CzynEnterCriticalSection lock(&m_CS);
    if (!Parse()) return false;
    zyn::IniUtf8 model(*this);
    zyn::IniLines* const lines = model.FindSection(model.Name(section));
    if (!lines) return true;
    model.Remove(*lines, model.Name(key));
    return SaveEdit();
}

bool CzynINI::DeleteGroupeUtf8(std::string_view section) {
    const CzynEnterCriticalSection lock(&m_CS);
    if (!Parse()) return false;
    const zyn::IniUtf8 model(*this);
    zyn::IniLines* const lines = model.FindSection(model.Name(section));
    if (!lines) return true;
    const SSection* const found = &lines->Section();
    m_pIndex.reset();
    SSection** const end = m_aSections.m_pData + m_aSections.m_nSize;
    SSection** const at = std::find(m_aSections.m_pData, end, found);
    delete found;
    std::copy(at + 1, end, at);
    --m_aSections.m_nSize;
    return SaveEdit();
}

bool CzynINI::RenameGroupeUtf8(std::string_view oldName, std::string_view newName) {
    const CzynEnterCriticalSection lock(&m_CS);
    if (!Parse()) return false;
    zyn::IniUtf8 model(*this);
    const Text name = model.Name(newName);
    zyn::IniLines* const lines = model.FindSection(model.Name(oldName));
    if (!lines) return FailSectionLookup();
    SSection& section = lines->Section(); // the lines may be gone after the next search
    zyn::IniLines* const other = model.FindSection(name);
    if (other && &other->Section() != &section) return model.Fail(nameTaken);
    if (name.utf8.empty() || section.m_sName.IsEmpty()) return model.Fail(notStorable);
    if (!model.IsStorable(&name)) return false;
    m_pIndex.reset();
    model.SetName(section, name);
    return SaveEdit();
}

bool CzynINI::RenameParamUtf8(std::string_view section, std::string_view oldName, std::string_view newName) {
    const CzynEnterCriticalSection lock(&m_CS);
    if (!Parse()) return false;
    zyn::IniUtf8 model(*this);
    const Text name = model.Name(newName);
    zyn::IniLines* const lines = model.FindSection(model.Name(section));
    if (!lines) return FailSectionLookup();
    SOption* const option = model.FindOption(*lines, model.Name(oldName));
    if (!option) return model.Fail("Опция ini не найдена"_cp1251);
    const SOption* const other = model.FindOption(*lines, name);
    if (other && other != option) return model.Fail(nameTaken);
    if (!model.IsStorable(nullptr, &name)) return false;
    SSection& found = lines->Section();
    m_pIndex.reset();
    model.SetPiece(found, *option, zyn::IniDocument::name, name);
    return SaveEdit();
}
