#include "support/test.h"
#include "zynplatform/criticalsection.h"

#include <chrono>
#include <thread>

using namespace zynplatform;

namespace {

_RTL_CRITICAL_SECTION zeroFilled; // never initialised

TEST(CriticalSection, KeepsThreadsApartAndLosesNoWakeUp) {
    constexpr int rounds = 20000;
    long counter = 0; // plain: every round must see the ones before
    std::vector<std::thread> workers(4);
    for (std::thread& worker : workers)
        worker = std::thread([&] {
            for (int i = 0; i < rounds; ++i) {
                EnterCriticalSection(&zeroFilled);
                EnterCriticalSection(&zeroFilled);
                LeaveCriticalSection(&zeroFilled); // still held once
                if (i % 1000 == 0) std::this_thread::sleep_for(std::chrono::microseconds(50));
                ++counter;
                LeaveCriticalSection(&zeroFilled);
            }
        });
    for (std::thread& worker : workers)
        worker.join();
    EXPECT_EQ(counter, 4L * rounds);
}

} // namespace
