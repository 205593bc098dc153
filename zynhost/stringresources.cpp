#include "zynhost/stringresources.h"

#include <map>

namespace {

std::map<const void*, const zynStringResource*>& Tables() {
    static std::map<const void*, const zynStringResource*> tables;
    return tables;
}

} // namespace

void zynSetStringResources(const void* moduleHandle, const zynStringResource* table) {
    if (table)
        Tables()[moduleHandle] = table;
    else
        Tables().erase(moduleHandle);
}

const char* zynFindStringResource(const void* moduleHandle, unsigned id) {
    const auto module = Tables().find(moduleHandle);
    if (module == Tables().end()) return nullptr;
    for (const zynStringResource* row = module->second; row->id != 0; ++row)
        if (row->id == id) return row->text;
    return nullptr;
}
