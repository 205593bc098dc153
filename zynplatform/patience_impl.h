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

    // Sleeps for a moment, longer from time to time; false at once when the time is over.
    bool Wait() {
        const std::int64_t now = Now();
        if (now >= m_end) return false;
        m_pause = m_pause < longest ? m_pause + m_pause / 2 + now % 7 * 1000 : longest / 4;
        const timespec pause{0, static_cast<long>(m_pause)};
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
    static constexpr std::int64_t longest = 2'000'000; // nanoseconds

    std::int64_t m_end;
    std::int64_t m_pause = 50'000;
};

} // namespace zynplatform
