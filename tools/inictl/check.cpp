// SPDX-License-Identifier: MIT
#include "commands.h"
#include "difference.h"
#include "workfile.h"

#include <zynplatform/cp1251.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>

// check: what a file is, and what in it may not be what its author meant.

using namespace zynplatform::literals;

namespace {

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\v\f";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == text.npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// Names are compared as the library does it.
std::string Folded(std::string_view name) {
    bool isLost = false;
    CStringA text = zynFromUtf8(name, &isLost);
    return isLost ? std::string(name) : zynToUtf8(text.MakeLower());
}

class Inspection {
public:
    Inspection(std::string_view bytes, const Options& options) {
        zynTextEncoding encoding = zynEncUnknown;
        m_text = zynFileToUtf8(bytes, EncodingChoice(options), &encoding);
        int markLength = 0;
        zynGetBufferEncodeByBOM(reinterpret_cast<const unsigned char*>(bytes.data()),
                                static_cast<int>(bytes.size()), &markLength);
        const bool isMarked = markLength > 0;
        PrintLine(Message(isMarked ? "кодировка: %s, с меткой"_cp1251 : "кодировка: %s, без метки"_cp1251,
                          EncodingName(encoding)));
    }

    // Whether nothing odd was found.
    bool Run() {
        for (const std::string_view line : LinesOf(m_text)) {
            ++m_number;
            const std::size_t length = std::min(line.find_first_of("\r\n"), line.size());
            ++m_ends[std::string(line.substr(length))];
            Inspect(line.substr(0, length));
        }
        PrintEnds();
        return m_isClean;
    }

private:
    void Find(const char* oddity, std::string_view name = {}) {
        PrintLine(std::to_string(m_number) + ": " + Message(oddity, name));
        m_isClean = false;
    }

    void Inspect(std::string_view line) {
        if (line.find('\0') != line.npos) Find("нулевой байт"_cp1251);
        if (line.find("\xEF\xBF\xBD") != line.npos) Find("байты, которые не текст в этой кодировке"_cp1251);
        const std::size_t mark = line.find_first_of(";#[]=");
        if (mark == line.npos) {
            if (!Trimmed(line).empty())
                Find("свободный текст: не пара, не комментарий и не заголовок"_cp1251);
        } else if (line[mark] == '[' || line[mark] == ']') {
            InspectHeader(line, mark);
        } else if (line[mark] == '=') {
            const std::string key(Trimmed(line.substr(0, mark)));
            if (key.empty())
                Find("пара без ключа"_cp1251);
            else if (!m_keys.insert(Folded(key)).second)
                Find("ключ повторяется: %s"_cp1251, key);
        } else if (!Trimmed(line.substr(0, mark)).empty()) {
            Find("текст перед знаком комментария: вся строка не пара"_cp1251);
        }
    }

    void InspectHeader(std::string_view line, std::size_t mark) {
        const std::size_t close = line.rfind(']');
        if (line[mark] == ']')
            Find("заголовок без \"[\""_cp1251);
        else if (!Trimmed(line.substr(0, mark)).empty())
            Find("текст перед \"[\" входит в имя секции"_cp1251);
        if (close == line.npos)
            Find("заголовок без \"]\""_cp1251);
        else if (const std::string_view tail = Trimmed(line.substr(close + 1));
                 !tail.empty() && tail[0] != ';' && tail[0] != '#')
            Find("текст за \"]\""_cp1251);
        const std::size_t begin = line[mark] == '[' ? mark + 1 : 0;
        const std::size_t length = close == line.npos ? line.npos : close - std::min(begin, close);
        const std::string name(Trimmed(line.substr(begin, length)));
        if (!m_sections.insert(Folded(name)).second)
            Find("секция повторяется, её ключи видны только программам, которые читают все: %s"_cp1251, name);
        m_keys.clear();
    }

    void PrintEnds() {
        constexpr std::pair<const char*, const char*> names[] = {
            {"\n", "LF"}, {"\r\n", "CR LF"}, {"\r", "CR"}};
        std::string list;
        std::size_t kinds = 0;
        for (const auto& [end, name] : names)
            if (const auto found = m_ends.find(end); found != m_ends.end()) {
                list += (list.empty() ? "" : ", ") + std::string(name) + " (" +
                        std::to_string(found->second) + ")";
                ++kinds;
            }
        PrintLine(Message("концы строк: %s"_cp1251, list));
        if (kinds > 1) m_isClean = false;
        if (m_ends.count("")) PrintLine(Message("у последней строки нет конца"_cp1251));
    }

    std::string m_text;
    std::size_t m_number = 0;
    std::map<std::string, std::size_t> m_ends;
    std::set<std::string> m_sections, m_keys; // so far; of the section
    bool m_isClean = true;
};

// How many lines a save in the classic mode would change without any edit.
void PrintClassicLoss(const std::string& bytes, const Options& options) {
    const ScratchFolder scratch;
    const std::string path = scratch.Path("file");
    std::ofstream(path, std::ios::binary) << bytes;
    CzynINI ini;
    ini.SetEncodingChoice(EncodingChoice(options));
    ini.SetINI(path.c_str(), false, 0);
    ini.SetWriteMode(false);
    if (!ini.Flush()) throw Failure{statusFile, zynToUtf8(ini.GetErrDescription())};
    const std::string after = ReadBytes(path);
    const std::string diff = UnifiedDiff(ReadText(bytes, options), ReadText(after, options), "");
    std::size_t changed = 0;
    for (std::size_t at = 0; (at = diff.find("\n-", at)) != diff.npos; ++at)
        ++changed;
    PrintLine(after == bytes ? Message("сохранение с --classic ничего не изменит"_cp1251)
                             : Message("сохранение с --classic изменит или уберёт строк: %s"_cp1251,
                                       std::to_string(changed)));
}

} // namespace

Status Check(const Options& options) {
    Source source(options, options.words[0]); // so that it is known to be a file that can be read
    const std::string bytes = ReadBytes(source.Path());
    const bool isClean = Inspection(bytes, options).Run();
    PrintClassicLoss(bytes, options);
    return isClean ? statusDone : statusNotFound;
}
