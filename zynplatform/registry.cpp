// SPDX-License-Identifier: MIT
#include "zynplatform/registry.h"

#include "zynplatform/codepage.h"
#include "zynplatform/descriptor_impl.h"
#include "zynplatform/paths.h"
#include "zynplatform/patience_impl.h"
#include "zynplatform/replace.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
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

// Whether an open file is one that can hold a registry: no device, no pipe.
bool ReadFrom(int file, std::string& text) {
    if (!IsPlainFile(file)) return false;
    char buffer[4096];
    for (std::size_t count = sizeof buffer; count == sizeof buffer; text.append(buffer, count))
        if (ReadFile(file, buffer, sizeof buffer, count) != 0) return false;
    return true;
}

UniqueDescriptor OpenNative(const std::string& name, int flags, mode_t permissions = 0) {
    return UniqueDescriptor(Uninterrupted(
        [&] { return open(name.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, permissions); }));
}

// True with an empty text when there is no file.
bool ReadRegistry(std::string& text) {
    const std::string name = RegistryFileName();
    if (name.empty()) return true;
    const UniqueDescriptor file = OpenNative(name, O_RDONLY);
    if (!file) return errno == ENOENT || errno == ENOTDIR;
    return ReadFrom(file.Get(), text);
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

// What a text says of a key and of one of its values.
struct Found {
    bool key = false;
    std::size_t insertAt = std::string::npos; // where a value of the key is added; none without a header
    std::size_t valueBegin = std::string::npos, valueEnd = 0; // the line of the value
    std::optional<std::uint32_t> number;
};

// Takes a quoted text with its escapes off the front of a line; false when there is none.
bool TakeQuoted(std::string_view& line, std::string& text) {
    if (!line.starts_with('"')) return false;
    for (std::size_t i = 1; i < line.size(); ++i) {
        if (line[i] == '"') {
            line = line.substr(i + 1);
            return true;
        }
        if (line[i] == '\\' && i + 1 < line.size()) ++i;
        text += line[i];
    }
    return false;
}

std::optional<std::uint32_t> NumberOf(std::string_view text) {
    constexpr std::string_view type = "dword:";
    if (!text.starts_with(type) || text.size() > type.size() + 8) return {};
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data() + type.size(), end, number, 16);
    if (error != std::errc() || last != end) return {};
    return number;
}

Found Find(std::string_view text, std::string_view key, std::string_view name) {
    const std::u16string wantedKey = FoldedName(ansiCodePage, key);
    const std::u16string wantedName = FoldedName(ansiCodePage, name);
    Found found;
    bool inKey = false;
    for (std::size_t begin = text.starts_with("\xEF\xBB\xBF") ? 3 : 0, end; begin < text.size();
         begin = end) {
        const std::size_t newline = text.find('\n', begin);
        end = newline == text.npos ? text.size() : newline + 1;
        std::string_view line = Trimmed(text.substr(begin, std::min(newline, text.size()) - begin));
        if (line.starts_with('[') && line.ends_with(']')) {
            const std::u16string opened = FoldedName(utf8CodePage, line.substr(1, line.size() - 2));
            inKey = opened == wantedKey;
            found.key |= inKey || opened.starts_with(wantedKey + u'\\');
            if (inKey) found.insertAt = end;
        } else if (inKey && !line.empty()) {
            found.insertAt = end;
            std::string valueName;
            if (found.valueBegin != text.npos || !TakeQuoted(line, valueName)) continue;
            if (FoldedName(utf8CodePage, valueName) != wantedName) continue;
            line = Trimmed(line);
            if (!line.starts_with('=')) continue;
            found.valueBegin = begin;
            found.valueEnd = end;
            found.number = NumberOf(Trimmed(line.substr(1)));
        }
    }
    return found;
}

std::string Utf8(std::string_view text) {
    std::u16string wide(WideLength(ansiCodePage, text.data(), text.size()), u'\0');
    ToWide(ansiCodePage, text.data(), text.size(), wide.data());
    std::string result(NarrowLength(utf8CodePage, wide.data(), wide.size()), '\0');
    ToNarrow(utf8CodePage, wide.data(), wide.size(), result.data());
    return result;
}

std::string Quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : Utf8(text)) {
        if (c == '"' || c == '\\') result += '\\';
        result += c;
    }
    return result + '"';
}

void AddKey(std::string& text, std::string_view key) {
    if (!text.empty()) text += text.ends_with('\n') ? "\n" : "\n\n";
    text.append("[").append(Utf8(key)).append("]\n");
}

