#include "support/ini_model.h"

namespace {

class IniReloadTest : public IniFileTest {
protected:
    IniReloadTest() {
        Load("[s]\na=1\n");
        folder.Write("f.ini", "[s]\nb=1\n");
    }
    // What the file holds, loaded if that is due.
    std::string Loaded() { return ini.Parse() ? ini.Model() : ""; }
};

} // namespace

TEST_F(IniReloadTest, HappensWhenMoreThanASecondHasPassed) {
    clock.Pass(1000);
    EXPECT_EQ("<s|>{a:1}", Loaded());
    clock.Pass(1);
    EXPECT_EQ("<s|>{b:1}", Loaded());
    folder.Write("f.ini", "[s]\nc=1\n");
    clock.Pass(1000); // counted from the reload
    EXPECT_EQ("<s|>{b:1}", Loaded());
    EXPECT_TRUE(ini.WriteString("s", "k", "v", nullptr));
    folder.Write("f.ini", "[s]\nc=1\n");
    clock.Pass(1000); // counted from the save
    EXPECT_EQ("<s|>{b:1}{k:v}", Loaded());
    clock.Pass(1);
    EXPECT_EQ("<s|>{c:1}", Loaded());
}

TEST_F(IniReloadTest, HappensAtOnceWhenAskedForOrForAnotherFileButNotInDeferredMode) {
    ini.SetNeedReload();
    EXPECT_EQ("<s|>{b:1}", Loaded());
    folder.Write("g.ini", "[s]\nother=1\n");
    ini.SetINI(folder.Path("g.ini"), false, 0);
    EXPECT_EQ("<s|>{b:1}", ini.Model());
    ini.SetWriteMode(false); // reads once more
    const std::string others = "[s]\nc=1\n";
    folder.Write("g.ini", others);
    ini.SetNeedReload();
    clock.Pass(100'000);
    ini.SetWriteMode(false);
    EXPECT_EQ("<s|>{other:1}", Loaded());
    ini.SetWriteMode(true); // saves
    EXPECT_EQ("[s]\r\nother=1\r\n", folder.Read("g.ini"));
    folder.Write("g.ini", others);
    ini.SetWriteMode(true);
    EXPECT_TRUE(ini.Flush()); // neither has anything to do
    EXPECT_EQ(others, folder.Read("g.ini"));
}

TEST_F(IniReloadTest, MissingFileChangesNothingAndIsNotMade) {
    ini.SetINI(folder.Path("late.ini"), false, 0);
    ini.m_sErr = "kept";
    EXPECT_EQ("<s|>{a:1}", Loaded());
    EXPECT_EQ("kept", ini.GetErrDescription());
    EXPECT_FALSE(ini.isFileExist() || folder.Has("late.ini"));
    folder.Write("late.ini", "[s]\nd=1\n");
    {
        const OtherHandle other(folder.Path("late.ini"), {.deny = zynplatform::accessWrite});
        EXPECT_EQ("<s|>{d:1}", Loaded()); // it was still due
    }
    EXPECT_TRUE(ini.isFileExist() && ini.m_bReadOnly);
    clock.Pass(1001);
    EXPECT_TRUE(ini.Parse() && !ini.m_bReadOnly);
}
