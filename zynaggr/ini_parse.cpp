// SPDX-License-Identifier: MIT
#include "zynaggr/ini.h"

#include "zynaggr/filetext_impl.h"
#include "zynaggr/ini_document_impl.h"
#include "zynaggr/ini_index_impl.h"
#include "zynaggr/ini_parser_impl.h"
#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynstringfile.h"
#include "zynhost/memory.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/filesystem.h"
#include "zynplatform/savelock.h"

#include <new>

// The model of the file in memory, and loading it.

using namespace zynplatform::literals;

namespace {

constexpr unsigned long reloadAfterMs = 1000;

} // namespace

CzynINI::SSection::SSection(SectionArray& aSections, const char* szName) : m_sName(szName) {
    if (aSections.Add(this) < 0) throw std::bad_alloc();
}

int CzynINI::SSection::Add(SOption* pOpt) {
    if (!pOpt) return -1;
    const int nIndex = m_aOptions.Add(pOpt);
    if (nIndex < 0) throw std::bad_alloc();
    if (!pOpt->m_sKey.IsEmpty()) m_nInsertPos = nIndex + 1;
    return nIndex;
}

int CzynINI::SSection::Insert(SOption* pOpt, int nPos) {
    if (!pOpt) return -1;
    if (nPos == -1) nPos = m_nInsertPos;
    if (!m_aOptions.InsertAt(nPos, pOpt)) throw std::bad_alloc();
    if (!pOpt->m_sKey.IsEmpty()) ++m_nInsertPos;
    return nPos;
}

// In deferred mode nothing is read, unless the edits would come to stand on what could not be read.
bool CzynINI::IsLoadDue() {
    return m_nLoadState == loadFailed ||
           (m_bWriteMode && (m_bReloadDue || m_TimeMeter.CheckTimeOut(reloadAfterMs)));
}

bool CzynINI::Parse() {
    if (!IsLoadDue()) return true;
    const CzynEnterCriticalSection lock(&m_CS);
    if (zynplatform::IsPathMissing(m_sIniName)) return true;
    m_bFileExist = true;

    zynplatform::LoadLock lockedOut; // who saves the file
    lockedOut.Take(m_sIniName, zynplatform::saveLockLimit);
    m_bReadOnly = !lockedOut.IsWritable(m_sIniName);
    CzynStringFile file;
    file.SetEncodingChoice(m_choice);
    file.KeepOriginal();
    if (!file.Open(m_sIniName, CFile::modeRead | CFile::shareDenyNone, zynEncUnknown))
        return FailLoad(file.GetErrorMessage());
    const std::string_view text = file.ReadAllData();
    const CzynStringFile::LoadFailure failure =
        text.empty() ? file.GetLoadFailure() : CzynStringFile::loadDone;
    if (failure == CzynStringFile::loadNotRead)
        return FailLoad(CzynTranslate::Translate("Ошибка при чтении файла ini"_cp1251));

    m_nLoadState = loadFailed; // half a model must not be saved over the file
    m_pIndex.reset();
    m_aSections.RemoveAll();
    m_pDocument.reset();
    m_bFaithful = m_bWantsFaithful;
    m_bMarkFound = file.GetMarkLength() != 0;
    if (failure == CzynStringFile::loadNoMemory) AfxThrowMemoryException();
    m_sErr.Empty();
    if (m_bFaithful && m_bMarkFound) m_nEncoding = file.GetFileEncoding();
    if (!text.empty()) {
        m_nEncoding = file.GetFileEncoding();
        if (m_bFaithful || zyn::IsLost(m_nEncoding, file.GetOriginal(), text))
            m_pDocument = std::make_unique<zyn::IniDocument>(m_nEncoding, m_bFaithful, file.GetOriginal(),
                                                             file.GetMarkLength());
        if (!ParseText(text)) return false;
    }
    m_nLoadState = failure == CzynStringFile::loadNotDecoded ? loadNotDecoded : loadDone;
    m_bReloadDue = false;
    m_TimeMeter.Start();
    return true;
}

// The model stays, and the next operation tries again.
bool CzynINI::FailLoad(const CStringA& sErr) {
    m_nLoadState = loadFailed;
    SetNeedReload();
    m_sErr = sErr;
    return false;
}

bool CzynINI::ParseText(std::string_view text) {
    zyn::ParseIniText(text, m_aSections, m_pDocument.get());
    return true;
}

// Made when needed: of a file that does not exist or has no document, in which nothing is read from lines.
zyn::IniDocument& CzynINI::Document() {
    if (m_nEncoding == zynEncUnknown) m_nEncoding = m_choice.m_nNewFile;
    if (m_nEncoding == zynEncUnknown) m_nEncoding = zynEncCP1251;
    if (!m_pDocument) m_pDocument = std::make_unique<zyn::IniDocument>(m_nEncoding, m_bFaithful);
    return *m_pDocument;
}

void CzynINI::SetFaithful(bool bFaithful) {
    const CzynEnterCriticalSection lock(&m_CS);
    if (m_bWantsFaithful == bFaithful) return;
    m_bWantsFaithful = bFaithful;
    if (m_aSections.GetSize() == 0) m_bFaithful = bFaithful;
    SetNeedReload();
}

bool CzynINI::IsFaithful() {
    const CzynEnterCriticalSection lock(&m_CS);
    return m_bWantsFaithful;
}

void CzynINI::SetEncodingChoice(const zynEncodingChoice& choice) {
    const CzynEnterCriticalSection lock(&m_CS);
    m_choice = choice;
    SetNeedReload();
}

zynEncodingChoice CzynINI::GetEncodingChoice() {
    const CzynEnterCriticalSection lock(&m_CS);
    return m_choice;
}

zynTextEncoding CzynINI::GetFileEncoding() {
    const CzynEnterCriticalSection lock(&m_CS);
    Parse();
    return m_nEncoding;
}

bool CzynINI::SetFileEncoding(zynTextEncoding encoding, bool bMark, bool bLossy) {
    const CzynEnterCriticalSection lock(&m_CS);
    if (!Parse()) return false;
    std::unique_ptr<zyn::IniDocument> recoded;
    if (zynGetMinBYTEInCharForEncoding(encoding) > 0 && encoding != zynEncCP866)
        recoded = Document().Recoded(encoding, bMark, bLossy);
    if (!recoded) {
        m_sErr = CzynTranslate::Translate("В кодировке файла ini нет символа этого текста"_cp1251);
        return false;
    }
    m_pDocument = std::move(recoded);
    m_nEncoding = encoding;
    m_bMarkFound = bMark;
    return SaveEdit();
}
