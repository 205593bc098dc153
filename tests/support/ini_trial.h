// SPDX-License-Identifier: MIT
#pragma once

#include "support/ini_model.h"
#include "support/ini_reference.h"

// A file that is edited in memory, by steps picked at random, in four ways at once: through a CzynINI, whose
// names are indexed; through a derived class, of which nothing is; through one that would tell its changes;
// and by the reference; now and then each edit is saved at once. Somebody else saves meanwhile. Each step is
// false when they don't agree.
class IniTrial {
public:
    using Pick = std::function<unsigned(unsigned)>; // of a number from 0 to one less than that

    explicit IniTrial(Pick pick) : m_pick(std::move(pick)) {
        std::string text;
        for (unsigned lines = m_pick(120); lines > 0; --lines) {
            const unsigned kind = m_pick(12);
            text += kind == 0   ? "[" + Name() + "]\n"
                    : kind == 1 ? "\n"
                    : kind == 2 ? "; " + Name() + "\n"
                    : kind == 3 ? Name() + std::string("\0 \xC6=1\n", 6)
                                : Name() + "=" + Name() + "\n";
        }
        m_reference = IniReference(m_saved = text);
        m_folder.Write("f.ini", text);
        CzynINI::SetSyncToDisk(false);
        for (CzynINI* const ini : m_all) {
            ini->SetINI(m_folder.Path("f.ini"), false, 0);
            ini->SetWriteMode(m_isDirect);
            ini->isGroupeSet(""); // is read
        }
        // So that there is an index from the first step on.
        for (const IniReference::Section& section : m_reference.sections)
            for (unsigned queries = m_pick(2) * 64; queries > 0; --queries)
                All("0", [&](CzynINI& ini) { return ini.isParamSet(section.name.c_str(), "none"); });
    }

    ~IniTrial() { CzynINI::SetSyncToDisk(true); }

    bool Step() {
        IniReference& rules = m_reference;
        if (m_pick(8) == 0) PassTime();
        const std::string section = Name(), key = Name(),
                          text = m_pick(20)  ? Name()
                                 : m_pick(2) ? "99999999999"
                                             : "010";
        const char *const s = Argument(section), *const k = Argument(key), *const t = Argument(text);
        const char* const comment = std::array{"", "n", "note", "; note"}[m_pick(4)];
        const unsigned kind = m_pick(100);
        if (kind < 52) {
            const IniReference::Line* const line = rules.FindLine(section, key);
            const std::string value = line ? line->value : "none";
            const long long number = IniReference::IsNumber(value) ? IniReference::Number(value) : 9;
            return All(value, [&](CzynINI& ini) { return ini.GetString(s, k, "none", false); }) &&
                   All(std::to_string(number), [&](CzynINI& ini) { return ini.GetInt(s, k, 9, false); });
        }
        if (kind < 54)
            return All(rules.FindSection(section) ? "1" : "0",
                       [&](CzynINI& ini) { return ini.isGroupeSet(s); });
        if (kind < 58)
            return All(rules.FindSection(section) ? rules.Pairs(section) : "Секция ini не найдена"_cp1251,
                       [&](CzynINI& ini) { return Pairs(ini, s); });
        if (kind < 80) {
            rules.Write(section, key, text, comment);
            if (m_isDirect) Save();
            return All("1", [&](CzynINI& ini) { return ini.WriteString(s, k, t, comment); });
        }
        if (kind < 84) {
            rules.Claim(section, key, comment).value = "-5";
            if (m_isDirect) Save();
            return All("1", [&](CzynINI& ini) { return ini.WriteInt(s, k, -5, comment); });
        }
        if (kind < 96) {
            rules.Delete(section, key);
            if (m_isDirect && rules.FindSection(section)) Save();
            return All("1", [&](CzynINI& ini) { return ini.Delete(s, k); });
        }
        if (kind < 98) {
            const bool asInt = kind == 97;
            std::string& value = rules.Claim(section, key, "").value;
            const bool isMade = asInt ? !IniReference::IsNumber(value) : value.empty();
            if (isMade) value = "7", Save();
            if (!asInt)
                return All(isMade ? " 7 " : value, [&](CzynINI& ini) {
                    CStringA result(" 7 "); // the default may be the value itself
                    return ini.GetString(s, k, result, result, true), result;
                });
            return All(std::to_string(IniReference::Number(value)),
                       [&](CzynINI& ini) { return ini.GetInt(s, k, 7, true); });
        }
        const bool ofLine = kind == 98;
        CStringA note;
        note.Format(ofLine ? "; Опция '%s' была переименована. Старое название опции '%s'"_cp1251
                           : "Группа опций [%s] была переименована. Старое название группы [%s]"_cp1251,
                    text.c_str(), (ofLine ? key : section).c_str());
        if (ofLine ? rules.RenameLine(section, key, text, note.GetString())
                   : rules.RenameSection(section, text, note.GetString())) {
            Save();
            if (m_isDirect && !ofLine) rules = IniReference(m_saved); // the comment is a line like any other
        }
        return All(
            "", [&](CzynINI& ini) { return ofLine ? ini.RenameParam(s, k, t) : ini.RenameGroupe(s, t), ""; });
    }

