// SPDX-License-Identifier: MIT
#include "fuzz.h"

#include "support/temp_folder.h"
#include "zynplatform/registry.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>
#include <regex>
#include <sstream>
#include <vector>

// The input is some names and numbers and, behind a zero byte, the file of a registry. Numbers are read as
// the rules of the file have it, and setting one changes no other line.

namespace {

using namespace zynplatform;

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

// The number by that name, which is a plain one, as is the key.
std::optional<std::uint32_t> Number(std::string text, const std::string& key, const std::string& name) {
    if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
    static const std::regex value(R"re(^"((?:\\[^]|[^"\\])*)"[ \t\r]*=[ \t\r]*([^]*)$)re");
    static const std::regex number("dword:([0-9A-Fa-f]{1,8})");
    bool inKey = false;
    for (std::string line : Lines(text)) {
        line.erase(0, line.find_first_not_of(" \t\r"));
        line.erase(line.find_last_not_of(" \t\r") + 1);
        std::smatch match, digits;
        if (line.starts_with('[') && line.ends_with(']'))
            inKey = Lower(line.substr(1, line.size() - 2)) == Lower(key);
        else if (inKey && std::regex_match(line, match, value)) {
            const std::string found = std::regex_replace(match[1].str(), std::regex(R"(\\([^]))"), "$1");
            if (Lower(found) != Lower(name)) continue;
            const std::string written = match[2];
            if (!std::regex_match(written, digits, number)) return {};
            return static_cast<std::uint32_t>(std::stoul(digits[1], nullptr, 16));
        }
    }
    return {};
}

// Between what is the same at both ends, at most one line went.
bool KeepsLines(const std::string& before, const std::string& after) {
    const std::vector<std::string> from = Lines(before), to = Lines(after);
    const auto start = std::mismatch(from.begin(), from.end(), to.begin(), to.end()).first - from.begin();
    const auto end =
        std::mismatch(from.rbegin(), from.rend() - start, to.rbegin(), to.rend()).first - from.rbegin();
    return start + end + 1 >= static_cast<std::ptrdiff_t>(from.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TempFolder folder;
    static const bool named = setenv("ZYN_REGISTRY", folder.Native("registry").c_str(), 1) == 0;
    Input input(data, size);
    Input program(reinterpret_cast<const std::uint8_t*>(data), input.Text(size).size());
    folder.Write("registry", input.Rest());
    Check(named && RegistryIsReadable());
    while (!program.IsEmpty()) {
        const std::string key = std::array{"A", "Ab", "A\\B", "b\\C"}[program.Below(4)];
        const std::string name = std::array{"N", "a", "x\"y\\z", ""}[program.Below(4)];
        const std::string before = folder.Read("registry");
        const auto opened = program.Below(2) ? RegistryKey::Open(key) : RegistryKey::OpenOrCreate(key);
        if (!opened) {
            Check(!RegistryKeyExists(key) && folder.Read("registry") == before);
            continue;
        }
        Check(RegistryKeyExists(key));
        Check(opened->GetNumber(name) == Number(folder.Read("registry"), key, name));
        const auto value = static_cast<std::uint32_t>(program.Number());
        const std::string made = folder.Read("registry");
        Check(KeepsLines(before, made) && opened->SetNumber(name, value) && opened->GetNumber(name) == value);
        Check(KeepsLines(made, folder.Read("registry")));
    }
    return 0;
}
