// SPDX-License-Identifier: MIT
#include "options.h"

#include "commands.h"

#include <zynplatform/console.h>
#include <zynplatform/cp1251.h>

#include <algorithm>
#include <cctype>

using namespace zynplatform::literals;

namespace {

constexpr struct {
    const char* name;
    zynTextEncoding encoding;
} encodingNames[] = {
    {"utf-8", zynEncUTF8},      {"cp1251", zynEncCP1251},       {"utf-16le", zynEncUCS2LE},
    {"utf-16be", zynEncUCS2BE}, {"utf-32le", zynEncUCS4LE},     {"utf-32be", zynEncUCS4BE},
    {"utf8", zynEncUTF8},       {"windows-1251", zynEncCP1251}, {"utf-16", zynEncUCS2LE},
    {"utf-32", zynEncUCS4LE},
};

struct Command {
    std::string_view name;
    Status (*run)(const Options&);
    std::size_t fewest, most; // words
    std::string_view options; // that it takes, besides --encoding
};
constexpr std::string_view editing = " dry-run backup classic lossy ";
constexpr Command commands[] = {
    {"get", Get, 3, 3, " default "},
    {"has", Has, 2, 3, ""},
    {"list", List, 1, 2, " format sections keys "},
    {"set", Set, 4, 4, " comment dry-run backup classic lossy "},
    {"delete", Delete, 2, 3, editing},
    {"rename", Rename, 3, 4, editing},
    {"merge", Merge, 2, 2, editing},
    {"edit", Edit, 1, 1, editing},
    {"convert", Convert, 1, 1, " to mark dry-run backup classic lossy "},
    {"diff", Diff, 2, 2, " format "},
    {"check", Check, 1, 1, ""},
};

[[noreturn]] void Refuse(const char* message, std::string_view word) {
    throw Failure{statusUsage, Message(message, word)};
}

zynTextEncoding NamedEncoding(const std::string& name) {
    const zynTextEncoding encoding = EncodingOf(name);
    if (encoding == zynEncUnknown) Refuse("неизвестная кодировка: %s"_cp1251, name);
    return encoding;
}

class Parser {
public:
    Parser(int count, char** arguments) {
        for (int i = 1; i < count; ++i)
            m_arguments.push_back(zynplatform::TerminalToUtf8(arguments[i]));
    }

    Options Parse() {
        bool areOptionsOver = false;
        while (m_at < m_arguments.size()) {
            const std::string& argument = m_arguments[m_at++];
            if (areOptionsOver || !(argument.starts_with("--") || argument == "-h"))
                TakeWord(argument);
            else if (argument == "--")
                areOptionsOver = true;
            else
                TakeOption(argument);
        }
        if (!m_result.help && !m_result.version) Check();
        return std::move(m_result);
    }

private:
    void TakeWord(const std::string& word) {
        if (m_result.command.empty())
            m_result.command = word;
        else
            m_result.words.push_back(word);
    }

    void TakeOption(const std::string& argument) {
        const std::size_t equal = argument.find('=');
        const std::string name = argument.substr(0, equal);
        const auto value = [&]() -> std::string {
            if (equal != argument.npos) return argument.substr(equal + 1);
            if (m_at == m_arguments.size()) Refuse("нет значения параметра %s"_cp1251, name);
            return m_arguments[m_at++];
        };
        Options& o = m_result;
        const struct {
            std::string_view name;
            bool& flag;
        } flags[] = {{"--sections", o.sections}, {"--keys", o.keys},      {"--mark", o.mark},
                     {"--lossy", o.lossy},       {"--dry-run", o.dryRun}, {"--backup", o.backup},
                     {"--classic", o.classic},   {"--help", o.help},      {"-h", o.help},
                     {"--version", o.version}};
        const auto* const flag =
            std::find_if(std::begin(flags), std::end(flags), [&](const auto& f) { return f.name == name; });
        if (flag != std::end(flags) && equal == argument.npos)
            flag->flag = true;
        else if (name == "--default")
            o.fallback = value();
        else if (name == "--comment")
            o.comment = value();
        else if (name == "--format")
            o.format = value();
        else if (name == "--encoding")
            o.encoding = NamedEncoding(value());
        else if (name == "--to")
            o.convertTo = NamedEncoding(value());
        else
            Refuse("неизвестный параметр %s"_cp1251, argument);
        m_options.push_back(name.substr(2));
    }

    void Check() {
        const std::string& name = m_result.command;
        if (name.empty()) Refuse("нет команды, смотрите inictl --help"_cp1251, "");
        const auto* const command = std::find_if(std::begin(commands), std::end(commands),
                                                 [&](const Command& c) { return c.name == name; });
        if (command == std::end(commands))
            Refuse("неизвестная команда %s, смотрите inictl --help"_cp1251, name);
        m_result.run = command->run;
        for (const std::string& option : m_options)
            if (option != "encoding" && command->options.find(" " + option + " ") == command->options.npos)
                Refuse("этой команде не подходит параметр --%s"_cp1251, option);
        const std::size_t words = m_result.words.size();
        if (words < command->fewest)
            Refuse("команде %s не хватает слов, смотрите inictl --help"_cp1251, name);
        if (words > command->most)
            Refuse("лишнее слово: %s (слово с пробелами ставится в кавычки)"_cp1251,
                   m_result.words[command->most]);
        const std::string& format = m_result.format;
        const bool isKnown = name == "diff"
                                 ? format == "text" || format == "edit"
                                 : format == "text" || format == "json" || format == "sh" || format == "tsv";
        if (!format.empty() && !isKnown) Refuse("неизвестный вид вывода: %s"_cp1251, format);
        if (name == "convert" && m_result.convertTo == zynEncUnknown)
            Refuse("нет значения параметра %s"_cp1251, "--to");
    }

    std::vector<std::string> m_arguments, m_options;
    std::size_t m_at = 0;
    Options m_result;
};

} // namespace

Options ParseOptions(int count, char** arguments) {
    return Parser(count, arguments).Parse();
}

const char* EncodingName(zynTextEncoding encoding) {
    for (const auto& entry : encodingNames)
        if (entry.encoding == encoding) return entry.name;
    return "?";
}

zynTextEncoding EncodingOf(std::string_view name) {
    for (const auto& entry : encodingNames)
        if (std::equal(name.begin(), name.end(), entry.name, entry.name + std::string_view(entry.name).size(),
                       [](unsigned char a, unsigned char b) { return std::tolower(a) == b; }))
            return entry.encoding;
    return zynEncUnknown;
}
