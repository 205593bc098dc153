// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <ctime>

namespace zynplatform {

// A wait for something that somebody else must do, with a limit:
//
//     for (Patience patience(1000); !TryIt();)
//         if (!patience.Wait()) return failure;
class Patience {
public:
    explicit Patience(unsigned milliseconds) : m_end(Now() + milliseconds) {}

    // Sleeps for a moment, whose length is left to chance; false at once when the time is over. The moment is
    // short: what one waits for is often free only until somebody else takes it again.
    bool Wait() {
        if (Now() >= m_end) return false;
        m_chance = m_chance * 1664525 + 1013904223;
        const timespec pause{0, static_cast<long>(50'000 + (m_chance >> 15))};
        nanosleep(&pause, nullptr);
        return true;
    }

    // Milliseconds of a clock that no test moves.
    static std::int64_t Now() {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
    }

private:
    std::int64_t m_end;
    std::uint32_t m_chance = static_cast<std::uint32_t>(m_end) ^
                             static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(this));
};

} // namespace zynplatform
