// SPDX-License-Identifier: MIT
#include "keep_memory.h"
#include "zynaggr/ini.h"
#include "zynaggr/zynmap.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <random>
#include <string>
#include <vector>

// What n operations on a container of n elements cost, for n, 4 n and 16 n: no cost an element may grow by
// more than the logarithm does. What an operation needs is made beforehand and not measured; each looks at
// its result.

namespace {

namespace fs = std::filesystem;

// The names of n elements, in the order of the file and in a random one.
struct Names {
    explicit Names(int n) : ordered(static_cast<std::size_t>(n)) {
        for (std::size_t i = 0; i < ordered.size(); ++i)
            ordered[i] = "key " + std::to_string(i);
        shuffled = ordered;
        std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(1));
    }
    std::vector<std::string> ordered, shuffled;
};

// A file in the deferred mode: one section "s" with a line for each name.
template <class Ini = CzynINI> class File {
public:
    explicit File(const std::vector<std::string>& names) {
        fs::create_directories(m_folder);
        std::ofstream file(m_folder / "growth.ini", std::ios::binary);
        file << "[s]\r\n";
        for (const std::string& name : names)
            file << name << "=1\r\n";
        file.close();
        ini.SetINI((m_folder / "growth.ini").c_str(), false, 0);
        ini.SetWriteMode(false);
    }
    ~File() { fs::remove_all(m_folder); }

    bool Write(const std::string& key, const char* comment = nullptr) {
        return ini.WriteString("s", key.c_str(), "2", comment);
    }
    bool Reads(const std::string& key, const char* value) {
        return ini.GetString("s", key.c_str(), "none", false) == value;
    }
    bool Delete(const std::string& key) { return ini.Delete("s", key.c_str()) && !Has(key); }
    bool Has(const std::string& key) { return ini.isParamSet("s", key.c_str()); }

    Ini ini;

private:
    fs::path m_folder = fs::temp_directory_path() / "zynaggr_growth_bench";
};

// A host's class that leaves the model alone.
struct Derived : CzynINI {
    Derived() { ModelChanged(); }
};

// What is measured: whether every one of the operations gave the right result.
template <class Step> bool Each(const std::vector<std::string>& names, Step step) {
    return std::all_of(names.begin(), names.end(), step);
}

template <class Operations> bool Timed(benchmark::State& state, Operations operations) {
    const auto start = std::chrono::steady_clock::now();
    const bool right = operations();
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    return right;
}

bool NewKeys(benchmark::State& state, const Names& names) {
    File file({});
    return Timed(state, [&] { return Each(names.ordered, [&](auto& key) { return file.Write(key); }); });
}

bool NewKeysWithComments(benchmark::State& state, const Names& names) {
    File file({});
    return Timed(state,
                 [&] { return Each(names.ordered, [&](auto& key) { return file.Write(key, "; why"); }); });
}

bool ExistingKeys(benchmark::State& state, const Names& names) {
    File file(names.ordered);
    return Timed(state, [&] { return Each(names.shuffled, [&](auto& key) { return file.Write(key); }); });
}

bool ReadWithCreation(benchmark::State& state, const Names& names) {
    File file(names.ordered);
    return Timed(state, [&] {
        return Each(names.shuffled,
                    [&](auto& key) { return file.ini.GetInt("s", key.c_str(), 0, true) == 1; });
    });
}

bool NewSections(benchmark::State& state, const Names& names) {
    File file({});
    return Timed(state, [&] {
        return Each(names.ordered,
                    [&](auto& name) { return file.ini.WriteString(name.c_str(), "k", "v", nullptr); });
    });
}

bool DeleteOneByOne(benchmark::State& state, const Names& names) {
    File file(names.ordered);
    return Timed(state, [&] { return Each(names.ordered, [&](auto& key) { return file.Delete(key); }); });
}

