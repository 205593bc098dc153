#include "zynaggr/zynstacklogger.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

// What a traced function pays for entering and leaving, against the least that a tracer of one's own would
// do: one mutex, one push and pop, one snprintf. The functions' names alternate, so that every call is
// written.

namespace {

std::size_t written = 0;

void Trace(const char* line) {
    written += std::strlen(line);
}

void Foo(const char* name) {
    CzynStackLogger logger(name, true);
    benchmark::DoNotOptimize(&logger);
}

void EnterLeave(benchmark::State& state) {
    for (auto _ : state)
        Foo("LoadPriceList");
    GlobalStackLogDestroy();
    benchmark::DoNotOptimize(written);
}

void NeverStarted(benchmark::State& state) {
    EnterLeave(state);
}

void SwitchedOff(benchmark::State& state) {
    GlobalStackLogInit(nullptr, Trace);
    SetStackLoggerMode(false);
    EnterLeave(state);
}

void OnWithoutLines(benchmark::State& state) {
    GlobalStackLogInit(nullptr, nullptr);
    EnterLeave(state);
}

void OnWithTwoLines(benchmark::State& state) {
    GlobalStackLogInit(nullptr, Trace);
    EnterLeave(state);
}

void PlainTracer(benchmark::State& state) {
    std::mutex mutex;
    std::vector<std::string> stack;
    for (auto _ : state) {
        const std::lock_guard lock(mutex);
        stack.emplace_back("LoadPriceList");
        char line[128];
        std::snprintf(line, sizeof line, "%02i:%02i:%02i.%03i t0x%04X L%03zu:%05i Fun %s-<", 17, 5, 9, 123,
                      0x0A1Cu, stack.size(), 1234567, stack.back().c_str());
        Trace(line);
        stack.pop_back();
    }
    benchmark::DoNotOptimize(written);
}

} // namespace

BENCHMARK(NeverStarted)->Name("stack logger, never started/ours");
BENCHMARK(SwitchedOff)->Name("stack logger, switched off/ours");
BENCHMARK(OnWithoutLines)->Name("stack logger, on without callbacks/ours");
BENCHMARK(PlainTracer)->Name("stack logger, on without callbacks/mutex, vector, snprintf");
BENCHMARK(OnWithTwoLines)->Name("stack logger, two lines/ours");
BENCHMARK(PlainTracer)->Name("stack logger, two lines/mutex, vector, snprintf of one line");
