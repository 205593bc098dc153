// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"
#include "zynplatform/types.h"

#include <cstdint>

// One text in 8-bit and in 16-bit form. Give it either; the other is made when it is first asked for, and
// kept:
//
//     CzynStringAdapter text(u"Ошибка");
//     puts(static_cast<const char*>(text));
//
// A text given to the adapter is borrowed, not copied: it has to end with a zero, to live and to stay as it
// is for as long as the adapter is asked. A form that the adapter has made is its own; it is valid until the
// next assignment or the adapter's end, and must not be assigned to the adapter itself.
//
// 8-bit text is in the code page `m_st_encoding`, or in UTF-8 where `m_bUTF8` is set. What the code page
// cannot hold becomes '?'; the other rules of conversion are those of zynplatform/codepage.h. A conversion
// that fails, because the system does not know the code page or the result would reach 2^31 characters, gives
// an empty text.
//
// Running out of memory throws std::bad_alloc and leaves the adapter as it was. One adapter is for one thread
// at a time.
class ZYN_API CzynStringAdapter {
public:
    CzynStringAdapter() = default;
    // Borrow a text; null is none.
    CzynStringAdapter(const char* text) { *this = text; }
    CzynStringAdapter(const WCHAR* text) { *this = text; }
    CzynStringAdapter(const CzynStringAdapter&) = delete;
    CzynStringAdapter& operator=(const CzynStringAdapter&) = delete;
    ~CzynStringAdapter();

    // Forget both forms and take this text; null leaves the adapter without one.
    CzynStringAdapter& operator=(const char* text);
    CzynStringAdapter& operator=(const WCHAR* text);

    // The 8-bit form: the caller's own text where one was given, else the converted one. Null without a text.
    operator char*();
    operator const char*() { return static_cast<char*>(*this); }

    // The 16-bit form, likewise.
    operator WCHAR*();
    operator const WCHAR*() { return static_cast<WCHAR*>(*this); }

protected:
    // Make room for `size` characters, the terminating zero included, in the adapter's own form; return the
    // room there is. What was there is kept, cut to the room; a borrowed text is copied. Room is never made
    // smaller, except that 0 frees the form and makes it unknown.
    std::uint32_t SetSizeANSI(std::uint32_t size);
    std::uint32_t SetSizeUTF(std::uint32_t size);

    char* m_pTextANSI = nullptr;   // null: not known yet
    WCHAR* m_pTextUTF = nullptr;   // null: not known yet
    std::uint32_t m_nSizeANSI = 0; // room, 0 when the text is the caller's
    std::uint32_t m_nSizeUTF = 0;  // room, 0 when the text is the caller's

public:
    // Take 8-bit text as UTF-8. To be set before the first conversion, which is kept.
    bool m_bUTF8 = false;

    // The code page of all 8-bit text of all adapters, initially 1251. Read without a lock by every
    // conversion: set it before other threads convert.
    static std::uint32_t m_st_encoding;
};
