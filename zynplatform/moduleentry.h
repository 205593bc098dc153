#pragma once

#include <cstdint>

namespace zynplatform {

inline constexpr std::uint32_t processAttach = 1;
inline constexpr std::uint32_t processDetach = 0;

// Calls a module's entry point when the system loads and unloads the module: as a static object, it is
// constructed and destroyed at these moments. A module that refuses to be loaded stays loaded all the same,
// but is not told of its end.
class ModuleEntry {
public:
    using Function = int (*)(void* instance, std::uint32_t reason, void* reserved);

    explicit ModuleEntry(Function entry) : m_entry(entry) {
        m_isAttached = m_entry(this, processAttach, nullptr) != 0;
    }
    ~ModuleEntry() {
        if (m_isAttached) m_entry(this, processDetach, nullptr);
    }
    ModuleEntry(const ModuleEntry&) = delete;
    ModuleEntry& operator=(const ModuleEntry&) = delete;

private:
    Function m_entry;
    bool m_isAttached = false;
};

} // namespace zynplatform
