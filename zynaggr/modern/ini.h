// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/ini.h"
#include "zynaggr/ini_transaction.h"
#include "zynaggr/utf8.h"

#include <charconv>
#include <concepts>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zyn {

// An INI file for hosts whose texts are in UTF-8 and whose paths are the system's own:
//
//     zyn::Ini ini("/etc/app.conf");
//     int port = ini.Get("server", "port", 8080);
//     std::optional<std::string> host = ini.Get("server", "host");
//     if (!ini.Set("server", "price", "100 ₽")) std::cerr << ini.Error() << '\n';
//
// A save changes the lines of the edit and no other byte of the file, whatever encoding it is in: the
// faithful mode of CzynINI. A file without a mark is read as UTF-8 when it is well-formed, else in code page
// 1251 or what its content shows; a new file is written in UTF-8 without a mark, its lines ended by "\n".
// What the file's encoding does not have is refused.
//
// Names are compared without the blanks around them and without regard to the case of Latin and Russian
// letters; of several equal ones the first is meant. Values have no blanks around them. The section "" is
// that of the lines before the first header.
//
// Each edit saves the file; a Batch saves many at once. The file is read again when more than a second has
// passed, or after Reload. Failures are false, with Error() as the text; an edit that was refused changed
// nothing, one that could not be saved is forgotten by Reload. Running out of memory throws. Threads and
// other processes: as told for CzynINI.
class Ini {
public:
    // The file need not exist; the first edit makes it. A relative path is one of the current directory.
    explicit Ini(const std::string& path) {
        zynEncodingChoice choice;
        choice.m_bPreferUtf8 = true;
        choice.m_nNewFile = zynEncUTF8;
        m_engine.SetEncodingChoice(choice);
        m_engine.SetFaithful(true);
        m_engine.SetINI(std::filesystem::absolute(path).c_str(), false, 0);
    }

    // Whether the file could be read, if there is one.
    bool Reload() {
        m_engine.SetNeedReload();
        CStringArray sections;
        return m_engine.GetListSections(sections);
    }
    // Why the last of the failed operations did; translated by CzynTranslate, or Russian.
    std::string Error() { return zynToUtf8(m_engine.GetErrDescription()); }

    // ---- Queries; where the file cannot be read, there is nothing in it

    // The names of the sections in the order of the file, repeated ones included, without "".
    std::vector<std::string> Sections() {
        std::vector<std::string> names;
        m_engine.GetListSectionsUtf8(names);
        return names;
    }
    // The keys of a section in the order of the file, repeated ones included; none when there is no such
    // section.
    std::vector<std::string> Keys(std::string_view section) {
        std::vector<std::string> names;
        m_engine.GetListKeysUtf8(section, names);
        return names;
    }
    // The same with the values.
    std::vector<std::pair<std::string, std::string>> Pairs(std::string_view section) {
        std::vector<std::pair<std::string, std::string>> pairs;
        m_engine.GetListKeysValsUtf8(section, pairs);
        return pairs;
    }
    // Whether there is such a section.
    bool HasSection(std::string_view section) {
        std::vector<std::string> names;
        return m_engine.GetListKeysUtf8(section, names);
    }
    // Whether there is such an entry.
    bool Has(std::string_view section, std::string_view key) { return Get(section, key).has_value(); }

    // The value; nothing when there is no such entry.
    std::optional<std::string> Get(std::string_view section, std::string_view key) {
        std::string value;
        if (!m_engine.GetStringUtf8(section, key, value)) return std::nullopt;
        return value;
    }
    // With a fallback for what is missing.
    std::string Get(std::string_view section, std::string_view key, std::string_view fallback) {
        return Get(section, key).value_or(std::string(fallback));
    }
    // Likewise.
    std::string Get(std::string_view section, std::string_view key, const char* fallback) {
        return Get(section, key, std::string_view(fallback));
    }
    // A number in decimal, with "." in every locale; the fallback also when the value is none, or too great.
    template <class T>
    requires std::integral<T> || std::floating_point<T> T Get(std::string_view section, std::string_view key,
                                                              T fallback) {
        const std::optional<std::string> text = Get(section, key);
        T value{};
        return text && Parse(*text, value) ? value : fallback;
    }
    // 1, true, yes, on, and 0, false, no, off, in any letter case.
    bool Get(std::string_view section, std::string_view key, bool fallback) {
        const std::optional<std::string> text = Get(section, key);
        if (!text) return fallback;
        for (const char* yes : {"1", "true", "yes", "on"})
            if (CStringA(text->c_str()).CompareNoCase(yes) == 0) return true;
        for (const char* no : {"0", "false", "no", "off"})
            if (CStringA(text->c_str()).CompareNoCase(no) == 0) return false;
        return fallback;
    }

    // ---- Edits

    // The comment becomes a line above a new entry.
    bool Set(std::string_view section, std::string_view key, std::string_view value,
             std::string_view comment = {}) {
        return m_engine.WriteStringUtf8(section, key, value, comment);
    }
    bool Set(std::string_view section, std::string_view key, const char* value,
             std::string_view comment = {}) {
        return Set(section, key, std::string_view(value), comment);
    }
    template <class T>
    requires std::integral<T> || std::floating_point<T>
    bool Set(std::string_view section, std::string_view key, T value, std::string_view comment = {}) {
        char text[64];
        const std::to_chars_result result = std::to_chars(text, text + sizeof text, value);
        return Set(section, key, std::string_view(text, static_cast<std::size_t>(result.ptr - text)),
                   comment);
    }
    bool Set(std::string_view section, std::string_view key, bool value, std::string_view comment = {}) {
        return Set(section, key, value ? "true" : "false", comment);
    }
    // True also when there was nothing to remove.
    bool Remove(std::string_view section, std::string_view key) { return m_engine.DeleteUtf8(section, key); }
    bool RemoveSection(std::string_view section) { return m_engine.DeleteGroupeUtf8(section); }
    // Refused when the new name is taken.
    bool Rename(std::string_view section, std::string_view oldKey, std::string_view newKey) {
        return m_engine.RenameParamUtf8(section, oldKey, newKey);
    }
    bool RenameSection(std::string_view oldName, std::string_view newName) {
        return m_engine.RenameGroupeUtf8(oldName, newName);
    }

    // Edits that are saved together, on a file that nobody else edits meanwhile:
    //
    //     zyn::Ini::Batch batch(ini);
    //     ini.Set("counters", "visits", ini.Get("counters", "visits", 0) + 1);
    //     if (!batch.Commit()) std::cerr << ini.Error() << '\n';
    //
    // Without a Commit that is true they are dropped at the end of the scope. When the file cannot be had or
    // read, IsBegun is false and Error tells why; edits are then saved one by one, and Commit is false.
    class Batch {
    public:
        // Waits until nobody else edits the file, for up to ten seconds, and reads it.
        explicit Batch(Ini& ini) : m_edits(ini.m_engine) {}
        // Whether edits are collected now.
        bool IsBegun() const { return m_edits.IsBegun(); }
        // Saves them, and ends the batch.
        bool Commit() { return m_edits.Commit(); }

    private:
        CzynINITransaction m_edits;
    };

    // For what this does not offer.
    CzynINI& Engine() { return m_engine; }

private:
    template <class T> static bool Parse(std::string_view text, T& value) {
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        return error == std::errc() && end == text.data() + text.size();
    }

    CzynINI m_engine;
};

} // namespace zyn
