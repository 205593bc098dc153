// SPDX-License-Identifier: MIT
#include "keep_memory.h"
#include "simple_ini.h"
#include "zynaggr/ini.h"
#include "zynaggr/zynsync.h"
#include "zynplatform/codepage.h"

#include <benchmark/benchmark.h>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#ifdef HAVE_INIReader
#include <INIReader.h>
#endif

// One settings file of 1 MB in code page 1251: 500 sections of 40 keys, with comments; the same peers in turn
// load it, look keys up, edit it in memory and save it.

namespace {

namespace fs = std::filesystem;

std::string Cp1251(std::u16string_view text) {
    std::string bytes(zynplatform::NarrowLength(zynplatform::ansiCodePage, text.data(), text.size()), '\0');
    zynplatform::ToNarrow(zynplatform::ansiCodePage, text.data(), text.size(), bytes.data());
    return bytes;
}

// A folder with one settings file.
class File {
public:
    File(int sections, int keys) : m_sections(sections), m_keys(keys) {
        fs::create_directories(m_folder);
        std::ofstream file(Path(), std::ios::binary);
        const std::string comment = Cp1251(u"; настройки этого раздела меняются только вместе\r\n");
        const std::string value = Cp1251(u"значение параметра номер ");
        for (int s = 0; s < sections; ++s) {
            file << '[' << Section(s) << "]\r\n";
            for (int k = 0; k < keys; ++k) {
                if (k % 10 == 0) file << comment;
                file << Key(k) << '=' << value << s << '.' << k << "\r\n";
            }
            file << "\r\n";
        }
    }
    ~File() { fs::remove_all(m_folder); }

    std::string Path() const { return m_folder / "settings.ini"; }
    static std::string Section(int s) { return Cp1251(u"Раздел ") + std::to_string(s); }
    static std::string Key(int k) { return Cp1251(u"Параметр") + std::to_string(k); }

    // So many random places in the file.
    std::vector<std::pair<std::string, std::string>> Places() const {
        std::mt19937 random(1);
        std::vector<std::pair<std::string, std::string>> places;
        for (int i = 0; i < 4096; ++i)
            places.emplace_back(Section(static_cast<int>(random() % static_cast<unsigned>(m_sections))),
                                Key(static_cast<int>(random() % static_cast<unsigned>(m_keys))));
        return places;
    }
    std::string Text() const {
        std::ostringstream text;
        text << std::ifstream(Path(), std::ios::binary).rdbuf();
        return text.str();
    }

private:
    fs::path m_folder = fs::temp_directory_path() / "zynaggr_ini_bench";
    int m_sections, m_keys;
};

struct Ours {
    explicit Ours(const std::string& path) {
        m_ini.SetINI(path.c_str(), false, 0);
        m_ini.isGroupeSet("x");
    }
    CStringA Get(const std::string& section, const std::string& key) {
        return m_ini.GetString(section.c_str(), key.c_str(), "", false);
    }
    bool Set(const std::string& section, const std::string& key, const std::string& value) {
        return m_ini.WriteString(section.c_str(), key.c_str(), value.c_str(), nullptr);
    }
    void Defer() { m_ini.SetWriteMode(false); }
    bool Edit(const std::string& section, const std::string& key, const std::string& value) {
        return Set(section, key, value);
    }
    CzynINI m_ini;
};

#ifdef HAVE_simpleini
struct Simple {
    explicit Simple(const std::string& path) : m_path(path) { m_ini.LoadFile(path.c_str()); }
    const char* Get(const std::string& section, const std::string& key) {
        return m_ini.GetValue(section.c_str(), key.c_str(), "");
    }
    bool Set(const std::string& section, const std::string& key, const std::string& value) {
        return Edit(section, key, value) && m_ini.SaveFile(m_path.c_str()) == SI_OK;
    }
    void Defer() {}
    bool Edit(const std::string& section, const std::string& key, const std::string& value) {
        return m_ini.SetValue(section.c_str(), key.c_str(), value.c_str()) == SI_UPDATED;
    }
    std::string m_path;
    CSimpleIniA m_ini;
};
#endif

// What all of them must find.
template <class Ini> bool Agrees(Ini& ini, const File& file) {
    for (const auto& [section, key] : file.Places()) {
        const std::string wanted =
            Cp1251(u"значение параметра номер ") + section.substr(7) + "." + key.substr(8);
        if (std::string(ini.Get(section, key)) != wanted) return false;
    }
    return true;
}

template <class Ini> void Load(benchmark::State& state) {
    const File file(static_cast<int>(state.range(0)), 40);
    for (auto _ : state) {
        Ini ini(file.Path());
        benchmark::ClobberMemory();
    }
    Ini ini(file.Path());
    if (!Agrees(ini, file)) state.SkipWithError("wrong value");
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(file.Text().size()));
}

#ifdef HAVE_INIReader
void LoadInih(benchmark::State& state) {
    const File file(static_cast<int>(state.range(0)), 40);
    for (auto _ : state) {
        INIReader ini(file.Path());
        int result = ini.ParseError();
        benchmark::DoNotOptimize(result);
    }
}
#endif

void ReadFloor(benchmark::State& state) {
    const File file(static_cast<int>(state.range(0)), 40);
    for (auto _ : state)
        benchmark::DoNotOptimize(file.Text());
}

