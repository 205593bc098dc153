// SPDX-License-Identifier: MIT

// A host's module that uses the library: load_rounds loads and unloads both.

#include "support/late_callers.h"
#include "zynhost/stringresources.h"

using Translator = decltype(&CzynTranslate::Translate);

extern "C" ZYN_API Translator Use(void (*trace)(const char*)) {
    static constexpr zynStringResource texts[] = {{1, "text"}, {0, nullptr}};
    zynSetTraceOutput(trace);
    zynSetStringResources(texts, texts);
    GlobalStackLogInit(nullptr, [](const char*) {});
    CzynStackLogger("Use", false).SetFunctionInfo(CzynDateTime::GetTickCount().Format("%d.%m.%Y"));
    CzynINI("f.ini").GetString("section", "key", "", false);
    CzynTranslate::AddStringTranslationPair("one", "two");
    CzynTranslate::SetShouldTranslate(true);
    return CzynTranslate::Translate;
}

extern "C" ZYN_API void UseTillTheEnd() {
    StartLateCallers();
}
