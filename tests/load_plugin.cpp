// A host's module that uses the library: load_rounds loads and unloads both.

#include "zynaggr/zynaggr.h"
#include "zynhost/extensionmodule.h"
#include "zynhost/stringresources.h"
#include "zynplatform/console.h"

extern "C" ZYN_API void Start(void (*trace)(const char*)) {
    static constexpr zynStringResource texts[] = {{1, "text"}, {0, nullptr}};
    zynSetTraceOutput(trace);
    zynSetStringResources(texts, texts);
    GlobalStackLogInit(nullptr, [](const char*) {});
    CzynTranslate::AddStringTranslationPair("one", "two");
    CzynTranslate::SetShouldTranslate(true);
}

extern "C" ZYN_API void Use() {
    CzynStackLogger logger("Use", false);
    logger.SetFunctionInfo(CzynDateTime::GetTickCount().Format("%d.%m.%Y"));
    CzynINI ini("f.ini");
    ini.GetString("section", "key", zynplatform::ToTerminal("text").c_str(), false);
}

extern "C" ZYN_API const char* Translate(const char* text) {
    return CzynTranslate::Translate(text);
}
