// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <cstdint>

// The module's entry point, and the life of the module in its process. The shared library calls its entry
// point itself when it is loaded, unloaded, and when the process ends; a host that links the library
// statically, or a test, may call it too.
//
// The end of the process takes nothing away that an exported function needs: threads that still run and the
// destructors of the host's static objects may translate, print and ask as before. When all of those have
// been destroyed, the tracer ends: loggers do nothing any more, and no memory that they use is freed.
//
// An unload (dlclose) gives back everything that the library has allocated for itself, however often it is
// loaded. Nothing of the library may be called after it; threads that have called it before may run on, as
// nothing of it is left in them. A host's own module comes away together with the library only if the system
// does not keep it: build it with g++'s -fno-gnu-unique, and let it export nothing of the standard library's.
//
// The locale of the C library: loading asks for "Russian" for characters (LC_CTYPE) and collation
// (LC_COLLATE), for the whole process. Nothing in the library depends on it. Where no locale and no alias has
// that name, nothing changes. Elsewhere it replaces what the host has set before it loaded the library, and
// with it how mbstowcs, isalpha, strcoll, printf's %ls and the like take 8-bit text. A host that calls
// setlocale itself afterwards has its own locale; one that called it before gets it back by zynRestoreLocale.

// - Reason 1, load: joins the host's chain of extension modules (zynhost/extensionmodule.h) under the handle
//   given, and asks for the locale. 0, and no locale set, when the module can't join, which is for a null
//   handle; else 1.
// - Reason 0, end: ends the tracer, also when it is still on, and leaves the chain. With a null reserved
//   pointer the module is unloaded, and no other thread may be logging; with any other the process ends, and
//   the tracer's memory stays. 1.
// - Any other: nothing; 1.
//
// The first two write "zynAggr.DLL Initializing!" and "zynAggr.DLL Terminating!" to the trace output.
ZYN_API int DllMain(void* hInstance, std::uint32_t dwReason, void* lpReserved);

// Gives the host its locale back: each of the two categories becomes again what it was when the library was
// loaded, unless somebody has changed it since. Not while other threads look at the locale.
ZYN_API void zynRestoreLocale();
