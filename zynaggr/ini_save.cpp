// SPDX-License-Identifier: MIT
#include "zynaggr/ini.h"

#include "zynaggr/filetext_impl.h"
#include "zynaggr/ini_compose_impl.h"
#include "zynaggr/ini_document_impl.h"
#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynmessage.h"
#include "zynaggr/zynstringfile.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/filesystem.h"
#include "zynplatform/fork.h"
#include "zynplatform/replace.h"
#include "zynplatform/savelock.h"
#include "zynplatform/syserror.h"

#include <atomic>
#include <string>
#include <utility>

// Saving, the two modes, messages, and paths out of the file.

using namespace zynplatform::literals;

namespace {

// Warnings are shown one at a time, or one thread would restore what another one has set.
CZynCriticalSection oneWarning;
const zynplatform::AtFork atFork([] { oneWarning.ResetInForkedChild(); });

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
    const bool isExact = m_bFaithful || m_pDocument || !m_bKeepBackup;
    const std::string bytes = m_bFaithful ? zyn::ComposeFaithfully(m_aSections, Document())
                              : isExact   ? zyn::ComposeBytes(m_aSections, Document())
                                          : std::string();
    const CStringA sText = isExact ? CStringA() : ComposeText();
    const bool hasText = !bytes.empty() || (m_bFaithful && m_bMarkFound);
    const std::string_view mark = isExact && hasText && IsMarked() ? m_pDocument->Mark() : "";
    if (isExact && mark.empty() && !IsReadAlike(bytes))
        return FailSave(CzynTranslate::Translate(
            "Файл ini был бы прочитан в другой кодировке, поэтому он не сохраняется"_cp1251));
    CzynStringFile file;
    if (!file.Open(m_sIniName, CFile::modeCreate | CFile::modeWrite | CFile::typeBinary, m_nEncoding))
        return FailSave(file.GetErrorMessage());
    zynEncodingChoice choice = m_choice;
    choice.m_nMark = IsMarked() ? zynMarkAlways : zynMarkAsFound; // nothing was found by this object
    file.SetEncodingChoice(choice);
    const bool isTaken =
        sText.IsEmpty() || file.WriteString(sText, static_cast<std::size_t>(sText.GetLength()));
    if (isExact ? file.FlushBytes(mark, bytes, m_bKeepBackup) : isTaken && file.FlushWithBackup())
        return true;
    CStringA sErr(CzynTranslate::Translate("Ошибка при записи файла ini"_cp1251));
    if (file.GetWriteError() != 0)
        sErr.Append(": ").Append(zynplatform::DescribeSystemError(file.GetWriteError()));
    return FailSave(sErr);
}

// Whether the next load, of a file without a mark, takes the bytes for the text that they are.
bool CzynINI::IsReadAlike(std::string_view bytes) const {
    std::size_t markLength = 0;
    const zynTextEncoding found = zyn::FindEncoding(bytes, m_choice, markLength);
    if (found == m_nEncoding && markLength == 0) return true;
    return zyn::DecodeText(found, bytes.substr(markLength)) == zyn::DecodeText(m_nEncoding, bytes);
}

bool CzynINI::IsMarked() const {
    switch (m_choice.m_nMark) {
    case zynMarkAlways:
        return true;
    case zynMarkNever:
        return m_nEncoding != zynEncUTF8;
    case zynMarkAsFound:
        return m_bMarkFound;
    default:
        return m_bMarkFound || !m_bFaithful;
    }
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

void CzynINI::SetKeepBackup(bool bKeep) {
    const CzynEnterCriticalSection lock(&m_CS);
    m_bKeepBackup = bKeep;
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
