// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/zynaggr.h"
#include "zynhost/extensionmodule.h"

#include <cstdio>
#include <malloc.h>
#include <string_view>
#include <thread>
#include <unistd.h>

inline void ExpectTranslation(const char* = nullptr) {
    if (CzynTranslate::Translate("one") != std::string_view("two")) _exit(2);
}

// Four threads that use the library until the process is gone, whose very last act takes a while.
inline void StartLateCallers() {
    static constexpr cookie_io_functions_t slow{
        nullptr,
        [](void*, const char*, std::size_t size) { return usleep(30'000), static_cast<ssize_t>(size); },
        nullptr, nullptr};
    std::fputs("end", fopencookie(nullptr, "w", slow));
    mallopt(M_PERTURB, 1); // what is freed doesn't stay as it was
    CzynTranslate::AddStringTranslationPair("one", "two");
    CzynTranslate::SetShouldTranslate(true);
    zynSetTraceOutput(ExpectTranslation);
    GlobalStackLogInit(nullptr, [](const char*) {});
    for (int i = 0; i < 4; ++i)
        std::thread([] {
            for (;; ExpectTranslation())
                CzynStackLogger("Foo", true).SetFunctionInfo("late");
        }).detach();
    usleep(1000);
}
