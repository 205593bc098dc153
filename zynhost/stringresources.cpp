// SPDX-License-Identifier: MIT
#include "zynhost/stringresources.h"

#include "zynplatform/cp1251.h"
#include "zynplatform/moduleentry.h"

#include <map>

namespace {

using namespace zynplatform::literals;

constexpr zynStringResource libraryTable[] = {{3001, "Русский"_cp1251}, {0, nullptr}};

using Tables = std::map<const void*, const zynStringResource*>;
zynplatform::UntilUnload<Tables> tables(Tables{{zynLibraryModule(), libraryTable}});

} // namespace

const void* zynLibraryModule() {
    return libraryTable;
}

void zynSetStringResources(const void* moduleHandle, const zynStringResource* table) {
    if (table)
        (*tables)[moduleHandle] = table;
    else
        tables->erase(moduleHandle);
}

const char* zynFindStringResource(const void* moduleHandle, unsigned id) {
    const auto module = tables->find(moduleHandle);
    if (module == tables->end()) return nullptr;
    for (const zynStringResource* row = module->second; row->id != 0; ++row)
        if (row->id == id) return row->text;
    return nullptr;
}
