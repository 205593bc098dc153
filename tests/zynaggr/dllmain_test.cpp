#include "zynaggr/dllmain.h"

#include "zynaggr/zynstacklogger.h"
#include "zynhost/extensionmodule.h"

#include <clocale>
#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>

namespace {

constinit char asked[256] = ""; // the library asks before this program's objects are made
constinit char lines[256] = "";

} // namespace

// Stands before the C library's: notes what is asked for and passes it on.
extern "C" char* setlocale(int category, const char* name) noexcept {
    const char* const kind = category == LC_CTYPE ? "ctype " : category == LC_COLLATE ? "collate " : "other ";
    if (name && std::strcmp(name, "Russian") == 0) std::strcat(asked, kind);
    return reinterpret_cast<decltype(&setlocale)>(dlsym(RTLD_NEXT, "setlocale"))(category, name);
}

TEST(DllMain, JoinsAtLoadAndEndsTheTracerAtUnload) {
    EXPECT_STREQ(asked, "ctype collate "); // by the library's own start
    EXPECT_NE(CDynLinkLibrary::First(), nullptr);
    zynSetTraceOutput([](const char* text) { std::strcat(lines, text); });
    int handle = 0;
    GlobalStackLogInit(nullptr, nullptr);
    const CzynStackLogger active("Foo", false);
    EXPECT_EQ(DllMain(&handle, 0, nullptr), 1);
    EXPECT_EQ(g_pGlobalStackLog.load(), nullptr);
    EXPECT_TRUE(DllMain(nullptr, 1, nullptr) == 0 && DllMain(&handle, 2, nullptr) == 1);
    EXPECT_EQ(CDynLinkLibrary::First(), nullptr);
    EXPECT_STREQ(asked, "ctype collate ");
    EXPECT_EQ(DllMain(&handle, 1, nullptr), 1);
    EXPECT_STREQ(asked, "ctype collate ctype collate ");
    EXPECT_TRUE(CDynLinkLibrary::First() && CDynLinkLibrary::First()->m_pState->hModule == &handle);
    zynSetTraceOutput(nullptr);
    EXPECT_STREQ(lines, "zynAggr.DLL Terminating!\nzynAggr.DLL Initializing!\nzynAggr.DLL Initializing!\n");
}
