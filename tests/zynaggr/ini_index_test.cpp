// SPDX-License-Identifier: MIT
#include "support/ini_trial.h"
#include "zynaggr/name_index_impl.h"

TEST(IniIndexTest, EditsAndQueriesFollowTheRulesWithAndWithoutAnIndex) {
    std::mt19937 random(3);
    for (int round = 0; round < 20; ++round) {
        IniTrial trial([&](unsigned n) { return static_cast<unsigned>(random() % n); });
        for (int step = 0; step < 1500; ++step) {
            ASSERT_TRUE(trial.Step()) << round << " " << step;
            ASSERT_TRUE(step % 8 != 0 || trial.ModelsAgree()) << round << " " << step;
        }
        ASSERT_TRUE(trial.Flush());
    }
}

TEST(IniIndexTest, ClassThatChangesTheModelIsBelieved) {
    for (const bool tells : {false, true}) {
        OpenIni ini;
        for (int i = 0; i < 300; ++i)
            ini.FindCreateOption("s", std::to_string(i).c_str(), true, nullptr)->m_sValue.Format("%d", i);
        for (int i = 298; i >= 0; --i) {
            if (tells) ini.ModelChanged();
            EXPECT_EQ(std::to_string(i + 1), ini.GetString("s", "299", "", false).GetString());
            ini.FindCreateOption("s", std::to_string(i).c_str(), false, nullptr)->m_sKey = "299";
        }
    }
}

TEST(IniIndexTest, HashesFoldLetterPairsAndNothingElse) {
    const auto eight = [](unsigned byte) { return byte * std::uint64_t{0x0101010101010101}; };
    for (unsigned byte = 0; byte < 256; ++byte)
        EXPECT_EQ(eight(zynplatform::cp1251ToLower[byte]), zyn::FoldedBlock(eight(byte))) << byte;
}
