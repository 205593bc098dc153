#include "zynhost/stringresources.h"

#include "zynplatform/cp1251.h"

#include <map>

namespace {

using namespace zynplatform::literals;

constexpr zynStringResource libraryTable[] = {{3001, "Русский"_cp1251}, {0, nullptr}};

std::map<const void*, const zynStringResource*>& Tables() {
    static std::map<const void*, const zynStringResource*> tables{{zynLibraryModule(), libraryTable}};
    return tables;
}

} // namespace

const void* zynLibraryModule() {
    return libraryTable;
}

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
