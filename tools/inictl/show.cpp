// SPDX-License-Identifier: MIT
#include "commands.h"
#include "workfile.h"

#include <zynplatform/codepage.h>
#include <zynplatform/cp1251.h>

#include <cstdio>
#include <set>

// get, has, list and diff.

using namespace zynplatform::literals;

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

std::string Escaped(std::string_view text, std::string_view special, std::string_view letters) {
    std::string result;
    for (const char c : text) {
        const std::size_t at = special.find(c);
        if (at == special.npos)
            result += c;
        else
            result.append({'\\', letters[at]});
    }
    return result;
}

std::string InTsv(std::string_view text) {
    return Escaped(text, "\\\t\n\r", "\\tnr");
}

std::string InJson(std::string_view text) {
    std::string json = "\"";
    for (const char c : Escaped(text, "\\\"\t\n\r", "\\\"tnr")) {
        char code[8];
        std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned char>(c));
        json += static_cast<unsigned char>(c) < ' ' ? code : std::string(1, c);
    }
    json += '"';
    if (IsTerminalUtf8()) return json;
    std::u16string units(json.size(), u'\0');
    units.resize(zynplatform::ToWide(zynplatform::utf8CodePage, json.data(), json.size(), units.data()));
    std::string ascii; // JSON is in UTF-8 whatever the terminal is
    for (const char16_t unit : units) {
        char code[8];
        std::snprintf(code, sizeof code, unit < 0x80 ? "%c" : "\\u%04x", static_cast<unsigned>(unit));
        ascii += code;
    }
    return ascii;
}

// A word of a shell, and a name of a variable in it.
std::string InShell(std::string_view text) {
    std::string result = "'";
    for (const char c : text)
        result += c == '\'' ? "'\\''" : std::string(1, c);
    return result + "'";
}

std::string ShellName(std::string_view text) {
    std::string name;
    for (const char c : text)
        name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return name.empty() || std::isdigit(static_cast<unsigned char>(name[0])) ? "_" + name : name;
}

// Without those whose key was there before.
Pairs FirstPairs(zyn::Ini& ini, const std::string& section) {
    std::set<std::string> seen;
    Pairs pairs = ini.Pairs(section);
    std::erase_if(pairs, [&](const auto& pair) { return !seen.insert(pair.first).second; });
    return pairs;
}

void PrintHeader(const std::string& section) {
    if (!section.empty()) PrintLine("[" + section + "]");
}

// What list prints; `isAll`: of all sections, so that a line must tell its own.
class Listing {
public:
    Listing(const Options& options, bool isAll) : m_options(options), m_isAll(isAll) {}

    void Print(zyn::Ini& ini, const std::vector<std::string>& sections) {
        if (m_options.format == "json") return PrintJson(ini, sections);
        for (const std::string& section : sections) {
            if (m_options.sections) {
                PrintLine(m_options.format == "sh"    ? InShell(section)
                          : m_options.format == "tsv" ? InTsv(section)
                                                      : section);
                continue;
            }
            if (m_isAll && (m_options.format.empty() || m_options.format == "text")) PrintHeader(section);
            for (const auto& [key, value] : ini.Pairs(section))
                PrintPair(section, key, value);
        }
    }

private:
    void PrintPair(const std::string& section, const std::string& key, const std::string& value) {
        const bool withValue = !m_options.keys;
        if (m_options.format == "tsv")
            PrintLine((m_isAll ? InTsv(section) + "\t" : "") + InTsv(key) +
                      (withValue ? "\t" + InTsv(value) : ""));
        else if (m_options.format == "sh")
            PrintLine(withValue ? ShellName(m_isAll && !section.empty() ? section + "_" + key : key) + "=" +
                                      InShell(value)
                                : InShell(key));
        else
            PrintLine(withValue ? key + "=" + value : key);
    }

    void PrintJson(zyn::Ini& ini, const std::vector<std::string>& sections) {
        if (m_options.sections) return ::PrintLine("[" + Joined(sections) + "]");
        if (!m_isAll) return ::PrintLine(SectionInJson(ini, sections[0], ""));
        std::string json;
        for (const std::string& section : sections)
            json += (json.empty() ? "" : ",\n") + ("  " + InJson(section) + ": ") +
                    SectionInJson(ini, section, "  ");
        ::PrintLine(json.empty() ? "{}" : "{\n" + json + "\n}");
    }