bool DeleteAtRandom(benchmark::State& state, const Names& names) {
    File file(names.ordered);
    return Timed(state, [&] { return Each(names.shuffled, [&](auto& key) { return file.Delete(key); }); });
}

bool DeleteRepeatedKey(benchmark::State& state, const Names& names) {
    File file(std::vector<std::string>(names.ordered.size(), "key"));
    return Timed(state, [&] { return file.Delete("key"); });
}

bool WriteThenDelete(benchmark::State& state, const Names& names) {
    File file({});
    return Timed(state, [&] {
        return Each(names.ordered, [&](auto& key) { return file.Write(key) && file.Delete(key); });
    });
}

bool EditAndQuery(benchmark::State& state, const Names& names) {
    File file(names.ordered);
    return Timed(state, [&] {
        return Each(names.shuffled, [&](auto& key) {
            return file.Write("new " + key) && file.Reads(key, "1") && file.Write(key) &&
                   file.Reads(key, "2");
        });
    });
}

bool QueryDerived(benchmark::State& state, const Names& names) {
    File<Derived> file(names.ordered);
    return Timed(state,
                 [&] { return Each(names.shuffled, [&](auto& key) { return file.Reads(key, "1"); }); });
}

// Keys that a careless way of ignoring case takes for one another.
bool QueryTwins(benchmark::State& state, const Names& names) {
    std::vector<std::string> twins;
    for (std::size_t i = 0; i < names.ordered.size(); ++i) {
        twins.emplace_back();
        for (int bit = 0; bit < 17; ++bit)
            twins.back() += (i >> bit & 1) != 0 ? '@' : '`';
    }
    File file(twins);
    return Timed(state, [&] { return Each(twins, [&](auto& key) { return file.Reads(key, "1"); }); });
}

bool AddAndFind(benchmark::State& state, const std::vector<int>& keys) {
    CzynMap map;
    return Timed(state, [&] {
        return std::all_of(keys.begin(), keys.end(), [&](int key) {
            return map.Add(key, key + 1) >= 0 && map.GetByIn(key) == key + 1;
        });
    });
}

std::vector<int> Numbers(const Names& names) {
    std::vector<int> numbers(names.ordered.size());
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

bool MapInOrder(benchmark::State& state, const Names& names) {
    return AddAndFind(state, Numbers(names));
}

bool MapAtRandom(benchmark::State& state, const Names& names) {
    std::vector<int> numbers = Numbers(names);
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
    return AddAndFind(state, numbers);
}

const bool keepsMemory = KeepMemory();

void Growth(benchmark::State& state, bool (*workload)(benchmark::State&, const Names&)) {
    const Names names(static_cast<int>(state.range(0)));
    for (auto _ : state)
        if (!workload(state, names)) state.SkipWithError("wrong result");
}

#define GROWS(name, workload)                                                                                \
    BENCHMARK_CAPTURE(Growth, ours, workload)                                                                \
        ->Name("growth, " name "/ours")                                                                      \
        ->Arg(6'250)                                                                                         \
        ->Arg(25'000)                                                                                        \
        ->Arg(100'000)                                                                                       \
        ->UseManualTime()                                                                                    \
        ->Unit(benchmark::kMillisecond)

GROWS("INI new keys", NewKeys);
GROWS("INI new keys with comments", NewKeysWithComments);
GROWS("INI existing keys", ExistingKeys);
GROWS("INI read with creation", ReadWithCreation);
GROWS("INI new sections", NewSections);
GROWS("INI delete one by one", DeleteOneByOne);
GROWS("INI delete at random", DeleteAtRandom);
GROWS("INI delete a repeated key", DeleteRepeatedKey);
GROWS("INI write then delete", WriteThenDelete);
GROWS("INI edit and query", EditAndQuery);
GROWS("INI query, derived class", QueryDerived);
GROWS("INI query, hostile keys", QueryTwins);
GROWS("CzynMap add and find, in order", MapInOrder);
GROWS("CzynMap add and find, at random", MapAtRandom);

} // namespace
