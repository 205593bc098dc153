// SPDX-License-Identifier: MIT
#include "support/encodings.h"
#include "support/ini_model.h"

#include <set>

// Files that are edited without any other byte of them being changed.

namespace {

class IniFaithfulTest : public IniFileTest {
protected:
    IniFaithfulTest() {
        CzynINI::SetSyncToDisk(false);
        ini.SetFaithful(true);
        zynEncodingChoice choice;
        choice.m_bPreferUtf8 = true;
        ini.SetEncodingChoice(choice);
    }

    ~IniFaithfulTest() override { CzynINI::SetSyncToDisk(true); }

    // What stands in the file in the place of what was there, where it differs from the text.
    std::pair<std::string, std::string> Difference(const std::string& text) const {
        const std::string now = File();
        const auto first = std::mismatch(text.begin(), text.end(), now.begin(), now.end());
        const auto last = std::mismatch(text.rbegin(), std::make_reverse_iterator(first.first), now.rbegin(),
                                        std::make_reverse_iterator(first.second));
        return {std::string(first.first, last.first.base()), std::string(first.second, last.second.base())};
    }
    static int LineEnds(const std::string& text) {
        const auto feeds = std::count(text.begin(), text.end(), '\n'); // in any encoding
        return static_cast<int>(feeds ? feeds : std::count(text.begin(), text.end(), '\r'));
    }

    // A file as it is and in the encodings that it can be put into.
    void EditInEveryEncoding(const std::string& text) {
        EditEverywhere(text);
        if (text.starts_with("\xEF") || text.find('\0') != text.npos) return;
        for (const Encoding& encoding : encodings) {
            const std::string converted = Converted(text, "UTF-8", encoding.name);
            if (!converted.empty()) EditEverywhere(encoding.mark + converted);
        }
    }

    // Changes, adds and deletes at some of the file's entries and takes it back.
    void EditEverywhere(const std::string& text) {
        Load(text);
        std::vector<std::string> sections, keys;
        ASSERT_TRUE(ini.GetListSectionsUtf8(sections));
        sections.insert(sections.begin(), "");
        std::mt19937 random(7);
        std::shuffle(sections.begin() + 1, sections.end(), random);
        sections.resize(std::min<std::size_t>(sections.size(), 12));
        for (const std::string& section : sections) {
            if (!ini.GetListKeysUtf8(section, keys)) continue;
            const std::multiset<std::string> all(keys.begin(), keys.end());
            std::shuffle(keys.begin(), keys.end(), random);
            keys.resize(std::min<std::size_t>(keys.size(), 4));
            for (const std::string& key : keys) {
                std::string value;
                ASSERT_TRUE(ini.GetStringUtf8(section, key, value));
                EXPECT_TRUE(ini.WriteStringUtf8(section, key, value + "x"));
                const auto [before, after] = Difference(text);
                EXPECT_TRUE(before.empty() && after.find('x') != after.npos && LineEnds(after) == 0) << key;
                EXPECT_TRUE(ini.WriteStringUtf8(section, key, value));
                EXPECT_EQ("", Difference(text).second) << key << Difference(text).first;
            }
            EXPECT_TRUE(ini.WriteStringUtf8(section, "zz new", "value")) << ini.GetErrDescription();
            const auto [before, after] = Difference(text);
            EXPECT_TRUE(before.empty() && LineEnds(after) == 1) << section << '|' << before << '|' << after;
            EXPECT_TRUE(ini.DeleteUtf8(section, "zz new"));
            EXPECT_EQ(text, File()) << section;
            if (keys.empty() || all.count(keys[0]) > 1) continue;
            EXPECT_TRUE(ini.DeleteUtf8(section, keys[0]));
            EXPECT_EQ("", Difference(text).second);
            Load(text);
        }
    }
};

} // namespace

