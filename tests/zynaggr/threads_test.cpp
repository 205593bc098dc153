#include "support/ini_model.h"
#include "zynaggr/zynaggr.h"
#include "zynplatform/registry.h"

#include <thread>

namespace {

template <class Work> void InFourThreads(Work work) {
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back(work, number);
    for (std::thread& thread : threads)
        thread.join();
}

TEST(LibraryThreads, DoNotDisturbEachOther) {
    constexpr int rounds = 100;
    const TempFolder folder;
    setenv("ZYN_REGISTRY", folder.Native("registry").c_str(), 1);
    CZynAtomicLong counter, busy;
    CZynCriticalSection section;
    CzynTimeMeter meter;
    CzynINI ini("f.ini"); // without a folder, so that paths can't be expanded
    int guarded = 0;
    std::atomic<int> wrong{0};
    GlobalStackLogInit(nullptr, [](const char*) {});
    CzynTranslate::AddStringTranslationPair("one", "two");
    CzynTranslate::SetShouldTranslate(true);
    testing::internal::CaptureStdout();
    InFourThreads([&](int number) {
        const CStringA name(std::to_string(number).c_str());
        for (int i = 0; i < rounds; ++i) {
            const CZynAtomicLongReseter reseter(&busy);
            const CzynStackLogger logger(name, false);
            counter.Increment();
            meter.Start();
            wrong += meter.CheckTimeOut(60'000) || CzynTranslate::Translate("one") != std::string_view("two");
            wrong += ini.ExpandPath(".\\x") != ".\\x";
            {
                const CzynEnterCriticalSection lock(&section);
                ++guarded;
            }
            const auto key = zynplatform::RegistryKey::OpenOrCreate("Software\\Common");
            wrong += !key || !key->SetNumber(name.View(), static_cast<unsigned>(i));
            SetStackLoggerMode(i % 10 != number);
        }
    });
    testing::internal::GetCapturedStdout();
    GlobalStackLogDestroy();
    CzynTranslate::SetShouldTranslate(false);
    EXPECT_EQ(counter.Get() + guarded + busy.Get(), 8 * rounds);
    EXPECT_EQ(wrong, 0);
    const auto key = zynplatform::RegistryKey::Open("Software\\Common");
    for (const char* name : {"0", "1", "2", "3"})
        EXPECT_EQ(key->GetNumber(name), rounds - 1u);
    unsetenv("ZYN_REGISTRY");
}

TEST(LibraryThreads, FileThatComesAndGoesIsReadWholeOrNotAtAll) {
    const TempFolder folder;
    const CStringA name = folder.Path("f.ini");
    std::atomic<bool> isOver{false};
    std::thread other([&] {
        std::error_code ignored;
        const std::string path = folder.Native("f.ini");
        while (!isOver) {
            folder.Write("new", "[s]\nk=" + std::string(5000, 'x') + "\n");
            std::filesystem::rename(folder.Native("new"), path, ignored);
            std::this_thread::yield();
            std::filesystem::remove(path, ignored);
            std::filesystem::create_directory(path, ignored); // can't be read
            std::this_thread::yield();
            std::filesystem::remove(path, ignored);
        }
    });
    for (int read = 0, refused = 0; read < 100 || refused < 100;) {
        OpenIni ini(name);
        const bool parsed = ini.Parse();
        EXPECT_TRUE(parsed || !ini.GetErrDescription().IsEmpty());
        const CStringA value = ini.GetString("s", "k", "none", false);
        EXPECT_TRUE(value == "none" || value.GetLength() == 5000);
        (parsed ? read : refused) += 1;
    }
    isOver = true;
    other.join();
}

} // namespace
