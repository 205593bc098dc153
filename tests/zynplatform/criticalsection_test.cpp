// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynplatform/criticalsection.h"

using namespace zynplatform;

TEST(CriticalSection, KeepsThreadsApartAndLosesNoWakeUp) {
    constexpr int rounds = 20000;
    static _RTL_CRITICAL_SECTION zeroFilled; // never initialised
    long counter = 0;                        // plain: every round must see the ones before
    InFourThreads([&](char) {
        for (int i = 0; i < rounds; ++i) {
            EnterCriticalSection(&zeroFilled);
            EnterCriticalSection(&zeroFilled);
            LeaveCriticalSection(&zeroFilled); // still held once
            if (i % 1000 == 0) usleep(50);
            ++counter;
            LeaveCriticalSection(&zeroFilled);
        }
    });
    EXPECT_EQ(counter, 4L * rounds);
}
