// SPDX-License-Identifier: MIT
#include "zynplatform/moduleentry.h"

#include <dlfcn.h>
#include <link.h>
#include <unwind.h>

namespace zynplatform {
namespace {

// The first instruction of the object that an address lies in; null for none.
const void* ObjectOf(const void* address) {
    Dl_info object{};
    return dladdr(address, &object) != 0 ? object.dli_fbase : nullptr;
}

_Unwind_Reason_Code NoteFrame(_Unwind_Context* frame, void* outermost) {
    if (const auto address = _Unwind_GetIP(frame))
        *static_cast<const void**>(outermost) = reinterpret_cast<const void*>(address); // NOLINT
    return _URC_NO_REASON;
}

// Whether main is still to come: who called whom then begins in the loader.
bool IsProcessStarting() {
    const void* outermost = nullptr;
    _Unwind_Backtrace(NoteFrame, &outermost);
    return ObjectOf(outermost) == ObjectOf(&_r_debug);
}

// The end of the process destroys static objects and calls the final functions of modules, an unload calls
// the final function and destroys the objects: which comes first tells one from the other. But what has been
// loaded before main is finished first and destroyed then at the end of the process too. It is not unloaded,
// unless a static object loaded and unloads it; then its memory is lost.
const bool isOfTheStart = IsProcessStarting();
constinit bool isDestroyed = false;
constinit bool isUnloading = false;

const struct LastObject {
    ~LastObject() { isDestroyed = true; }
} lastObject;

constinit ModuleEntry::Function attached = nullptr;

[[gnu::destructor]] void Detach() {
    const bool isEnding = isOfTheStart || isDestroyed;
    isUnloading = !isEnding;
    if (attached) attached(&attached, processDetach, isEnding ? &attached : nullptr);
}

} // namespace

ModuleEntry::ModuleEntry(Function entry) {
    if (entry(&attached, processAttach, nullptr) != 0) attached = entry;
}

bool IsUnloading() {
    return isUnloading;
}

} // namespace zynplatform
