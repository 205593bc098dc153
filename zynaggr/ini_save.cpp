#include "zynaggr/ini.h"

#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynfile.h"
#include "zynaggr/zynhelpers.h"
#include "zynaggr/zynmap.h"
#include "zynaggr/zynmessage.h"
#include "zynaggr/zynstringfile.h"
#include "zynplatform/cp1251.h"

#include <atomic>
#include <cstring>
#include <limits>

// Saving, the two modes, messages, and paths out of the file.

using namespace zynplatform::literals;

namespace {

constexpr std::string_view lineEnd = "\r\n";

void AppendPair(CStringA& text, const CzynINI::SOption& option) {
    text.Append(option.m_sKey.View()).Append("=").Append(option.m_sValue.View()).Append(lineEnd);
}

void AppendHeader(CStringA& text, CzynINI::SSection& section, bool afterPair) {
    if (!section.m_sComment.IsEmpty()) {
        text.Append(";").Append(section.m_sComment.View()).Append(lineEnd);
        section.m_sComment.Empty();
    }
    if (afterPair) text.Append(lineEnd);
    text.Append("[")
        .Append(section.m_sName.View())
        .Append("]")
        .Append(section.m_sTail.View())
        .Append(lineEnd);
}

// Appends the entries: numbered ones first. `lastIsKeyless` becomes whether the last one stored has no key.
void AppendOptions(CStringA& text, const CzynINI::OptionArray& options, bool& lastIsKeyless) {
    CzynMap numbered;
    for (int i = 0; i < options.GetSize(); ++i) {
        CzynINI::SOption* const option = options.GetAt(i);
        if (!option) continue;
        if (IsNumber(option->m_sKey, false)) numbered.Add(zyn::DecimalValue(option->m_sKey), option);
        lastIsKeyless = option->m_sKey.IsEmpty();
    }
    numbered.SortIn();
    for (int i = 0; i < numbered.GetSize(); ++i) {
        const auto* const option = reinterpret_cast<const CzynINI::SOption*>(numbered[i].out);
        if (!option->m_sValue.IsEmpty()) AppendPair(text, *option);
    }
    for (int i = 0; i < options.GetSize(); ++i) {
        const CzynINI::SOption* const option = options.GetAt(i);
        if (!option || (numbered.GetSize() > 0 && IsNumber(option->m_sKey, false))) continue;
        if (!option->m_sKey.IsEmpty() || option->m_bEmptyKey)
            AppendPair(text, *option);
        else
            text.Append(option->m_sValue.View()).Append(lineEnd);
    }
}

// An upper bound of what the section's lines take.
std::size_t Size(const CzynINI::SSection& section) {
    std::size_t size =
        section.m_sName.View().size() + section.m_sTail.View().size() + section.m_sComment.View().size() + 16;
    for (int i = 0; i < section.m_aOptions.GetSize(); ++i)
        if (const CzynINI::SOption* option = section.m_aOptions.GetAt(i))
            size += option->m_sKey.View().size() + option->m_sValue.View().size() + 4;
    return size;
}

bool StartsWith(const CStringA& text, std::string_view prefix) {
    return text.View().starts_with(prefix);
}

// Up to, not including, the last backslash; false when there is none.
bool CutAtLastBackslash(CStringA& path) {
    const int last = path.ReverseFind('\\');
    if (last < 0) return false;
    path = path.Left(last);
    return true;
}

} // namespace

CStringA CzynINI::ComposeText() {
    std::size_t size = 0;
    for (int i = 0; i < m_aSections.GetSize(); ++i)
        if (const SSection* section = m_aSections.GetAt(i)) size += Size(*section);
    CStringA sText;
    if (size < std::numeric_limits<int>::max()) sText.GetBuffer(static_cast<int>(size));
    sText.ReleaseBuffer(0);
    bool lastIsKeyless = true;
    for (int i = 0; i < m_aSections.GetSize(); ++i) {
        SSection* const section = m_aSections.GetAt(i);
        if (!section) continue;
        if (!section->m_sName.IsEmpty()) AppendHeader(sText, *section, !lastIsKeyless);
        lastIsKeyless = false;
        AppendOptions(sText, section->m_aOptions, lastIsKeyless);
    }
    return sText;
}

