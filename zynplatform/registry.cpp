#include "zynplatform/registry.h"

#include "zynplatform/codepage.h"

#include <cerrno>
#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace zynplatform {
namespace {

// Empty when no variable tells where the file is.
std::string RegistryFileName() {
    const auto variable = [](const char* name) {
        const char* const value = std::getenv(name);
        return std::string(value ? value : "");
    };
    if (std::string name = variable("ZYN_REGISTRY"); !name.empty()) return name;
    if (std::string data = variable("XDG_DATA_HOME"); !data.empty()) return data + "/zynaggr/registry";
    if (std::string home = variable("HOME"); !home.empty()) return home + "/.local/share/zynaggr/registry";
    return {};
}

bool ReadToEnd(int file, std::string& text) {
    char buffer[4096];
    for (;;) {
        const ssize_t count = read(file, buffer, sizeof buffer);
        if (count == 0) return true;
        if (count > 0)
            text.append(buffer, static_cast<std::size_t>(count));
        else if (errno != EINTR)
            return false;
    }
}

// True with an empty text when there is no file.
bool ReadRegistry(std::string& text) {
    const std::string name = RegistryFileName();
    if (name.empty()) return true;
    const int file = open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return errno == ENOENT || errno == ENOTDIR;
    const bool complete = ReadToEnd(file, text);
    close(file);
    return complete;
}

std::u16string FoldedName(unsigned codePage, std::string_view text) {
    std::u16string name(WideLength(codePage, text.data(), text.size()), u'\0');
    ToWide(codePage, text.data(), text.size(), name.data());
    for (char16_t& c : name) {
        if ((c >= u'A' && c <= u'Z') || (c >= u'\u0410' && c <= u'\u042F'))
            c = static_cast<char16_t>(c + 0x20);
        else if (c == u'\u0401')
            c = u'\u0451';
    }
    return name;
}

std::string_view Trimmed(std::string_view line) {
    constexpr std::string_view blanks = " \t\r";
    const std::size_t first = line.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return line.substr(first, line.find_last_not_of(blanks) - first + 1);
}

// Takes the next line off the text.
std::string_view TakeLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return Trimmed(line);
}

} // namespace

bool RegistryIsReadable() {
    std::string text;
    return ReadRegistry(text);
}

bool RegistryKeyExists(std::string_view key) {
    std::string text;
    if (!ReadRegistry(text)) return false;
    const std::u16string wanted = FoldedName(ansiCodePage, key);

    std::string_view rest = text;
    if (rest.starts_with("\xEF\xBB\xBF")) rest.remove_prefix(3);
    while (!rest.empty()) {
        const std::string_view line = TakeLine(rest);
        if (!line.starts_with('[') || !line.ends_with(']')) continue;
        const std::u16string opened = FoldedName(utf8CodePage, line.substr(1, line.size() - 2));
        if (!opened.starts_with(wanted)) continue;
        if (opened.size() == wanted.size() || opened[wanted.size()] == u'\\') return true;
    }
    return false;
}

} // namespace zynplatform
