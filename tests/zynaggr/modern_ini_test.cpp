// SPDX-License-Identifier: MIT
#include "zynaggr/modern/ini.h"

#include "support/test.h"

TEST(ModernIniTest, ValuesAreTypedAndFailuresHaveATextAndTakeNothing) {
    const TempFolder folder;
    zyn::Ini ini(folder.Native("новый 日.conf"));
    EXPECT_TRUE(ini.Sections().empty() && !ini.Has("", "k") && ini.Get("s", "k", 7) == 7);
    EXPECT_TRUE(ini.Set("s", "n", -3) && ini.Set("s", "f", 2.5) && ini.Set("s", "b", false) &&
                ini.Set("s", "t", "日", "ж ₽") && ini.Set("", "k", 1u));
    EXPECT_EQ("k=1\n\n[s]\nn=-3\nf=2.5\nb=false\n;ж ₽\nt=日\n", folder.Read("новый 日.conf"));
    EXPECT_EQ(std::vector<std::string>({"n", "f", "b", "t"}), ini.Keys(" S "));
    EXPECT_TRUE(ini.Get("s", "n", 0) == -3 && ini.Get("s", "n", 0u) == 0 && ini.Get("s", "f", 0.) == 2.5 &&
                !ini.Get("s", "b", true) && ini.Get("s", "t", 9) == 9 && ini.Get("s", "t", true) &&
                ini.Get("s", "x", "y") == "y" && ini.Get("s", "t") == "日");
    const std::string before = folder.Read("новый 日.conf");
    const std::tuple<const char*, const char*, const char*> refused[] = {
        {"s", "a=b", "v"}, {"s", "", "v"},     {"s", "[k]", "v"}, {"s", "k", "a\nb"}, {"s", "k;", "v"},
        {"s]", "k", "v"},  {"s", "k", "\xFF"}, {"s", "#", "v"},   {"a\rb", "k", "v"}};
    for (const auto& [section, key, value] : refused) {
        EXPECT_FALSE(ini.Set(section, key, value)) << section << key << value;
        EXPECT_NE("", ini.Error());
    }
    EXPECT_FALSE(ini.Set("s", "new", "v", "a\nb") || ini.Rename("s", "n", "f") || ini.Rename("s", "x", "y") ||
                 ini.RenameSection("x", "y") || ini.Set("s", "n\0"s, "v") || ini.Rename("s", "n", "a]b"));
    {
        zyn::Ini::Batch batch(ini);
        EXPECT_TRUE(batch.IsBegun() && ini.Set("s", "n", "4") && ini.Set("z", "n", "5"));
    }
    EXPECT_TRUE(ini.Remove("s", "none") && ini.Get("s", "n", 0) == -3 && !ini.Has("z", "n"));
    EXPECT_EQ(before, folder.Read("новый 日.conf"));
    EXPECT_TRUE(ini.Rename("s", "t", "猫") && ini.Remove("S", "猫") && ini.RenameSection("s", "S") &&
                ini.RemoveSection(""));
    EXPECT_EQ("[S]\nn=-3\nf=2.5\nb=false\n;ж ₽\n", folder.Read("новый 日.conf"));
}

TEST(ModernIniTest, NewLinesStandBehindTheLastPairAndSectionsAsTheOthersDo) {
    const TempFolder folder;
    folder.Write("f", "[s]\na=1\nb=2\n\n[t]\nc=3\n[u]\n");
    zyn::Ini ini(folder.Native("f"));
    EXPECT_TRUE(ini.Remove("s", "a") && ini.Set("s", "d", 4, "note") && ini.Set("s", "e", 5) &&
                ini.Set("v", "f", 6));
    EXPECT_EQ("[s]\nb=2\n;note\nd=4\ne=5\n\n[t]\nc=3\n[u]\n[v]\nf=6\n", folder.Read("f"));
}

// What a file of the code page has no character for, and what would no longer be taken for UTF-8.
TEST(ModernIniTest, TheEncodingOfTheFileDecidesWhatItHolds) {
    const TempFolder folder;
    folder.Write("f", "[s]\nk=\xE6\n");
    zyn::Ini ini(folder.Native("f"));
    EXPECT_TRUE(ini.Get("s", "k") == "ж" && ini.Set("s", "k", "ё — №"));
    EXPECT_FALSE(ini.Set("s", "₽", "1") || ini.Set("₽", "k", "1"));
    EXPECT_EQ("[s]\nk=\xB8 \x97 \xB9\n", folder.Read("f"));
    CzynINI& engine = ini.Engine();
    EXPECT_TRUE(engine.SetFileEncoding(zynEncUCS2LE, true) && ini.Set("s", "k", "ж"));
    engine.SetEncodingChoice({});
    folder.Write("f", "[s]\nk=ж\n");
    ini.Reload();
    EXPECT_EQ(zynEncUTF8, engine.GetFileEncoding());
    EXPECT_FALSE(ini.Set("s", "k", "ж—"));
    EXPECT_EQ("[s]\nk=ж\n", folder.Read("f"));
}
