// SPDX-License-Identifier: MIT
#include "failure.h"

#include <zynaggr/utf8.h>
#include <zynaggr/zyn_translate.h>
#include <zynaggr/zynhelpers.h>
#include <zynhost/application.h>
#include <zynplatform/console.h>
#include <zynplatform/cp1251.h>

#include <cstdio>
#include <filesystem>

using namespace zynplatform::literals;

namespace {

// Dictionaries stand in the folder of the program's data when it is installed, else beside the program.
class Application : public CWinApp {
    CStringA GetHelpFilePath() const override {
        std::error_code error;
        const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
        const std::filesystem::path data = program.parent_path().parent_path() / "share/zynaggr";
        const bool isInstalled = std::filesystem::is_directory(data, error);
        const std::filesystem::path folder = isInstalled ? data : program.parent_path();
        return zynFromNativePath((folder / "inictl.hlp").c_str());
    }
};

} // namespace

void UseLanguageOfUser() {
    static const Application application;
    static const bool isUsed [[maybe_unused]] = CzynTranslate::Init(true, nullptr);
}

std::string Message(const char* text, std::string_view name) {
    UseLanguageOfUser();
    std::string message = zynToUtf8(CzynTranslate::Translate(text));
    const std::size_t place = message.find("%s");
    return place == message.npos ? message : message.replace(place, 2, name);
}

void FailNotFound(const std::string& section, const std::string& key) {
    throw Failure{statusNotFound, Message("такой записи нет: %s"_cp1251, "[" + section + "] " + key)};
}

void Print(std::string_view utf8) {
    const std::string text = zynplatform::Utf8ToTerminal(utf8);
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void PrintLine(std::string_view utf8) {
    Print(std::string(utf8) + "\n");
}

bool IsTerminalUtf8() {
    return zynplatform::Utf8ToTerminal("ж") == "ж";
}
