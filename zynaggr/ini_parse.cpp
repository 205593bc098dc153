#include "zynaggr/ini.h"

#include "zynaggr/ini_index_impl.h"
#include "zynaggr/ini_parser_impl.h"
#include "zynaggr/zynfile.h"
#include "zynaggr/zynstringfile.h"
#include "zynhost/memory.h"

#include <new>

// The model of the file in memory, and loading it.

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

bool CzynINI::Parse() {
    if (!m_bWriteMode || !m_TimeMeter.CheckTimeOut(reloadAfterMs)) return true;
    const CzynEnterCriticalSection lock(&m_CS);
    if (!CzynFile::IsFileExist(m_sIniName)) return true;
    m_bFileExist = true;
    CheckWrite();

    CzynStringFile file;
    if (!file.Open(m_sIniName, CFile::modeRead | CFile::shareDenyNone, zynEncUnknown)) {
        m_TimeMeter.Zero();
        m_sErr = file.GetErrorMessage();
        return false;
    }
    m_sErr.Empty();
    m_TimeMeter.Start();
    m_pIndex.reset();
    m_aSections.RemoveAll();
    try {
        const std::string_view text = file.ReadAllData();
        // Not to be taken for a file that cannot be decoded: the next save would leave nothing of it.
        if (text.empty() && file.LoadLackedMemory()) AfxThrowMemoryException();
        if (text.empty()) return true;
        m_nEncoding = file.GetFileEncoding();
        return ParseText(text);
    } catch (...) {
        m_TimeMeter.Zero(); // half a model must not be saved over the file
        throw;
    }
}

bool CzynINI::ParseText(std::string_view text) {
    zyn::ParseIniText(text, m_aSections);
    return true;
}
