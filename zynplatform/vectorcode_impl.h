// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"
#include "zynplatform/types.h"

#include <atomic>
#include <cstddef>

// Work on texts with vector instructions that not every processor has, which take 16 to 64 characters in a
// few instructions.

namespace zynplatform {

struct Progress {
    std::size_t read, written;
};

// All of it by one kind of instructions.
struct VectorCode {
    // Conversions of text that is mostly ASCII and characters of two bytes in UTF-8, such as Russian. Each
    // converts as many whole blocks as it can, from the start on, and says how far it came; the caller goes
    // on with a character at a time, and may then try again. Nothing is read or written beyond the text and
    // what it converts to.
    Progress (*utf8ToWide)(const char* text, std::size_t length, WCHAR* target);
    Progress (*wideToUtf8)(const WCHAR* text, std::size_t length, char* target);
    // Page 1251, letters of the Russian alphabet and ASCII only.
    Progress (*utf8To1251)(const char* text, std::size_t length, char* target);
    Progress (*from1251ToUtf8)(const char* text, std::size_t length, char* target);

    // Going through long texts, as textscan_impl.h has it.
    std::size_t (*findDifference)(const WCHAR* left, std::size_t length, const WCHAR* right);
    std::size_t (*sameWithoutCase)(const char* left, const char* right, std::size_t length);
};

// Asks for the memory that a conversion comes to soon. What processors fetch by themselves comes too late for
// a loop that writes at another pace than it reads.
inline void FetchAhead(const void* text) {
    constexpr std::size_t distance = 2048;
    __builtin_prefetch(static_cast<const char*>(text) + distance);
}

// By the best instructions that the processor has, or those chosen below.
extern std::atomic<const VectorCode*> currentVectorCode;
inline const VectorCode& CurrentVectorCode() {
    return *currentVectorCode.load(std::memory_order_relaxed);
}

// What several kinds have in common.
namespace common {
std::size_t FindDifference(const WCHAR* left, std::size_t length, const WCHAR* right);
std::size_t SameWithoutCase(const char* left, const char* right, std::size_t length);
} // namespace common
namespace avx2 {
std::size_t FindDifference(const WCHAR* left, std::size_t length, const WCHAR* right);
std::size_t SameWithoutCase(const char* left, const char* right, std::size_t length);
} // namespace avx2

// Kinds of instructions, better ones last. With the first nothing is converted here: the plain way does it
// all.
enum class Instructions { common, avx2, avx512 };

ZYN_API Instructions BestInstructions();
// So that a test sees each way: takes these, or the best that the processor has, if that is less.
ZYN_API void UseInstructions(Instructions instructions);

} // namespace zynplatform
