// Loads and unloads the library a thousand times with a module that uses it, then ends while threads still
// use it: nothing may be left of an unloaded library, and nothing may crash.
//
//   load_rounds MODULE LIBRARY

#include "support/slow_end.h"

#include <atomic>
#include <cstring>

#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>
#include <unistd.h>

namespace {

constexpr int rounds = 1000;

void* module;
void (*use)();
const char* (*translate)(const char*);
int terminated;
std::atomic<bool> hasUsed{false}, mayEnd{false};

template <class Function> void Find(const char* name, Function*& function) {
    function = reinterpret_cast<Function*>(dlsym(module, name));
}

// The library's last words: all of it must work yet.
void Trace(const char* text) {
    terminated +=
        std::strcmp(text, "zynAggr.DLL Terminating!\n") == 0 && std::strcmp(translate("one"), "two") == 0;
}

void* UseAndStay(void*) {
    use();
    hasUsed = true;
    while (!mayEnd)
        usleep(1000);
    return nullptr;
}

void* UseForEver(void*) {
    for (use();; use())
        if (std::strcmp(translate("one"), "two") != 0) _exit(2);
}

pthread_t Run(void* (*work)(void*)) {
    pthread_t thread{};
    pthread_create(&thread, nullptr, work, nullptr);
    return thread;
}

bool Load(const char* file) {
    module = dlopen(file, RTLD_NOW);
    if (!module) return false;
    void (*start)(void (*)(const char*)) = nullptr;
    Find("Start", start);
    Find("Use", use);
    Find("Translate", translate);
    start(Trace);
    use();
    return true;
}

int Fail(const char* what, long number) {
    std::fprintf(stderr, "load_rounds: %s: %ld\n", what, number);
    return 1;
}

} // namespace

int main(int, char** arguments) {
    std::size_t used = 0;
    for (int round = 1; round <= rounds; ++round) {
        if (!Load(arguments[1])) return Fail(dlerror(), round);
        static pthread_t staying;
        if (round == rounds / 5) staying = Run(UseAndStay);
        while (round == rounds / 5 && !hasUsed)
            usleep(1000);
        dlclose(module);
        if (dlopen(arguments[2], RTLD_NOW | RTLD_NOLOAD)) return Fail("still loaded", round);
        if (terminated != round) return Fail("ends told of", terminated);
        if (round == rounds / 2) used = mallinfo2().uordblks; // what is kept once is there by now
        if (round != rounds - 100) continue;
        mayEnd = true;
        pthread_join(staying, nullptr);
    }
    const long grown = static_cast<long>(mallinfo2().uordblks) - static_cast<long>(used);
    if (grown > 1000) return Fail("bytes lost", grown);

    Load(arguments[1]);
    for (int i = 0; i < 4; ++i)
        Run(UseForEver);
    EndSlowly();
    return 0;
}
