// SPDX-License-Identifier: MIT
#include "zynplatform/accessrights_impl.h"

#include "zynplatform/descriptor_impl.h"

#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace zynplatform {

namespace {

constexpr const char* accessList = "system.posix_acl_access";

bool HasNoAttributes(int error) {
    return error == ENODATA || error == EOPNOTSUPP || error == ENOSYS;
}

// What a call tells that fills a buffer, asked first with none; nothing when it fails.
template <class Call> std::optional<std::string> Filled(Call call) {
    std::string value;
    for (;;) {
        const ssize_t size = call(nullptr, std::size_t{0});
        if (size < 0) return {};
        value.resize(static_cast<std::size_t>(size));
        if (size == 0) return value;
        const ssize_t filled = call(value.data(), value.size());
        if (filled < 0 && errno == ERANGE) continue; // it has grown meanwhile
        if (filled < 0) return {};
        value.resize(static_cast<std::size_t>(filled));
        return value;
    }
}

std::optional<std::string> GetAttribute(int descriptor, const char* name) {
    return Filled([&](char* out, std::size_t size) { return fgetxattr(descriptor, name, out, size); });
}

// Nothing when they cannot be had; none where the file system has no attributes.
std::optional<std::vector<std::string>> ListAttributes(int descriptor) {
    const auto list = Filled([&](char* out, std::size_t size) { return flistxattr(descriptor, out, size); });
    std::vector<std::string> names;
    if (!list) return HasNoAttributes(errno) ? std::optional(names) : std::nullopt;
    for (std::size_t begin = 0; begin < list->size(); begin += names.back().size() + 1)
        names.emplace_back(list->c_str() + begin);
    return names;
}

bool RemoveAttribute(int descriptor, const char* name) {
    return fremovexattr(descriptor, name) == 0 || HasNoAttributes(errno);
}

bool TakeOverAttributes(int from, int to) {
    const auto wanted = ListAttributes(from), present = ListAttributes(to);
    if (!wanted || !present) return false;
    for (const std::string& name : *present)
        if (!GetAttribute(from, name.c_str()) && !RemoveAttribute(to, name.c_str())) return false;
    for (const std::string& name : *wanted) {
        const auto value = GetAttribute(from, name.c_str());
        if (!value) return false;
        if (GetAttribute(to, name.c_str()) != value &&
            fsetxattr(to, name.c_str(), value->data(), value->size(), 0) != 0)
            return false;
    }
    return true;
}

bool TakeOverOwner(const struct stat& wanted, int to) {
    struct stat present;
    if (fstat(to, &present) != 0) return false;
    const bool hasOwner = present.st_uid == wanted.st_uid, hasGroup = present.st_gid == wanted.st_gid;
    return (hasOwner && hasGroup) || fchown(to, hasOwner ? static_cast<uid_t>(-1) : wanted.st_uid,
                                            hasGroup ? static_cast<gid_t>(-1) : wanted.st_gid) == 0;
}

} // namespace

RightsCopied CopyRights(int from, int to) {
    struct stat status;
    if (fstat(from, &status) != 0) return {.reading = LastError()};
    const auto list = GetAttribute(from, accessList);
    if (!list && !HasNoAttributes(errno)) return {.reading = LastError()};
    if (fchmod(to, status.st_mode & 07777) != 0) return {.setting = LastError()};
    // A list that the target had from before must not stay beside bits that say otherwise.
    const bool isSet = list ? fsetxattr(to, accessList, list->data(), list->size(), 0) == 0
                            : RemoveAttribute(to, accessList);
    return {.setting = isSet ? 0 : LastError()};
}

bool TakeOverIdentity(int from, int to) {
    struct stat status;
    return fstat(from, &status) == 0 && TakeOverOwner(status, to) && TakeOverAttributes(from, to) &&
           fchmod(to, status.st_mode & 07777) == 0;
}

void TakeOverAtMost(int from, int to) {
    if (TakeOverIdentity(from, to)) return;
    struct stat status, present;
    if (fstat(from, &status) != 0 || fstat(to, &present) != 0) return;
    RemoveAttribute(to, accessList);
    mode_t bits = status.st_mode & 0777;
    const bool hasGroup =
        present.st_gid == status.st_gid || fchown(to, static_cast<uid_t>(-1), status.st_gid) == 0;
    if (GetAttribute(from, accessList)) {
        bits &= 0700; // whoever is on the list may have fewer rights than the bits say
    } else if (!hasGroup) {
        // Members of the file's group may be anybody to this one: what they and all others may do.
        const mode_t everybody = (bits >> 3) & bits & 07;
        bits = (bits & 0700) | everybody << 3 | everybody;
    }
    fchmod(to, bits);
}

} // namespace zynplatform
