// SPDX-License-Identifier: MIT
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

std::string ValueOf(int save) {
    const std::string number = std::to_string(save);
    return number + std::string(static_cast<std::size_t>(save * 7919LL % 100'000), 'x') + number;
}

bool IsWhole(const std::string& text) {
    const std::string start = "[s]\r\nk=";
    return text.empty() ||
           (text.starts_with(start) && text == start + ValueOf(std::atoi(&text[start.size()])) + "\r\n");
}

// Of the processes together.
struct Counts {
    std::atomic<int> begun{0}, done{0}, refused{0};
};

[[noreturn]] void Save(const CStringA& name, Counts& counts) {
    for (CzynINI ini(name);;) {
        const bool isSaved = ini.WriteString("s", "k", ValueOf(++counts.begun).c_str(), nullptr);
        ++(isSaved ? counts.done : counts.refused);
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
