// SPDX-License-Identifier: MIT
#include "zynaggr/backup_impl.h"

#include "zynaggr/zynfile.h"
#include "zynplatform/environment.h"
#include "zynplatform/file.h"
#include "zynplatform/filesystem.h"
#include "zynplatform/paths.h"
#include "zynplatform/replace.h"
#include "zynplatform/savelock.h"
#include "zynplatform/syserror.h"

#include <random>

// Backups beside a file, or in the temporary folder where that cannot be.

namespace zyn {

namespace {

constexpr const char* newestSuffix = ".bak.tmp";

// A name that nobody can have expected.
CStringA UnexpectedName(const CStringA& stem) {
    std::random_device random;
    CStringA name;
    name.Format("%s.%08x%08x%s", stem.GetString(), random(), random(), newestSuffix);
    return name;
}

// Makes the newest backup under a name that is not final; empty when it cannot be made. `stem` becomes what
// the names of the backups begin with.
CStringA KeepNewest(CStringA& stem, const KeepAs& keepAs) {
    CStringA newest = stem + newestSuffix;
    if (keepAs(newest, false)) return newest;
    CStringA folder(zynplatform::GetTempFolder());
    const bool isShared = folder.IsEmpty();
    if (isShared) folder = "\\tmp\\";
    stem = folder + stem.Mid(stem.ReverseFind('\\') + 1);
    newest = isShared ? UnexpectedName(stem) : stem + newestSuffix;
    return keepAs(newest, isShared) ? newest : CStringA();
}

} // namespace

bool KeepBackup(const char* name, int count, const KeepAs& keepAs) {
    CStringA stem(std::string_view(zynplatform::ToLibraryPath(name)));
    const CStringA newest = KeepNewest(stem, keepAs);
    if (newest.IsEmpty()) return false;
    const auto slot = [&](int number) {
        CStringA suffix(".bak");
        if (number > 0) suffix.Format(".%02i.bak", number);
        return stem + suffix;
    };
    if (count > 1) CzynFile::Remove(slot(count - 1));
    for (int i = count - 1; i > 0; --i)
        zynplatform::ReplacePath(slot(i - 1), slot(i));
    if (zynplatform::ReplacePath(newest, slot(0)) == 0) return true;
    CzynFile::Remove(newest);
    return false;
}

} // namespace zyn

bool CzynFile::CreateBackupFile(const char* name, int count) {
    if (!IsFileExist(name)) return false;
    // Without the right to write to the file there is nobody to wait for.
    zynplatform::SaveLock turn;
    if (turn.Take(name, zynplatform::saveLockLimit, false) == zynplatform::errorSharingViolation)
        return false;
    zynplatform::FileHandle file = zynplatform::noFile;
    if (zynplatform::OpenFile(name, {}, file) != 0) return false;
    const auto copyTo = [file](const char* to, bool isPrivate) {
        return zynplatform::CopyToNewFile(file, to, isPrivate) == 0;
    };
    const bool isKept = zyn::KeepBackup(name, count, copyTo);
    zynplatform::CloseFile(file);
    return isKept;
}
