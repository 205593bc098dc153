// SPDX-License-Identifier: MIT
#include "zynhost/extensionmodule.h"

#include <atomic>

namespace {

std::atomic<void (*)(const char*)> traceOutput{nullptr};
CDynLinkLibrary* firstModule = nullptr;

} // namespace

void zynSetTraceOutput(void (*output)(const char* text)) {
    traceOutput = output;
}

void AfxTrace(const char* text) {
    if (void (*const output)(const char*) = traceOutput) output(text);
}

bool AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, const void* moduleHandle) {
    if (!moduleHandle) return false;
    if (!state.bInitialized) state = {true, moduleHandle};
    return true;
}

void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state) {
    for (CDynLinkLibrary** link = &firstModule; *link;) {
        CDynLinkLibrary* const module = *link;
        if (module->m_pState != &state) {
            link = &module->m_pNext;
            continue;
        }
        *link = module->m_pNext;
        delete module;
    }
    state = {};
}

CDynLinkLibrary::CDynLinkLibrary(const AFX_EXTENSION_MODULE& state) : m_pState(&state), m_pNext(firstModule) {
    firstModule = this;
}

const CDynLinkLibrary* CDynLinkLibrary::First() {
    return firstModule;
}
