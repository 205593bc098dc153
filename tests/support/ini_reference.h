// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <vector>

// The rules of INI files the slow way, from the rules alone: nothing is shared with the library.
class IniReference {
public:
    struct Line {
        std::string key, value;
        bool emptyKey = false, isNull = false;
    };
    struct Section {
        std::string name, tail, comment;
        std::vector<Line> lines;
        std::size_t insertPos = 0;
        int flags = 0;
        bool isNull = false;
    };
    std::vector<Section> sections;

    // Reads a file, a line at a time.
    explicit IniReference(std::string text) {
        if (!text.empty() && text.back() != '\n') text += '\n';
        std::stringstream lines;
        for (std::size_t i = 0; i < text.size(); ++i)
            if (text[i] != '\r' || (text[i + 1] != '\n' && (i == 0 || text[i - 1] != '\n')))
                lines << (text[i] == '\r' ? '\n' : text[i]);
        for (std::string line; std::getline(lines, line);) {
            const std::size_t mark = std::min(line.find_first_of(";#=[]"), line.size());
            const char kind = line.c_str()[mark];
            if (sections.empty() || kind == '[' || kind == ']') sections.emplace_back();
            Section& section = sections.back();
            if (kind == '[' || kind == ']') {
                section.flags = kind == '[' ? 1 : 0;
                if (kind == '[') line.erase(mark, 1);
                const std::size_t last = line.rfind(']');
                section.name = line.substr(0, last);
                if (last == line.npos) continue;
                section.flags |= 2;
                section.tail = line.substr(last + 1);
                section.name.erase(0, section.name.rfind(']') + 1);
            } else {
                const std::string key = kind == '=' ? line.substr(0, mark) : "";
                const std::string value = Trimmed(kind == '=' ? line.substr(mark + 1) : line);
                section.lines.push_back({key, value, kind == '=' && key.empty()});
                if (!key.empty()) section.insertPos = section.lines.size();
            }
        }
    }

    // Of several equal names the first is meant. Null when there is none.
    Section* FindSection(const std::string& name) { return Find(sections, &Section::name, name, false); }
    Line* FindLine(const std::string& section, const std::string& key) {
        Section* const found = FindSection(section);
        return found ? Find(found->lines, &Line::key, key, false) : nullptr;
    }
    // The same with the caller's spelling, later ones being marked, and made when missing.
    Line& Claim(const std::string& name, const std::string& key, std::string comment) {
        Section* section = Find(sections, &Section::name, name, true);
        if (!section) (section = &sections.emplace_back())->name = name;
        if (Line* const line = Find(section->lines, &Line::key, key, true)) return *line;
        const std::size_t at = section->insertPos;
        Insert(*section, {key, ""}, at);
        const bool isCommented = comment.size() > 1;
        if (isCommented && comment[0] != ';') comment.insert(0, ";");
        if (isCommented) Insert(*section, {"", comment}, at);
        return section->lines[at + (isCommented ? 1 : 0)];
    }
    void Write(const std::string& name, const std::string& key, const std::string& value,
               const std::string& comment) {
        Line& line = Claim(name, key, comment);
        line.emptyKey = line.key.empty();
        line.value = Trimmed(value);
    }
    void Delete(const std::string& name, const std::string& key) {
        if (Section* const section = FindSection(name))
            std::erase_if(section->lines,
                          [&](const Line& line) { return !line.isNull && Folded(line.key) == Folded(key); });
    }
    bool RenameSection(const std::string& from, const std::string& to, const std::string& comment) {
        Section* const section = FindSection(from);
        if (!section) return false;
        section->name = to;
        section->comment = comment;
        return true;
    }
    bool RenameLine(const std::string& name, const std::string& from, const std::string& to,
                    const std::string& comment) {
        Line* const line = FindLine(name, from);
        if (!line) return false;
        line->key = to;
        Section& section = *FindSection(name);
        Insert(section, {"", comment}, static_cast<std::size_t>(line - section.lines.data()));
        return true;
    }
    // "key=value," for each pair.
    std::string Pairs(const std::string& name) {
        std::string pairs;
        for (const Line& line : FindSection(name)->lines)
            if (!line.key.empty()) pairs += line.key.c_str() + ("=" + line.value) + ",";
        return pairs;
    }

    // What a save writes.
    std::string Text() {
        std::string text;
        bool afterPair = false;
        for (Section& section : sections) {
            if (!section.name.empty()) {
                if (!section.comment.empty()) text += ";" + section.comment + "\r\n";
                section.comment.clear();
                text += (afterPair ? "\r\n[" : "[") + section.name + "]" + section.tail + "\r\n";
            }
            afterPair = true;
            std::multimap<double, std::string> numbered;
            std::string others;
            for (const Line& line : section.lines) {
                if (line.isNull) continue;
                afterPair = !line.key.empty();
                const bool isPair = line.emptyKey || !line.key.empty();
                const std::string written = (isPair ? line.key + "=" : "") + line.value + "\r\n";
                if (!IsNumber(line.key))
                    others += written;
                else if (!line.value.empty())
                    numbered.emplace(std::strtod(line.key.c_str(), nullptr), written);
            }
            for (const auto& [value, written] : numbered)
                text += written;
            text += others;
        }
        return text;
    }

    // The sections as OpenIni::Model has them.
    std::string Model() const {
        std::ostringstream model;
        for (const Section& s : sections) {
            model << '<' << s.name << '|' << s.tail << '|' << s.insertPos << '|' << s.flags << '>';
            for (const Line& line : s.lines)
                model << (line.isNull ? "{}"
                                      : (line.emptyKey ? "{=" : "{") + line.key + ":" + line.value + "}");
        }
        return model.str();
    }

    // Without white space at its ends.
    static std::string Trimmed(std::string text) {
        text.erase(0, text.find_first_not_of(" \t\n\v\f\r"));
        return text.erase(text.find_last_not_of(" \t\n\v\f\r") + 1);
    }
    static bool IsNumber(const std::string& text) {
        const bool isNegative = text.starts_with('-');
        return !text.empty() && text.find_first_not_of("0123456789", isNegative) == text.npos;
    }
    // Cut to 32 bits.
    static long long Number(const std::string& digits) {
        return static_cast<long long>(
            std::clamp(std::strtod(digits.c_str(), nullptr), -2147483648.0, 2147483647.0));
    }

private:
    // Up to the first zero, in lower case.
    static std::string Folded(const std::string& name) {
        std::string folded = name.c_str();
        for (char& c : folded) {
            const int byte = static_cast<unsigned char>(c);
            if ((byte >= 'A' && byte <= 'Z') || (byte >= 0xC0 && byte <= 0xDF))
                c = static_cast<char>(byte + 32);
            if (byte == 0xA8) c = '\xB8';
        }
        return folded;
    }
    template <class T>
    static T* Find(std::vector<T>& list, std::string T::*field, const std::string& name, bool claim) {
        T* found = nullptr;
        for (T& element : list) {
            if (element.isNull || Folded(element.*field) != Folded(name)) continue;
            if (!claim) return &element;
            element.*field = found ? element.*field + "___copy" : name;
            if (!found) found = &element;
        }
        return found;
    }
    static void Insert(Section& section, const Line& line, std::size_t at) {
        while (section.lines.size() < at)
            section.lines.push_back({"", "", false, true});
        section.lines.insert(section.lines.begin() + static_cast<std::ptrdiff_t>(at), line);
        if (!line.key.empty()) ++section.insertPos;
    }
};