TEST_F(IniFaithfulTest, AnEditChangesItsLineAndNoOther) {
    const std::string files[] = {
        "[s]\na=1\nb=2\n",                             // LF
        "[s]\r\na=1\r\nb=2\r\n",                       // CR LF
        "[s]\ra=1\rb=2\r",                             // CR
        "[s]\r\na=1\nb=2\r\n\n\rc=3\n",                // mixed
        "[s]\r\n\ra=1\r\n\r\nb=2\n\rc=3\n\r",          // CR behind LF
        "[s]\na=1\nb=2",                               // no last end
        "[s]\n\ta = 1\n\tb = 2\n",                     // indented, blanks around "="
        "[s]\na\t:= 1 \t\nb =\n=c\n",                  // tabs, trailing blanks, empty value and key
        "[ s ]\na=1\n[ t ] ; tail\nb=2\n",             // blanks in a header, a tail behind it
        "[s]\na=1\n[s]\na=2\na=3\nA=4\n",              // duplicates
        "free text\n[s]\n!also\na=1\n]x\n[\n[y\nz]\n", // free text, half headers
        "a=1\nb=2\n\n[s]\nc=3\n",                      // entries before the first header
        "[s]\n10=a\n2=b\n2=\n-1=c\n",                  // numbers, an empty one
        "[s]\na=\"1;2\" ; note\nb='#'\n#c=3\n;d=4\n",  // quotes, comments
        "[s]\na=1 \\\n  2\n  3\nb=4\n  more\n\n[t]\n", // what looks like continued lines
        "[s]\na=1\n\n\n[t]\n\nb=2\n\n; end\n\n",       // blank lines and comments at the ends
        "[s]\r\n\xEA\xEB\xFE\xF7=\xE7\xED\xE0\xF7\r\nyo=\xB8\r\n",        // the code page
        "\xEF\xBB\xBF[s]\na=\xE2\x82\xBD \xF0\x9F\x98\x80\nb=\xD0\xB6\n", // UTF-8 with a mark
        "[\xE6\x97\xA5\xE6\x9C\xAC]\nM\xC3\xBCller=\xE2\x82\xBD\n\xE7\x8C\xAB="
        "\xF0\x9F\x98\x80\xE2\x80\x94\n",                // and without
        "[s]\na=\xFF\xC3\nb=?\xE2\x82\n\xC3=\xD0\xB6\n", // ill-formed
        "[s]\na=1\0\0\nb=2\n"s,                          // zero bytes
        "\n\n",
        "[s]",
        "; only a note",
        "a=b"};
    for (const std::string& text : files) {
        SCOPED_TRACE(testing::PrintToString(text));
        EditInEveryEncoding(text);
    }
    // The same of a folder of somebody's own files.
    if (const char* const corpus = std::getenv("ZYNAGGR_INI_CORPUS"))
        for (const auto& entry : fs::directory_iterator(corpus)) {
            SCOPED_TRACE(entry.path());
            std::ifstream file(entry.path(), std::ios::binary);
            EditInEveryEncoding({std::istreambuf_iterator<char>(file), {}});
        }
}

TEST_F(IniFaithfulTest, WhatTheCodePageLacksSurvivesInEveryEncodingAndMode) {
    const std::string text = "; — ₽ 日本 ?\r\n[Müller] ; ₽\r\n名=😀 "
                             "1\r\nключ=знач\r\nb=??\r\n\r\n[z]\r\nq=ё\r\n";
    std::string edited = text;
    edited.replace(edited.find("знач"), 8, "100 ₽ 😀");
    for (const Encoding& encoding : encodings)
        for (const bool faithful : {false, true}) {
            if (encoding.number == zynEncCP1251) continue;
            SCOPED_TRACE(encoding.name);
            const auto in = [&](const std::string& utf8) {
                return encoding.mark + Converted(utf8, "UTF-8", encoding.name);
            };
            ini.SetFaithful(faithful);
            Load(in(text).substr(faithful || encoding.number != zynEncUTF8 ? 0 : 3)); // which gets a mark
            EXPECT_EQ(encoding.number, ini.GetFileEncoding());
            EXPECT_TRUE(ini.WriteString("z", "q", "х"_cp1251, nullptr));
            EXPECT_TRUE(ini.WriteString("z", "q", "ё"_cp1251, nullptr));
            EXPECT_EQ(in(text), File());
            std::string value;
            EXPECT_TRUE(!ini.GetStringUtf8("mÜller", "名", value) &&
                        ini.GetStringUtf8("Müller", "名", value) && value == "😀 1");
            EXPECT_FALSE(ini.GetStringUtf8("M?ller", "名", value) || ini.GetStringUtf8("Müller", "?", value));
            EXPECT_TRUE(ini.WriteStringUtf8("Müller", "КЛЮЧ", " 100 ₽ 😀"));
            EXPECT_EQ(in(edited), File());
            EXPECT_EQ(in(text), Backup());
            EXPECT_TRUE(ini.RenameParamUtf8("Müller", "ключ", "ключ₽") &&
                        ini.RenameParamUtf8("Müller", "ключ₽", "ключ") &&
                        ini.RenameGroupeUtf8("Müller", "日本") && ini.RenameGroupeUtf8("日本", "Müller"));
            EXPECT_EQ(in(edited), File());
            EXPECT_TRUE(ini.WriteStringUtf8("Müller", "ż", "ę", "ć ?") &&
                        ini.WriteStringUtf8("z", "ż", "?") && ini.DeleteUtf8("Müller", "ż") &&
                        ini.DeleteUtf8("z", "ż"));
            std::string noted = edited;
            EXPECT_EQ(in(noted.insert(noted.find("\r\n[z]"), ";ć ?\r\n")), File());
            EXPECT_TRUE(ini.DeleteGroupeUtf8("Müller") && ini.WriteStringUtf8("", "日", "本"));
            EXPECT_EQ(in("日=本\r\n" + text.substr(0, text.find('[')) + "[z]\r\nq=ё\r\n"), File());
        }
}
