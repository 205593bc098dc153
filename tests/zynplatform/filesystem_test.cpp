// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynplatform/file.h"
#include "zynplatform/filesystem.h"
#include "zynplatform/syserror.h"

#include <cstring>
#include <sys/xattr.h>

using namespace zynplatform;

TEST(FileSystem, RenameMovesAndNeverReplaces) {
    const TempFolder folder;
    folder.Write("a", "first");
    folder.Write("b", "second");
    fs::create_directory(folder.Native("d"));
    const std::tuple<const char*, const char*, std::uint32_t> cases[] = {
        {"a", "b", errorFileExists}, {"none", "c", errorFileNotFound}, {"a", "d/c", 0}, {"d", "e", 0}};
    for (const auto& [from, to, error] : cases)
        EXPECT_EQ(RenamePath(folder.Path(from), folder.Path(to)), error) << from << to;
    EXPECT_EQ(folder.Read("e/c") + folder.Read("b"), "firstsecond");
}

TEST(FileSystem, MoveToAnotherFileSystemKeepsContentAndRights) {
    const TempFolder folder;
    const fs::path target = "/dev/shm/" + folder.Native().filename().string();
    folder.Write("f", "content");
    fs::permissions(folder.Native("f"), fs::perms{0777});
    struct stat here, there;
    if (stat("/dev/shm", &there) != 0 || stat(folder.Native().c_str(), &here) != 0 ||
        here.st_dev == there.st_dev)
        GTEST_SKIP() << "no second file system";
    EXPECT_EQ(RenamePath(folder.Path("f"), target.c_str()), 0u);
    EXPECT_EQ(fs::status(target).permissions(), fs::perms{0777});
    EXPECT_FALSE(folder.Has("f"));
    folder.Write("f", "other");
    EXPECT_EQ(RenamePath(folder.Path("f"), target.c_str()), errorFileExists);
    EXPECT_EQ(RenamePath(target.c_str(), folder.Path("g")), 0u);
    EXPECT_EQ(folder.Read("f") + folder.Read("g"), "othercontent");
}

TEST(FileSystem, CopyThatIsRefusedLeavesTheTargetAsItWas) {
    const TempFolder folder;
    folder.Write("f", "content");
    folder.Write("held", "mine");
    fs::create_hard_link(folder.Native("f"), folder.Native("link"));
    FileHandle handle;
    ASSERT_EQ(OpenFile(folder.Path("held"), {.access = accessRead, .deny = accessRead | accessWrite}, handle),
              0u);
    const std::tuple<const char*, const char*, std::uint32_t> cases[] = {
        {"f", "f", errorSharingViolation},    {"f", "link", errorSharingViolation},
        {"f", "held", errorSharingViolation}, {"held", "new", errorSharingViolation},
        {"none", "f", errorFileNotFound},     {"", "f", errorAccessDenied}, // the folder itself
    };
    for (const auto& [from, to, error] : cases)
        EXPECT_EQ(CopyFileTo(folder.Path(from), folder.Path(to), {}).content, error) << from << to;
    CloseFile(handle);
    EXPECT_EQ(folder.Read("f") + folder.Read("held"), "contentmine");
    EXPECT_FALSE(folder.Has("new"));
}

TEST(FileSystem, AccessRightsAreTheBitsAndTheAccessList) {
    const TempFolder folder;
    for (const char* name : {"plain", "listed", "to"})
        folder.Write(name, "x");
    // Version 2; then tag, rights and id of each: owner rw, user 1234 r, group r, mask rw, others none.
    constexpr std::uint16_t x = 0xFFFF;
    const std::uint16_t list[] = {2, 0, 1, 6, x, x, 2, 4, 1234, 0, 4, 4, x, x, 16, 6, x, x, 32, 0, x, x};
    constexpr const char* attribute = "system.posix_acl_access";
    if (setxattr(folder.Native("listed").c_str(), attribute, list, sizeof list, 0) != 0)
        GTEST_SKIP() << "no access lists here";
    for (const std::string from : {"listed", "plain", "listed"}) {
        const CopyOutcome outcome = CopyFileTo(folder.Path(from), folder.Path("to"), {.withRights = true});
        EXPECT_EQ(outcome.content + outcome.readingRights + outcome.settingRights, 0u);
        char found[sizeof list + 1];
        const ssize_t size = getxattr(folder.Native("to").c_str(), attribute, found, sizeof found);
        EXPECT_EQ(size, from == "plain" ? -1 : static_cast<ssize_t>(sizeof list));
        EXPECT_TRUE(from == "plain" || std::memcmp(found, list, sizeof list) == 0);
        EXPECT_EQ(fs::status(folder.Native("to")).permissions(),
                  fs::status(folder.Native(from)).permissions());
    }
}
