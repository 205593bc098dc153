// SPDX-License-Identifier: MIT
#include "support/ini_model.h"
#include "zynaggr/zynaggr.h"
#include "zynplatform/registry.h"

TEST(LibraryThreads, DoNotDisturbEachOther) {
    constexpr int rounds = 100;
    const TempFolder folder;
    const Variable registry("ZYN_REGISTRY", folder.Native("registry"));
    CZynAtomicLong counter, busy;
    CzynTimeMeter meter;
    CzynINI ini("f.ini"); // without a folder, so that paths can't be expanded
    std::atomic<int> wrong{0};
    GlobalStackLogInit(nullptr, [](const char*) {});
    CzynTranslate::AddStringTranslationPair("one", "two");
    CzynTranslate::SetShouldTranslate(true);
    testing::internal::CaptureStdout();
    InFourThreads([&](char name) {
        for (int i = 0; i < rounds; ++i) {
            const CZynAtomicLongReseter reseter(&busy);
            const CzynStackLogger logger(CStringA(name), false);
            counter.Increment();
            meter.Start();
            wrong += meter.CheckTimeOut(60'000) || CzynTranslate::Translate("one") != std::string_view("two");
            wrong += ini.ExpandPath(".\\x") != ".\\x";
            const auto key = zynplatform::RegistryKey::OpenOrCreate("Software\\Common");
            wrong += !key || !key->SetNumber({&name, 1}, static_cast<unsigned>(i));
            SetStackLoggerMode(i % 10 != name % 10);
        }
    });
    testing::internal::GetCapturedStdout();
    GlobalStackLogDestroy();
    CzynTranslate::SetShouldTranslate(false);
    EXPECT_EQ(counter.Get() + busy.Get(), 4 * rounds);
    EXPECT_EQ(wrong, 0);
    const auto key = zynplatform::RegistryKey::Open("Software\\Common");
    for (const char* name : {"a", "b", "c", "d"})
        EXPECT_EQ(key->GetNumber(name), rounds - 1u);
}

TEST(LibraryThreads, MessagesDoNotMix) {
    testing::internal::CaptureStdout();
    InFourThreads([](char letter) {
        for (int i = 0; i < 150; ++i)
            zynMessagePrint(std::string(300, letter).c_str(), 0);
    });
    const std::string all = testing::internal::GetCapturedStdout();
    ASSERT_EQ(all.size(), 600u * 302);
    for (std::size_t at = 0; at < all.size(); at += 302)
        EXPECT_EQ(all.substr(at, 302), "\n\n" + std::string(300, all[at + 2]));
}

TEST(LibraryThreads, FileThatComesAndGoesIsReadWholeOrNotAtAll) {
    const TempFolder folder;
    std::jthread other([&](const std::stop_token& over) {
        std::error_code ignored;
        const auto path = folder.Native("f.ini");
        while (!over.stop_requested()) {
            folder.Write("new", "[s]\nk=" + std::string(5000, 'x') + "\n");
            fs::rename(folder.Native("new"), path, ignored);
            std::this_thread::yield();
            fs::remove(path, ignored);
            fs::create_directory(path, ignored); // can't be read
            std::this_thread::yield();
            fs::remove(path, ignored);
        }
    });
    for (int read = 0, refused = 0; read < 100 || refused < 100;) {
        OpenIni ini(folder.Path("f.ini"));
        const bool parsed = ini.Parse();
        EXPECT_TRUE(parsed || !ini.GetErrDescription().IsEmpty());
        const CStringA value = ini.GetString("s", "k", "none", false);
        EXPECT_TRUE(value == "none" || value.GetLength() == 5000);
        (parsed ? read : refused) += 1;
    }
}
