// SPDX-License-Identifier: MIT
#include "zynaggr/ini.h"

#include "zynaggr/ini_index_impl.h"
#include "zynaggr/ini_line_impl.h"
#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynhelpers.h"
#include "zynplatform/cp1251.h"

#include <algorithm>
#include <memory>
#include <typeinfo>
#include <utility>

// Queries and edits.

using namespace zynplatform::literals;

namespace {

// Makes an entry and hands it to the section; its position, or -1 when there is no memory.
int InsertOption(zyn::IniLines& lines, const char* key, const CStringA& value, int position,
                 CzynINI::SOption** made = nullptr) {
    try {
        auto option = std::make_unique<CzynINI::SOption>(key);
        option->m_sValue = value;
        if (made) *made = option.get();
        return lines.Insert(std::move(option), position);
    } catch (const std::bad_alloc&) {
        return -1;
    }
}

// A name as it is looked for: null is an empty one, and in faithful mode the blanks around it do not count.
class Name {
public:
    Name(const char* name, bool isFaithful) : m_name(name ? name : "") {
        const std::string_view text(m_name);
        if (isFaithful && zyn::TrimmedBlanks(text).size() != text.size())
            m_name = m_trimmed = CStringA(text).Trim();
    }
    operator const char*() const { return m_name; }

private:
    CStringA m_trimmed;
    const char* m_name;
};

} // namespace

zyn::IniIndex& CzynINI::Index() {
    const bool derived = typeid(*this) != typeid(CzynINI);
    if (!m_pIndex || (derived && !m_bTellsChanges))
        m_pIndex = std::make_unique<zyn::IniIndex>(m_aSections, !derived, m_bFaithful);
    return *m_pIndex;
}

void CzynINI::ModelChanged() {
    m_pIndex.reset();
    m_bTellsChanges = true;
}

CzynINI::SSection* CzynINI::FindSection(const char* szSection) {
    zyn::IniLines* const lines = Index().FindSection(Name(szSection, m_bFaithful));
    return lines ? &lines->Section() : nullptr;
}

CzynINI::SOption* CzynINI::FindOption(const char* szSection, const char* szKey) {
    zyn::IniLines* const lines = Index().FindSection(Name(szSection, m_bFaithful));
    return lines ? lines->Find(Name(szKey, m_bFaithful)) : nullptr;
}

CzynINI::SOption* CzynINI::FindCreateOption(const char* szSection, const char* szKey, bool bCreate,
                                            const char* szComment) {
    if (!bCreate) return FindOption(szSection, szKey);
    const Name section(szSection, m_bFaithful), key(szKey, m_bFaithful);
    zyn::IniIndex& index = Index();
    zyn::IniLines* lines = m_bFaithful ? index.FindSection(section) : index.ClaimSection(section);
    SOption* const option = !lines ? nullptr : m_bFaithful ? lines->Find(key) : lines->Claim(key);
    if (option) return option;
    if (!lines) lines = AddSection(section, m_bFaithful);
    return lines ? AddOption(*lines, key, CStringA(szComment)) : nullptr;
}

// A section with an empty name has no header: anywhere but first, its lines would be those of the one above.
zyn::IniLines* CzynINI::AddSection(const char* szSection, bool bUnnamedFirst) {
    try {
        zyn::IniLines& lines = Index().AddSection(szSection);
        if (!bUnnamedFirst || *szSection) return &lines;
        m_pIndex.reset();
        SSection** const sections = m_aSections.m_pData;
        std::rotate(sections, sections + m_aSections.m_nSize - 1, sections + m_aSections.m_nSize);
        return &Index().LinesOf(0);
    } catch (const std::bad_alloc&) {
        m_sErr = CzynTranslate::Translate("Ошибка при выделении памяти под объект секции ini"_cp1251);
        return nullptr;
    }
}

