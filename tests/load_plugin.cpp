// A host's module that uses the library: load_rounds loads and unloads both.

#include "support/late_callers.h"
#include "zynhost/stringresources.h"

extern "C" ZYN_API void Use(void (*trace)(const char*)) {
    static constexpr zynStringResource texts[] = {{1, "text"}, {0, nullptr}};
    zynSetTraceOutput(trace);
    zynSetStringResources(texts, texts);
    GlobalStackLogInit(nullptr, [](const char*) {});
    CzynStackLogger("Use", false).SetFunctionInfo(CzynDateTime::GetTickCount().Format("%d.%m.%Y"));
    CzynINI("f.ini").GetString("section", "key", "", false);
    CzynTranslate::AddStringTranslationPair("one", "two");
    CzynTranslate::SetShouldTranslate(true);
}

extern "C" ZYN_API const char* Translate(const char* text) {
    return CzynTranslate::Translate(text);
}

extern "C" ZYN_API void UseTillTheEnd() {
    StartLateCallers();
}
