// SPDX-License-Identifier: MIT
#include "fuzz.h"

#include "support/ini_trial.h"

// The input makes a file and edits it.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    IniTrial trial([&](unsigned n) { return input.Below(n); });
    while (!input.IsEmpty()) {
        Check(trial.Step());
        Check(trial.ModelsAgree());
    }
    Check(trial.Flush());
    return 0;
}
