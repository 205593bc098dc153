// SPDX-License-Identifier: MIT
#include "commands.h"
#include "workfile.h"

#include <zynplatform/cp1251.h>

#include <zynplatform/console.h>

#include <algorithm>

// set, delete, rename, merge, edit and convert.

using namespace zynplatform::literals;

namespace {

// What the code page has of a text.
std::string Reduced(const std::string& text) {
    return zynToUtf8(zynFromUtf8(text));
}

class Editor {
public:
    Editor(zyn::Ini& ini, const Options& options) : m_ini(ini), m_options(options) {}

    // Each is false when there was nothing to change.
    bool Set(const std::string& section, const std::string& key, const std::string& value,
             const std::string& comment) {
        const std::optional<std::string> old = m_ini.Get(section, key);
        if (old == value) return false;
        if (m_ini.Set(section, key, value, comment)) return true;
        const zynTextEncoding encoding = m_ini.Engine().GetFileEncoding();
        const bool isIn1251 =
            (encoding == zynEncUnknown ? EncodingChoice(m_options).m_nNewFile : encoding) == zynEncCP1251;
        if (!m_options.lossy || !isIn1251 ||
            !m_ini.Set(Reduced(section), Reduced(key), Reduced(value), Reduced(comment)))
            Refuse(m_ini);
        return true;
    }
    bool Delete(const std::string& section, const std::string& key) {
        if (!m_ini.Has(section, key)) return false;
        return Done(m_ini.Remove(section, key));
    }
    bool DeleteSection(const std::string& section) {
        if (!m_ini.HasSection(section)) return false;
        return Done(m_ini.RemoveSection(section));
    }
    bool Rename(const std::string& section, const std::string& from, const std::string& to) {
        if (!m_ini.Has(section, from)) return false;
        return Done(m_ini.Rename(section, from, to));
    }
    bool RenameSection(const std::string& from, const std::string& to) {
        if (!m_ini.HasSection(from)) return false;
        return Done(m_ini.RenameSection(from, to));
    }

private:
    bool Done(bool isDone) {
        if (!isDone) Refuse(m_ini);
        return true;
    }

    zyn::Ini& m_ini;
    const Options& m_options;
};

// The words of a line, as a shell takes them apart: blanks separate, '...' and "..." hold together, a
// backslash (not in '...') takes the next character as it is, "#" begins a comment. False for an open quote.
bool SplitWords(const std::string& line, std::vector<std::string>& words) {
    words.clear();
    bool isInWord = false;
    char quote = 0;
    for (std::size_t at = 0; at < line.size(); ++at) {
        const char c = line[at];
        if (quote == 0 && (c == ' ' || c == '\t' || c == '\r')) {
            isInWord = false;
            continue;
        }
        if (!isInWord && c == '#') break;
        if (!isInWord) words.emplace_back();
        isInWord = true;
        if (c == '\\' && quote != '\'' && at + 1 < line.size())
            words.back() += line[++at];
        else if (quote == 0 && (c == '\'' || c == '"'))
            quote = c;
        else if (c == quote)
            quote = 0;
        else
            words.back() += c;
    }
    return quote == 0;
}

// One line of edit; false when it changes nothing.
bool RunCommand(Editor& editor, const std::vector<std::string>& words) {
    const std::size_t count = words.size();
    const std::string& name = words[0];
    if (name == "set" && (count == 4 || count == 5))
        return editor.Set(words[1], words[2], words[3], count == 5 ? words[4] : "");
    bool isFound = true;
    if (name == "delete" && count == 2)
        isFound = editor.DeleteSection(words[1]);
    else if (name == "delete" && count == 3)
        isFound = editor.Delete(words[1], words[2]);
    else if (name == "rename" && count == 3)
        isFound = editor.RenameSection(words[1], words[2]);
    else if (name == "rename" && count == 4)
        isFound = editor.Rename(words[1], words[2], words[3]);
    else
        throw Failure{statusUsage, Message("это не команда: %s"_cp1251, name)};
    const bool isOfKey = count == (name == "delete" ? 3 : 4);
    if (!isFound) FailNotFound(words[1], isOfKey ? words[2] : "");
    return true;
}

} // namespace

Status Set(const Options& options) {
    EditFile(options, true, [&](zyn::Ini& ini) {
        return Editor(ini, options)
            .Set(options.words[1], options.words[2], options.words[3], options.comment);
    });
    return statusDone;
}

Status Delete(const Options& options) {
    const std::vector<std::string>& words = options.words;
    EditFile(options, false, [&](zyn::Ini& ini) {
        Editor editor(ini, options);
        if (!(words.size() == 2 ? editor.DeleteSection(words[1]) : editor.Delete(words[1], words[2])))
            FailNotFound(words[1], words.size() == 2 ? "" : words[2]);
        return true;
    });
    return statusDone;
}

Status Rename(const Options& options) {
    const std::vector<std::string>& words = options.words;
    EditFile(options, false, [&](zyn::Ini& ini) {
        Editor editor(ini, options);
        if (!(words.size() == 3 ? editor.RenameSection(words[1], words[2])
                                : editor.Rename(words[1], words[2], words[3])))
            FailNotFound(words[1], words.size() == 3 ? "" : words[2]);
        return true;
    });
    return statusDone;
}

// Of a key that is there several times the first counts.
Status Merge(const Options& options) {
    Source other(options, options.words[1]);
    EditFile(options, true, [&](zyn::Ini& ini) {
        Editor editor(ini, options);
        const std::vector<std::string> sections = SectionsOf(other.Ini());
        Progress progress("слияние"_cp1251, FileSize(other.Path()));
        bool isChanged = false;
        for (std::size_t i = 0; i < sections.size(); ++i) {
            progress.Show(i, sections.size());
            for (const std::string& key : other.Ini().Keys(sections[i]))
                isChanged |= editor.Set(sections[i], key, *other.Ini().Get(sections[i], key), "");
        }
        return isChanged;
    });
    return statusDone;
}

Status Edit(const Options& options) {
    if (options.words[0] == "-")
        throw Failure{statusUsage, Message("edit читает со стандартного ввода команды, а не файл"_cp1251)};
    const std::string script = zynplatform::TerminalToUtf8(ReadBytes("-"));
    EditFile(options, true, [&](zyn::Ini& ini) {
        Editor editor(ini, options);
        std::vector<std::string> words;
        bool isChanged = false;
        std::size_t number = 0;
        for (std::size_t at = 0; at < script.size(); ++number) {
            const std::size_t end = std::min(script.find('\n', at), script.size());
            const bool isWhole = SplitWords(script.substr(at, end - at), words);
            at = end + 1;
            try {
                if (!isWhole) throw Failure{statusUsage, Message("кавычка не закрыта"_cp1251)};
                if (!words.empty()) isChanged |= RunCommand(editor, words);
            } catch (Failure& failure) {
                failure.message = Message("строка %s: "_cp1251, std::to_string(number + 1)) + failure.message;
                throw;
            }
        }
        return isChanged;
    });
    return statusDone;
}

Status Convert(const Options& options) {
    EditFile(options, false, [&](zyn::Ini& ini) {
        CzynINI& engine = ini.Engine();
        const Progress progress("перекодирование"_cp1251, FileSize(NativeName(options.words[0])));
        const bool isWide = zynGetMinBYTEInCharForEncoding(options.convertTo) > 1;
        if (!engine.SetFileEncoding(options.convertTo, options.mark || isWide, options.lossy)) Refuse(ini);
        zynEncodingChoice choice;
        choice.m_nUnmarked = options.convertTo;
        engine.SetEncodingChoice(choice);
        return true;
    });
    return statusDone;
}
