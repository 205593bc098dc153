// SPDX-License-Identifier: MIT
#include "zynplatform/replace.h"

#include "zynplatform/accessrights_impl.h"
#include "zynplatform/descriptor_impl.h"
#include "zynplatform/paths.h"
#include "zynplatform/patience_impl.h"
#include "zynplatform/sharelock.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace zynplatform {

namespace {

std::atomic<bool> isSyncedToDisk{true};

std::uint32_t Sync(int descriptor) {
    if (!isSyncedToDisk.load(std::memory_order_relaxed)) return 0;
    // What cannot be synced, such as a pipe or a folder on some file systems, needs none.
    return Uninterrupted([&] { return fsync(descriptor); }) == 0 || errno == EINVAL || errno == EROFS
               ? 0
               : LastError();
}

std::uint32_t WriteAll(int descriptor, TextPieces text) {
    std::uint32_t error = 0;
    for (const std::string_view piece : text)
        if (error == 0 && !piece.empty()) error = WriteFile(descriptor, piece.data(), piece.size());
    return error;
}

// Failures that only this way of saving has: the other way may go.
bool IsOfTheWay(int error) {
    switch (error) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
    case EIO:
    case ENOMEM:
    case EMFILE:
    case ENFILE:
        return false;
    default:
        return true;
    }
}

std::uint32_t ErrorOfTheWay() {
    return IsOfTheWay(errno) ? errorNotSupported : LastError();
}

bool IsSameFileAs(const struct stat& file, const std::string& path) {
    struct stat named;
    return stat(path.c_str(), &named) == 0 && IsSameFile(file, named);
}

std::string RealPath(const std::string& name) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(name.c_str(), nullptr), &std::free);
    return real ? real.get() : "";
}

// The path, without links, of an open file: what the system says, or else where its name leads now.
std::string PathOf(int descriptor, const struct stat& file, const std::string& name) {
    std::string path(PATH_MAX, '\0');
    const ssize_t length =
        readlink(("/proc/self/fd/" + std::to_string(descriptor)).c_str(), path.data(), path.size());
    path.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    if (path.starts_with('/') && IsSameFileAs(file, path)) return path;
    if (std::string real = RealPath(name); !real.empty()) return real;
    // A file that was deleted meanwhile comes into being again.
    const std::size_t slash = name.rfind('/') + 1;
    const std::string folder = RealPath(slash == 0 ? "." : name.substr(0, slash));
    return folder.empty() ? folder : folder + '/' + name.substr(slash);
}

} // namespace

Replacement::~Replacement() {
    if (m_temporary != noFile) {
        if (HasName(m_temporaryName, Descriptor(m_temporary))) unlinkat(m_folder, m_temporaryName.c_str(), 0);
        CloseFile(m_temporary);
    }
    UniqueDescriptor(m_folder).Close();
}

