#include "support/temp_folder.h"
#include "zynaggr/ini.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

// Of a derived class the library indexes nothing: its answers come from walking through the model.
struct Walker : CzynINI {
    // A model without a file, another one at each question.
    bool Parse() override {
        if (!m_bReplaced) return CzynINI::Parse();
        m_aSections.RemoveAll();
        for (const char* name : {"first", m_nAsked++ % 2 ? "b" : "a", "b", "a"}) {
            auto* const section = new SSection(m_aSections, name);
            section->Add(new SOption("key"));
            section->m_aOptions.GetAt(0)->m_sValue.Format("%d", m_aSections.GetSize());
        }
        return true;
    }
    bool m_bReplaced = false;
    int m_nAsked = 0;
};

std::string RandomName(std::mt19937& random) {
    static const std::string letters = "aAbB_1\xC6\xE6\xA8\xB8"; // Ж ж Ё ё
    std::string name(random() % 2 ? "" : "longer than a block ");
    for (auto n = random() % 3; n > 0; --n)
        name += letters[random() % letters.size()];
    return name;
}

} // namespace

TEST(IniIndexTest, FindsWhatWalkingFinds) {
    TempFolder folder;
    std::mt19937 random(3);
    std::string text;
    for (int i = 0; i < 600; ++i)
        text += i % 20 == 0 ? "[" + RandomName(random) + "]\n"
                            : RandomName(random) + "=" + std::to_string(i) + "\n";
    folder.Write("indexed.ini", text);
    folder.Write("walked.ini", text);
    CzynINI indexed(folder.Path("indexed.ini"));
    Walker walked;
    walked.SetINI(folder.Path("walked.ini"), false, 0);
    indexed.SetWriteMode(false);
    walked.SetWriteMode(false);
    for (int step = 0; step < 60'000; ++step) {
        const std::string section = RandomName(random), key = RandomName(random), other = RandomName(random);
        const char *const s = section.c_str(), *const k = key.c_str(), *const o = other.c_str();
        const auto operation = random() % 4000;
        // Edits are rare, so that there is an index between them.
        const auto edit = [&](CzynINI& ini) -> int {
            if (operation == 0) return ini.WriteString(s, k, o, "note");
            if (operation == 1) return ini.Delete(s, k);
            if (operation == 2) ini.RenameParam(s, k, o);
            if (operation == 3) return ini.GetInt(s, k, 7, true);
            if (operation == 4) ini.RenameGroupe(s, o);
            return 0;
        };
        ASSERT_EQ(edit(indexed), edit(walked));
        ASSERT_EQ(indexed.GetString(s, k, "none", false), walked.GetString(s, k, "none", false));
        ASSERT_EQ(indexed.isGroupeSet(s), walked.isGroupeSet(s));
    }
    EXPECT_TRUE(indexed.Flush() && walked.Flush());
    EXPECT_EQ(folder.Read("indexed.ini"), folder.Read("walked.ini"));
}

TEST(IniIndexTest, ClassThatReadsForItselfIsBelieved) {
    Walker ini;
    ini.m_bReplaced = true;
    for (int i = 0; i < 2000; ++i) {
        const bool even = i % 2 == 0; // first, a, b, a; then first, b, b, a
        EXPECT_EQ(ini.GetString(i % 3 ? "a" : "A", "KEY", "", false), even ? "2" : "4") << i;
    }
}
