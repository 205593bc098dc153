#include "zynplatform/filesystem.h"

#include "support/temp_folder.h"
#include "zynplatform/file.h"
#include "zynplatform/syserror.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>

using namespace zynplatform;
namespace fs = std::filesystem;

namespace {

unsigned PermissionsOf(const fs::path& file) {
    return static_cast<unsigned>(fs::status(file).permissions());
}

TEST(FileSystem, RenameMovesAndNeverReplaces) {
    const TempFolder folder;
    folder.Write("a", "first");
    folder.Write("b", "second");
    fs::create_directory(folder.Native("d"));
    EXPECT_EQ(RenamePath(folder.Path("a"), folder.Path("b")), errorFileExists);
    EXPECT_EQ(RenamePath(folder.Path("a"), folder.Path("d")), errorFileExists);
    EXPECT_EQ(folder.Read("a") + folder.Read("b"), "firstsecond");
    EXPECT_EQ(RenamePath(folder.Path("none"), folder.Path("c")), errorFileNotFound);
    EXPECT_EQ(RenamePath(folder.Path("a"), folder.Path("d/c")), 0u);
    EXPECT_EQ(RenamePath(folder.Path("d"), folder.Path("e")), 0u);
    EXPECT_EQ(folder.Read("e/c"), "first");
    EXPECT_FALSE(folder.Has("a") || folder.Has("d"));
}

TEST(FileSystem, MoveToAnotherFileSystemKeepsContentAndRights) {
    const TempFolder folder;
    const fs::path target = "/dev/shm/" + folder.Native().filename().string();
    folder.Write("f", "content");
    fs::permissions(folder.Native("f"), fs::perms{0751});
    const std::uint32_t result = RenamePath(folder.Path("f"), target.c_str());
    if (result != 0) GTEST_SKIP() << "no second file system";
    EXPECT_FALSE(folder.Has("f"));
    EXPECT_EQ(PermissionsOf(target), 0751u);
    folder.Write("f", "other");
    EXPECT_EQ(RenamePath(folder.Path("f"), target.c_str()), errorFileExists);
    EXPECT_TRUE(folder.Has("f"));
    EXPECT_EQ(RenamePath(target.c_str(), folder.Path("g")), 0u);
    EXPECT_EQ(folder.Read("g"), "content");
    EXPECT_FALSE(fs::exists(target));
}

TEST(FileSystem, CopyReplacesTheWholeContentUnlessForbidden) {
    const TempFolder folder;
    for (const std::size_t size : {0u, 1u, 65536u, 200'001u}) {
        folder.Write("from", std::string(size, 'x'));
        EXPECT_EQ(CopyFileContent(folder.Path("from"), folder.Path("to"), true), 0u);
        EXPECT_EQ(CopyFileContent(folder.Path("from"), folder.Path("to"), true), errorFileExists);
        folder.Write("to", std::string(70'000, 'y'));
        EXPECT_EQ(CopyFileContent(folder.Path("from"), folder.Path("to"), false), 0u);
        EXPECT_EQ(folder.Read("to"), std::string(size, 'x'));
        EXPECT_EQ(RemoveFile(folder.Path("to")), 0u);
    }
}

TEST(FileSystem, CopyThatIsRefusedLeavesTheTargetAsItWas) {
    const TempFolder folder;
    folder.Write("f", "content");
    folder.Write("held", "mine");
    fs::create_hard_link(folder.Native("f"), folder.Native("link"));
    fs::create_symlink(folder.Native("f"), folder.Native("symlink"));
    FileHandle handle;
    ASSERT_EQ(OpenFile(folder.Path("held"), {.access = accessRead, .deny = accessRead | accessWrite}, handle),
              0u);
    const struct {
        const char *from, *to;
        std::uint32_t error;
    } cases[] = {
        {"f", "f", errorSharingViolation},
        {"f", "link", errorSharingViolation},
        {"f", "symlink", errorSharingViolation},
        {"f", "held", errorSharingViolation},
        {"held", "new", errorSharingViolation},
        {"none", "f", errorFileNotFound},
        {"", "f", errorAccessDenied},
        {"f", "", errorAccessDenied},
    };
    for (const auto& c : cases)
        EXPECT_EQ(CopyFileContent(folder.Path(c.from), folder.Path(c.to), false), c.error)
            << c.from << '>' << c.to;
    CloseFile(handle);
    EXPECT_EQ(folder.Read("f") + folder.Read("held"), "contentmine");
    EXPECT_FALSE(folder.Has("new"));
}

TEST(FileSystem, CopyThatBreaksOffLeavesNoHalfFile) {
    const TempFolder folder;
    folder.Write("f", std::string(100'000, 'x'));
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit lowered{70'000, limit.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &lowered);
    EXPECT_EQ(CopyFileContent(folder.Path("f"), folder.Path("copy"), false), errorDiskFull);
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);
    EXPECT_FALSE(folder.Has("copy"));
}

TEST(FileSystem, AccessRightsAreTheBitsAndTheAccessList) {
    const TempFolder folder;
    for (const char* name : {"plain", "listed", "to"})
        folder.Write(name, "x");
    fs::permissions(folder.Native("plain"), fs::perms{0640});
    // Version 2, then tag, rights and id of each entry: owner rw, user 1234 r, group r, mask rw, others none.
    constexpr std::uint16_t none = 0xFFFF;
    const std::uint16_t list[] = {2, 0,    1,    6,  none, none, 2,    4,  1234, 0,    4,
                                  4, none, none, 16, 6,    none, none, 32, 0,    none, none};
    const auto listOf = [&](const char* name) {
        char bytes[200];
        const ssize_t size =
            getxattr(folder.Native(name).c_str(), "system.posix_acl_access", bytes, sizeof bytes);
        return size < 0 ? std::string() : std::string(bytes, static_cast<std::size_t>(size));
    };
    if (setxattr(folder.Native("listed").c_str(), "system.posix_acl_access", list, sizeof list, 0) != 0)
        GTEST_SKIP() << "no access lists here";
    for (const char* from : {"listed", "plain", "listed"}) {
        AccessRights rights;
        EXPECT_EQ(GetAccessRights(folder.Path(from), rights), 0u);
        EXPECT_EQ(SetAccessRights(folder.Path("to"), rights), 0u);
        EXPECT_EQ(listOf("to"), listOf(from));
        EXPECT_EQ(PermissionsOf(folder.Native("to")), PermissionsOf(folder.Native(from)));
        EXPECT_EQ(listOf("to").empty(), from == std::string("plain"));
    }
    AccessRights rights;
    EXPECT_EQ(GetAccessRights(folder.Path("none"), rights), errorFileNotFound);
    EXPECT_EQ(SetAccessRights(folder.Path("none"), rights), errorFileNotFound);
}

} // namespace
