// SPDX-License-Identifier: MIT
#pragma once

#include "support/test.h"
#include "zynaggr/zynencoding.h"

struct Encoding {
    zynTextEncoding number;
    const char* name; // the system's
    std::string mark;

    // A text of the code page in this encoding.
    std::string Encoded(const std::string& text) const { return Converted(text, "CP1251", name); }
};

inline const Encoding encodings[] = {
    {zynEncCP1251, "CP1251", ""},
    {zynEncUTF8, "UTF-8", "\xEF\xBB\xBF"},
    {zynEncUCS2LE, "UTF-16LE", "\xFF\xFE"},
    {zynEncUCS2BE, "UTF-16BE", "\xFE\xFF"},
    {zynEncUCS4LE, "UTF-32LE", "\xFF\xFE\0\0"s},
    {zynEncUCS4BE, "UTF-32BE", "\0\0\xFE\xFF"s},
};
