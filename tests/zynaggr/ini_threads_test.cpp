#include "support/ini_model.h"

#include <atomic>
#include <cstdlib>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

const std::string top = "[first]\r\nstart=1\r\n", bottom = "[last]\r\nend=1\r\n";

bool IsWhole(const std::string& text) {
    return text.starts_with(top) && text.ends_with(bottom);
}

// What one of the processes does: edits of its own keys, each saved at once. Its exit status: 0 for edits of
// which some came through and the others left a text.
int EditAll(const CStringA& name, char prefix, int edits) {
    int refused = 0;
    CzynINI ini(name);
    for (int i = 0; i < edits; ++i) {
        const CStringA key = CStringA(prefix) + std::to_string(i % 10).c_str();
        if (ini.WriteString("own", key, std::to_string(i).c_str(), nullptr)) continue;
        ++refused;
        if (ini.GetErrDescription().IsEmpty()) return 100;
        usleep(1000); // a refusal is quick: all of them may fall into one save of the other's
    }
    return refused == edits ? 101 : 0;
}

} // namespace

TEST(IniThreadsTest, OneObjectServesSeveralThreads) {
    const TempFolder folder;
    folder.Write("f.ini", top + "\r\n[own]\r\n\r\n" + bottom);
    CzynINI ini(folder.Path("f.ini"));
    std::atomic<int> failures{0};
    const auto work = [&](const char* key) {
        for (int i = 0; i < 60; ++i) {
            CStringArray keys;
            if (!ini.WriteInt("own", key, i, nullptr) || ini.GetInt("own", key, -1, false) != i) ++failures;
            if (i % 20 == 0) ini.SetNeedReload();
            if (!ini.GetListKeys("own", keys) || !ini.isGroupeSet("last") || !ini.isFileExist()) ++failures;
            if (i % 10 == 9 && !ini.Delete("own", key)) ++failures;
        }
    };
    std::thread first(work, "a"), second(work, "b");
    first.join();
    second.join();
    EXPECT_EQ(0, failures);
    EXPECT_TRUE(IsWhole(folder.Read("f.ini")));
}

TEST(IniThreadsTest, ProcessesOnOneFileNeverDamageIt) {
    const TempFolder folder, temporary; // a lost race for the backup's name puts it into the temporary folder
    setenv("TEMP", temporary.Native().c_str(), 1);
    folder.Write("f.ini", top + "\r\n[own]\r\n\r\n" + bottom);
    const CStringA name = folder.Path("f.ini");
    for (const char prefix : {'a', 'b'})
        if (fork() == 0) _exit(EditAll(name, prefix, 200));
    // This process reads meanwhile: what it gets is a whole file or a refusal with its text.
    const StandingClock clock;
    int reads = 0;
    for (int running = 2; running > 0;) {
        OpenIni reader(name);
        if (reader.Parse()) {
            EXPECT_TRUE(reader.isParamSet("first", "start") && reader.isParamSet("last", "end"));
            ++reads;
        } else {
            EXPECT_FALSE(reader.GetErrDescription().IsEmpty());
        }
        usleep(500); // leaves the writers room
        int status = 0;
        if (waitpid(-1, &status, WNOHANG) <= 0) continue;
        EXPECT_EQ(0, status);
        --running;
    }
    unsetenv("TEMP");
    EXPECT_GT(reads, 0);
    EXPECT_TRUE(IsWhole(folder.Read("f.ini")));
}
