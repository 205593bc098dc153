// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynaggr/zynaggr.h"
#include "zynplatform/time.h"

static char lastLine[256];

[[noreturn]] static void UseTheLibraryInAChild() {
    alarm(20); // ends a child that hangs
    zynMessagePrint("child", 0);
    const CzynStackLogger logger("Child", true);
    std::tm time{};
    zynplatform::LocalTime(0, time);
    unsigned id = 0, depth = 0;
    std::sscanf(lastLine, "%*s t0x%x L%u:%*d Fun Child-<", &id, &depth);
    _exit(id != static_cast<unsigned>(gettid()) || depth != 1 ||
          CzynTranslate::Translate("one") != std::string_view("two"));
}

TEST(ForkThreads, ChildPrintsLogsAndTranslatesWhateverOtherThreadsAreDoing) {
    int failed = 0;
    CzynTranslate::AddStringTranslationPair("one", "two");
    CzynTranslate::SetShouldTranslate(true);
    GlobalStackLogInit(nullptr, [](const char* line) { std::strncpy(lastLine, line, sizeof lastLine - 1); });
    testing::internal::CaptureStdout();
    {
        const CzynStackLogger logger("Parent", true);
        const auto work = [](const std::stop_token& over) {
            while (!over.stop_requested()) {
                std::thread([] { const CzynStackLogger ofANewThread("Other", true); }).join();
                zynMessagePrint("parent", 0);
            }
        };
        const auto convert = [](const std::stop_token& over) {
            for (std::tm time{}; !over.stop_requested();)
                zynplatform::LocalTime(0, time);
        };
        const std::jthread others[] = {std::jthread(work), std::jthread(convert)};
        for (int i = 0, status = 0; i < 50; ++i) {
            if (fork() == 0) UseTheLibraryInAChild();
            failed += wait(&status) < 0 || status != 0;
        }
    }
    testing::internal::GetCapturedStdout();
    GlobalStackLogDestroy();
    CzynTranslate::SetShouldTranslate(false);
    EXPECT_EQ(failed, 0);
}
