#include "zynplatform/filesystem.h"

#include "support/temp_folder.h"
#include "zynplatform/file.h"
#include "zynplatform/syserror.h"

#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>

using namespace zynplatform;

namespace {

unsigned ModeOf(const TempFolder& folder, const char* name) {
    return static_cast<unsigned>(std::filesystem::status(folder.Native(name)).permissions());
}

TEST(FileSystemTest, RenameMovesAndNeverReplaces) {
    const TempFolder folder;
    folder.Write("a", "first");
    folder.Write("b", "second");
    EXPECT_EQ(errorFileExists, RenamePath(folder.Path("a"), folder.Path("b")));
    EXPECT_EQ("firstsecond", folder.Read("a") + folder.Read("b"));
    EXPECT_EQ(errorFileNotFound, RenamePath(folder.Path("none"), folder.Path("c")));
    EXPECT_EQ(0u, RenamePath(folder.Path("a"), folder.Path("c")));
    EXPECT_EQ("first", folder.Read("c"));
    EXPECT_FALSE(folder.Has("a"));
    // Another file system, where there is one.
    const CStringA elsewhere("/dev/shm/zynaggr-rename-test");
    if (std::filesystem::exists("/dev/shm")) {
        RemoveFile(elsewhere);
        EXPECT_EQ(0u, RenamePath(folder.Path("c"), elsewhere));
        EXPECT_FALSE(folder.Has("c"));
        EXPECT_EQ(0u, RenamePath(elsewhere, folder.Path("d")));
        EXPECT_EQ("first", folder.Read("d"));
    }
}

TEST(FileSystemTest, CopyKeepsShareModesAndTheSource) {
    const TempFolder folder;
    folder.Write("from", std::string(300'000, 'x'));
    chmod(folder.Native("from").c_str(), 0640);
    EXPECT_EQ(0u, CopyFileContent(folder.Path("from"), folder.Path("to"), true));
    EXPECT_EQ(folder.Read("from"), folder.Read("to"));
    EXPECT_EQ(0u, ModeOf(folder, "to") & ~0640u); // never more than the source allows
    EXPECT_EQ(errorFileExists, CopyFileContent(folder.Path("from"), folder.Path("to"), true));
    EXPECT_EQ(errorSharingViolation, CopyFileContent(folder.Path("from"), folder.Path("from"), false));
    EXPECT_EQ(300'000u, folder.Read("from").size());
    EXPECT_EQ(errorAccessDenied, CopyFileContent(folder.Path(), folder.Path("to"), false));

    FileHandle holder;
    ASSERT_EQ(0u, OpenFile(folder.Path("from"), {.access = accessWrite, .deny = accessRead}, holder));
    EXPECT_EQ(errorSharingViolation, CopyFileContent(folder.Path("from"), folder.Path("new"), false));
    EXPECT_FALSE(folder.Has("new"));
    CloseFile(holder);
}

TEST(FileSystemTest, CopyOntoAFullDiskLeavesNoHalfFile) {
    const TempFolder folder;
    folder.Write("from", std::string(100'000, 'x'));
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit lowered{50'000, limit.rlim_max};
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &lowered);
    const std::uint32_t error = CopyFileContent(folder.Path("from"), folder.Path("to"), false);
    setrlimit(RLIMIT_FSIZE, &limit);
    signal(SIGXFSZ, SIG_DFL);
    EXPECT_EQ(errorDiskFull, error);
    EXPECT_FALSE(folder.Has("to"));
}

TEST(FileSystemTest, AccessRightsAreCopiedWithTheirList) {
    const TempFolder folder;
    folder.Write("from", "");
    folder.Write("to", "");
    chmod(folder.Native("from").c_str(), 0604);
    AccessRights rights;
    ASSERT_EQ(0u, GetAccessRights(folder.Path("from"), rights));
    EXPECT_EQ(0u, SetAccessRights(folder.Path("to"), rights));
    EXPECT_EQ(0604u, ModeOf(folder, "to"));
    EXPECT_EQ(errorFileNotFound, SetAccessRights(folder.Path("none"), rights));

    // user::rw-, user:7:r--, group::---, mask::r--, other::---, as the system keeps it.
    const unsigned char list[] = {2,    0,    0,    0,    1,    0,    6,    0,    0xFF, 0xFF, 0xFF,
                                  0xFF, 2,    0,    4,    0,    7,    0,    0,    0,    4,    0,
                                  0,    0,    0xFF, 0xFF, 0xFF, 0xFF, 0x10, 0,    4,    0,    0xFF,
                                  0xFF, 0xFF, 0xFF, 0x20, 0,    0,    0,    0xFF, 0xFF, 0xFF, 0xFF};
    const char* const name = "system.posix_acl_access";
    if (setxattr(folder.Native("from").c_str(), name, list, sizeof list, 0) != 0)
        GTEST_SKIP() << "no access lists";
    ASSERT_EQ(0u, GetAccessRights(folder.Path("from"), rights));
    EXPECT_EQ(0u, SetAccessRights(folder.Path("to"), rights));
    char copied[sizeof list];
    EXPECT_EQ(static_cast<ssize_t>(sizeof list),
              getxattr(folder.Native("to").c_str(), name, copied, sizeof copied));
    EXPECT_EQ(0, std::memcmp(list, copied, sizeof list));
    // From a file without a list, the list goes.
    folder.Write("plain", "");
    ASSERT_EQ(0u, GetAccessRights(folder.Path("plain"), rights));
    EXPECT_EQ(0u, SetAccessRights(folder.Path("to"), rights));
    EXPECT_EQ(-1, getxattr(folder.Native("to").c_str(), name, copied, sizeof copied));
}

} // namespace