CzynINI::SOption* CzynINI::AddOption(zyn::IniLines& lines, const char* szKey, const CStringA& sComment,
                                     SOption** ppComment) {
    SOption* option = nullptr;
    const int position = InsertOption(lines, szKey, CStringA(), -1, &option);
    bool isDone = position >= 0;
    if (isDone && sComment.GetLength() >= 2) {
        const CStringA line = sComment[0] == ';' ? sComment : ";" + sComment;
        isDone = InsertOption(lines, nullptr, line, position, ppComment) >= 0;
    }
    if (isDone) return option;
    FailEntryCreation();
    return nullptr;
}

bool CzynINI::FailEntryCreation() {
    m_sErr = CzynTranslate::Translate("Ошибка при выделении памяти под объект опции ini"_cp1251);
    return false;
}

bool CzynINI::FailSectionLookup() {
    m_sErr = CzynTranslate::Translate("Секция ini не найдена"_cp1251);
    return false;
}

bool CzynINI::SaveEdit() {
    return !m_bWriteMode || InternalSave();
}

CStringA CzynINI::GetString(const char* szSection, const char* szKey, const char* szDefault, bool bCreate) {
    CStringA sValue;
    if (!GetString(szSection, szKey, sValue, szDefault, bCreate)) sValue = szDefault;
    return sValue;
}

bool CzynINI::GetString(const char* szSection, const char* szKey, CStringA& sValue, const char* szDefault,
                        bool bCreate) {
    const CzynEnterCriticalSection lock(&m_CS);
    const bool parsed = Parse();
    SOption* const option = parsed ? FindCreateOption(szSection, szKey, bCreate, nullptr) : nullptr;
    if (option && !(bCreate && option->m_sValue.IsEmpty())) {
        sValue = option->m_sValue;
        return true;
    }
    sValue = szDefault; // which may stand in the text that it holds
    if (option) {
        option->m_sValue = sValue;
        option->m_sValue.Trim();
        InternalSave();
    }
    return parsed;
}

int CzynINI::GetInt(const char* szSection, const char* szKey, int nDefault, bool bCreate) {
    const CzynEnterCriticalSection lock(&m_CS);
    if (!Parse()) return nDefault;
    SOption* const option = FindCreateOption(szSection, szKey, bCreate, nullptr);
    if (!option) return nDefault;
    if (IsNumber(option->m_sValue, false)) return zyn::DecimalValue(option->m_sValue);
    if (bCreate) {
        option->m_sValue.Format("%i", nDefault);
        InternalSave();
    }
    return nDefault;
}

bool CzynINI::WriteString(const char* szSection, const char* szKey, const char* szValue,
                          const char* szComment) {
    if (!Parse()) return false;
    const CzynEnterCriticalSection lock(&m_CS);
    SOption* const option = FindCreateOption(szSection, szKey, true, szComment);
    if (!option) return FailEntryCreation();
    option->m_bEmptyKey = option->m_sKey.IsEmpty();
    option->m_sValue = CStringA(szValue).Trim();
    return SaveEdit();
}

bool CzynINI::WriteInt(const char* szSection, const char* szKey, int nValue, const char* szComment) {
    const CzynEnterCriticalSection lock(&m_CS);
    if (!Parse()) return false;
    if (m_bReadOnly && !CheckWrite()) {
        m_sErr = CzynTranslate::Translate("Файл ini доступен только для чтения"_cp1251);
        return false;
    }
    SOption* const option = FindCreateOption(szSection, szKey, true, szComment);
    if (!option) return FailEntryCreation();
    option->m_sValue.Format("%i", nValue);
    return SaveEdit();
}

bool CzynINI::Delete(const char* szSection, const char* szKey) {
    if (!Parse()) return false;
    const CzynEnterCriticalSection lock(&m_CS);
    zyn::IniLines* const lines = Index().FindSection(Name(szSection, m_bFaithful));
    if (!lines) return true;
    lines->Remove(Name(szKey, m_bFaithful));
    return SaveEdit();
}

