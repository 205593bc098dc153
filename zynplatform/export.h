#pragma once

// Marks what the shared library exports; everything else is built with hidden visibility.
#define ZYN_API __attribute__((visibility("default")))
// Marks what an exported class keeps to the library.
#define ZYN_LOCAL __attribute__((visibility("hidden")))
