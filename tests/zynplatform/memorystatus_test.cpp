// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynplatform/memorystatus.h"

#include <sys/mman.h>

using namespace zynplatform;

TEST(MemoryStatus, TellsWhatIsAvailable) {
    MemoryStatus status, after;
    ASSERT_TRUE(GetMemoryStatus(status));
    const auto machine = static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) *
                         static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    EXPECT_GT(status.availablePhysical, machine / 10000);
    EXPECT_LE(status.availablePhysical, machine);
    constexpr std::size_t reserved = std::size_t{1} << 30;
    void* const range =
        mmap(nullptr, reserved, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(range, MAP_FAILED);
    ASSERT_TRUE(GetMemoryStatus(after));
    munmap(range, reserved);
    EXPECT_NEAR(static_cast<double>(status.availableVirtual - after.availableVirtual), reserved,
                reserved / 4.0);
}
