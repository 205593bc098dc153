#include "zynaggr/dllmain.h"

#include "zynaggr/zynstacklogger.h"
#include "zynhost/extensionmodule.h"
#include "zynplatform/moduleentry.h"

#include <clocale>

namespace {

constinit AFX_EXTENSION_MODULE extensionModule{};

const zynplatform::ModuleEntry moduleEntry(DllMain);

} // namespace

int DllMain(void* hInstance, std::uint32_t dwReason, void* /*lpReserved*/) {
    if (dwReason == zynplatform::processAttach) {
        AfxTrace("zynAggr.DLL Initializing!\n");
        if (!AfxInitExtensionModule(extensionModule, hInstance)) return 0;
        new CDynLinkLibrary(extensionModule); // the chain owns it
        std::setlocale(LC_CTYPE, "Russian");
        std::setlocale(LC_COLLATE, "Russian");
    } else if (dwReason == zynplatform::processDetach) {
        AfxTrace("zynAggr.DLL Terminating!\n");
        GlobalStackLogDestroy();
        AfxTermExtensionModule(extensionModule);
    }
    return 1;
}
