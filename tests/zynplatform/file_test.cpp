#include "zynplatform/file.h"

#include "support/temp_folder.h"
#include "zynplatform/syserror.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <vector>

using namespace zynplatform;

namespace {

constexpr unsigned both = accessRead | accessWrite;

TEST(FileTest, TwoOpensConflictExactlyWhenOneDoesWhatTheOtherDenies) {
    const TempFolder folder;
    folder.Write("f", "content");
    for (unsigned access1 = 1; access1 <= both; ++access1)
        for (unsigned deny1 = 0; deny1 <= both; ++deny1)
            for (unsigned access2 = 1; access2 <= both; ++access2)
                for (unsigned deny2 = 0; deny2 <= both; ++deny2) {
                    FileHandle first, second;
                    ASSERT_EQ(0u, OpenFile(folder.Path("f"), {.access = access1, .deny = deny1}, first));
                    const std::uint32_t expected =
                        (access1 & deny2) || (access2 & deny1) ? errorSharingViolation : errorSuccess;
                    EXPECT_EQ(expected,
                              OpenFile(folder.Path("f"), {.access = access2, .deny = deny2}, second))
                        << access1 << deny1 << access2 << deny2;
                    if (second != noFile) CloseFile(second);
                    CloseFile(first);
                }
}

TEST(FileTest, LoserOfAShareConflictLeavesTheFileAsItWas) {
    const TempFolder folder;
    folder.Write("f", "content");
    FileHandle reader, writer;
    ASSERT_EQ(0u, OpenFile(folder.Path("f"), {.access = accessRead, .deny = accessWrite}, reader));
    EXPECT_EQ(errorSharingViolation,
              OpenFile(folder.Path("f"), {.access = accessWrite, .create = true, .truncate = true}, writer));
    EXPECT_EQ("content", folder.Read("f"));
    CloseFile(reader);
    EXPECT_EQ(0u,
              OpenFile(folder.Path("f"), {.access = accessWrite, .create = true, .truncate = true}, writer));
    EXPECT_EQ("", folder.Read("f"));
    CloseFile(writer);
}

TEST(FileTest, ShareModeOutlivesOtherHandlesAndBindsOtherProcesses) {
    const TempFolder folder;
    folder.Write("f", "content");
    FileHandle holder, other;
    ASSERT_EQ(0u, OpenFile(folder.Path("f"), {.access = accessRead, .deny = accessWrite}, holder));
    ASSERT_EQ(0u, OpenFile(folder.Path("f"), {.access = accessRead}, other));
    CloseFile(other);
    const pid_t child = fork();
    if (child == 0) {
        FileHandle handle;
        // A forked child shares the descriptions it inherits, but an open of its own is another one.
        _exit(OpenFile(folder.Path("f"), {.access = accessWrite}, handle) == errorSharingViolation ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(0, status);
    CloseFile(holder);
}

TEST(FileTest, WriteOnlyFileNeedsNoRightToRead) {
    if (geteuid() == 0 && (setegid(65534) != 0 || seteuid(65534) != 0)) GTEST_SKIP();
    {
        const TempFolder folder;
        folder.Write("f", "x");
        chmod(folder.Native("f").c_str(), 0200);
        FileHandle first, second;
        EXPECT_EQ(0u, OpenFile(folder.Path("f"), {.access = accessWrite}, first));
        EXPECT_EQ(0u, OpenFile(folder.Path("f"), {.access = accessWrite}, second));
        CloseFile(second);
        EXPECT_EQ(errorSharingViolation,
                  OpenFile(folder.Path("f"), {.access = accessWrite, .deny = accessWrite}, second));
        EXPECT_EQ(errorAccessDenied, OpenFile(folder.Path("f"), {.access = accessRead}, second));
        CloseFile(first);
    }
    if (getuid() == 0) {
        EXPECT_EQ(0, seteuid(0) + setegid(0));
    }
}

TEST(FileThreadsTest, OfManyExclusiveOpensAtOnceExactlyOneWins) {
    const TempFolder folder;
    for (int round = 0; round < 50; ++round) {
        std::vector<FileHandle> handles(4, noFile);
        std::vector<std::thread> threads;
        for (FileHandle& handle : handles)
            threads.emplace_back([&] {
                OpenFile(folder.Path("f"),
                         {.access = accessWrite, .deny = both, .create = true, .truncate = true}, handle);
            });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(3, std::count(handles.begin(), handles.end(), noFile)) << round;
        for (const FileHandle handle : handles)
            if (handle != noFile) CloseFile(handle);
    }
}

TEST(FileTest, OpeningReportsWindowsNumbersAndNeverHangs) {
    const TempFolder folder;
    folder.Write("plain", "");
    mkfifo(folder.Native("pipe").c_str(), 0600);
    const struct {
        const char* name;
        OpenMode mode;
        std::uint32_t error;
    } cases[] = {
        {"missing", {}, errorFileNotFound},
        {"missing", {.access = accessWrite}, errorFileNotFound},
        {"no folder/file", {}, errorPathNotFound},
        {"no folder/file", {.access = accessWrite, .create = true}, errorPathNotFound},
        {"plain/file", {}, errorPathNotFound},
        {"", {}, errorAccessDenied}, // the folder itself
        {"plain", {.access = accessWrite, .create = true, .mustBeNew = true}, errorFileExists},
        {"pipe", {}, 0},
    };
    for (const auto& c : cases) {
        FileHandle handle;
        EXPECT_EQ(c.error, OpenFile(folder.Path(c.name), c.mode, handle)) << c.name;
        EXPECT_EQ(c.error != 0, handle == noFile) << c.name;
        if (handle != noFile) CloseFile(handle);
    }
}

TEST(FileTest, ForeignLockOnTheFileDelaysButDoesNotBlock) {
    const TempFolder folder;
    folder.Write("f", "x");
    const int foreign = open(folder.Native("f").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(0, flock(foreign, LOCK_EX));
    FileHandle handle;
    EXPECT_EQ(0u, OpenFile(folder.Path("f"), {.access = accessRead, .deny = both}, handle));
    CloseFile(handle);
    close(foreign);
}

TEST(FileTest, ReservingBeyondTheProcessLimitFailsAndChangesNothing) {
    const TempFolder folder;
    folder.Write("f", "content");
    FileHandle handle;
    ASSERT_EQ(0u, OpenFile(folder.Path("f"), {.access = accessWrite}, handle));
    EXPECT_EQ(0u, ReserveFile(handle, 100'000));
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit lowered{1000, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &lowered);
    EXPECT_EQ(errorDiskFull, ReserveFile(handle, 1001));
    EXPECT_EQ(0u, ReserveFile(handle, 1000));
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(7, GetFileLength(handle));
    CloseFile(handle);
}

} // namespace
