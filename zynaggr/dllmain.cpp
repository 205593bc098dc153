// SPDX-License-Identifier: MIT
#include "zynaggr/dllmain.h"

#include "zynaggr/zynstacklogger.h"
#include "zynhost/extensionmodule.h"
#include "zynplatform/moduleentry.h"

#include <clocale>
#include <string>

namespace {

constinit AFX_EXTENSION_MODULE extensionModule{};

// Where the end of the process leaves the tracer.
constinit std::atomic<CGlobalStackLog*> lastTracer{nullptr};

std::string LocaleOf(int category) {
    const char* const name = std::setlocale(category, nullptr);
    return name ? name : "";
}

// A category of the C library's locale: as it was found, and as the request left it.
struct Category {
    explicit Category(int number) : category(number) {}

    void AskForRussian() {
        found = LocaleOf(category);
        std::setlocale(category, "Russian");
        left = LocaleOf(category);
    }
    void Restore() const {
        if (found != left && LocaleOf(category) == left) std::setlocale(category, found.c_str());
    }

    int category;
    std::string found, left;
};

zynplatform::UntilUnload<Category> characters{LC_CTYPE}, collation{LC_COLLATE};

const zynplatform::ModuleEntry moduleEntry(DllMain); // last: it calls DllMain

} // namespace

int DllMain(void* hInstance, std::uint32_t dwReason, void* lpReserved) {
    if (dwReason == zynplatform::processAttach) {
        AfxTrace("zynAggr.DLL Initializing!\n");
        if (!AfxInitExtensionModule(extensionModule, hInstance)) return 0;
        new CDynLinkLibrary(extensionModule); // the chain owns it
        characters->AskForRussian();
        collation->AskForRussian();
    } else if (dwReason == zynplatform::processDetach) {
        AfxTrace("zynAggr.DLL Terminating!\n");
        if (lpReserved)
            lastTracer = g_pGlobalStackLog.exchange(nullptr);
        else
            GlobalStackLogDestroy();
        AfxTermExtensionModule(extensionModule);
    }
    return 1;
}

void zynRestoreLocale() {
    characters->Restore();
    collation->Restore();
}
