// SPDX-License-Identifier: MIT
#pragma once

#include "options.h"

#include <zynaggr/modern/ini.h>

#include <filesystem>
#include <functional>
#include <string>

// The system's name of a file that the command line names.
std::string NativeName(const std::string& name);

// The bytes of a file, "-" being standard input. Throws Failure.
std::string ReadBytes(const std::string& nativeName);

// 0 for what has no size.
std::uintmax_t FileSize(const std::string& nativeName);

// What the options say of the encoding, and the text of a file by it.
zynEncodingChoice EncodingChoice(const Options& options);
std::string ReadText(const std::string& bytes, const Options& options, zynTextEncoding* found = nullptr);

// A folder that is there until the end of the scope.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    std::string Path(const char* name) const { return (m_path / name).string(); }

private:
    std::filesystem::path m_path;
};

// The file of a command that only reads: as it is, or what standard input holds. Throws Failure when there is
// no such file or it cannot be read.
class Source {
public:
    Source(const Options& options, const std::string& name);
    zyn::Ini& Ini() { return *m_ini; }
    const std::string& Path() const { return m_path; } // native

private:
    std::optional<ScratchFolder> m_scratch;
    std::string m_path;
    std::optional<zyn::Ini> m_ini;
};

// Runs `edit`, which is false when it has changed nothing, on the file that the options name, and saves it,
// or writes it to standard output, or shows what would change. Failures leave everything as it was.
void EditFile(const Options& options, bool mayBeMissing, const std::function<bool(zyn::Ini&)>& edit);

// The failure that the last operation of the file left.
[[noreturn]] void Refuse(zyn::Ini& ini);
[[noreturn]] void RefuseFile(zyn::Ini& ini);

// How far a long work is, on standard error, where that is a terminal.
class Progress {
public:
    Progress(const char* what, std::uintmax_t fileSize);
    ~Progress();
    void Show(std::size_t done, std::size_t all);

private:
    std::string m_what;
    bool m_isShown;
    std::size_t m_percent = 101;
};
