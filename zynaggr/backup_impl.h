// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace zyn {

// Makes a file of the given name hold what the file to be kept holds; false, and no such file, when that
// fails. With `isPrivate` it stands where strangers write too, and must be its owner's alone.
using KeepAs = std::function<bool(const char* name, bool isPrivate)>;

// Keeps up to `count` backups of a file, as CzynFile::CreateBackupFile says; `keepAs` makes the newest.
bool KeepBackup(const char* name, int count, const KeepAs& keepAs);

} // namespace zyn