template <class Ini> void Lookup(benchmark::State& state) {
    const File file(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    Ini ini(file.Path());
    if (!Agrees(ini, file)) state.SkipWithError("wrong value");
    const auto places = file.Places();
    std::size_t next = 0;
    for (auto _ : state) {
        const auto& [section, key] = places[next++ % places.size()];
        benchmark::DoNotOptimize(ini.Get(section, key));
    }
}

// In memory: a value that is there gets another one, in a file that the mode of saving leaves alone; with
// `queries`, between so many look-ups.
template <class Ini, int queries> void Edit(benchmark::State& state) {
    const File file(static_cast<int>(state.range(0)), 40);
    Ini ini(file.Path());
    ini.Defer();
    const auto places = file.Places();
    std::size_t next = 0;
    for (auto _ : state) {
        const auto& [section, key] = places[next++ % places.size()];
        if (!ini.Edit(section, key, next % 2 ? "another value of this parameter" : "value"))
            state.SkipWithError("not set");
        for (int i = 0; i < queries; ++i) {
            const auto& [otherSection, otherKey] =
                places[(next * 7 + static_cast<std::size_t>(i)) % places.size()];
            benchmark::DoNotOptimize(ini.Get(otherSection, otherKey));
        }
    }
}

// What every look-up owes to the interface: the lock, the stopwatch of the reload window, a copy of the
// value.
void LookupFloor(benchmark::State& state) {
    CZynCriticalSection section;
    CzynTimeMeter meter;
    const CStringA value = Cp1251(u"значение параметра номер 123.12").c_str();
    for (auto _ : state) {
        const CzynEnterCriticalSection lock(&section);
        benchmark::DoNotOptimize(meter.CheckTimeOut(1000));
        const CStringA copy(value);
        benchmark::DoNotOptimize(copy.GetString());
    }
}

// A save; with `synced`, one that has reached the disk before the call returns, as is the library's way
// unless it is told otherwise. The peer leaves that to the system.
template <class Ini, bool synced = false> void Save(benchmark::State& state) {
    const File file(static_cast<int>(state.range(0)), 40);
    CzynINI::SetSyncToDisk(synced);
    Ini ini(file.Path());
    int count = 0;
    for (auto _ : state)
        if (!ini.Set(File::Section(7), File::Key(7), std::to_string(++count)))
            state.SkipWithError("not saved");
    CzynINI::SetSyncToDisk(true);
    Ini saved(file.Path());
    if (std::string(saved.Get(File::Section(7), File::Key(7))) != std::to_string(count))
        state.SkipWithError("wrong value");
}

// Each edit is a save.
template <class Ini, bool synced = false> void Edits(benchmark::State& state) {
    const File file(10, 8);
    CzynINI::SetSyncToDisk(synced);
    for (auto _ : state) {
        Ini ini(file.Path());
        for (int i = 0; i < 1000; ++i)
            if (!ini.Set(File::Section(i % 10), File::Key(i % 8), std::to_string(i)))
                state.SkipWithError("not saved");
    }
    CzynINI::SetSyncToDisk(true);
}

const bool keepsMemory = KeepMemory();

// 1 MB has 500 sections.
#define WORKLOAD(name, function, implementation)                                                             \
    BENCHMARK(function)->Name(name "/" implementation)->Unit(benchmark::kMillisecond)
#define LOADED(function, implementation)                                                                     \
    WORKLOAD("INI load", function, implementation)->Arg(125)->Arg(500)->Arg(2000)
#define LOOKED_UP(function, implementation)                                                                  \
    BENCHMARK(function)                                                                                      \
        ->Name("INI lookup/" implementation)                                                                 \
        ->Args({125, 40})                                                                                    \
        ->Args({500, 40})                                                                                    \
        ->Args({2000, 40})                                                                                   \
        ->Args({1, 10'000})
#define EDITED(name, function, implementation)                                                               \
    BENCHMARK(function)->Name("INI " name "/" implementation)->Arg(40)->Arg(125)->Arg(500)->Arg(2000)
#define SAVED(function, implementation)                                                                      \
    WORKLOAD("INI change and save", function, implementation)->Arg(125)->Arg(500)->Arg(2000)

LOADED(Load<Ours>, "ours");
LOOKED_UP(Lookup<Ours>, "ours");
EDITED("edit in memory", (Edit<Ours, 0>), "ours");
EDITED("edit between 4 look-ups", (Edit<Ours, 4>), "ours");
SAVED(Save<Ours>, "ours");
SAVED((Save<Ours, true>), "ours, synced to the disk");
WORKLOAD("INI 1000 edits of 100 lines", Edits<Ours>, "ours");
WORKLOAD("INI 1000 edits of 100 lines", (Edits<Ours, true>), "ours, synced to the disk");
#ifdef HAVE_simpleini
LOADED(Load<Simple>, "SimpleIni");
LOOKED_UP(Lookup<Simple>, "SimpleIni");
EDITED("edit in memory", (Edit<Simple, 0>), "SimpleIni");
EDITED("edit between 4 look-ups", (Edit<Simple, 4>), "SimpleIni");
SAVED(Save<Simple>, "SimpleIni");
WORKLOAD("INI 1000 edits of 100 lines", Edits<Simple>, "SimpleIni");
#endif
#ifdef HAVE_INIReader
LOADED(LoadInih, "inih");
#endif
LOADED(ReadFloor, "floor: read the file");
LOOKED_UP(LookupFloor, "floor: lock, stopwatch, copy");

} // namespace
