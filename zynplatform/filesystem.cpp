// SPDX-License-Identifier: MIT
#include "zynplatform/filesystem.h"

#include "zynplatform/accessrights_impl.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/descriptor_impl.h"
#include "zynplatform/paths.h"

#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace zynplatform {

namespace {

std::uint32_t ErrorOf(int result) {
    return result == 0 ? 0 : LastError();
}

// Closes on leaving the scope, and tells what closing reported to whoever asks first.
class OpenHandle {
public:
    ~OpenHandle() { Close(); }
    std::uint32_t Open(const char* name, const OpenMode& mode) { return OpenFile(name, mode, m_handle); }
    std::uint32_t Close() {
        const FileHandle handle = std::exchange(m_handle, noFile);
        return handle == noFile ? 0 : CloseFile(handle);
    }
    FileHandle Get() const { return m_handle; }

private:
    FileHandle m_handle = noFile;
};

std::uint32_t MoveAcrossFileSystems(const char* from, const char* to) {
    if (const std::uint32_t error = CopyFileTo(from, to, {.failIfExists = true, .withRights = true}).content)
        return error;
    return RemoveFile(from);
}

void RemoveHalfCopy(const struct stat& copy, const char* name) {
    struct stat named;
    if (!S_ISREG(copy.st_mode)) return; // a device stays
    const std::string native = ToNativePath(name);
    const bool isItself = lstat(native.c_str(), &named) == 0 && IsSameFile(copy, named);
    static_cast<void>(isItself ? unlink(native.c_str()) : truncate(native.c_str(), 0));
}

// '*' stands for any text.
bool MatchesIgnoringCase(std::string_view pattern, std::string_view name) {
    std::size_t p = 0, n = 0, star = pattern.npos, resume = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            resume = n;
        } else if (p < pattern.size() && Cp1251Lower(pattern[p]) == Cp1251Lower(name[n])) {
            ++p;
            ++n;
        } else if (star != pattern.npos) {
            p = star + 1;
            n = ++resume;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == pattern.npos;
}

} // namespace

bool PathExists(const char* name) {
    struct stat status;
    return stat(ToNativePath(name).c_str(), &status) == 0;
}

bool IsPathMissing(const char* name) {
    struct stat status;
    return stat(ToNativePath(name).c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

bool IsPathWritable(const char* name) {
    return access(ToNativePath(name).c_str(), W_OK) == 0;
}

std::uint32_t RenamePath(const char* from, const char* to) {
    const std::string source = ToNativePath(from);
    const std::string target = ToNativePath(to);
    if (renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) return 0;
    if (errno == EXDEV) return MoveAcrossFileSystems(from, to);
    if (errno != EINVAL && errno != ENOSYS) return LastError();
    // A file system that cannot promise it: look first.
    if (PathExists(to)) return errorFileExists;
    return ErrorOf(std::rename(source.c_str(), target.c_str()));
}

std::uint32_t ReplacePath(const char* from, const char* to) {
    const std::string source = ToNativePath(from), target = ToNativePath(to);
    if (std::rename(source.c_str(), target.c_str()) != 0) return LastError();
    // Two names of one file are left as they are.
    return unlink(source.c_str()) == 0 || errno == ENOENT ? 0 : LastError();
}

std::uint32_t RemoveFile(const char* name) {
    return ErrorOf(unlink(ToNativePath(name).c_str()));
}

std::uint32_t MakeFolder(const char* name) {
    return ErrorOf(mkdir(ToNativePath(name).c_str(), 0777));
}

CopyOutcome CopyFileTo(const char* from, const char* to, const CopyMode& mode) {
    OpenHandle source, target;
    if (const std::uint32_t error = source.Open(from, {.access = accessRead})) return {.content = error};
    struct stat status;
    if (fstat(Descriptor(source.Get()), &status) != 0) return {.content = LastError()};
    const OpenMode replacing{.access = accessWrite,
                             .deny = accessRead | accessWrite,
                             .create = true,
                             .mustBeNew = mode.failIfExists,
                             .truncate = true,
                             .permissions = status.st_mode & 0777};
    if (const std::uint32_t error = target.Open(to, replacing)) return {.content = error};
    if (fstat(Descriptor(target.Get()), &status) != 0) return {.content = LastError()};
    CopyOutcome outcome{.content = CopyBytes(source.Get(), target.Get())};
    if (outcome.content == 0 && mode.withRights) {
        const RightsCopied rights = CopyRights(Descriptor(source.Get()), Descriptor(target.Get()));
        outcome.readingRights = rights.reading;
        outcome.settingRights = rights.setting;
    }
    const std::uint32_t late = target.Close();
    if (outcome.content == 0) outcome.content = late;
    if (outcome.content != 0) RemoveHalfCopy(status, to);
    return outcome;
}

std::vector<std::string> FindFiles(std::string_view pattern) {
    const std::size_t nameBegin = pattern.rfind('\\') + 1;
    const std::string folder = nameBegin == 0 ? "." : ToNativePath(pattern.substr(0, nameBegin));
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), &closedir);
    if (!entries) return names;
    while (const dirent* entry = readdir(entries.get())) {
        std::string name = FromNativePath(entry->d_name);
        if (!MatchesIgnoringCase(pattern.substr(nameBegin), name)) continue;
        struct stat file;
        if (fstatat(dirfd(entries.get()), entry->d_name, &file, 0) == 0 && !S_ISDIR(file.st_mode))
            names.push_back(std::move(name));
    }
    return names;
}

bool GetCurrentFolder(std::string& folder) {
    folder.clear();
    const std::unique_ptr<char, decltype(&std::free)> native(getcwd(nullptr, 0), &std::free);
    if (!native) return false;
    folder = FromNativePath(native.get());
    return true;
}

bool GetExecutableFileName(std::string& name) {
    name.clear();
    std::string native(4096, '\0');
    const ssize_t length = readlink("/proc/self/exe", native.data(), native.size());
    if (length <= 0 || static_cast<std::size_t>(length) == native.size()) return false;
    name = FromNativePath(std::string_view(native).substr(0, static_cast<std::size_t>(length)));
    return true;
}

} // namespace zynplatform
