// SPDX-License-Identifier: MIT
#include "simple_ini.h"
#include "zynaggr/zynaggr.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <new>
#include <string>
#include <utility>
#include <vector>

// A host's usual day: once a second it reads its 200 settings, and all the time it writes lines to a log. The
// time for one setting and for one line, and how often memory is asked for.

namespace {

std::size_t allocations = 0;

} // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
    ++allocations;
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

namespace fs = std::filesystem;

struct Folder {
    Folder() { fs::create_directories(path); }
    ~Folder() { fs::remove_all(path); }
    std::string File(const char* name) const { return path / name; }
    fs::path path = fs::temp_directory_path() / "zynaggr_day_bench";
};

template <class Call> void Measure(benchmark::State& state, Call call) {
    call(); // what is made once
    const std::size_t before = allocations;
    for (auto _ : state)
        call();
    state.counters["allocations"] =
        static_cast<double>(allocations - before) / static_cast<double>(state.iterations());
}

// ---- Settings: of four each a number, a word, a path and a sentence, with a default for each

constexpr int settingCount = 200;
constexpr const char* defaultPath = "C:\\Data\\Input\\default file.txt";

std::vector<std::pair<std::string, std::string>> WriteSettings(const std::string& name) {
    std::vector<std::pair<std::string, std::string>> places;
    std::ofstream file(name);
    for (int i = 0; i < settingCount; ++i) {
        const std::string number = std::to_string(i);
        places.emplace_back("Section" + std::to_string(i / 20), "Parameter" + number);
        if (i % 20 == 0) file << '[' << places.back().first << "]\n";
        const std::string values[] = {number, "word" + number, "C:\\Data\\Input\\file" + number + ".txt",
                                      "a sentence that says number " + number};
        file << places.back().second << '=' << values[i % 4] << '\n';
    }
    return places;
}

void ReadOurs(benchmark::State& state) {
    const Folder folder;
    const auto places = WriteSettings(folder.File("day.ini"));
    CzynINI ini(folder.File("day.ini").c_str());
    for (const auto& [section, key] : places)
        ini.GetString(section.c_str(), key.c_str(), "", false);
    int next = 0;
    Measure(state, [&] {
        const auto& [section, key] = places[static_cast<std::size_t>(next)];
        if (next % 4 == 0) {
            benchmark::DoNotOptimize(ini.GetInt(section.c_str(), key.c_str(), 7, false));
        } else {
            const CStringA value = ini.GetString(section.c_str(), key.c_str(), defaultPath, false);
            benchmark::DoNotOptimize(value.GetString());
        }
        next = (next + 1) % settingCount;
    });
}
BENCHMARK(ReadOurs)->Name("a host's day, read a setting/ours");

#ifdef HAVE_simpleini
void ReadSimple(benchmark::State& state) {
    const Folder folder;
    const auto places = WriteSettings(folder.File("day.ini"));
    CSimpleIniA ini;
    ini.LoadFile(folder.File("day.ini").c_str());
    int next = 0;
    Measure(state, [&] {
        const auto& [section, key] = places[static_cast<std::size_t>(next)];
        if (next % 4 == 0) {
            benchmark::DoNotOptimize(ini.GetLongValue(section.c_str(), key.c_str(), 7));
        } else {
            const std::string value = ini.GetValue(section.c_str(), key.c_str(), defaultPath);
            benchmark::DoNotOptimize(value.data());
        }
        next = (next + 1) % settingCount;
    });
}
BENCHMARK(ReadSimple)->Name("a host's day, read a setting/SimpleIni");
#endif

// ---- Lines of a log: when, how bad, what, and where

void LogOurs(benchmark::State& state) {
    const Folder folder;
    CzynFile file;
    file.Open(zynFromNativePath(folder.File("day.log").c_str()), CFile::modeCreate | CFile::modeWrite,
              nullptr);
    const CStringA level("warning"), place("reader.cpp");
    int number = 0;
    Measure(state, [&] {
        CStringA what;
        what.Format("record %d of %s is too long", ++number, "prices.csv");
        const CStringA line = CzynDateTime::GetTickCount().Format("%d.%m.%Y %H:%M:%S") + " " + level + ": " +
                              what + " (" + place + ")\r\n";
        file.WriteString(line);
    });
}
BENCHMARK(LogOurs)->Name("a host's day, log a line/ours");

void LogStd(benchmark::State& state) {
    const Folder folder;
    std::ofstream file(folder.File("day.log"), std::ios::binary);
    const std::string level("warning"), place("reader.cpp");
    int number = 0;
    Measure(state, [&] {
        char what[200], time[64];
        std::snprintf(what, sizeof what, "record %d of %s is too long", ++number, "prices.csv");
        const std::time_t now = std::time(nullptr);
        std::tm fields{};
        std::strftime(time, sizeof time, "%d.%m.%Y %H:%M:%S", localtime_r(&now, &fields));
        const std::string line = std::string(time) + " " + level + ": " + what + " (" + place + ")\r\n";
        file << line << std::flush;
    });
}
BENCHMARK(LogStd)->Name("a host's day, log a line/std::string, strftime, std::ofstream");

// ---- Errors: a record that its caller sends on, with its own place, and whose text is written

void PrintError(benchmark::State& state) {
    Measure(state, [] {
        const SzynErrorDescription first(2, "orders/price_list.cpp", "May 22 2025", 1024,
                                         "The price list cannot be read", 0, "ReadPriceListFile",
                                         "CPriceList", "C:\\Orders\\Prices\\price.csv");
        const SzynErrorDescription error(first, "orders/order_window.cpp", "May 22 2025", 512,
                                         "The order cannot be shown", "ShowTheWholeOrder", "COrderWindow");
        const CStringA text = error.Print(nullptr, false);
        benchmark::DoNotOptimize(text.GetString());
    });
}
BENCHMARK(PrintError)->Name("a host's day, send an error on and print it/ours");

// ---- A list of 200 texts that is handed on, and one of which changes

template <class Text> void HandOn(benchmark::State& state) {
    std::vector<Text> rows;
    for (int i = 0; i < settingCount; ++i)
        rows.emplace_back((std::to_string(i) + ". sentence of some length, as users write them").c_str());
    Measure(state, [&] {
        std::vector<Text> copy = rows;
        copy.front() += '!';
        benchmark::DoNotOptimize(copy.data());
    });
}
BENCHMARK(HandOn<CStringA>)->Name("a host's day, copy 200 texts/ours");
BENCHMARK(HandOn<std::string>)->Name("a host's day, copy 200 texts/std::string");

} // namespace
