#include "zynplatform/filesystem.h"

#include "zynplatform/cp1251.h"
#include "zynplatform/file.h"
#include "zynplatform/paths.h"
#include "zynplatform/syserror.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utility>

namespace zynplatform {

namespace {

constexpr const char* accessListAttribute = "system.posix_acl_access";

std::uint32_t ErrorOf(int result) {
    return result == 0 ? 0 : SystemErrorFromErrno(errno);
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

// The system copies between descriptors by itself; what it cannot copy that way goes through a buffer.
std::uint32_t CopyBytes(FileHandle from, FileHandle to) {
    for (;;) {
        const ssize_t part =
            sendfile(static_cast<int>(to), static_cast<int>(from), nullptr, std::size_t{1} << 30);
        if (part == 0) return 0;
        if (part > 0 || errno == EINTR) continue;
        if (errno != EINVAL && errno != ENOSYS) return SystemErrorFromErrno(errno);
        break;
    }
    constexpr std::size_t size = std::size_t{64} * 1024;
    const std::unique_ptr<char[]> buffer(new char[size]);
    for (std::size_t done = size; done == size;) {
        if (const std::uint32_t error = ReadFile(from, buffer.get(), size, done)) return error;
        if (const std::uint32_t error = WriteFile(to, buffer.get(), done)) return error;
    }
    return 0;
}

std::uint32_t MoveAcrossFileSystems(const char* from, const char* to) {
    if (const std::uint32_t error = CopyFileContent(from, to, true)) return error;
    AccessRights rights;
    if (GetAccessRights(from, rights) == 0) SetAccessRights(to, rights);
    return RemoveFile(from);
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

bool IsPathWritable(const char* name) {
    return access(ToNativePath(name).c_str(), W_OK) == 0;
}

std::uint32_t RenamePath(const char* from, const char* to) {
    const std::string source = ToNativePath(from);
    const std::string target = ToNativePath(to);
    if (renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) return 0;
    if (errno == EXDEV) return MoveAcrossFileSystems(from, to);
    if (errno != EINVAL && errno != ENOSYS) return SystemErrorFromErrno(errno);
    // A file system that cannot promise it: look first.
    if (PathExists(to)) return SystemErrorFromErrno(EEXIST);
    return ErrorOf(std::rename(source.c_str(), target.c_str()));
}

std::uint32_t RemoveFile(const char* name) {
    return ErrorOf(unlink(ToNativePath(name).c_str()));
}

std::uint32_t MakeFolder(const char* name) {
    return ErrorOf(mkdir(ToNativePath(name).c_str(), 0777));
}

std::uint32_t CopyFileContent(const char* from, const char* to, bool failIfExists) {
    OpenHandle source;
    if (const std::uint32_t error = source.Open(from, {.access = accessRead})) return error;
    AccessRights rights;
    if (const std::uint32_t error = GetAccessRights(from, rights)) return error;
    OpenHandle target;
    const OpenMode replacing{.access = accessWrite,
                             .deny = accessRead | accessWrite,
                             .create = true,
                             .mustBeNew = failIfExists,
                             .truncate = true,
                             .permissions = rights.permissions & 0777};
    if (const std::uint32_t error = target.Open(to, replacing)) return error;
    std::uint32_t error = CopyBytes(source.Get(), target.Get());
    if (error == 0) error = target.Close();
    if (error != 0) RemoveFile(to);
    return error;
}

std::uint32_t GetAccessRights(const char* name, AccessRights& rights) {
    const std::string native = ToNativePath(name);
    struct stat status;
    if (stat(native.c_str(), &status) != 0) return SystemErrorFromErrno(errno);
    rights.permissions = status.st_mode & 07777;
    rights.accessList.clear();
    const ssize_t size = getxattr(native.c_str(), accessListAttribute, nullptr, 0);
    if (size <= 0) return 0; // no list, or a file system without them
    rights.accessList.resize(static_cast<std::size_t>(size));
    const ssize_t read =
        getxattr(native.c_str(), accessListAttribute, rights.accessList.data(), rights.accessList.size());
    if (read < 0) return SystemErrorFromErrno(errno);
    rights.accessList.resize(static_cast<std::size_t>(read));
    return 0;
}

std::uint32_t SetAccessRights(const char* name, const AccessRights& rights) {
    const std::string native = ToNativePath(name);
    if (chmod(native.c_str(), static_cast<mode_t>(rights.permissions)) != 0)
        return SystemErrorFromErrno(errno);
    if (!rights.accessList.empty())
        return ErrorOf(setxattr(native.c_str(), accessListAttribute, rights.accessList.data(),
                                rights.accessList.size(), 0));
    // A list that the target had from before must not stay beside bits that say otherwise.
    if (removexattr(native.c_str(), accessListAttribute) == 0 || errno == ENODATA || errno == EOPNOTSUPP)
        return 0;
    return SystemErrorFromErrno(errno);
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
