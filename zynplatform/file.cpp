// SPDX-License-Identifier: MIT
#include "zynplatform/file.h"

#include "zynplatform/descriptor_impl.h"
#include "zynplatform/paths.h"
#include "zynplatform/sharelock.h"

#include <algorithm>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace zynplatform {

namespace {

// How often another file that has taken the name is opened instead.
constexpr int replacementsFollowed = 1000;

constexpr std::size_t largestTransfer = std::size_t{1} << 30;

// A missing file and a missing folder on the way to it are told apart.
std::uint32_t OpenError(const std::string& nativeName) {
    if (errno != ENOENT) return LastError();
    const std::size_t slash = nativeName.find_last_of('/');
    if (slash == std::string::npos || slash == 0) return errorFileNotFound;
    struct stat status;
    return stat(nativeName.substr(0, slash).c_str(), &status) == 0 ? errorFileNotFound : errorPathNotFound;
}

int OpenFlags(const OpenMode& mode) {
    const bool reads = (mode.access & accessRead) != 0;
    const bool writes = (mode.access & accessWrite) != 0;
    int flags = O_CLOEXEC | O_NOCTTY | (reads && writes ? O_RDWR : writes ? O_WRONLY : O_RDONLY);
    if (mode.create) flags |= O_CREAT;
    if (mode.create && mode.mustBeNew) flags |= O_EXCL;
    if (mode.append) flags |= O_APPEND;
    return flags;
}

UniqueDescriptor OpenByName(const std::string& name, int flags, unsigned permissions) {
    const auto openWith = [&](int more) {
        return UniqueDescriptor(Uninterrupted([&] { return open(name.c_str(), flags | more, permissions); }));
    };
    // Without O_NONBLOCK, opening a pipe would wait for its other end.
    UniqueDescriptor opened = openWith(O_NONBLOCK);
    struct stat status;
    // Somebody holds a lease on the file: he gives it up while the open waits.
    if (!opened && errno == EWOULDBLOCK && stat(name.c_str(), &status) == 0 && S_ISREG(status.st_mode))
        opened = openWith(0);
    return opened;
}

// A file open for reading is emptied by way of a second descriptor.
std::uint32_t Empty(int descriptor, const OpenMode& mode) {
    if (mode.access & accessWrite) return SetFileLength(descriptor, 0);
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    const UniqueDescriptor writer(
        Uninterrupted([&] { return open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY); }));
    return writer ? SetFileLength(writer.Get(), 0) : LastError();
}

// What must hold once the descriptor is open: no folder, and no conflict. From then on reading and writing
// wait.
std::uint32_t PrepareOpened(int descriptor, const struct stat& status, const OpenMode& mode) {
    if (S_ISDIR(status.st_mode)) return errorAccessDenied;
    const int flags = S_ISREG(status.st_mode) ? -1 : fcntl(descriptor, F_GETFL);
    if (flags >= 0) fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK);
    return TakeShareLock(descriptor, mode.access, mode.deny);
}

bool IsNamed(const struct stat& file, const std::string& name) {
    struct stat named;
    return stat(name.c_str(), &named) == 0 && IsSameFile(file, named);
}

} // namespace

std::uint32_t OpenFile(const char* name, const OpenMode& mode, FileHandle& handle) {
    handle = noFile;
    const std::string nativeName = ToNativePath(name);
    for (int attempts = 0; attempts < replacementsFollowed; ++attempts) {
        UniqueDescriptor descriptor = OpenByName(nativeName, OpenFlags(mode), mode.permissions);
        if (!descriptor) return OpenError(nativeName);
        struct stat status;
        if (fstat(descriptor.Get(), &status) != 0) return LastError();
        std::uint32_t error = PrepareOpened(descriptor.Get(), status, mode);
        const bool isPlain = S_ISREG(status.st_mode);
        if (isPlain && !IsNamed(status, nativeName)) {
            ReleaseLocks(descriptor.Get());
            continue;
        }
        if (error == 0 && isPlain && mode.truncate) error = Empty(descriptor.Get(), mode);
        if (error == 0) handle = HandleOf(descriptor.Release());
        return error;
    }
    return errorSharingViolation;
}

std::uint32_t CloseFile(FileHandle handle) {
    // Closing alone would leave the share mode in force for as long as a forked child has the file open.
    if (!IsInherited(handle)) ReleaseLocks(Descriptor(handle));
    return UniqueDescriptor(Descriptor(handle)).Close();
}

std::uint32_t ReadFile(FileHandle handle, void* buffer, std::size_t count, std::size_t& done) {
    for (done = 0; done < count;) {
        const ssize_t part = Uninterrupted([&] {
            return read(Descriptor(handle), static_cast<char*>(buffer) + done,
                        std::min(count - done, largestTransfer));
        });
        if (part < 0) return LastError();
        if (part == 0) break;
        done += static_cast<std::size_t>(part);
    }
    return 0;
}

std::uint32_t WriteFile(FileHandle handle, const void* buffer, std::size_t count) {
    const WriteSignalGuard noSignals;
    for (std::size_t done = 0; done < count;) {
        const ssize_t part = Uninterrupted([&] {
            return write(Descriptor(handle), static_cast<const char*>(buffer) + done,
                         std::min(count - done, largestTransfer));
        });
        if (part < 0) return LastError();
        if (part == 0) return errorDiskFull;
        done += static_cast<std::size_t>(part);
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
    const WriteSignalGuard noSignals;
    return Uninterrupted([&] { return ftruncate(Descriptor(handle), length); }) == 0 ? 0 : LastError();
}

bool IsPlainFile(FileHandle handle) {
    struct stat status;
    return fstat(Descriptor(handle), &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace zynplatform
