// SPDX-License-Identifier: MIT
#include "zynplatform/memorystatus.h"

#include <cinttypes>
#include <cstdio>
#include <memory>

#include <sys/resource.h>
#include <unistd.h>

namespace zynplatform {
namespace {

MemoryStatusSource memoryStatusSource = nullptr;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

std::uint64_t PageSize() {
    return static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

bool AvailablePhysical(std::uint64_t& bytes) {
    if (const File file{std::fopen("/proc/meminfo", "re")}) {
        char line[256];
        while (std::fgets(line, sizeof line, file.get())) {
            std::uint64_t kilobytes = 0;
            if (std::sscanf(line, "MemAvailable: %" SCNu64, &kilobytes) != 1) continue;
            bytes = kilobytes * 1024;
            return true;
        }
    }
    const long pages = sysconf(_SC_AVPHYS_PAGES);
    if (pages < 0) return false;
    bytes = static_cast<std::uint64_t>(pages) * PageSize();
    return true;
}

bool AvailableVirtual(std::uint64_t& bytes) {
    // What a process may address: 47 bits of a 64-bit machine, 3 GiB of a 32-bit one.
    constexpr std::uint64_t machine = sizeof(void*) == 8 ? std::uint64_t{1} << 47 : std::uint64_t{3} << 30;
    rlimit limit{};
    if (getrlimit(RLIMIT_AS, &limit) != 0) return false;
    const std::uint64_t total = limit.rlim_cur == RLIM_INFINITY ? machine : limit.rlim_cur;

    std::uint64_t usedPages = 0;
    const File file{std::fopen("/proc/self/statm", "re")};
    if (file && std::fscanf(file.get(), "%" SCNu64, &usedPages) != 1) usedPages = 0;
    const std::uint64_t used = usedPages * PageSize();
    bytes = used < total ? total - used : 0;
    return true;
}

} // namespace

bool GetMemoryStatus(MemoryStatus& status) {
    if (memoryStatusSource) return memoryStatusSource(status);
    MemoryStatus found;
    if (!AvailablePhysical(found.availablePhysical) || !AvailableVirtual(found.availableVirtual))
        return false;
    status = found;
    return true;
}

void SetMemoryStatusSource(MemoryStatusSource source) {
    memoryStatusSource = source;
}

} // namespace zynplatform
