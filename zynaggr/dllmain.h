#pragma once

#include "zynplatform/export.h"

#include <cstdint>

// The module's entry point. The shared library calls it itself when it is loaded and unloaded; a host that
// links the library statically, or a test, may call it too.
//
// - Reason 1, load: joins the host's chain of extension modules (zynhost/extensionmodule.h) under the handle
//   given, and asks the C library for the locale "Russian" for characters and collation; where that locale
//   isn't installed, the locale stays as it is. 0, and no locale set, when the module can't join, which is
//   for a null handle; else 1.
// - Reason 0, unload: ends the stack logger, also when it is still on, and leaves the chain. No other thread
//   may be logging. 1.
// - Any other: nothing; 1.
//
// The first two write "zynAggr.DLL Initializing!" and "zynAggr.DLL Terminating!" to the trace output. The
// reserved pointer is not looked at.
ZYN_API int DllMain(void* hInstance, std::uint32_t dwReason, void* lpReserved);
