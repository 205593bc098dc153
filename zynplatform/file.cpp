#include "zynplatform/file.h"

#include "zynplatform/paths.h"
#include "zynplatform/sharelock.h"
#include "zynplatform/syserror.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zynplatform {

namespace {

constexpr std::size_t largestTransfer = std::size_t{1} << 30;

int Descriptor(FileHandle handle) {
    return static_cast<int>(handle);
}

std::uint32_t LastError() {
    return SystemErrorFromErrno(errno);
}

// A missing file and a missing folder on the way to it are told apart.
std::uint32_t OpenError(const std::string& nativeName) {
    if (errno != ENOENT) return LastError();
    const std::size_t slash = nativeName.find_last_of('/');
    if (slash == std::string::npos || slash == 0) return errorFileNotFound;
    struct stat status;
    return stat(nativeName.substr(0, slash).c_str(), &status) == 0 ? errorFileNotFound : errorPathNotFound;
}

int OpenFlags(const OpenMode& mode) {
    // Without O_NONBLOCK, opening a pipe would wait for its other end; regular files do not care.
    int flags = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    const bool reads = (mode.access & accessRead) != 0;
    const bool writes = (mode.access & accessWrite) != 0 || mode.truncate;
    flags |= reads && writes ? O_RDWR : writes ? O_WRONLY : O_RDONLY;
    if (mode.create) flags |= O_CREAT;
    if (mode.create && mode.mustBeNew) flags |= O_EXCL;
    if (mode.append) flags |= O_APPEND;
    return flags;
}

// What must hold once the descriptor is open: no folder, no conflict, and only then an emptied file.
std::uint32_t PrepareOpened(int descriptor, const OpenMode& mode) {
    struct stat status;
    if (fstat(descriptor, &status) != 0) return LastError();
    if (S_ISDIR(status.st_mode)) return errorAccessDenied;
    if (const std::uint32_t error = TakeShareLock(descriptor, mode.access, mode.deny)) return error;
    if (mode.truncate && S_ISREG(status.st_mode) && ftruncate(descriptor, 0) != 0) return LastError();
    return 0;
}

} // namespace

std::uint32_t OpenFile(const char* name, const OpenMode& mode, FileHandle& handle) {
    handle = noFile;
    const std::string nativeName = ToNativePath(name);
    int descriptor;
    do
        descriptor = open(nativeName.c_str(), OpenFlags(mode), mode.permissions);
    while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0) return OpenError(nativeName);
    if (const std::uint32_t error = PrepareOpened(descriptor, mode)) {
        close(descriptor);
        return error;
    }
    handle = descriptor;
    return 0;
}

std::uint32_t CloseFile(FileHandle handle) {
    // Not retried when interrupted: the descriptor is gone all the same.
    return close(Descriptor(handle)) == 0 || errno == EINTR ? 0 : LastError();
}

std::uint32_t ReadFile(FileHandle handle, void* buffer, std::size_t count, std::size_t& done) {
    for (done = 0; done < count;) {
        const ssize_t part = read(Descriptor(handle), static_cast<char*>(buffer) + done,
                                  std::min(count - done, largestTransfer));
        if (part > 0)
            done += static_cast<std::size_t>(part);
        else if (part == 0)
            break;
        else if (errno != EINTR)
            return LastError();
    }
    return 0;
}

std::uint32_t WriteFile(FileHandle handle, const void* buffer, std::size_t count) {
    for (std::size_t done = 0; done < count;) {
        const ssize_t part = write(Descriptor(handle), static_cast<const char*>(buffer) + done,
                                   std::min(count - done, largestTransfer));
        if (part > 0)
            done += static_cast<std::size_t>(part);
        else if (part == 0)
            return errorDiskFull;
        else if (errno != EINTR)
            return LastError();
    }
    return 0;
}

std::int64_t SeekFile(FileHandle handle, std::int64_t offset, SeekFrom from) {
    const int whence = from == SeekFrom::begin ? SEEK_SET : from == SeekFrom::current ? SEEK_CUR : SEEK_END;
    return lseek(Descriptor(handle), offset, whence);
}

std::int64_t GetFileLength(FileHandle handle) {
    struct stat status;
    return fstat(Descriptor(handle), &status) == 0 ? status.st_size : -1;
}

std::uint32_t SetFileLength(FileHandle handle, std::int64_t length) {
    int result;
    do
        result = ftruncate(Descriptor(handle), length);
    while (result != 0 && errno == EINTR);
    return result == 0 ? 0 : LastError();
}

std::uint32_t ReserveFile(FileHandle handle, std::int64_t length) {
    rlimit limit;
    if (getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY &&
        static_cast<std::uint64_t>(length) > limit.rlim_cur)
        return errorDiskFull;
    const std::int64_t present = GetFileLength(handle);
    if (present < 0 || length <= present) return 0;
    int result;
    do
        result = fallocate(Descriptor(handle), FALLOC_FL_KEEP_SIZE, present, length - present);
    while (result != 0 && errno == EINTR);
    // A file system that cannot reserve leaves it to the writing.
    return result != 0 && (errno == ENOSPC || errno == EDQUOT) ? errorDiskFull : 0;
}

} // namespace zynplatform
