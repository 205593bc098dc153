#pragma once

#include <cstdio>
#include <unistd.h>

// Makes the end of the process take a while after everything else in it is over: what threads still do then
// has time to go wrong.
inline void EndSlowly() {
    static constexpr cookie_io_functions_t slow{
        nullptr,
        [](void*, const char*, std::size_t size) { return usleep(30'000), static_cast<ssize_t>(size); },
        nullptr, nullptr};
    std::fputs("end", fopencookie(nullptr, "w", slow));
}
