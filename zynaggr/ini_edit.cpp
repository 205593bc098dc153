#include "zynaggr/ini.h"

#include "zynaggr/ini_index_impl.h"
#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynhelpers.h"
#include "zynplatform/cp1251.h"

#include <memory>
#include <string>
#include <typeinfo>

// Queries and edits.

using namespace zynplatform::literals;

namespace {

constexpr const char* copyMark = "___copy";

// The first element of a name takes the caller's spelling, and every later one is marked as a copy.
template <class T, int N> T* Claim(const CzynTAggr<T*, T*, N>& array, CStringA T::*name, const char* wanted) {
    T* found = nullptr;
    for (int i = 0; i < array.GetSize(); ++i) {
        T* const element = array.GetAt(i);
        if (!element || (element->*name).CompareNoCase(wanted) != 0) continue;
        element->*name = found ? element->*name + copyMark : CStringA(wanted);
        if (!found) found = element;
    }
    return found;
}

// Makes an entry and hands it to the section; its position, or -1 when there is no memory.
int InsertOption(CzynINI::SSection& section, const char* key, const CStringA& value, int position,
                 CzynINI::SOption** made = nullptr) {
    try {
        auto option = std::make_unique<CzynINI::SOption>(key);
        option->m_sValue = value;
        const int inserted = section.Insert(option.get(), position);
        CzynINI::SOption* const owned = option.release();
        if (made) *made = owned;
        return inserted;
    } catch (const std::bad_alloc&) {
        return -1;
    }
}

} // namespace

zyn::IniIndex& CzynINI::Index() {
    if (!m_pIndex)
        m_pIndex = std::make_unique<zyn::IniIndex>();
    else if (typeid(*this) != typeid(CzynINI)) // a derived class may have changed the model
        *m_pIndex = {};
    return *m_pIndex;
}

CzynINI::SSection* CzynINI::FindSection(const char* szSection) {
    return Index().FindSection(m_aSections, szSection ? szSection : "");
}

CzynINI::SOption* CzynINI::FindOption(const char* szSection, const char* szKey) {
    return Index().FindOption(m_aSections, szSection ? szSection : "", szKey ? szKey : "");
}

CzynINI::SOption* CzynINI::FindCreateOption(const char* szSection, const char* szKey, bool bCreate,
                                            const char* szComment) {
    if (!bCreate) return FindOption(szSection, szKey);
    m_pIndex.reset();
    SSection* section = Claim(m_aSections, &SSection::m_sName, szSection);
    SOption* option = section ? Claim(section->m_aOptions, &SOption::m_sKey, szKey) : nullptr;
    if (option) return option;
    if (!section) {
        try {
            section = new SSection(m_aSections, szSection);
        } catch (const std::bad_alloc&) {
            m_sErr = CzynTranslate::Translate("Ошибка при выделении памяти под объект секции ini"_cp1251);
            return nullptr;
        }
    }
    const int position = InsertOption(*section, szKey, CStringA(), -1, &option);
    if (position < 0) {
        FailEntryCreation();
        return nullptr;
    }
    if (const CStringA comment(szComment); comment.GetLength() >= 2) {
        const CStringA line = comment[0] == ';' ? comment : ";" + comment;
        if (InsertOption(*section, nullptr, line, position) < 0) {
            FailEntryCreation();
            return nullptr;
        }
    }
    return option;
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
    CStringA sResult(szDefault); // the arguments may stand in the text that sValue holds
    const CzynEnterCriticalSection lock(&m_CS);
    const bool parsed = Parse();
    SOption* const option = parsed ? FindCreateOption(szSection, szKey, bCreate, nullptr) : nullptr;
    if (option && bCreate && option->m_sValue.IsEmpty()) {
        option->m_sValue = CStringA(sResult).Trim();
        InternalSave();
    } else if (option) {
        sResult = option->m_sValue;
    }
    sValue = std::move(sResult);
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
    SSection* const section = FindSection(szSection);
    if (!section) return true;
    m_pIndex.reset();
    OptionArray& options = section->m_aOptions;
    for (int i = 0; i < options.GetSize();) {
        const SOption* const option = options.GetAt(i);
        if (option && option->m_sKey.CompareNoCase(szKey) == 0)
            options.Remove(i);
        else
            ++i;
    }
    return SaveEdit();
}

void CzynINI::RenameGroupe(const char* szOldName, const char* szNewName) {
    if (!Parse()) return;
    const CzynEnterCriticalSection lock(&m_CS);
    SSection* const section = FindSection(szOldName);
    if (!section) return;
    const CStringA sOld(szOldName), sNew(szNewName); // either may be the stored name itself
    m_pIndex.reset();
    section->m_sName = sNew;
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
    OptionArray& options = section->m_aOptions;
    SOption* const option = FindOption(szSection, szOldName);
    if (!option) return;
    m_pIndex.reset();
    const CStringA sOld(szOldName), sNew(szNewName);
    option->m_sKey = sNew;
    CStringA sComment;
    sComment.Format(
        CzynTranslate::TranslateFormat("; Опция '%s' была переименована. Старое название опции '%s'"_cp1251),
        sNew.GetString(), sOld.GetString());
    int index = 0;
    while (options.GetAt(index) != option)
        ++index;
    if (InsertOption(*section, nullptr, sComment, index) < 0) throw std::bad_alloc();
    InternalSave();
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