bool CzynINI::InternalSave() {
    const CzynEnterCriticalSection lock(&m_CS);
    if (!CheckWrite()) {
        m_sErr = CzynTranslate::Translate("Файл ini доступен только для чтения"_cp1251);
        return false;
    }
    const CStringA sText = ComposeText();
    CzynFile::CreateBackupFile(m_sIniName, 1);
    CzynStringFile file;
    if (!file.Open(m_sIniName, CFile::modeCreate | CFile::modeWrite | CFile::typeBinary, m_nEncoding)) {
        m_sErr = file.GetErrorMessage();
        return false;
    }
    const bool written =
        sText.IsEmpty() ||
        (file.WriteString(sText, static_cast<std::size_t>(sText.GetLength())) && file.Flush());
    file.Close();
    m_TimeMeter.Start();
    // The edit stands in memory and the old text in the file: a save that ran out of room is not a refused
    // one, but it must not pass in silence.
    if (!written) m_sErr = CzynTranslate::Translate("Ошибка при записи файла ini"_cp1251);
    return true;
}

void CzynINI::SetWriteMode(bool bWrite) {
    if (m_bWriteMode && !bWrite)
        Parse();
    else if (!m_bWriteMode && bWrite)
        InternalSave();
    m_bWriteMode = bWrite;
}

bool CzynINI::Flush() {
    if (m_bWriteMode) return true;
    m_bWriteMode = true;
    return InternalSave();
}

CStringA CzynINI::GetErrDescription() {
    const CzynEnterCriticalSection lock(&m_CS);
    return m_sErr;
}

void CzynINI::AppendToErr(const char* szMsg) {
    const CzynEnterCriticalSection lock(&m_CS);
    if (!m_sErr.IsEmpty()) m_sErr += '\n';
    m_sErr += szMsg;
}

void CzynINI::PrintInfoWithSaveFlags(const char* szMsg) {
    if (m_bPrintInfo)
        zynMessagePrint(szMsg, 0);
    else
        AppendToErr(szMsg);
}

void CzynINI::PrintWarningWithSaveFlags(const char* szMsg) {
    {
        static CZynCriticalSection oneAtATime; // or one thread would restore what another one has set
        const CzynEnterCriticalSection lock(&oneAtATime);
        const std::atomic_ref flag(g_bShow_zynMessageBox_Warning);
        const bool shown = flag.exchange(true, std::memory_order_relaxed);
        zynMessagePrint(szMsg, 0x30);
        flag.store(shown, std::memory_order_relaxed);
    }
    AppendToErr(szMsg);
}

CStringA CzynINI::ExpandPath(const char* szPath) {
    const CStringA sPath(szPath);
    CStringA sResult(sPath);
    CStringA sDirectory(GetRealIniName());
    CStringA sMessage;
    bool expanded = false;
    if (StartsWith(sPath, ".\\")) {
        expanded = CutAtLastBackslash(sDirectory);
        if (expanded)
            sResult = sDirectory + sPath.Mid(1);
        else
            sMessage = CzynTranslate::Translate(
                "Отсутствует полный путь к ini, преобразование путей из ini не выполнено!"_cp1251);
    } else if (StartsWith(sPath, "..\\")) {
        const char* szFailure = nullptr;
        if (!CutAtLastBackslash(sDirectory))
            szFailure = "Отсутствует полный путь к ini; преобразование путя '%s' из ini не выполнено!"_cp1251;
        else if (!CutAtLastBackslash(sDirectory))
            szFailure =
                "Полный путь к ini начинается от корня файловой системы; преобразование путя '%s' из ini не выполнено!"_cp1251;
        expanded = !szFailure;
        if (expanded)
            sResult = sDirectory + sPath.Mid(2);
        else
            sMessage.Format(CzynTranslate::TranslateFormat(szFailure), sPath.GetString());
    }
    if (expanded) {
        sMessage.Format(CzynTranslate::TranslateFormat("Путь из ini '%s' заменен полным путем '%s'"_cp1251),
                        sPath.GetString(), sResult.GetString());
        PrintInfoWithSaveFlags(sMessage);
    } else if (!sMessage.IsEmpty()) {
        PrintWarningWithSaveFlags(sMessage);
    }
    sResult.TrimRight();
    const int length = sResult.GetLength();
    if (length != 0 && sResult[0] == '"' && sResult[length - 1] == '"') sResult.Trim('"');
    return sResult;
}
