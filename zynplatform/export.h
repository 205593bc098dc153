// SPDX-License-Identifier: MIT
#pragma once

#if __cplusplus < 202002L
#error "zynAggr needs C++20: compile with -std=c++20"
#include "zynAggr needs C++20" // which is not there: without it nothing that follows is worth reading
#endif

// Marks what the shared library exports; everything else is built with hidden visibility.
#define ZYN_API __attribute__((visibility("default")))
// Marks what an exported class keeps to the library.
#define ZYN_LOCAL __attribute__((visibility("hidden")))
