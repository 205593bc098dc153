// SPDX-License-Identifier: MIT

// load_rounds MODULE LIBRARY: loads and unloads the library a thousand times with a module that uses it, then
// ends while threads still use it: nothing may be left of an unloaded library, and nothing may crash.

#include <atomic>
#include <cstdio>
#include <cstring>

#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>
#include <unistd.h>

namespace {

constexpr int rounds = 1000;

using Translate = const char* (*)(const char*);
Translate (*use)(void (*)(const char*));
Translate translate;
int terminated;
std::atomic<bool> hasUsed{false}, mayEnd{false};

// The library's last words: all of it must work yet.
void Trace(const char* text) {
    terminated +=
        std::strcmp(text, "zynAggr.DLL Terminating!\n") == 0 && std::strcmp(translate("one"), "two") == 0;
}

void* UseAndStay(void*) {
    use(Trace);
    for (hasUsed = true; !mayEnd;)
        usleep(1000);
    return nullptr;
}

template <class Function> void Find(void* module, const char* name, Function*& function) {
    function = reinterpret_cast<Function*>(dlsym(module, name));
}

int Fail(const char* what, long number) {
    std::fprintf(stderr, "load_rounds: %s: %ld\n", what, number);
    return 1;
}

} // namespace

int main(int, char** arguments) {
    pthread_t staying{};
    std::size_t used = 0;
    for (int round = 1;; ++round) {
        void* const module = dlopen(arguments[1], RTLD_NOW);
        if (!module) return Fail(dlerror(), round);
        Find(module, "Use", use);
        translate = use(Trace);
        if (round > rounds) {
            void (*useTillTheEnd)() = nullptr;
            Find(module, "UseTillTheEnd", useTillTheEnd);
            useTillTheEnd();
            return 0;
        }
        if (round == rounds / 5) pthread_create(&staying, nullptr, UseAndStay, nullptr);
        while (round == rounds / 5 && !hasUsed)
            usleep(1000);
        dlclose(module);
        if (dlopen(arguments[2], RTLD_NOW | RTLD_NOLOAD)) return Fail("still loaded", round);
        if (terminated != round) return Fail("ends told of", terminated);
        if (round == rounds / 2) used = mallinfo2().uordblks; // what is kept once is there by now
        if (round == rounds / 2) mayEnd = true, pthread_join(staying, nullptr);
        const long grown = static_cast<long>(mallinfo2().uordblks) - static_cast<long>(used);
        if (round == rounds && grown > 1000) return Fail("bytes lost", grown);
    }
}
