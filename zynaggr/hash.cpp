// SPDX-License-Identifier: MIT
#include "zynaggr/hash_impl.h"

#include <chrono>
#include <exception>
#include <random>

zyn::HashSeed zyn::MakeHashSeed() {
    std::uint32_t words[6] = {};
    try {
        std::random_device device;
        for (std::uint32_t& word : words)
            word = device();
    } catch (const std::exception&) { // without such a device: when, and where in memory, this ran
        const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
        std::mt19937_64 random(static_cast<std::uint64_t>(now) ^ reinterpret_cast<std::uintptr_t>(&words));
        for (std::uint32_t& word : words)
            word = static_cast<std::uint32_t>(random() >> 32);
    }
    const auto joined = [&](int i) { return std::uint64_t{words[i]} << 32 | words[i + 1]; };
    return {joined(0), joined(2) | 1, joined(4) | 1};
}
