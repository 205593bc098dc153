// SPDX-License-Identifier: MIT
#include "zynaggr/zynstacklogger.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>
#include <string>
#include <vector>

// What a traced function pays for entering and leaving, in one thread and in several, against the least that
// a tracer of one's own would do: one mutex, one push and pop of the entry's text, which one snprintf forms;
// and another one for the line where lines are written. The calls log every time, so that each is written.

namespace {

std::size_t written = 0; // under the tracer's lock

void Trace(const char* line) {
    written += std::strlen(line);
}

void Foo(const char* name) {
    CzynStackLogger logger(name, true);
    benchmark::DoNotOptimize(&logger);
}

void NeverStarted(benchmark::State& state) {
    for (auto _ : state)
        Foo("LoadPriceList");
}

template <zynStackLogTraceFunction trace, bool isOn> void EnterLeave(benchmark::State& state) {
    if (state.thread_index() == 0) {
        GlobalStackLogInit(nullptr, trace);
        SetStackLoggerMode(isOn);
    }
    NeverStarted(state); // by all threads at once
    if (state.thread_index() == 0) GlobalStackLogDestroy();
}

std::mutex mutex;
thread_local std::vector<std::string> stack;

template <bool withLine> void PlainTracer(benchmark::State& state) {
    const unsigned id = 0x0A1C00u + static_cast<unsigned>(state.thread_index());
    for (auto _ : state) {
        const std::lock_guard lock(mutex);
        std::timespec now{};
        clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
        char text[128];
        std::snprintf(text, sizeof text, "t0x%04X L%03zu:%05i Fun %s", id, stack.size(),
                      static_cast<int>(now.tv_sec * 1000 + now.tv_nsec / 1'000'000), "LoadPriceList");
        stack.emplace_back(text);
        if (withLine) {
            char line[256];
            std::snprintf(line, sizeof line, "%02i:%02i:%02i.%03i %s-<", 17, 5, 9, 123, stack.back().c_str());
            Trace(line);
        }
        stack.pop_back();
    }
}

} // namespace

#define IN_THREADS(function, name) BENCHMARK(function)->Name(name)->ThreadRange(1, 4)->UseRealTime()

BENCHMARK(NeverStarted)->Name("stack logger, never started/ours");
BENCHMARK((EnterLeave<Trace, false>))->Name("stack logger, switched off/ours");
IN_THREADS((EnterLeave<nullptr, true>), "stack logger, on without callbacks, threads/ours");
IN_THREADS(PlainTracer<false>, "stack logger, on without callbacks, threads/mutex, vector, snprintf");
IN_THREADS((EnterLeave<Trace, true>), "stack logger, two lines, threads/ours");
IN_THREADS(PlainTracer<true>, "stack logger, two lines, threads/mutex, vector, snprintf, one line");
