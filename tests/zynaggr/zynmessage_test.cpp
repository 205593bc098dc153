// SPDX-License-Identifier: MIT
#include "support/host.h"
#include "zynaggr/zynmessage.h"

static std::string Printed(const char* text, std::uint32_t style) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(zynMessagePrint(text, style), 1);
    return testing::internal::GetCapturedStdout();
}

static bool* const flags[] = {&g_bShow_zynMessageBox_Warning, &g_bShow_zynMessageBox_Error,
                              &g_bShow_zynMessageBox_Information};
static const struct {
    std::uint32_t style;
    bool* flag;
    std::string prefix, russian;
} messageClasses[] = {{0x30, flags[0], "\n\nzyn Warning: ", "\n\nПредупреждение: "_cp1251},
                      {0x70, flags[0], "\n\nzyn Warning: ", "\n\nПредупреждение: "_cp1251},
                      {0x10, flags[1], "\n\nzyn Error: ", "\n\nОшибка: "_cp1251},
                      {0x50, flags[1], "\n\nzyn Error: ", "\n\nОшибка: "_cp1251},
                      {0x40, flags[2], "\n\nzyn Info: ", "\n\n "},
                      {0x60, flags[2], "\n\nzyn Info: ", "\n\n "},
                      {0x20, nullptr, "\n\n", "\n\n"},
                      {0x40000, nullptr, "\n\n", "\n\n"}};

TEST(MessagePrint, ClassGivesThePrefixAndItsFlagAloneSwallows) {
    for (const auto& [style, ownFlag, prefix, russian] : messageClasses) {
        for (bool* flag : flags) {
            *flag = false;
            EXPECT_EQ(Printed("50%d %s", style), flag == ownFlag ? "" : prefix + "50%d %s") << style;
            *flag = true;
        }
        EXPECT_EQ(Printed("x", style) + Printed("", style) + Printed(nullptr, style), prefix + "x");
    }
}

// In a process of its own: the prefixes stay.
TEST(MessagePrintDeathTest, RussianPrefixesStayOnceTheFlagWasSeen) {
    for (const char* swallowed : {"", "text"}) {
        const auto countWrong = [&] {
            g_bShow_zynMessageBox_Error = false;
            g_bShow_zynMessageBox_InRussian = true;
            Printed(swallowed, 0x10);
            g_bShow_zynMessageBox_InRussian = false;
            g_bShow_zynMessageBox_Error = true;
            int wrong = 0;
            for (const auto& c : messageClasses)
                wrong += Printed("x", c.style) != c.russian + "x";
            return wrong;
        };
        EXPECT_EXIT(std::_Exit(countWrong()), testing::ExitedWithCode(0), "");
    }
}

TEST(MessageBox, GoesToTheApplicationObjectElseToStandardErrorUnlessItsClassIsSwallowed) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(zynMessageBoxConsole("text", 0x30), 1);
    std::optional<CWinApp> plain(std::in_place);
    EXPECT_EQ(AfxCaptionMessageBox("boxed", "caption", 0x10), 1);
    {
        Host host(0);
        plain.reset();
        EXPECT_EQ(AfxGetApp(), &host);
        host.answer = 6;
        host.whileShown = [&] {
            const CStringA caption(zynMessageBoxCaption());
            if (!caption.IsEmpty()) AfxMessageBox("inner", 0);
            host.boxes.push_back(caption == zynMessageBoxCaption() ? caption.GetString() : "another");
        };
        g_bShow_zynMessageBox_Information = false;
        EXPECT_EQ(zynMessageBoxConsole("a", 0x40), 1);
        g_bShow_zynMessageBox_Information = true;
        EXPECT_EQ(zynMessageBoxConsole("b", 0x10) + zynMessageBoxConsole("", 0x1040), 6 + 6);
        EXPECT_EQ(AfxCaptionMessageBox("c", "caption", 0), 6);
        EXPECT_THAT(host.boxes,
                    testing::ElementsAre("16 b", "", "4160 ", "", "0 c", "0 inner", "", "caption"));
        EXPECT_EQ(zynMessageBoxCaption(), nullptr);
    }
    EXPECT_EQ(AfxCaptionMessageBox("text", "caption", 0x10), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "text\ncaption: boxed\ncaption: text\n");
}
