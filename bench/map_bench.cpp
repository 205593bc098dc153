// SPDX-License-Identifier: MIT
#include "zynaggr/zynmap.h"
#include "zynaggr/zynstrmap.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

// Looking a random one of so many keys up.

namespace {

std::vector<std::string> Keys(std::int64_t count) {
    std::vector<std::string> keys;
    for (std::int64_t i = 0; i < count; ++i)
        keys.push_back("parameter " + std::to_string(i * 7919 % count));
    std::shuffle(keys.begin(), keys.end(), std::mt19937(1));
    return keys;
}

// The shape that ours has by rule, a sorted array of pointers to the items, and nothing besides.
struct SortedPointers {
    std::vector<std::unique_ptr<std::pair<std::string, int>>> items;
};

template <class Map> int Look(const Map& map, const std::string& key) {
    return map.find(key)->second;
}
int Look(const CzynStrMap& map, const std::string& key) {
    return static_cast<int>(map.Get(key.c_str()));
}
int Look(const SortedPointers& map, const std::string& key) {
    const auto isBefore = [](const auto& item, const std::string& wanted) { return item->first < wanted; };
    return (*std::lower_bound(map.items.begin(), map.items.end(), key, isBefore))->second;
}

template <class Map> void Fill(Map& map, const std::vector<std::string>& keys) {
    for (std::size_t i = 0; i < keys.size(); ++i)
        map[keys[i]] = static_cast<int>(i);
}
void Fill(CzynStrMap& map, const std::vector<std::string>& keys) {
    for (std::size_t i = 0; i < keys.size(); ++i)
        map.Add(keys[i].c_str(), static_cast<int>(i));
}
void Fill(SortedPointers& map, const std::vector<std::string>& keys) {
    for (std::size_t i = 0; i < keys.size(); ++i)
        map.items.push_back(std::make_unique<std::pair<std::string, int>>(keys[i], static_cast<int>(i)));
    std::sort(map.items.begin(), map.items.end(), [](const auto& a, const auto& b) { return *a < *b; });
}

template <class Map> void Lookup(benchmark::State& state) {
    const std::vector<std::string> keys = Keys(state.range(0));
    Map map;
    Fill(map, keys);
    for (std::size_t i = 0; i < keys.size(); ++i)
        if (Look(map, keys[i]) != static_cast<int>(i)) state.SkipWithError("wrong value");
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Look(map, keys[next]));
        if (++next == keys.size()) next = 0;
    }
}

#define WORKLOAD(map, implementation)                                                                        \
    BENCHMARK(Lookup<map>)->Name("string map, look up/" implementation)->Arg(1'000)->Arg(10'000)->Arg(100'000)

// Numbers as keys: making a map of them, in a random order, up to the first look-up; and looking a random one
// up.
struct Numbers {
    explicit Numbers(benchmark::State& state) : keys(static_cast<std::size_t>(state.range(0))) {
        for (std::size_t i = 0; i < keys.size(); ++i)
            keys[i] = static_cast<int>(i * 7);
        std::shuffle(keys.begin(), keys.end(), std::mt19937(1));
    }
    std::vector<int> keys;
};

void Put(CzynMap& map, int key) {
    map.Add(key, key + 1);
}
int Value(CzynMap& map, int key) {
    return map.GetByIn(key);
}
void Put(std::unordered_map<int, int>& map, int key) {
    map[key] = key + 1;
}
int Value(std::unordered_map<int, int>& map, int key) {
    return map.find(key)->second;
}

template <class Map> void FillNumbers(benchmark::State& state) {
    const Numbers numbers(state);
    for (auto _ : state) {
        Map map;
        for (const int key : numbers.keys)
            Put(map, key);
        if (Value(map, 7) != 8) state.SkipWithError("wrong value");
    }
}

template <class Map> void LookupNumbers(benchmark::State& state) {
    const Numbers numbers(state);
    Map map;
    for (const int key : numbers.keys)
        Put(map, key);
    std::size_t next = 0;
    for (auto _ : state) {
        const int key = numbers.keys[next];
        if (Value(map, key) != key + 1) state.SkipWithError("wrong value");
        if (++next == numbers.keys.size()) next = 0;
    }
}

#define NUMBERS(name, function, implementation)                                                              \
    BENCHMARK(function)->Name("CzynMap, " name "/" implementation)->Arg(1'000)->Arg(10'000)->Arg(100'000)

using StdNumberMap = std::unordered_map<int, int>;
NUMBERS("fill", FillNumbers<CzynMap>, "ours");
NUMBERS("look up", LookupNumbers<CzynMap>, "ours");
NUMBERS("fill", FillNumbers<StdNumberMap>, "std::unordered_map");
NUMBERS("look up", LookupNumbers<StdNumberMap>, "std::unordered_map");

using StdMap = std::map<std::string, int>;
using StdHashMap = std::unordered_map<std::string, int>;
WORKLOAD(CzynStrMap, "ours");
WORKLOAD(StdMap, "std::map");
WORKLOAD(StdHashMap, "floor: std::unordered_map");
WORKLOAD(SortedPointers, "floor: std::lower_bound");

} // namespace
