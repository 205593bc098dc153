// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Files and folders by name. Names are library paths (see paths.h), results system error numbers (see
// syserror.h) with 0 for success.

namespace zynplatform {

// True for an existing file or folder.
ZYN_API bool PathExists(const char* name);
// True when there surely is neither: not when the system cannot tell.
ZYN_API bool IsPathMissing(const char* name);
// Whether this process may write the existing file.
ZYN_API bool IsPathWritable(const char* name);

// Renames, or moves to another file system. Fails when `to` exists.
ZYN_API std::uint32_t RenamePath(const char* from, const char* to);
// Gives the file `from` the name `to`, in one step, whatever had that name; both are in one file system.
ZYN_API std::uint32_t ReplacePath(const char* from, const char* to);
// Removes a file, not a folder.
ZYN_API std::uint32_t RemoveFile(const char* name);
// Makes one folder.
ZYN_API std::uint32_t MakeFolder(const char* name);

// How to copy a file.
struct CopyMode {
    bool failIfExists = false;
    bool withRights = false; // the permission bits and the access list, too
};
// How far a copy came: system error numbers.
struct CopyOutcome {
    std::uint32_t content = 0;       // of copying the content
    std::uint32_t readingRights = 0; // of reading the source's rights
    std::uint32_t settingRights = 0; // of giving them to the copy
};
// Copies the content; a new file takes the source's permission bits as far as the process's mask lets it.
// Opens both files under the share modes of file.h: it reads denying nobody and writes exclusively. Of a copy
// that breaks off nothing is left: the file is removed, or emptied where it was reached through a link.
ZYN_API CopyOutcome CopyFileTo(const char* from, const char* to, const CopyMode& mode);

// The names, without the folder, of the files (not folders) of one folder that match a pattern, in the order
// in which the file system reports them. The pattern is a path whose last part may hold '*', any text; letter
// case does not matter in that part. Without a backslash the current folder is searched.
ZYN_API std::vector<std::string> FindFiles(std::string_view pattern);

// The process's current folder and the file name of its executable, in library form; false when the system
// does not tell.
ZYN_API bool GetCurrentFolder(std::string& folder);
ZYN_API bool GetExecutableFileName(std::string& name);

} // namespace zynplatform
