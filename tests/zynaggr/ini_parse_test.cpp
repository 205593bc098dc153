// SPDX-License-Identifier: MIT
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

TEST_F(IniReloadTest, HappensForAnotherFileAndBeforeEditsAreCollected) {
    folder.Write("g.ini", "[s]\nother=1\n");
    ini.SetINI(folder.Path("g.ini"), false, 0);
    EXPECT_EQ("<s|>{a:1}", ini.Model());
    for (const bool isFirst : {true, false}) {
        ini.SetWriteMode(false);
        EXPECT_EQ("<s|>{other:1}", ini.Model()) << isFirst;
        folder.Write("g.ini", "[s]\nc=1\n");
    }
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
