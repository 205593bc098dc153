// SPDX-License-Identifier: MIT
#include "zynaggr/ini_transaction.h"

#include "support/ini_model.h"

using IniTransactionTest = IniFileTest;

TEST_F(IniTransactionTest, CollectsEveryEditAndSavesThemTogetherOrNotAtAll) {
    for (const bool commits : {true, false}) {
        Load("[s]\r\nk=1\r\n");
        folder.Write("f.ini", "[s]\r\nk=2\r\n"); // since
        {
            CzynINITransaction edits(ini);
            ASSERT_TRUE(edits.IsBegun());
            EXPECT_EQ(2, ini.GetInt("s", "k", 0, false));
            EXPECT_TRUE(ini.WriteString("s", "l", "3", nullptr) && ini.Delete("s", "k") && ini.Flush());
            EXPECT_EQ("d", ini.GetString("t", "m", "d", true));
            ini.RenameParam("s", "l", "n");
            ini.SetWriteMode(true);
            EXPECT_TRUE(ini.isParamSet("s", "n"));
            EXPECT_EQ("[s]\r\nk=2\r\n", File());
            OpenIni other(folder.Path("f.ini")); // may read, not save
            EXPECT_TRUE(other.isParamSet("s", "k"));
            EXPECT_FALSE(other.WriteString("s", "o", "1", nullptr));
            EXPECT_EQ(openFailedText, other.GetErrDescription());
            CzynINITransaction second(ini), third(other, 10);
            EXPECT_FALSE(second.IsBegun() || third.IsBegun() || second.Commit());
            if (commits) {
                const OtherHandle held(folder.Path("f.ini"), {.deny = zynplatform::accessWrite});
                EXPECT_FALSE(edits.Commit()); // can be tried again
                EXPECT_EQ(readOnlyText, ini.GetErrDescription());
            }
            EXPECT_EQ(commits, commits && edits.Commit());
            EXPECT_FALSE(commits && edits.Commit()); // it is over
        }
        EXPECT_EQ(!commits, ini.isParamSet("s", "k"));
        EXPECT_EQ(commits, ini.isParamSet("s", "n") && File().ends_with("\r\n\r\n[t]\r\nm=d\r\n"));
        EXPECT_TRUE(ini.WriteString("s", "p", "1", nullptr)); // as ever
        EXPECT_NE(File().npos, File().find("p=1"));
    }
    ini.SetWriteMode(false);
    CzynINITransaction refused(ini);
    EXPECT_FALSE(refused.IsBegun());
}