    // Of a derived class the arrays are as the rules have them after every step.
    bool ModelsAgree() {
        const std::string model = m_reference.Model();
        return m_walked.Model(true) == model && m_telling.Model(true) == model;
    }
    bool Flush() {
        if (!m_isDirect) Save();
        const bool changesMode = m_pick(2);
        return All("1",
                   [&](CzynINI& ini) { return changesMode ? ini.SetWriteMode(true), true : ini.Flush(); });
    }

private:
    struct Telling : OpenIni {
        Telling() { ModelChanged(); }
    };

    // Whoever asks for it, or looks more than a second later, reads what somebody else has saved.
    void PassTime() {
        if (m_pick(4) == 0) m_folder.Write("f.ini", m_saved += Name() + "=1\n");
        const bool isAskedFor = m_pick(4) == 0;
        const unsigned passed = std::array{1u, 500u, 1000u}[m_pick(3)];
        m_clock.Pass(passed);
        m_age += passed;
        for (CzynINI* const ini : m_all) {
            if (isAskedFor) ini->SetNeedReload();
            ini->isGroupeSet("");
        }
        if (m_isDirect && (isAskedFor || m_age > 1000)) m_reference = IniReference(m_saved), m_age = 0;
    }
    std::string Name() {
        std::string name = m_pick(3) ? "" : "longer than a block ";
        for (unsigned letters = m_pick(3); letters > 0; --letters)
            name += "aAbB1- \xC6\xE6\xA8\xB8@`"[m_pick(13)]; // Ж ж Ё ё
        return m_pick(8) ? name : name + "___copy";
    }
    // An empty text may be null.
    const char* Argument(const std::string& text) {
        return text.empty() && m_pick(2) ? nullptr : text.c_str();
    }
    static CStringA Pairs(CzynINI& ini, const char* section) {
        CStringArray keys;
        CzynINI::KeyValArray pairs(8);
        keys.Add("old"), pairs.Add(new SKeyVal("old", ""));
        const bool isThere = ini.GetListKeysVals(section, pairs);
        CStringA all = isThere ? "" : ini.GetErrDescription();
        if (ini.GetListKeys(section, keys) != isThere || keys.GetSize() != pairs.GetSize()) return "differ";
        for (int i = 0; i < pairs.GetSize(); ++i)
            all += keys[i].GetString() + ("=" + pairs.GetAt(i)->m_sVal) + ",";
        return all;
    }
    static std::string Shown(const char* text) { return text; }
    static std::string Shown(const CStringA& text) { return std::string(text.View()); }
    static std::string Shown(int number) { return std::to_string(number); }
    template <class Act> bool All(const std::string& expected, Act act) {
        return std::ranges::all_of(m_all, [&](CzynINI* ini) {
            return Shown(act(*ini)) == expected &&
                   ((!m_isDirect && m_pick(8)) || m_folder.Read("f.ini") == m_saved);
        });
    }
    void Save() { m_saved = m_reference.Text(), m_age = 0; }

    StandingClock m_clock;
    const TempFolder m_folder;
    const Pick m_pick;
    const bool m_isDirect = m_pick(4) == 0;
    IniReference m_reference{""};
    std::string m_saved; // what the file is to hold
    unsigned m_age = 0;  // of what was read or saved
    CzynINI m_indexed;
    OpenIni m_walked;
    Telling m_telling;
    CzynINI* const m_all[3] = {&m_indexed, &m_walked, &m_telling};
};
