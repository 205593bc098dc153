#pragma once

#include "zynplatform/export.h"
#include "zynplatform/types.h"

#include <cstddef>

// Conversions of text that is mostly ASCII and characters of two bytes in UTF-8, such as Russian, with vector
// instructions that not every processor has: they take 16 to 64 characters in a few instructions.

namespace zynplatform {

struct Progress {
    std::size_t read, written;
};

// The conversions by one kind of instructions. Each converts as many whole blocks as it can, from the start
// on, and says how far it came; the caller goes on with a character at a time, and may then try again.
// Nothing is read or written beyond the text and what it converts to.
struct VectorCode {
    Progress (*utf8ToWide)(const char* text, std::size_t length, WCHAR* target);
    Progress (*wideToUtf8)(const WCHAR* text, std::size_t length, char* target);
    // Page 1251, letters of the Russian alphabet and ASCII only.
    Progress (*utf8To1251)(const char* text, std::size_t length, char* target);
    Progress (*from1251ToUtf8)(const char* text, std::size_t length, char* target);
};

// Asks for the memory that a conversion comes to soon. What processors fetch by themselves comes too late for
// a loop that writes at another pace than it reads.
inline void FetchAhead(const void* text) {
    constexpr std::size_t distance = 2048;
    __builtin_prefetch(static_cast<const char*>(text) + distance);
}

// By the best instructions that the processor has, or those chosen below.
const VectorCode& CurrentVectorCode();

// Kinds of instructions, better ones last. With the first nothing is converted here: the plain way does it
// all.
enum class Instructions { common, avx2, avx512 };

ZYN_API Instructions BestInstructions();
// So that a test sees each way: takes these, or the best that the processor has, if that is less.
ZYN_API void UseInstructions(Instructions instructions);

} // namespace zynplatform
