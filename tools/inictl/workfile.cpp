// SPDX-License-Identifier: MIT
#include "workfile.h"

#include "difference.h"
#include "failure.h"

#include <zynplatform/console.h>
#include <zynplatform/cp1251.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <unistd.h>

using namespace zynplatform::literals;
namespace fs = std::filesystem;

namespace {

// From where on a work may take so long that one asks what it does.
constexpr std::uintmax_t longWork = 4'000'000;

bool IsStandard(const std::string& name) {
    return name == "-";
}

// Of the system's error that has just come.
[[noreturn]] void FailFile(const std::string& nativeName) {
    const int error = errno;
    std::setlocale(LC_ALL, ""); // now that a text of the system is needed
    const std::string message = nativeName + ": " + std::strerror(error);
    throw Failure{statusFile, zynplatform::TerminalToUtf8(message)};
}

void Configure(zyn::Ini& ini, const Options& options) {
    CzynINI& engine = ini.Engine();
    engine.SetEncodingChoice(EncodingChoice(options));
    engine.SetFaithful(!options.classic);
    engine.SetKeepBackup(options.backup);
}

void WriteBytes(const std::string& name, const std::string& bytes) {
    std::ofstream file(name, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush();
    if (!file) FailFile(name);
}

} // namespace

std::string NativeName(const std::string& name) {
    return zynplatform::Utf8ToTerminal(name);
}

std::string ReadBytes(const std::string& name) {
    std::string bytes;
    std::FILE* const file = IsStandard(name) ? stdin : std::fopen(name.c_str(), "rb");
    if (!file) FailFile(name);
    char piece[65536];
    for (std::size_t length; (length = std::fread(piece, 1, sizeof piece, file)) > 0;)
        bytes.append(piece, length);
    if (std::ferror(file)) FailFile(name);
    if (file != stdin) std::fclose(file);
    return bytes;
}

std::uintmax_t FileSize(const std::string& name) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(name, error);
    return error ? 0 : size;
}

zynEncodingChoice EncodingChoice(const Options& options) {
    zynEncodingChoice choice;
    choice.m_bPreferUtf8 = options.encoding == zynEncUnknown;
    choice.m_nUnmarked = options.encoding;
    choice.m_nNewFile = options.encoding == zynEncUnknown ? zynEncUTF8 : options.encoding;
    return choice;
}

std::string ReadText(const std::string& bytes, const Options& options, zynTextEncoding* found) {
    return zynFileToUtf8(bytes, EncodingChoice(options), found);
}

ScratchFolder::ScratchFolder() {
    std::string pattern = (fs::temp_directory_path() / "inictl-XXXXXX").string();
    if (!mkdtemp(pattern.data())) FailFile(pattern);
    m_path = pattern;
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

Source::Source(const Options& options, const std::string& name) : m_path(NativeName(name)) {
    if (IsStandard(m_path)) {
        m_scratch.emplace();
        m_path = m_scratch->Path("input");
        WriteBytes(m_path, ReadBytes("-"));
    } else if (access(m_path.c_str(), F_OK) != 0) {
        FailFile(m_path);
    }
    m_ini.emplace(m_path);
    Configure(*m_ini, options);
    if (m_ini->Reload()) return;
    UseLanguageOfUser();
    m_ini->Reload(); // the same failure in the user's language
    RefuseFile(*m_ini);
}

void EditFile(const Options& options, bool mayBeMissing, const std::function<bool(zyn::Ini&)>& edit) {
    UseLanguageOfUser();
    const std::string name = NativeName(options.words[0]);
    const bool isCopy = options.dryRun || IsStandard(name);
    const bool isMissing = !IsStandard(name) && access(name.c_str(), F_OK) != 0 && errno == ENOENT;
    if (isMissing && !mayBeMissing) FailFile(name);
    std::optional<ScratchFolder> scratch;
    std::string path = name, before;
    if (isCopy) {
        if (!isMissing) before = ReadBytes(name);
        scratch.emplace();
        path = scratch->Path("file");
        WriteBytes(path, before);
    }
    try {
        zyn::Ini ini(path);
        Configure(ini, options);
        zyn::Ini::Batch batch(ini);
        if (!batch.IsBegun()) RefuseFile(ini);
        if (edit(ini) && !batch.Commit()) RefuseFile(ini);
    } catch (const Failure&) {
        std::error_code ignored; // the file may have been made
        if (isMissing && !isCopy && fs::file_size(path, ignored) == 0) fs::remove(path, ignored);
        throw;
    }
    if (options.dryRun) {
        const std::string after = ReadBytes(path);
        const std::string textBefore = ReadText(before, options), textAfter = ReadText(after, options);
        Print(UnifiedDiff(textBefore, textAfter, options.words[0]));
        if (before != after && textBefore == textAfter)
            PrintLine(Message("изменится только кодировка"_cp1251));
    } else if (isCopy) {
        const std::string after = ReadBytes(path);
        std::fwrite(after.data(), 1, after.size(), stdout);
    }
}

void Refuse(zyn::Ini& ini) {
    throw Failure{statusRefused, ini.Error()};
}

void RefuseFile(zyn::Ini& ini) {
    throw Failure{statusFile, ini.Error()};
}

Progress::Progress(const char* what, std::uintmax_t fileSize)
    : m_isShown(fileSize >= longWork && isatty(STDERR_FILENO)) {
    if (m_isShown) m_what = Message(what);
}

Progress::~Progress() {
    if (m_isShown) std::fputs("\r\x1b[K", stderr);
}

void Progress::Show(std::size_t done, std::size_t all) {
    const std::size_t percent = all == 0 ? 100 : 100 * done / all;
    if (!m_isShown || percent == m_percent) return;
    m_percent = percent;
    std::fprintf(stderr, "\r%s %zu %%", zynplatform::Utf8ToTerminal(m_what).c_str(), percent);
    std::fflush(stderr);
}
