// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

// Looking for the automation servers of other applications. No server can be started here; what can be asked
// is whether one is registered.

// An automation object, counted: whoever was handed a reference releases it.
struct ZYN_API IDispatch {
    // Gives one reference back; returns how many are left. The object is gone when none is.
    virtual unsigned long Release() = 0;

protected:
    IDispatch() = default;
    IDispatch(const IDispatch&) = default;
    IDispatch& operator=(const IDispatch&) = default;
    ~IDispatch() = default;
};

namespace zynplatform {

// Makes automation usable on the calling thread. It is counted per thread: each success is undone by one
// UninitializeAutomation on the same thread. False, with nothing to undo, when the user's registry file
// (registry.h) exists but cannot be read; a missing file is an empty registry.
ZYN_API bool InitializeAutomation();

// Undoes one success of InitializeAutomation; nothing happens when there is none to undo.
ZYN_API void UninitializeAutomation();

// Whether a server is registered under a program identifier such as "Vendor.Application": the user's registry
// has the key "Software\Classes\<program identifier>\CLSID". False on a thread where automation is not
// initialised.
ZYN_API bool FindAutomationServer(const char* programId);

} // namespace zynplatform
