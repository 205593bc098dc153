#include "zynaggr/zynaggr.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

// What the status of a child becomes that does this; a child that hangs is killed.
int StatusInChild(void (*work)()) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(20);
        work();
        _exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

TEST(ForkThreads, ChildPrintsWhileOthersPrint) {
    int failed = 0;
    testing::internal::CaptureStdout();
    {
        const auto work = [](const std::stop_token& over) {
            while (!over.stop_requested())
                zynMessagePrint("parent", 0);
        };
        const std::jthread others[] = {std::jthread(work), std::jthread(work)};
        for (int i = 0; i < 20; ++i)
            failed += StatusInChild([] { zynMessagePrint("child", 0); }) != 0;
    }
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(failed, 0);
}

} // namespace
