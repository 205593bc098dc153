// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <new>

// What the host class library throws when memory runs out. A plain std::bad_alloc means the same everywhere
// in the library; this one carries the host's text.
class ZYN_API CMemoryException : public std::bad_alloc {
public:
    ~CMemoryException() override;

    // The text, in code page 1251.
    const char* what() const noexcept override;
    // Copies the text, cut to size - 1 characters, and a zero into `text`; false when there is no room at
    // all.
    bool GetErrorMessage(char* text, unsigned size) const;

    // The text of running out of memory, also for an exception that carries none.
    static const char* Text() noexcept;
};

// Throws a CMemoryException.
[[noreturn]] ZYN_API void AfxThrowMemoryException();
