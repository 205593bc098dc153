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

// kill_saves N: has processes save an INI file N times, kills each at some moment, and looks at what is left.
// The file or its ".bak" must hold a whole text, that of the last save that was over or that of the one that
// was under way.

namespace {

std::string TextOf(int save) {
    const std::string number = std::to_string(save);
    const auto length = static_cast<std::size_t>(save * 7919 % 100'000);
    return "[s]\r\nbegin=" + number + "\r\nfill=" + std::string(length, 'x') + "!\r\nend=" + number + "\r\n";
}

[[noreturn]] void Save(const CStringA& name, std::atomic<int>& done) {
    CzynINI ini(name);
    for (int save = done + 1;; ++save) {
        ini.SetWriteMode(false);
        const std::string number = std::to_string(save), text = TextOf(save);
        const std::size_t fill = text.find("fill=") + 5;
        ini.WriteString("s", "begin", number.c_str(), nullptr);
        ini.WriteString("s", "fill", text.substr(fill, text.find('!') + 1 - fill).c_str(), nullptr);
        ini.WriteString("s", "end", number.c_str(), nullptr);
        if (!ini.Flush()) _exit(1);
        done = save;
    }
}

} // namespace

int main(int argc, char** argv) {
    const int saves = argc > 1 ? std::atoi(argv[1]) : 2000;
    const TempFolder folder;
    auto& done = *static_cast<std::atomic<int>*>(
        mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    std::mt19937 random(std::random_device{}());
    int kills = 0, torn = 0, lost = 0;
    for (; done < saves && lost == 0; ++kills) { // a save that always fails would go on for ever
        const pid_t child = fork();
        if (child == 0) Save(folder.Path("f.ini"), done);
        usleep(static_cast<useconds_t>(random() % 10000));
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        const std::string file = folder.Read("f.ini"), backup = folder.Read("f.ini.bak");
        const std::string before = done == 0 ? "" : TextOf(done), after = TextOf(done + 1);
        const bool isWhole = file == before || file == after;
        torn += !isWhole;
        lost += !WIFSIGNALED(status) || (!isWhole && backup != before && backup != after);
        if (!isWhole) folder.Write("f.ini", backup); // as the user would
    }
    std::printf(
        "%d saves, %d kills: the file whole after %d, its backup after the other %d, neither after %d\n",
        done.load(), kills, kills - torn, torn - lost, lost);
    return lost == 0 ? 0 : 1;
}