void SetValue(std::string& text, std::string_view key, std::string_view name, std::uint32_t value) {
    Found found = Find(text, key, name);
    if (found.insertAt == text.npos) {
        AddKey(text, key);
        found.insertAt = text.size();
    }
    char number[16];
    std::snprintf(number, sizeof number, "dword:%08x", static_cast<unsigned>(value));
    const std::string line = Quoted(name) + "=" + number + "\n";
    if (found.valueBegin != text.npos) {
        text.replace(found.valueBegin, found.valueEnd - found.valueBegin, line);
        return;
    }
    if (text[found.insertAt - 1] != '\n') text.insert(found.insertAt++, 1, '\n');
    text.insert(found.insertAt, line);
}

// Held by whoever changes the registry, until the end of the scope. It is not waited for longer than some
// seconds, and released by its owner: a child that was forked meanwhile has it open as well.
class WriterLock {
public:
    explicit WriterLock(const std::string& registryFile)
        : m_file(OpenNative(registryFile + ".lock", O_RDWR | O_CREAT, 0600)) {
        if (!m_file) return;
        // Made by the administrator, it must not lock out the registry's user.
        struct stat registry;
        if (geteuid() == 0 && stat(registryFile.c_str(), &registry) == 0)
            static_cast<void>(fchown(m_file.Get(), registry.st_uid, registry.st_gid));
        for (Patience patience(5000); flock(m_file.Get(), LOCK_EX | LOCK_NB) != 0;)
            if ((errno != EWOULDBLOCK && errno != EINTR) || !patience.Wait()) {
                m_file = UniqueDescriptor();
                return;
            }
    }
    ~WriterLock() {
        if (m_file) flock(m_file.Get(), LOCK_UN);
    }
    WriterLock(const WriterLock&) = delete;
    WriterLock& operator=(const WriterLock&) = delete;
    bool IsHeld() const { return static_cast<bool>(m_file); }

private:
    UniqueDescriptor m_file;
};

bool MayWrite(const std::filesystem::path& path) {
    return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

// The file that is really meant, when links lead to it.
std::string RealName(const std::string& name) {
    std::error_code error;
    const auto target = std::filesystem::canonical(name, error);
    return error ? name : target.string();
}

// Puts a changed text in the place of the file; `change` tells whether there is something to write.
bool ChangeRegistry(const std::function<bool(std::string& text)>& change) {
    if (RegistryFileName().empty()) return false;
    const std::string name = RealName(RegistryFileName());
    const WriterLock lock(name);
    if (!lock.IsHeld()) return false;
    UniqueDescriptor file = OpenNative(name, O_RDWR);
    const bool isMissing = !file && errno == ENOENT;
    std::string text;
    if (!isMissing && !(file && ReadFrom(file.Get(), text))) return false;
    if (!change(text)) return false;
    // A link that leads nowhere is not for us to fill.
    if (isMissing) file = OpenNative(name, O_RDWR | O_CREAT | O_EXCL, 0600);
    if (!file) return false;

    FileHandle handle = HandleOf(file.Release());
    const std::string libraryName = FromNativePath(name);
    const OpenMode mode{.access = accessRead | accessWrite};
    Replacement replacement;
    std::uint32_t error = replacement.Prepare(handle, libraryName.c_str(), mode, {text});
    if (error == 0) error = replacement.Commit(handle, false);
    if (error == errorNotSupported) error = OverwriteFile(handle, {text});
    return CloseFile(handle) == 0 && error == 0;
}

bool MayChangeRegistry() {
    const std::filesystem::path name = RealName(RegistryFileName());
    const std::filesystem::path folder = name.has_parent_path() ? name.parent_path() : ".";
    return MayWrite(name) && MayWrite(folder);
}

} // namespace

bool RegistryIsReadable() {
    std::string text;
    return ReadRegistry(text);
}

bool RegistryKeyExists(std::string_view key) {
    std::string text;
    return ReadRegistry(text) && Find(text, key, {}).key;
}

std::optional<RegistryKey> RegistryKey::Open(std::string_view key) {
    if (!MayChangeRegistry() || !RegistryKeyExists(key)) return {};
    return RegistryKey(key);
}

std::optional<RegistryKey> RegistryKey::OpenOrCreate(std::string_view key) {
    if (auto opened = Open(key)) return opened;
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(RegistryFileName()).parent_path(), ignored);
    const bool made = ChangeRegistry([&](std::string& text) {
        const bool missing = !Find(text, key, {}).key;
        if (missing) AddKey(text, key);
        return missing;
    });
    // Another process may have made it meanwhile.
    return made ? RegistryKey(key) : Open(key);
}

std::optional<std::uint32_t> RegistryKey::GetNumber(std::string_view name) const {
    std::string text;
    if (!ReadRegistry(text)) return {};
    return Find(text, m_key, name).number;
}

bool RegistryKey::SetNumber(std::string_view name, std::uint32_t value) const {
    return ChangeRegistry([&](std::string& text) {
        const bool exists = Find(text, m_key, {}).key;
        if (exists) SetValue(text, m_key, name, value);
        return exists;
    });
}

} // namespace zynplatform
