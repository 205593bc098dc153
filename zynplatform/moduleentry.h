// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <utility>

namespace zynplatform {

inline constexpr std::uint32_t processAttach = 1;
inline constexpr std::uint32_t processDetach = 0;

// Calls a module's entry point when the system loads the module, as a static object that is constructed then,
// and when it unloads it or the process ends: before the module's static objects are destroyed in the first
// case, after those of everybody in the second, in which the entry point's last argument is not null. A
// module that refuses to be loaded stays loaded all the same, but is not told of its end.
class ModuleEntry {
public:
    using Function = int (*)(void* instance, std::uint32_t reason, void* reserved);

    explicit ModuleEntry(Function entry); // one a module
    ModuleEntry(const ModuleEntry&) = delete;
    ModuleEntry& operator=(const ModuleEntry&) = delete;
};

// Whether the module is being unloaded: false also while the process ends.
bool IsUnloading();

// A static object that an exported function needs. At the end of the process it stays, for threads that still
// run and for the host's own static objects; only an unload destroys it.
template <class T> class UntilUnload {
public:
    template <class... Arguments>
    constexpr explicit UntilUnload(Arguments&&... arguments)
        : m_object(std::forward<Arguments>(arguments)...) {}
    ~UntilUnload() {
        if (IsUnloading()) m_object.~T();
    }
    UntilUnload(const UntilUnload&) = delete;
    UntilUnload& operator=(const UntilUnload&) = delete;

    T& operator*() { return m_object; }
    T* operator->() { return &m_object; }

private:
    union {
        T m_object;
    };
};

} // namespace zynplatform
