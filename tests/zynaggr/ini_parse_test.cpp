#include "support/ini_model.h"
#include "support/ini_reference.h"

#include <random>

using namespace std::string_literals;

namespace {

// The keys of a file, loaded if that is due, as "a,b,"; "failed" when the load failed.
std::string Keys(OpenIni& ini) {
    if (!ini.Parse()) return "failed";
    CStringArray keys;
    ini.GetListKeys("s", keys);
    std::string all;
    for (int i = 0; i < keys.GetSize(); ++i)
        all += std::string(keys[i].View()) + ",";
    return all;
}

class IniReloadTest : public IniFileTest {
protected:
    IniReloadTest() {
        Load("[s]\na=1\n");
        folder.Write("f.ini", "[s]\nb=1\n");
    }
};

} // namespace

TEST(IniParseTest, AgreesWithTheRulesOnRandomTexts) {
    const std::string letters = "[];#=\r\n \ta\0\xC8"
                                "[]=\n\r"s;
    std::mt19937 random(20240607);
    for (int round = 0; round < 60'000; ++round) {
        std::string text;
        for (std::size_t length = random() % 24; text.size() < length;)
            text += letters[random() % letters.size()];
        if (round % 4) text += '\n'; // which the last line need not have
        OpenIni ini;
        EXPECT_TRUE(ini.ParseText(text));
        ASSERT_EQ(IniReference(text).Model(), ini.Model(true)) << testing::PrintToString(text);
    }
}

TEST_F(IniReloadTest, HappensWhenMoreThanASecondHasPassed) {
    clock.Pass(1000);
    EXPECT_EQ("a,", Keys(ini));
    clock.Pass(1);
    EXPECT_EQ("b,", Keys(ini));
    folder.Write("f.ini", "[s]\nc=1\n");
    clock.Pass(1000); // counted from the reload
    EXPECT_EQ("b,", Keys(ini));
    EXPECT_TRUE(ini.WriteString("s", "k", "v", nullptr));
    folder.Write("f.ini", "[s]\nc=1\n");
    clock.Pass(1000); // counted from the save
    EXPECT_EQ("b,k,", Keys(ini));
    clock.Pass(1);
    EXPECT_EQ("c,", Keys(ini));
}

TEST_F(IniReloadTest, HappensAtOnceWhenAskedForOrForAnotherFileButNotInDeferredMode) {
    ini.SetNeedReload();
    EXPECT_EQ("b,", Keys(ini));
    folder.Write("g.ini", "[s]\nother=1\n");
    ini.SetINI(folder.Path("g.ini"), false, 0);
    EXPECT_EQ("<s|>{b:1}", ini.Model());
    ini.SetWriteMode(false); // reads once more
    folder.Write("g.ini", "[s]\nc=1\n");
    ini.SetNeedReload();
    clock.Pass(100'000);
    EXPECT_EQ("other,", Keys(ini));
}

TEST_F(IniReloadTest, FailedOpenKeepsTheModelAndIsTriedAgainAtOnce) {
    clock.Pass(1001);
    for (int attempt = 0; attempt < 2; ++attempt) {
        const OtherHandle other(folder.Path("f.ini"), {.deny = zynplatform::accessRead});
        EXPECT_EQ("failed", Keys(ini));
        EXPECT_EQ("<s|>{a:1}", ini.Model());
        EXPECT_EQ(openFailedText, ini.GetErrDescription());
    }
    EXPECT_EQ("b,", Keys(ini));
    EXPECT_TRUE(ini.GetErrDescription().IsEmpty());
}

TEST_F(IniReloadTest, UnreadableContentEmptiesTheModelAndLeavesTheEncoding) {
    for (const std::string& content : {""s, "\xFF\xFE\0\0a\0"s}) { // less than a unit of UCS-4
        Load("\xEF\xBB\xBF[s]\na=1\n");
        EXPECT_EQ("<s|>{a:1}", ini.Model());
        Load(content);
        EXPECT_EQ("", ini.Model());
        EXPECT_EQ(zynEncUTF8, ini.m_nEncoding);
    }
}

TEST_F(IniReloadTest, MissingFileChangesNothingAndIsNotMade) {
    ini.SetINI(folder.Path("late.ini"), false, 0);
    ini.m_sErr = "kept";
    EXPECT_EQ("a,", Keys(ini));
    EXPECT_EQ("kept", ini.GetErrDescription());
    EXPECT_FALSE(ini.isFileExist() || folder.Has("late.ini"));
    folder.Write("late.ini", "[s]\nd=1\n");
    {
        const OtherHandle other(folder.Path("late.ini"), {.deny = zynplatform::accessWrite});
        EXPECT_EQ("d,", Keys(ini)); // it was still due
    }
    EXPECT_TRUE(ini.isFileExist() && ini.m_bReadOnly);
    clock.Pass(1001);
    EXPECT_TRUE(ini.Parse());
    EXPECT_FALSE(ini.m_bReadOnly);
}
