// SPDX-License-Identifier: MIT
#pragma once

#include "failure.h"
#include "options.h"

#include <zynaggr/modern/ini.h>

// The commands of the program. They write to standard output and throw Failure.

// Of reading.
Status Get(const Options& options);
Status Has(const Options& options);
Status List(const Options& options);
Status Diff(const Options& options);
Status Check(const Options& options);

// Of writing.
Status Set(const Options& options);
Status Delete(const Options& options);
Status Rename(const Options& options);
Status Merge(const Options& options);
Status Edit(const Options& options); // by commands from standard input
Status Convert(const Options& options);

// The sections of a file, each name once, with the one of the lines before the first header, if that has any
// pairs, as an empty name in front.
std::vector<std::string> SectionsOf(zyn::Ini& ini);
