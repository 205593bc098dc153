#include "zynaggr/ini.h"
#include "zynaggr/zynerror.h"
#include "zynaggr/zynstacklogger.h"
#include "zynplatform/cp1251.h"

#include <atomic>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <new>
#include <string>
#include <unordered_map>
#include <vector>

// A host's usual day: it reads its settings once a second and writes a thousand lines into its logs. Beside
// the time stands how often a call of the library asked for memory.

namespace {
std::atomic<long> allocations = 0;
}

// In the library, too. Not in line, or the compiler sees malloc and free and finds them ill-matched.
[[gnu::noinline]] void* operator new(std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* const memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

using namespace zynplatform::literals;

constexpr int groups = 10, keysOfGroup = 20; // 200 settings
constexpr int lines = 1000;

// The loop, with the number of allocations of each of so many calls.
template <class Round> void Measure(benchmark::State& state, int calls, Round round) {
    round();
    const long before = allocations;
    for (auto _ : state)
        round();
    state.counters["allocations a call"] =
        static_cast<double>(allocations - before) / (static_cast<double>(state.iterations()) * calls);
}

std::vector<std::string> Names(const char* stem, int count) {
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i)
        names.push_back(stem + std::to_string(i));
    return names;
}
const std::vector<std::string> groupNames = Names("Раздел "_cp1251, groups);
const std::vector<std::string> keyNames = Names("Параметр"_cp1251, keysOfGroup);

// Numbers and switches, names, titles, paths.
std::string Value(int group, int key) {
    const std::string number = std::to_string(group * keysOfGroup + key);
    switch (key % 4) {
    case 0:
        return number;
    case 1:
        return "server" + number + ".local";
    case 2:
        return "Отчёт о продажах по складам номер "_cp1251 + number;
    default:
        return "C:\\Program Files\\Orders\\Templates\\" + number;
    }
}

template <class Visit> void ForEachSetting(Visit visit) {
    for (int group = 0; group < groups; ++group)
        for (int key = 0; key < keysOfGroup; ++key)
            visit(group, key, groupNames[static_cast<std::size_t>(group)],
                  keyNames[static_cast<std::size_t>(key)]);
}

template <bool intoOne> void ReadSettings(benchmark::State& state) {
    const auto path = std::filesystem::temp_directory_path() / "zynaggr_day_bench.ini";
    {
        std::ofstream file(path, std::ios::binary);
        ForEachSetting([&](int group, int key, const std::string& section, const std::string& name) {
            if (key == 0) file << '[' << section << "]\r\n";
            file << name << '=' << Value(group, key) << "\r\n";
        });
    }
    CzynINI ini(path.string().c_str(), false);
    ForEachSetting([&](int group, int key, const std::string& section, const std::string& name) {
        if (ini.GetString(section.c_str(), name.c_str(), "", false) != Value(group, key).c_str())
            state.SkipWithError("wrong value");
    });
    ini.SetWriteMode(false); // it is not read again meanwhile
    CStringA value;
    Measure(state, groups * keysOfGroup, [&] {
        ForEachSetting([&](int, int, const std::string& section, const std::string& name) {
            if constexpr (intoOne) {
                ini.GetString(section.c_str(), name.c_str(), value, "", false);
                benchmark::DoNotOptimize(value.GetString());
            } else {
                const CStringA made = ini.GetString(section.c_str(), name.c_str(), "", false);
                benchmark::DoNotOptimize(made.GetString());
            }
        });
    });
    std::filesystem::remove(path);
}

// The least that settings of one's own would do.
void ReadMap(benchmark::State& state) {
    std::unordered_map<std::string, std::unordered_map<std::string, std::string>> settings;
    ForEachSetting([&](int group, int key, const std::string& section, const std::string& name) {
        settings[section][name] = Value(group, key);
    });
    std::recursive_mutex mutex;
    Measure(state, groups * keysOfGroup, [&] {
        ForEachSetting([&](int, int, const std::string& section, const std::string& name) {
            const std::lock_guard lock(mutex);
            const std::string value = settings.find(section)->second.find(name)->second;
            benchmark::DoNotOptimize(value.data());
        });
    });
}

