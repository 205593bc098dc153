#include "support/test.h"
#include "zynaggr/zynaggr.h"
#include "zynplatform/time.h"

#include <sys/wait.h>
#include <thread>

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

char lastLine[256];

void UseTheLibrary() {
    zynMessagePrint("child", 0);
    const CzynStackLogger logger("Child", true);
    std::tm time{};
    zynplatform::LocalTime(0, time);
    unsigned id = 0, depth = 0;
    std::sscanf(lastLine, "%*s t0x%x L%u:%*d Fun Child-<", &id, &depth);
    if (id != static_cast<unsigned>(gettid()) || depth != 1 ||
        CzynTranslate::Translate("one") != std::string_view("two"))
        _exit(1);
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
        for (int i = 0; i < 50; ++i)
            failed += StatusInChild(UseTheLibrary) != 0;
    }
    testing::internal::GetCapturedStdout();
    GlobalStackLogDestroy();
    CzynTranslate::SetShouldTranslate(false);
    EXPECT_EQ(failed, 0);
}

} // namespace
