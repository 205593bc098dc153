// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

// String resources: a table of texts, in code page 1251, for each module of the process.

// A row of such a table.
struct zynStringResource {
    unsigned id;
    const char* text;
};

// Gives a module its table, which ends with a row of id 0 and must stay; null takes it away. A handle is any
// address that is the module's own. Not guarded: do it before other threads load strings.
ZYN_API void zynSetStringResources(const void* moduleHandle, const zynStringResource* table);

// The handle of the library's own module. Its table has the name of the library's own interface language,
// "Русский", under id 3001; a host may give it another table.
ZYN_API const void* zynLibraryModule();

// The text of a resource, or null.
ZYN_API const char* zynFindStringResource(const void* moduleHandle, unsigned id);
