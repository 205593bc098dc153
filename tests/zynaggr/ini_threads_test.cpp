// SPDX-License-Identifier: MIT
#include "support/ini_model.h"

#include <sys/wait.h>

namespace {

const std::string top = "[first]\r\nstart=1\r\n", bottom = "[last]\r\nend=1\r\n";

bool IsWhole(const std::string& text) {
    return text.starts_with(top) && text.ends_with(bottom);
}

} // namespace

TEST(IniThreadsTest, OneObjectServesSeveralThreads) {
    const TempFolder folder;
    folder.Write("f.ini", top + "\r\n[own]\r\n\r\n" + bottom);
    CzynINI ini(folder.Path("f.ini"));
    std::atomic<int> failures{0};
    InFourThreads([&](char name) {
        const CStringA key(name);
        for (int i = 0; i < 30; ++i) {
            CStringArray keys;
            if (!ini.WriteInt("own", key, i, nullptr) || ini.GetInt("own", key, -1, false) != i) ++failures;
            if (i % 20 == 0) ini.SetNeedReload();
            if (!ini.GetListKeys("own", keys) || !ini.isGroupeSet("last") || !ini.isFileExist()) ++failures;
            if (i % 10 == 9 && !ini.Delete("own", key)) ++failures;
        }
    });
    EXPECT_EQ(0, failures);
    EXPECT_TRUE(IsWhole(folder.Read("f.ini")));
}

TEST(IniThreadsTest, ProcessesOnOneFileWaitForEachOtherAndNeverDamageIt) {
    const TempFolder folder;
    folder.Write("f.ini", top + "\r\n[own]\r\n\r\n" + bottom);
    const CStringA name = folder.Path("f.ini");
    int status = 0, refused = 0;
    for (const char* const key : {"a", "b", "c", "d"}) {
        if (fork() != 0) continue;
        CzynINI ini(name);
        for (int i = 0; i < 500; ++i) // each is saved at once
            refused += !ini.WriteInt("own", key, i, nullptr);
        _exit(refused);
    }
    // This process reads meanwhile.
    const StandingClock clock;
    for (int running = 4; running > 0; usleep(500)) {
        OpenIni reader(name);
        if (reader.isParamSet("first", "start"))
            EXPECT_TRUE(reader.isParamSet("last", "end"));
        else
            ++refused; // on a busy machine it may take longer than a reader waits
        if (waitpid(-1, &status, WNOHANG) <= 0) continue;
        refused += WEXITSTATUS(status);
        --running;
    }
    EXPECT_LE(refused, 20);
    EXPECT_TRUE(IsWhole(folder.Read("f.ini")));
    for (const auto& entry : fs::directory_iterator(folder.Native()))
        EXPECT_TRUE(entry.path().filename() == "f.ini" || entry.path().filename() == "f.ini.bak") << entry;
}
