// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

// What the fuzz targets share. A target turns its input into calls and says with Check what has to hold;
// whatever the sanitizers find is a failure as well.

inline void Check(bool holds, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (holds) return;
    std::fprintf(stderr, "%s:%d: does not hold\n", file, line);
    std::abort();
}

// The input, taken bit by bit. What is missing at its end reads as 0 and as empty texts.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_rest(reinterpret_cast<const char*>(data), size) {}

    bool IsEmpty() const { return m_rest.empty(); }
    unsigned Byte() {
        const std::string_view byte = Take(1);
        return byte.empty() ? 0 : static_cast<unsigned char>(byte[0]);
    }
    // A number from 0 to limit - 1.
    unsigned Below(unsigned limit) { return Byte() % limit; }
    // 32 bits, often near an end of their range.
    std::int32_t Number() {
        constexpr std::int32_t ends[] = {0, INT32_MAX - 8, INT32_MIN, -8, 4090};
        const unsigned kind = Byte();
        const std::uint32_t low = Byte();
        if (kind < 128) return static_cast<std::int32_t>(low) - (kind == 0 ? 128 : 0);
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(ends[kind % 5]) + low % 16);
    }
    std::string_view Take(std::size_t count) {
        const std::string_view taken = m_rest.substr(0, count);
        m_rest.remove_prefix(taken.size());
        return taken;
    }
    // Up to a zero byte or `limit` bytes.
    std::string_view Text(std::size_t limit = 64) {
        const std::string_view text = Take(std::min(limit, m_rest.find('\0')));
        if (m_rest.starts_with('\0')) m_rest.remove_prefix(1);
        return text;
    }
    std::string_view Rest() { return Take(m_rest.size()); }

private:
    std::string_view m_rest;
};

// Bytes in memory of just their size, so that a step beyond either end is noticed.
template <class C> std::unique_ptr<C[]> Exactly(std::basic_string_view<C> text) {
    std::unique_ptr<C[]> copy(new C[text.size()]);
    std::copy(text.begin(), text.end(), copy.get());
    return copy;
}
