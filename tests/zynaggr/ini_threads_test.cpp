#include "support/temp_folder.h"
#include "zynaggr/ini.h"

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr const char* frame = "[first]\r\nstart=1\r\n\r\n[own]\r\n\r\n[last]\r\nend=1\r\n";

bool IsWhole(const std::string& text) {
    return text.starts_with("[first]\r\nstart=1\r\n") && text.ends_with("[last]\r\nend=1\r\n");
}

TEST(IniThreadsTest, OneObjectServesSeveralThreads) {
    const TempFolder folder;
    folder.Write("f.ini", frame);
    CzynINI ini(folder.Path("f.ini"));
    std::atomic<int> failures{0};
    const auto work = [&](int number) {
        const CStringA key = CStringA("key") + static_cast<char>('0' + number);
        for (int i = 0; i < 60; ++i) {
            if (!ini.WriteInt("own", key, i, nullptr)) ++failures;
            if (ini.GetInt("own", key, -1, false) != i) ++failures;
            if (i % 20 == 0) ini.SetNeedReload();
            CStringArray keys;
            if (!ini.GetListKeys("own", keys) || !ini.isGroupeSet("last") || !ini.isFileExist()) ++failures;
            if (i % 10 == 9 && !ini.Delete("own", key)) ++failures;
        }
    };
    std::thread first(work, 1), second(work, 2);
    first.join();
    second.join();
    EXPECT_EQ(0, failures);
    EXPECT_TRUE(IsWhole(folder.Read("f.ini")));
}

// One of the processes: edits keys of its own, each edit saved at once. Its exit status tells what it saw.
int EditAll(const CStringA& name, char prefix, int edits) {
    int lost = 0;
    CzynINI ini(name);
    for (int i = 0; i < edits; ++i) {
        const CStringA key = CStringA(prefix) + std::to_string(i % 10).c_str();
        if (ini.WriteInt("own", key, i, nullptr)) continue;
        ++lost;
        if (ini.GetErrDescription().IsEmpty()) return 100; // a failure without a text
    }
    return lost == edits ? 101 : 0;
}

TEST(IniThreadsTest, ProcessesOnOneFileNeverDamageIt) {
    const TempFolder folder, temporary; // a lost race for the backup's name puts it into the temporary folder
    setenv("TEMP", temporary.Native().c_str(), 1);
    folder.Write("f.ini", frame);
    const CStringA name = folder.Path("f.ini");
    std::vector<pid_t> children;
    for (const char prefix : {'a', 'b'}) {
        const pid_t child = fork();
        if (child == 0) _exit(EditAll(name, prefix, 200));
        children.push_back(child);
    }
    // A third one reads meanwhile; a read that comes back is of a whole file.
    int reads = 0;
    for (std::size_t running = children.size(); running > 0;) {
        CzynINI reader(name);
        CStringA end;
        if (reader.GetString("last", "end", end, "missing", false)) {
            EXPECT_STREQ("1", end);
            ++reads;
        } else {
            EXPECT_FALSE(reader.GetErrDescription().IsEmpty());
        }
        int status = 0;
        if (waitpid(-1, &status, WNOHANG) > 0) {
            EXPECT_EQ(0, WEXITSTATUS(status));
            EXPECT_TRUE(WIFEXITED(status));
            --running;
        }
    }
    EXPECT_GT(reads, 0);
    EXPECT_TRUE(IsWhole(folder.Read("f.ini")));
    EXPECT_TRUE(IsWhole(folder.Read("f.ini.bak")));
    unsetenv("TEMP");
}

} // namespace
