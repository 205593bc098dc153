#include "zynaggr/ini.h"

#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynhelpers.h"
#include "zynaggr/zynmessage.h"
#include "zynaggr/zynstringfile.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/filesystem.h"
#include "zynplatform/fork.h"
#include "zynplatform/replace.h"
#include "zynplatform/savelock.h"
#include "zynplatform/syserror.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <utility>
#include <vector>

// Saving, the two modes, messages, and paths out of the file.

using namespace zynplatform::literals;

namespace {

constexpr std::string_view lineEnd = "\r\n";

// Warnings are shown one at a time, or one thread would restore what another one has set.
CZynCriticalSection oneWarning;
const zynplatform::AtFork atFork([] { oneWarning.ResetInForkedChild(); });

void AppendPair(CStringA& text, const CzynINI::SOption& option) {
    text.Append(option.m_sKey.View()).Append("=").Append(option.m_sValue.View()).Append(lineEnd);
}

void AppendHeader(CStringA& text, const CzynINI::SSection& section, bool afterPair) {
    if (!section.m_sComment.IsEmpty()) text.Append(";").Append(section.m_sComment.View()).Append(lineEnd);
    if (afterPair) text.Append(lineEnd);
    text.Append("[")
        .Append(section.m_sName.View())
        .Append("]")
        .Append(section.m_sTail.View())
        .Append(lineEnd);
}

// The digits of a decimal number, which may be of any length, without zeros before them.
std::string_view DigitsOf(std::string_view number) {
    const std::size_t first = number.find_first_not_of("-0");
    return first == number.npos ? std::string_view() : number.substr(first);
}

bool IsLess(const CzynINI::SOption* left, const CzynINI::SOption* right) {
    const std::string_view l = left->m_sKey.View(), r = right->m_sKey.View();
    const std::string_view leftDigits = DigitsOf(l), rightDigits = DigitsOf(r);
    const bool leftIsNegative = l[0] == '-' && !leftDigits.empty();
    const bool rightIsNegative = r[0] == '-' && !rightDigits.empty();
    if (leftIsNegative != rightIsNegative) return leftIsNegative;
    const auto size = [](std::string_view digits) { return std::pair(digits.size(), digits); };
    return leftIsNegative ? size(rightDigits) < size(leftDigits) : size(leftDigits) < size(rightDigits);
}

// Appends the entries: numbered ones first. `lastIsKeyless` becomes whether the last one stored has no key.
void AppendOptions(CStringA& text, const CzynINI::OptionArray& options, bool& lastIsKeyless) {
    std::vector<const CzynINI::SOption*> numbered;
    for (int i = 0; i < options.GetSize(); ++i) {
        const CzynINI::SOption* const option = options.GetAt(i);
        if (!option) continue;
        if (IsNumber(option->m_sKey, false)) numbered.push_back(option);
        lastIsKeyless = option->m_sKey.IsEmpty();
    }
    std::stable_sort(numbered.begin(), numbered.end(), IsLess);
    for (const CzynINI::SOption* option : numbered)
        if (!option->m_sValue.IsEmpty()) AppendPair(text, *option);
    for (int i = 0; i < options.GetSize(); ++i) {
        const CzynINI::SOption* const option = options.GetAt(i);
        if (!option || (!numbered.empty() && IsNumber(option->m_sKey, false))) continue;
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
        const SSection* const section = m_aSections.GetAt(i);
        if (!section) continue;
        if (!section->m_sName.IsEmpty()) AppendHeader(sText, *section, !lastIsKeyless);
        lastIsKeyless = false;
        AppendOptions(sText, section->m_aOptions, lastIsKeyless);
    }
    return sText;
}

bool CzynINI::InternalSave() {
    const CzynEnterCriticalSection lock(&m_CS);
    if (m_bInTransaction) return true; // its end saves
    if (!IsSafeToSave())
        return FailSave(
            CzynTranslate::Translate("Файл ini не удалось прочитать, поэтому он не сохраняется"_cp1251));
    zynplatform::SaveLock own;
    zynplatform::SaveLock& turn = m_pSaveLock ? *m_pSaveLock : own;
    if (!WaitForTurn(turn)) return false;
    const bool isWritten = WriteModel();
    turn.EndWriting();
    if (!isWritten) return false;
    ForgetSaveFailure();
    m_nLoadState = loadDone;
    m_bReloadDue = ForgetComments();
    m_TimeMeter.Start();
    return true;
}

// Finds out also whether the file may be written.
bool CzynINI::WaitForTurn(zynplatform::SaveLock& turn) {
    constexpr unsigned limit = zynplatform::saveLockLimit;
    const bool hasFile = !m_sIniName.IsEmpty();
    std::uint32_t error = m_pSaveLock || !hasFile ? 0 : turn.Take(m_sIniName, limit, true);
    if (error != zynplatform::errorSharingViolation) {
        const bool isWritable = turn.IsWritable();
        if (hasFile) m_bReadOnly = !isWritable;
        if (!isWritable)
            return FailSave(CzynTranslate::Translate("Файл ini доступен только для чтения"_cp1251));
        error = turn.BeginWriting(limit);
    }
    return error == 0 || FailSave(CStringA(CzynTranslate::Translate("Ошибка при открытии файла: "_cp1251)) +
                                  zynplatform::DescribeSystemError(error));
}

bool CzynINI::WriteModel() {
    const CStringA sText = ComposeText();
    CzynStringFile file;
    if (!file.Open(m_sIniName, CFile::modeCreate | CFile::modeWrite | CFile::typeBinary, m_nEncoding))
        return FailSave(file.GetErrorMessage());
    const bool isTaken =
        sText.IsEmpty() || file.WriteString(sText, static_cast<std::size_t>(sText.GetLength()));
    if (isTaken && file.FlushWithBackup()) return true;
    CStringA sErr(CzynTranslate::Translate("Ошибка при записи файла ini"_cp1251));
    if (file.GetWriteError() != 0)
        sErr.Append(": ").Append(zynplatform::DescribeSystemError(file.GetWriteError()));
    return FailSave(sErr);
}

// Sections that are less than what the file holds must not take its place.
bool CzynINI::IsSafeToSave() {
    return (m_nLoadState != loadFailed && m_nLoadState != loadNotDecoded) ||
           zynplatform::IsPathMissing(m_sIniName);
}

bool CzynINI::FailSave(const CStringA& sErr) {
    m_sErr = m_sSaveErr = sErr;
    return false;
}

// What was collected behind the text of a failed save stays.
void CzynINI::ForgetSaveFailure() {
    if (!m_sSaveErr.IsEmpty() && StartsWith(m_sErr, m_sSaveErr.View())) {
        m_sErr = m_sErr.Mid(m_sSaveErr.GetLength());
        m_sErr.TrimLeft('\n');
    }
    m_sSaveErr.Empty();
}

// They are written once; whether there were any. In the file they are lines like any others.
bool CzynINI::ForgetComments() {
    bool hadComment = false;
    for (int i = 0; i < m_aSections.GetSize(); ++i) {
        SSection* const section = m_aSections.GetAt(i);
        if (!section || section->m_sName.IsEmpty() || section->m_sComment.IsEmpty()) continue;
        section->m_sComment.Empty();
        hadComment = true;
    }
    return hadComment;
}

void CzynINI::SetWriteMode(bool bWrite) {
    if (m_bInTransaction) return;
    if (m_bWriteMode && !bWrite)
        Parse();
    else if (!m_bWriteMode && bWrite)
        InternalSave();
    m_bWriteMode = bWrite;
}

bool CzynINI::Flush() {
    if (m_bWriteMode || m_bInTransaction) return true;
    m_bWriteMode = true;
    return InternalSave();
}

void CzynINI::SetSyncToDisk(bool bSync) {
    zynplatform::SetSyncToDisk(bSync);
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
        const CzynEnterCriticalSection lock(&oneWarning);
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
