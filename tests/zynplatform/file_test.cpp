// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynplatform/file.h"
#include "zynplatform/syserror.h"

#include <chrono>
#include <fcntl.h>
#include <sys/file.h>

using namespace zynplatform;

constexpr unsigned both = accessRead | accessWrite;

// Open until the end of the scope, when that went well.
struct Opened {
    Opened(const CStringA& name, const OpenMode& mode) : error(OpenFile(name, mode, handle)) {}
    ~Opened() {
        if (handle != noFile) CloseFile(handle);
    }
    FileHandle handle = noFile;
    std::uint32_t error;
};

class FileTest : public testing::Test {
protected:
    FileTest() { folder.Write("f", "content"); }
    const TempFolder folder;
    const CStringA name = folder.Path("f");
};

TEST_F(FileTest, TwoOpensConflictExactlyWhenOneDoesWhatTheOtherDenies) {
    for (unsigned bits = 0; bits < 256; ++bits) {
        const OpenMode one{.access = bits & 3, .deny = bits >> 2 & 3};
        const OpenMode two{.access = bits >> 4 & 3, .deny = bits >> 6};
        if (one.access == 0 || two.access == 0) continue;
        const Opened first(name, one);
        const bool conflict = (one.access & two.deny) != 0 || (two.access & one.deny) != 0;
        EXPECT_EQ(0u, first.error);
        for ([[maybe_unused]] const int time : {1, 2}) // the second after the first has been closed
            EXPECT_EQ(conflict ? errorSharingViolation : errorSuccess, Opened(name, two).error) << bits;
    }
}

TEST_F(FileTest, ForkedChildNeitherKeepsNorEndsTheShareModesOfItsParent) {
    const OpenMode exclusive{.access = accessWrite, .deny = both};
    std::optional<Opened> holder(std::in_place, name, exclusive);
    const int copy = dup(static_cast<int>(holder->handle)); // what a child has too
    const pid_t child = fork();
    if (child == 0) {
        CloseFile(holder->handle);
        _exit(Opened(name, {}).error == errorSharingViolation ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(0, status);
    holder.reset();
    EXPECT_EQ(0u, Opened(name, exclusive).error);
    close(copy);
}

TEST_F(FileTest, WriteOnlyFileNeedsNoRightToRead) {
    chmod(folder.Native().c_str(), 0777);
    chmod(folder.Native("f").c_str(), 0222);
    if (geteuid() == 0 && (setegid(65534) != 0 || seteuid(65534) != 0)) GTEST_SKIP();
    const Opened first(name, {.access = accessWrite});
    EXPECT_EQ(0u, first.error);
    EXPECT_EQ(0u, Opened(name, {.access = accessWrite}).error);
    EXPECT_EQ(errorSharingViolation, Opened(name, {.access = accessWrite, .deny = accessWrite}).error);
    EXPECT_EQ(errorAccessDenied, Opened(name, {.access = accessRead}).error);
    EXPECT_TRUE(getuid() != 0 || seteuid(0) + setegid(0) == 0);
}

TEST(FileThreadsTest, OfManyExclusiveOpensAtOnceExactlyOneWins) {
    const TempFolder folder;
    const OpenMode exclusive{.access = accessWrite, .deny = both, .create = true, .truncate = true};
    for (int round = 0; round < 50; ++round) {
        std::optional<Opened> opens[4];
        InFourThreads([&](char number) { opens[number - 'a'].emplace(folder.Path("f"), exclusive); });
        EXPECT_EQ(3, std::ranges::count_if(opens, [](const auto& open) { return open->handle == noFile; }));
    }
}

TEST_F(FileTest, OpeningReportsWindowsNumbersAndNeverHangs) {
    mkfifo(folder.Native("pipe").c_str(), 0600);
    const std::tuple<const char*, OpenMode, std::uint32_t> cases[] = {
        {"missing", {}, errorFileNotFound},
        {"missing", {.access = accessWrite}, errorFileNotFound},
        {"no folder/file", {}, errorPathNotFound},
        {"no folder/file", {.access = accessWrite, .create = true}, errorPathNotFound},
        {"f/file", {}, errorPathNotFound},
        {"", {}, errorAccessDenied}, // the folder itself
        {"f", {.access = accessWrite, .create = true, .mustBeNew = true}, errorFileExists},
        {"pipe", {}, 0},
    };
    for (const auto& [file, mode, error] : cases) {
        const Opened opened(folder.Path(file), mode);
        EXPECT_EQ(error, opened.error) << file;
        EXPECT_EQ(error != 0, opened.handle == noFile) << file;
    }
}

TEST_F(FileTest, ForeignLockOnTheFileDelaysButDoesNotBlock) {
    const int foreign = open(folder.Native("f").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(0, flock(foreign, LOCK_EX));
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(0u, Opened(name, {.access = accessRead, .deny = both}).error);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2)); // once, not each time
    close(foreign);
}
