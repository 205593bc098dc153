// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

// What the host class library does for a shared library that extends it: trace output, and a chain of such
// modules. Not guarded: modules come and go one at a time.

// Where trace lines go; null, as at first, means nowhere.
ZYN_API void zynSetTraceOutput(void (*output)(const char* text));

// Writes a text to the trace output as it stands; line ends are the caller's.
ZYN_API void AfxTrace(const char* text);

// A module's record: static data of the module, zero at first.
struct AFX_EXTENSION_MODULE {
    bool bInitialized;
    const void* hModule; // any address that is the module's own
};

// Fills a record; false, and the record unchanged, for a null handle. A second call changes nothing.
ZYN_API bool AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, const void* moduleHandle);

// Ends what AfxInitExtensionModule began and takes the module out of the chain. Of no effect on a record that
// is not initialised.
ZYN_API void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state);

// A module's place in the chain, the latest module first. Make it with new: the chain owns it, and
// AfxTermExtensionModule of its record deletes it.
class ZYN_API CDynLinkLibrary {
public:
    // Puts itself at the head of the chain.
    explicit CDynLinkLibrary(const AFX_EXTENSION_MODULE& state);
    CDynLinkLibrary(const CDynLinkLibrary&) = delete;
    CDynLinkLibrary& operator=(const CDynLinkLibrary&) = delete;

    // The head of the chain, or null.
    static const CDynLinkLibrary* First();

    const AFX_EXTENSION_MODULE* m_pState; // the module's record
    CDynLinkLibrary* m_pNext;             // the module that came before, or null
};
