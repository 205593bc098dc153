#include "support/temp_folder.h"
#include "zynaggr/ini.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

// kill_saves N: four processes save one INI file until there were N saves, and are killed at some moment, one
// after the other. After each kill the file and its ".bak" must hold a whole text that one of them has saved,
// and at the end no temporary file is left.

namespace {

constexpr int savers = 4;

std::string TextOf(int save) {
    const std::string number = std::to_string(save);
    const auto length = static_cast<std::size_t>(save * 7919LL % 100'000);
    return "[s]\r\nbegin=" + number + "\r\nfill=" + std::string(length, 'x') + "!\r\nend=" + number + "\r\n";
}

bool IsWhole(const std::string& text) {
    const std::size_t number = text.find('=');
    return text.empty() || (number != text.npos && text == TextOf(std::atoi(text.c_str() + number + 1)));
}

// Of the processes together.
struct Counts {
    std::atomic<int> begun{0}, done{0}, refused{0};
};

[[noreturn]] void Save(const CStringA& name, Counts& counts) {
    for (CzynINI ini(name);;) {
        const int save = ++counts.begun;
        const std::string number = std::to_string(save), text = TextOf(save);
        const std::size_t fill = text.find("fill=") + 5;
        ini.SetWriteMode(false);
        const bool isSaved =
            ini.WriteString("s", "begin", number.c_str(), nullptr) &&
            ini.WriteString("s", "fill", text.substr(fill, text.find('!') + 1 - fill).c_str(), nullptr) &&
            ini.WriteString("s", "end", number.c_str(), nullptr) && ini.Flush();
        ++(isSaved ? counts.done : counts.refused);
        if (!isSaved) ini.SetWriteMode(true);
    }
}

} // namespace

int main(int argc, char** argv) {
    const int saves = argc > 1 ? std::atoi(argv[1]) : 2000;
    const TempFolder folder;
    void* const shared =
        mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    Counts& counts = *new (shared) Counts;
    pid_t children[savers];
    const auto start = [&] {
        const pid_t child = fork();
        if (child == 0) Save(folder.Path("f.ini"), counts);
        return child;
    };
    for (pid_t& child : children)
        child = start();
    std::mt19937 random(std::random_device{}());
    int kills = 0, torn = 0;
    for (; counts.done < saves && torn == 0; ++kills) {
        usleep(static_cast<useconds_t>(random() % 10000));
        pid_t& child = children[random() % savers];
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        torn += !IsWhole(folder.Read("f.ini")) || !IsWhole(folder.Read("f.ini.bak"));
        child = start();
    }
    for (const pid_t child : children) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    CzynINI last(folder.Path("f.ini"));
    const bool isSaved = last.WriteString("s", "last", "1", nullptr);
    int left = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Native()))
        left += entry.path().filename() != "f.ini" && entry.path().filename() != "f.ini.bak";
    std::printf("%d saves, %d refused, %d kills: torn after %d, %d temporary files left at the end\n",
                counts.done.load(), counts.refused.load(), kills, torn, left);
    return torn == 0 && left == 0 && isSaved ? 0 : 1;
}