bool Replacement::HasName(const std::string& name, int descriptor) const {
    struct stat named, file;
    return fstatat(m_folder, name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           fstat(descriptor, &file) == 0 && IsSameFile(named, file);
}

// Whoever replaces a file has the turn of its temporary. One that nobody has is left from a killed process.
std::uint32_t Replacement::RemoveStale() const {
    const UniqueDescriptor found(
        openat(m_folder, m_temporaryName.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (found && !TakeTurn(found.Get(), Turn::saving)) return errorSharingViolation;
    std::uint32_t error = 0;
    if ((!found || HasName(m_temporaryName, found.Get())) &&
        unlinkat(m_folder, m_temporaryName.c_str(), 0) != 0 && errno != ENOENT)
        error = ErrorOfTheWay();
    if (found) ReleaseLocks(found.Get());
    return error;
}

std::uint32_t Replacement::MakeTemporary(unsigned access) {
    const int flags = (access & accessRead ? O_RDWR : O_WRONLY) | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    for (Patience patience(1000);;) {
        UniqueDescriptor made(
            Uninterrupted([&] { return openat(m_folder, m_temporaryName.c_str(), flags, 0600); }));
        // Between making it and taking its turn, another process may have taken it for stale.
        if (made && TakeTurn(made.Get(), Turn::saving) && TakeTurn(made.Get(), Turn::text) &&
            HasName(m_temporaryName, made.Get())) {
            m_temporary = HandleOf(made.Release());
            return 0;
        }
        if (!made) {
            if (errno != EEXIST) return ErrorOfTheWay();
            const std::uint32_t error = RemoveStale();
            if (error == 0) continue;
            if (error != errorSharingViolation) return error;
        }
        if (!patience.Wait()) return errorSharingViolation;
    }
}

std::uint32_t Replacement::Prepare(FileHandle file, const char* name, const OpenMode& mode, TextPieces text,
                                   std::initializer_list<const char*> ownNames) {
    const int old = Descriptor(file);
    struct stat status;
    if (fstat(old, &status) != 0) return LastError();
    if (!S_ISREG(status.st_mode) || (!(mode.deny & accessWrite) && IsWrittenByOthers(old)))
        return errorNotSupported;
    nlink_t names = 1;
    for (const char* own : ownNames)
        names += IsSameFileAs(status, ToNativePath(own));
    if (status.st_nlink > names) return errorNotSupported;

    const std::string path = PathOf(old, status, ToNativePath(name));
    const std::size_t slash = path.rfind('/');
    if (slash == path.npos) return status.st_nlink == 0 ? errorPathNotFound : errorNotSupported;
    m_name = path.substr(slash + 1);
    m_temporaryName = "." + m_name + ".zynsave";
    m_folder = open(path.substr(0, slash + 1).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (m_folder < 0) return ErrorOfTheWay();

    if (const std::uint32_t error = MakeTemporary(mode.access)) return error;
    const int temporary = Descriptor(m_temporary);
    if (const std::uint32_t error = WriteAll(temporary, text)) return error;
    if (!TakeOverIdentity(old, temporary)) return ErrorOfTheWay();
    AnnounceShare(temporary, mode.access, mode.deny);
    return Sync(temporary);
}

bool Replacement::LinkOldFile(const char* secondName) const {
    const std::string target = ToNativePath(secondName);
    if (linkat(m_folder, m_name.c_str(), AT_FDCWD, target.c_str(), 0) == 0) return true;
    return errno == EEXIST && unlink(target.c_str()) == 0 &&
           linkat(m_folder, m_name.c_str(), AT_FDCWD, target.c_str(), 0) == 0;
}

std::uint32_t Replacement::Commit(FileHandle& file, bool keepsTurns) {
    if (!HasName(m_temporaryName, Descriptor(m_temporary))) return errorNotSupported;
    if (renameat(m_folder, m_temporaryName.c_str(), m_folder, m_name.c_str()) != 0) return ErrorOfTheWay();
    if (!keepsTurns)
        for (const Turn turn : {Turn::saving, Turn::text})
            ReleaseTurn(Descriptor(m_temporary), turn);
    CloseFile(std::exchange(file, std::exchange(m_temporary, noFile)));
    return Sync(m_folder);
}

namespace {

// Makes sure that there is room for the first `length` bytes of a file, as far as can be known, without a
// change to what it holds: by asking the file system, or else by writing zeros behind it.
std::uint32_t Reserve(int file, std::int64_t present, std::int64_t length) {
    if (length == 0) return 0;
    const WriteSignalGuard noSignals;
    if (Uninterrupted([&] { return fallocate(file, FALLOC_FL_KEEP_SIZE, 0, length); }) == 0) return 0;
    if (errno != EOPNOTSUPP && errno != ENOSYS && errno != ENODEV) return LastError();
    const std::string block(4096, '\0');
    std::uint32_t error = SeekFile(file, 0, SeekFrom::end) < 0 ? LastError() : 0;
    for (std::int64_t left = length - present; error == 0 && left > 0; left -= 4096)
        error = WriteFile(file, block.data(), static_cast<std::size_t>(std::min<std::int64_t>(left, 4096)));
    if (error != 0) SetFileLength(file, present);
    return error;
}

} // namespace

std::uint32_t OverwriteFile(FileHandle handle, TextPieces text) {
    const int file = Descriptor(handle);
    struct stat status;
    if (fstat(file, &status) != 0) return LastError();
    if (!S_ISREG(status.st_mode)) return WriteAll(file, text);
    std::int64_t length = 0;
    for (const std::string_view piece : text)
        length += static_cast<std::int64_t>(piece.size());
    if (const std::uint32_t error = Reserve(file, status.st_size, length)) return error;
    if (SeekFile(handle, 0, SeekFrom::begin) < 0) return LastError();
    if (const std::uint32_t error = WriteAll(file, text)) return error;
    if (const std::uint32_t error = SetFileLength(handle, length)) return error;
    return Sync(file);
}

std::uint32_t CopyToNewFile(FileHandle from, const char* to, bool isPrivate) {
    // By a descriptor of its own, for `from` may be open for writing only.
    const std::string source = "/proc/self/fd/" + std::to_string(Descriptor(from)), target = ToNativePath(to);
    const UniqueDescriptor old(
        Uninterrupted([&] { return open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK); }));
    if (!old) return LastError();
    if (!IsPlainFile(old.Get())) return errorNotSupported;
    if (unlink(target.c_str()) != 0 && errno != ENOENT) return LastError();
    UniqueDescriptor made(Uninterrupted(
        [&] { return open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600); }));
    if (!made) return LastError();
    std::uint32_t error = CopyBytes(old.Get(), made.Get());
    if (error == 0 && !isPrivate) TakeOverAtMost(old.Get(), made.Get());
    if (error == 0) error = Sync(made.Get());
    if (error == 0) error = made.Close();
    if (error != 0) unlink(target.c_str());
    return error;
}

void SetSyncToDisk(bool isSynced) {
    isSyncedToDisk = isSynced;
}

bool IsSyncedToDisk() {
    return isSyncedToDisk;
}

} // namespace zynplatform
