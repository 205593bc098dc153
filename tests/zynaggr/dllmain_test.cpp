// SPDX-License-Identifier: MIT
#include "support/late_callers.h"

#include <clocale>
#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>

static constinit char asked[256] = ""; // the library asks before this program's objects are made
static constinit char lines[256] = "";
static constinit bool isRussian[16] = {};

// Stands before the C library's and knows one locale more: "Russian", for what the library asks it for.
extern "C" char* setlocale(int category, const char* name) noexcept {
    static char russian[] = "Russian";
    bool& isHere = isRussian[category];
    if (name) isHere = std::strcmp(name, russian) == 0;
    if (isHere && name)
        std::strcat(asked, category == LC_CTYPE ? "ctype " : category == LC_COLLATE ? "collate " : "other ");
    if (isHere) return russian;
    return reinterpret_cast<decltype(&setlocale)>(dlsym(RTLD_NEXT, "setlocale"))(category, name);
}

TEST(DllMain, JoinsAtLoadAndEndsTheTracerAtUnload) {
    EXPECT_STREQ(asked, "ctype collate "); // by the library's own start
    EXPECT_NE(CDynLinkLibrary::First(), nullptr);
    zynRestoreLocale();
    EXPECT_STREQ(setlocale(LC_CTYPE, nullptr), "C");
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
    setlocale(LC_COLLATE, "POSIX"); // the host's own choice stays
    zynRestoreLocale();
    EXPECT_FALSE(isRussian[LC_CTYPE] || isRussian[LC_COLLATE]);
    EXPECT_STREQ(asked, "ctype collate ctype collate ");
    zynSetTraceOutput(nullptr);
    EXPECT_STREQ(lines, "zynAggr.DLL Terminating!\nzynAggr.DLL Initializing!\nzynAggr.DLL Initializing!\n");
}

TEST(ProcessEndThreadsDeathTest, TakesNothingFromThoseWhoStillUseTheLibrary) {
    for (int i = 0; i < 20; ++i)
        EXPECT_EXIT((StartLateCallers(), std::exit(0)), testing::ExitedWithCode(0), "");
}
