// SPDX-License-Identifier: MIT
#include "zynaggr/ini.h"

#include "zynaggr/ini_document_impl.h"
#include "zynaggr/ini_index_impl.h"
#include "zynaggr/zynfile.h"
#include "zynaggr/zynhelpers.h"
#include "zynplatform/filesystem.h"
#include "zynplatform/paths.h"
#include "zynplatform/savelock.h"

#include <string>

// Where the file is, and whether it can be written.

namespace {

constexpr std::size_t currentDirectoryLimit = 2048;

CStringA WithBackslash(const CStringA& directory) {
    const int length = directory.GetLength();
    return length != 0 && directory[length - 1] == '\\' ? directory : directory + '\\';
}

// Up to and including the last backslash; empty without one.
CStringA DirectoryOf(const CStringA& name) {
    return name.Left(name.ReverseFind('\\') + 1);
}

bool EndsWithIni(const CStringA& name) {
    return name.Right(4).CompareNoCase(".ini") == 0;
}

} // namespace

CzynINI::CzynINI(const char* szIniName, bool bSearchModuleDir) {
    m_TimeMeter.Zero();
    if (szIniName) CzynINI::SetINI(szIniName, bSearchModuleDir, 0);
}

CzynINI::~CzynINI() = default;

bool CzynINI::SetINI(const char* szIniName, bool bSearchModuleDir, int nUpLevels) {
    const CStringA sName(std::string_view(zynplatform::ToLibraryPath(szIniName ? szIniName : "")));
    const CzynEnterCriticalSection lock(&m_CS);
    m_bFileExist = false;
    m_bHomeDir = false;
    m_nLoadState = loadNotTried;
    SetNeedReload();
    if (sName.Find('\\') >= 0)
        TryFile(sName);
    else
        LocateBareName(sName, bSearchModuleDir, nUpLevels);
    m_sIniPath = DirectoryOf(m_sIniName);
    return true;
}

// Makes a candidate the file and says whether it exists.
bool CzynINI::TryFile(const CStringA& sName) {
    m_sIniName = sName;
    m_bFileExist = CzynFile::IsFileExist(sName);
    return m_bFileExist;
}

void CzynINI::LocateBareName(const CStringA& sName, bool bSearchModuleDir, int nUpLevels) {
    if (bSearchModuleDir && LocateByModuleDir(sName, nUpLevels)) return;

    std::string current;
    if (zynplatform::GetCurrentFolder(current) && current.size() < currentDirectoryLimit &&
        TryFile(WithBackslash(CStringA(std::string_view(current))) + sName))
        return;

    CStringA sProfile;
    if (sProfile.GetEnvironmentVariable("USERPROFILE") && TryFile(WithBackslash(sProfile) + sName)) {
        m_bHomeDir = true;
        return;
    }

    CStringA sSystem;
    if (sSystem.GetEnvironmentVariable("SystemRoot")) sSystem = WithBackslash(sSystem);
    TryFile(sSystem + sName);
}

bool CzynINI::LocateByModuleDir(const CStringA& sName, int nUpLevels) {
    CStringA sPath;
    zynGetModuleFilePath(sPath);
    if (TryFile(sPath + sName)) return true;

    CStringA sValue;
    if (!m_sEnvForFind.IsEmpty() && sValue.GetEnvironmentVariable(m_sEnvForFind)) {
        sPath = sValue.Trim();
        if (!EndsWithIni(sPath)) sPath = WithBackslash(sPath) + sName;
        if (TryFile(sPath)) return true;
    }

    // The walk goes on from where the steps above left the path; from the variable's value, which ends in the
    // name by now, the first level is the directory of that.
    for (; nUpLevels > 0; --nUpLevels) {
        sPath.TrimRight('\\');
        if (const int last = sPath.ReverseFind('\\'); last > 0) {
            sPath = sPath.Left(last + 1);
            if (TryFile(sPath + sName)) return true;
        }
    }
    return false;
}

void CzynINI::SetEnvForFind(const char* szEnvName) {
    m_sEnvForFind = szEnvName;
}

CStringA CzynINI::GetRealIniName() {
    const CzynEnterCriticalSection lock(&m_CS);
    return m_sIniName;
}

void CzynINI::GetRealIniName(CStringA& sName) {
    const CzynEnterCriticalSection lock(&m_CS);
    sName = m_sIniName;
}

CStringA CzynINI::GetRealIniPath() {
    const CzynEnterCriticalSection lock(&m_CS);
    return m_sIniPath;
}

bool CzynINI::isFileExist() {
    return m_bFileExist;
}

bool CzynINI::IsHomeDir() {
    return m_bHomeDir;
}

bool CzynINI::CheckWrite() {
    const CzynEnterCriticalSection lock(&m_CS);
    if (m_sIniName.IsEmpty()) return false;
    zynplatform::LoadLock lockedOut; // who saves the file
    lockedOut.Take(m_sIniName, zynplatform::saveLockLimit);
    CzynFile file;
    const unsigned flags =
        CFile::modeCreate | CFile::modeNoTruncate | CFile::shareDenyNone | CFile::modeWrite;
    m_bReadOnly = !file.Open(m_sIniName, flags, nullptr);
    file.Close();
    return !m_bReadOnly;
}

void CzynINI::SetNeedReload() {
    const CzynEnterCriticalSection lock(&m_CS);
    m_TimeMeter.Zero();
    m_bReloadDue = true;
}
