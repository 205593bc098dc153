// SPDX-License-Identifier: MIT
#pragma once

#include "failure.h"

#include <zynaggr/zynencoding.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The command line, in UTF-8.
struct Options {
    std::string command;
    Status (*run)(const Options&) = nullptr; // it; null with help and version
    std::vector<std::string> words;          // behind the command: the file and what the command takes

    std::optional<std::string> fallback; // --default
    std::string comment;
    std::string format;                        // --format: text, json, sh, tsv or edit
    zynTextEncoding encoding = zynEncUnknown;  // what the file is said to be in
    zynTextEncoding convertTo = zynEncUnknown; // --to
    bool sections = false, keys = false;       // what list lists
    bool mark = false, lossy = false;
    bool dryRun = false, backup = false, classic = false;
    bool help = false, version = false;
};

// Throws Failure.
Options ParseOptions(int count, char** arguments);

// The name of an encoding as --encoding takes it, and back; zynEncUnknown for what is none.
const char* EncodingName(zynTextEncoding encoding);
zynTextEncoding EncodingOf(std::string_view name);
