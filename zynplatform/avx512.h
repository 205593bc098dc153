#pragma once

#include "zynplatform/export.h"
#include "zynplatform/types.h"

#include <cstddef>

// Conversions of text that is mostly ASCII and characters of two bytes in UTF-8, such as Russian, for
// processors with the vector instructions AVX-512 VBMI2: they take 32 or 64 characters in a few instructions.
//
// Each function converts as many whole blocks as it can, from the start on, and says how far it came; the
// caller goes on with a character at a time, and may then try again. On other processors each does nothing.
// Nothing is read or written beyond what is converted.

namespace zynplatform::avx512 {

struct Progress {
    std::size_t read, written;
};

Progress Utf8ToWide(const char* text, std::size_t length, WCHAR* target);
Progress WideToUtf8(const WCHAR* text, std::size_t length, char* target);
// Page 1251, letters of the Russian alphabet and ASCII only.
Progress Utf8To1251(const char* text, std::size_t length, char* target);
Progress From1251ToUtf8(const char* text, std::size_t length, char* target);

// With false, the processor counts as one without these instructions, so that a test sees the other way, too.
ZYN_API void Enable(bool enable);

} // namespace zynplatform::avx512
