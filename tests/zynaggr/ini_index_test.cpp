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
    CzynINI indexed;
    Walker walked;
    indexed.SetINI(folder.Path("indexed.ini"), false, 0);
    walked.SetINI(folder.Path("walked.ini"), false, 0);
    indexed.SetWriteMode(false);
    walked.SetWriteMode(false);
    for (int step = 0; step < 60'000; ++step) {
        const std::string section = RandomName(random), key = RandomName(random), other = RandomName(random);
        const char *s = section.c_str(), *k = key.c_str(), *o = other.c_str();
        // Edits are rare, so that there is an index between them.
        switch (random() % 4000) {
        case 0:
            ASSERT_EQ(indexed.WriteString(s, k, o, "note"), walked.WriteString(s, k, o, "note"));
            break;
        case 1:
            ASSERT_EQ(indexed.Delete(s, k), walked.Delete(s, k));
            break;
        case 2:
            indexed.RenameParam(s, k, o);
            walked.RenameParam(s, k, o);
            break;
        case 3:
            ASSERT_EQ(indexed.GetInt(s, k, 7, true), walked.GetInt(s, k, 7, true));
            break;
        case 4:
            indexed.RenameGroupe(s, o);
            walked.RenameGroupe(s, o);
            break;
        default:
            break;
        }
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