void CzynINI::RenameGroupe(const char* szOldName, const char* szNewName) {
    if (!Parse()) return;
    const CzynEnterCriticalSection lock(&m_CS);
    SSection* const section = FindSection(szOldName);
    if (!section) return;
    const CStringA sOld(szOldName),
        sNew(Name(szNewName, m_bFaithful)); // either may be the stored name itself
    m_pIndex.reset();
    section->m_sName = sNew;
    if (!m_bFaithful)
        section->m_sComment.Format(
            CzynTranslate::TranslateFormat(
                "Группа опций [%s] была переименована. Старое название группы [%s]"_cp1251),
            sNew.GetString(), sOld.GetString());
    if (!InternalSave()) return; // a reload would undo the edit and erase the text
    SetNeedReload();
    Parse();
}

void CzynINI::RenameParam(const char* szSection, const char* szOldName, const char* szNewName) {
    if (!Parse()) return;
    const CzynEnterCriticalSection lock(&m_CS);
    SSection* const section = FindSection(szSection);
    if (!section) return;
    SOption* const option = FindOption(szSection, szOldName);
    if (!option) return;
    m_pIndex.reset();
    const CStringA sOld(szOldName), sNew(Name(szNewName, m_bFaithful));
    option->m_sKey = sNew;
    if (!m_bFaithful) AddRenameComment(*section, *option, sOld);
    InternalSave();
}

void CzynINI::AddRenameComment(SSection& section, const SOption& option, const CStringA& sOld) {
    CStringA sComment;
    sComment.Format(
        CzynTranslate::TranslateFormat("; Опция '%s' была переименована. Старое название опции '%s'"_cp1251),
        option.m_sKey.GetString(), sOld.GetString());
    int index = 0;
    while (section.m_aOptions.GetAt(index) != &option)
        ++index;
    auto comment = std::make_unique<SOption>(nullptr);
    comment->m_sValue = sComment;
    section.Insert(comment.get(), index);
    static_cast<void>(comment.release());
}

bool CzynINI::GetListSections(CStringArray& sections) {
    sections.RemoveAll();
    const CzynEnterCriticalSection lock(&m_CS);
    if (!Parse()) return false;
    for (int i = 0; i < m_aSections.GetSize(); ++i)
        if (const SSection* section = m_aSections.GetAt(i); section && !section->m_sName.IsEmpty())
            sections.Add(section->m_sName);
    return true;
}

bool CzynINI::GetListKeys(const char* szSection, CStringArray& keys) {
    const CStringA sSection(szSection); // may stand in the list
    keys.RemoveAll();
    return VisitPairs(sSection, [&](const SOption& option) { keys.Add(option.m_sKey); });
}

bool CzynINI::GetListKeysVals(const char* szSection, KeyValArray& list) {
    const CStringA sSection(szSection);
    list.RemoveAll();
    return VisitPairs(sSection, [&](const SOption& option) {
        auto pair = std::make_unique<SKeyVal>(option.m_sKey, option.m_sValue);
        if (list.Add(pair.get()) < 0) throw std::bad_alloc();
        static_cast<void>(pair.release());
    });
}

template <class Visit> bool CzynINI::VisitPairs(const char* szSection, Visit visit) {
    const CzynEnterCriticalSection lock(&m_CS);
    if (!Parse()) return false;
    const SSection* const section = FindSection(szSection);
    if (!section) return FailSectionLookup();
    for (int i = 0; i < section->m_aOptions.GetSize(); ++i) {
        const SOption* const option = section->m_aOptions.GetAt(i);
        if (option && !option->m_sKey.IsEmpty()) visit(*option);
    }
    return true;
}

bool CzynINI::isParamSet(const char* szSection, const char* szKey) {
    const CzynEnterCriticalSection lock(&m_CS);
    return Parse() && FindCreateOption(szSection, szKey, false, nullptr);
}

bool CzynINI::isGroupeSet(const char* szSection) {
    const CzynEnterCriticalSection lock(&m_CS);
    return Parse() && FindSection(szSection);
}