// The last lines, as a window would show them.
template <class Text> class Log {
public:
    void Add(const Text& line) { m_lines[m_next++ % m_lines.size()] = line; }

private:
    std::vector<Text> m_lines = std::vector<Text>(100);
    std::size_t m_next = 0;
};

constexpr const char* lineFormat = "%02d:%02d:%02d order %d of %s: %s";

void FormatLines(benchmark::State& state) {
    Log<CStringA> log;
    Measure(state, lines, [&] {
        for (int i = 0; i < lines; ++i) {
            CStringA line;
            line.Format(lineFormat, 17, 5, i % 60, i, "the Northern store", "shipped");
            log.Add(line);
        }
    });
}
void PrintLines(benchmark::State& state) {
    Log<std::string> log;
    Measure(state, lines, [&] {
        for (int i = 0; i < lines; ++i) {
            char line[512];
            std::snprintf(line, sizeof line, lineFormat, 17, 5, i % 60, i, "the Northern store", "shipped");
            log.Add(line);
        }
    });
}

// Each call is entered, tells what it does, and is left.
void TraceCalls(benchmark::State& state) {
    static std::size_t written;
    GlobalStackLogInit(nullptr, [](const char* line) { written += *line != 0; });
    Measure(state, lines, [&] {
        for (int i = 0; i < lines; ++i) {
            CzynStackLogger logger("LoadPriceList", true);
            logger.SetFunctionInfo("reading C:\\Orders\\Prices\\price.csv");
        }
    });
    GlobalStackLogDestroy();
}

// An error that its caller sends on, with its own place, and whose text is written.
void PrintErrors(benchmark::State& state) {
    Measure(state, lines, [&] {
        for (int i = 0; i < lines; ++i) {
            const SzynErrorDescription first(i, "orders/price_list.cpp", "May 22 2025", 1024,
                                             "The price list cannot be read", 0, "ReadPriceListFile",
                                             "CPriceList", "C:\\Orders\\Prices\\price.csv");
            const SzynErrorDescription error(first, "orders/order_window.cpp", "May 22 2025", 512,
                                             "The order cannot be shown", "ShowTheWholeOrder",
                                             "COrderWindow");
            const CStringA text = error.Print(nullptr, false);
            benchmark::DoNotOptimize(text.GetString());
        }
    });
}

// A list of texts that is handed on, and one of which changes.
template <class Text> void HandOn(benchmark::State& state) {
    std::vector<Text> rows;
    ForEachSetting([&](int group, int key, const std::string&, const std::string&) {
        rows.emplace_back(Value(group, key).c_str());
    });
    Measure(state, groups * keysOfGroup, [&] {
        std::vector<Text> copy = rows;
        copy.front() += '!';
        benchmark::DoNotOptimize(copy.data());
    });
}

} // namespace

BENCHMARK(ReadSettings<false>)->Name("host's day, read 200 settings/ours");
BENCHMARK(ReadMap)->Name("host's day, read 200 settings/floor: mutex, unordered_map of std::string");
BENCHMARK(ReadSettings<true>)->Name("host's day, read 200 settings/ours, into one string");
BENCHMARK(HandOn<CStringA>)->Name("host's day, copy 200 texts/ours");
BENCHMARK(HandOn<std::string>)->Name("host's day, copy 200 texts/std::string");
BENCHMARK(FormatLines)->Name("host's day, format and keep 1000 lines/ours");
BENCHMARK(PrintLines)->Name("host's day, format and keep 1000 lines/snprintf, std::string");
BENCHMARK(TraceCalls)->Name("host's day, trace 1000 calls with a message/ours");
BENCHMARK(PrintErrors)->Name("host's day, print 1000 errors/ours");
