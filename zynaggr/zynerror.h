// SPDX-License-Identifier: MIT
#pragma once

#include "zynhost/carray.h"
#include "zynhost/cstring.h"
#include "zynplatform/export.h"

#include <cstdint>

// The library's error record: what went wrong and where, and a stack of records that callers added while the
// error passed through them. Records are thrown by value:
//
//     throw SzynErrorDescription(27, "file.cpp", __DATE__, __LINE__, "text", 0, "Function", nullptr,
//     nullptr);
//
//     catch (SzynErrorDescription& error) {
//         throw SzynErrorDescription(error, "caller.cpp", __DATE__, __LINE__, "while loading", "Load",
//         nullptr);
//     }
//     catch (SzynErrorDescription& error) { log(error.Print(nullptr, false)); }
//
// A record owns the records of its stack, and copies are deep. It is copied by construction or with Set,
// never by assignment. Texts are in code page 1251; a null text is an empty one. Records are not shared
// between threads.
class ZYN_API SzynErrorDescription {
public:
    SzynErrorDescription() = default;
    // A record of these fields; its stack is empty.
    SzynErrorDescription(int nCode, const char* szSrc, const char* szSrcDate, int nLine, const char* szDescr,
                         int nModule, const char* szFun, const char* szCls, const char* szAdd);
    // A copy, its stack included.
    SzynErrorDescription(const SzynErrorDescription& other);
    // A copy of `other` with one more record on its stack, as the second Set.
    SzynErrorDescription(const SzynErrorDescription& other, const char* szSrc, const char* szSrcDate,
                         int nLine, const char* szDescr, const char* szFun, const char* szCls);
    ~SzynErrorDescription();
    SzynErrorDescription& operator=(const SzynErrorDescription&) = delete;

    // Takes over every field of `other`, and appends copies of its stacked records behind those already
    // stacked here: calling it twice stacks them twice.
    void Set(const SzynErrorDescription& other);
    // The same, then stacks a new record of the caller's place, with code -1 and module 0.
    void Set(const SzynErrorDescription& other, const char* szSrc, const char* szSrcDate, int nLine,
             const char* szDescr, const char* szFun, const char* szCls);

    // The record as text, in the form for users (`bRussian`) or the technical one; `szExtra`, unless null, is
    // put in after the function. Only the technical form shows the stack, each record on a line with its own
    // stack below. What is empty, a code of -1 and a line of 0 are left out; the module always shows.
    CStringA Print(const char* szExtra, bool bRussian) const;

    // Whether running out of memory in a pointer array is thrown as a record (true) or shown in a message box
    // (false, as at first). Process-wide and not guarded: set it before other threads use the library.
    static bool GetRetranslateMemoryExeption();
    static void SetRetranslateMemoryExeption(bool bRetranslate);

    std::int32_t m_nCode = -1; // -1: none
    CStringA m_strSrc;         // source file
    CStringA m_strSrcDate;     // its date as the compiler writes it: "May 22 2025"
    std::int32_t m_nLine = 0;  // 0: none
    CStringA m_strFun;         // function
    CStringA m_strCls;         // class
    CArray<SzynErrorDescription*, SzynErrorDescription*> m_aStack; // owned
    // What went wrong, and more about it.
    CStringA m_strDescr;
    CStringA m_strAdd;
    std::int32_t m_nModule = -1; // 1 transport, 2 data layer, 3 transport client, 4 and 5 server; -1: none
};

// Functions of the host that describe a numeric code when a record is printed: of module 1, module 2 and
// module 4. Null, as at first, means none. With a description the code itself is printed only for module 1,
// behind it. Not guarded: set them before other threads print records.
ZYN_API void SetGetTransportErrorDescription(CStringA (*pfnDescription)(int nCode));
ZYN_API void SetGetStepDataErrorDescription(CStringA (*pfnDescription)(int nCode));
ZYN_API void SetGetServerErrorDescription(CStringA (*pfnDescription)(int nCode));