    static std::string Joined(const std::vector<std::string>& names) {
        std::string json;
        for (const std::string& name : names)
            json += (json.empty() ? "" : ", ") + InJson(name);
        return json;
    }

    // Of a key that is there several times the first counts, as for get.
    std::string SectionInJson(zyn::Ini& ini, const std::string& section, const std::string& indent) const {
        std::vector<std::string> keys;
        std::string json;
        for (const auto& [key, value] : FirstPairs(ini, section)) {
            keys.push_back(key);
            json += (json.empty() ? "" : ",\n") + indent + "  " + InJson(key) + ": " + InJson(value);
        }
        if (m_options.keys) return "[" + Joined(keys) + "]";
        return json.empty() ? "{}" : "{\n" + json + "\n" + indent + "}";
    }

    const Options& m_options;
    bool m_isAll;
};

// How the second of two files differs from the first; as a text, or as commands for edit.
class Comparison {
public:
    Comparison(zyn::Ini& from, zyn::Ini& to, bool asCommands)
        : m_from(from), m_to(to), m_asCommands(asCommands) {}

    // Whether there is any difference. Of a key that is there several times the first counts, as for get.
    bool Print() {
        for (const std::string& section : SectionsOf(m_from))
            for (const auto& [key, value] : FirstPairs(m_from, section)) {
                const std::optional<std::string> other = m_to.Get(section, key);
                if (other != value) Tell(section, key, &value, other ? &*other : nullptr);
            }
        for (const std::string& section : SectionsOf(m_to))
            for (const auto& [key, value] : FirstPairs(m_to, section))
                if (!m_from.Has(section, key)) Tell(section, key, nullptr, &value);
        return m_hasPrinted;
    }

private:
    void Tell(const std::string& section, const std::string& key, const std::string* before,
              const std::string* after) {
        if (m_asCommands) {
            const std::string place = InShell(section) + " " + InShell(key);
            PrintLine(after ? "set " + place + " " + InShell(*after) : "delete " + place);
        } else {
            if (!m_hasPrinted || section != m_section) PrintHeader(section);
            if (before) PrintLine("-" + key + "=" + *before);
            if (after) PrintLine("+" + key + "=" + *after);
        }
        m_section = section;
        m_hasPrinted = true;
    }

    zyn::Ini &m_from, &m_to;
    bool m_asCommands, m_hasPrinted = false;
    std::string m_section;
};

} // namespace

std::vector<std::string> SectionsOf(zyn::Ini& ini) {
    std::vector<std::string> sections;
    std::set<std::string> seen;
    if (!ini.Keys("").empty()) sections.emplace_back();
    for (std::string& section : ini.Sections())
        if (seen.insert(section).second) sections.push_back(std::move(section));
    return sections;
}

Status Get(const Options& options) {
    Source source(options, options.words[0]);
    std::optional<std::string> value = source.Ini().Get(options.words[1], options.words[2]);
    if (!value) value = options.fallback;
    if (!value) FailNotFound(options.words[1], options.words[2]);
    PrintLine(*value);
    return statusDone;
}

Status Has(const Options& options) {
    Source source(options, options.words[0]);
    const std::string& section = options.words[1];
    const bool isThere = options.words.size() > 2 ? source.Ini().Has(section, options.words[2])
                                                  : source.Ini().HasSection(section);
    return isThere ? statusDone : statusNotFound;
}

Status List(const Options& options) {
    Source source(options, options.words[0]);
    const bool isAll = options.words.size() == 1;
    if (!isAll && !source.Ini().HasSection(options.words[1])) FailNotFound(options.words[1]);
    Listing(options, isAll)
        .Print(source.Ini(), isAll ? SectionsOf(source.Ini()) : std::vector{options.words[1]});
    return statusDone;
}

Status Diff(const Options& options) {
    Source from(options, options.words[0]), to(options, options.words[1]);
    const bool isDifferent = Comparison(from.Ini(), to.Ini(), options.format == "edit").Print();
    return isDifferent ? statusNotFound : statusDone;
}
