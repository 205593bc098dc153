// SPDX-License-Identifier: MIT
#include "zynplatform/automation.h"

#include "zynplatform/registry.h"

#include <string>

namespace zynplatform {
namespace {

thread_local unsigned initializations = 0;

} // namespace

bool InitializeAutomation() {
    if (!RegistryIsReadable()) return false;
    ++initializations;
    return true;
}

void UninitializeAutomation() {
    if (initializations > 0) --initializations;
}

bool FindAutomationServer(const char* programId) {
    if (initializations == 0) return false;
    return RegistryKeyExists("Software\\Classes\\" + std::string(programId) + "\\CLSID");
}

} // namespace zynplatform
