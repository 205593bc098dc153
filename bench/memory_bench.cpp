// SPDX-License-Identifier: MIT
#include "simple_ini.h"
#include "zynaggr/ini.h"
#include "zynaggr/zynmap.h"
#include "zynaggr/zynstrmap.h"
#include "zynaggr/zyntaggr.h"

#include <benchmark/benchmark.h>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>

#ifdef HAVE_INIReader
#include <INIReader.h>
#endif
#ifdef HAVE_Qt5Core
#include <QSettings>
#endif

// How much of the heap a filled container has in use, for each thing that is in it: the allocator's own
// count, so what it rounds up is in. The container itself is on the heap as well.

namespace {

namespace fs = std::filesystem;

std::size_t HeapInUse() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// Fill(count) gives a container on the heap, with so many things in it.
template <auto Fill> void Memory(benchmark::State& state) {
    const auto count = static_cast<int>(state.range(0));
    Fill(count); // what is made once for the process
    const std::size_t before = HeapInUse();
    const auto container = Fill(count);
    const std::size_t after = HeapInUse();
    for (auto _ : state) {
    }
    state.counters["bytes"] = static_cast<double>(after - before) / count;
}

std::string Key(int i) {
    return "parameter " + std::to_string(i);
}

template <class Map> auto FillNumbers(int count) {
    auto map = std::make_unique<Map>();
    for (int i = 0; i < count; ++i)
        (*map)[i * 7] = i;
    return map;
}
template <> auto FillNumbers<CzynMap>(int count) {
    auto map = std::make_unique<CzynMap>();
    for (int i = 0; i < count; ++i)
        map->Add(i * 7, i);
    map->GetByIn(7);
    return map;
}

template <class Map> auto FillWords(int count) {
    auto map = std::make_unique<Map>();
    for (int i = 0; i < count; ++i)
        (*map)[Key(i)] = i;
    return map;
}
template <> auto FillWords<CzynStrMap>(int count) {
    auto map = std::make_unique<CzynStrMap>();
    for (int i = 0; i < count; ++i)
        map->Add(Key(i).c_str(), i);
    map->Get(Key(0).c_str());
    return map;
}

template <class Map> auto FillTexts(int count) {
    auto map = std::make_unique<Map>();
    for (int i = 0; i < count; ++i)
        (*map)[Key(i)] = "value of " + Key(i);
    return map;
}
template <> auto FillTexts<CzynStrStrMap>(int count) {
    auto map = std::make_unique<CzynStrStrMap>();
    for (int i = 0; i < count; ++i)
        map->Add(Key(i).c_str(), ("value of " + Key(i)).c_str());
    map->Get(Key(0).c_str(), false);
    return map;
}

// A file of so many lines, a tenth of them headers of sections, in plain ASCII.
std::string IniFile(int lines) {
    static int files = 0; // a name of its own each time: a peer keeps what it read for the next who asks
    static const fs::path folder = fs::temp_directory_path() / "zynaggr_memory_bench";
    fs::create_directories(folder);
    const fs::path path = folder / (std::to_string(++files) + ".ini");
    std::ofstream file(path, std::ios::binary);
    for (int i = 0; i < lines; ++i)
        if (i % 10 == 0)
            file << "[Section " << i / 10 << "]\r\n";
        else
            file << "Parameter" << i % 10 << "=the value of parameter number " << i << "\r\n";
    return path;
}

auto LoadOurs(int lines) {
    auto ini = std::make_unique<CzynINI>();
    ini->SetINI(IniFile(lines).c_str(), false, 0);
    ini->GetString("Section 0", "Parameter1", "", false);
    return ini;
}
#ifdef HAVE_simpleini
auto LoadSimple(int lines) {
    auto ini = std::make_unique<CSimpleIniA>();
    ini->LoadFile(IniFile(lines).c_str());
    return ini;
}
#endif
#ifdef HAVE_INIReader
auto LoadInih(int lines) {
    return std::make_unique<INIReader>(IniFile(lines));
}
#endif
#ifdef HAVE_Qt5Core
auto LoadQt(int lines) {
    auto ini = std::make_unique<QSettings>(QString::fromStdString(IniFile(lines)), QSettings::IniFormat);
    (void)ini->allKeys(); // a section is parsed when it is asked for
    return ini;
}
#endif

#define MEASURED(name, function, implementation)                                                             \
    BENCHMARK(Memory<&function>)                                                                             \
        ->Name("memory, " name "/" implementation)                                                           \
        ->Arg(1'000)                                                                                         \
        ->Arg(100'000)                                                                                       \
        ->Iterations(1)

using NumberMap = std::map<int, int>;
using NumberHash = std::unordered_map<int, int>;
using WordMap = std::map<std::string, int>;
using WordHash = std::unordered_map<std::string, int>;
using TextMap = std::map<std::string, std::string>;
MEASURED("line of an INI file", LoadOurs, "ours");
#ifdef HAVE_simpleini
MEASURED("line of an INI file", LoadSimple, "SimpleIni");
#endif
#ifdef HAVE_INIReader
MEASURED("line of an INI file", LoadInih, "inih");
#endif
#ifdef HAVE_Qt5Core
MEASURED("line of an INI file", LoadQt, "QSettings");
#endif
MEASURED("CzynMap", FillNumbers<CzynMap>, "ours");
MEASURED("CzynMap", FillNumbers<NumberMap>, "std::map");
MEASURED("CzynMap", FillNumbers<NumberHash>, "std::unordered_map");
MEASURED("CzynStrMap", FillWords<CzynStrMap>, "ours");
MEASURED("CzynStrMap", FillWords<WordMap>, "std::map");
MEASURED("CzynStrMap", FillWords<WordHash>, "std::unordered_map");
MEASURED("CzynStrStrMap", FillTexts<CzynStrStrMap>, "ours");
MEASURED("CzynStrStrMap", FillTexts<TextMap>, "std::map");

} // namespace
