#include "zynaggr/zynmessage.h"

#include "zynhost/application.h"
#include "zynplatform/cp1251.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

using namespace zynplatform::literals;

namespace {

std::string Printed(const char* text, std::uint32_t style) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(zynMessagePrint(text, style), 1);
    return testing::internal::GetCapturedStdout();
}

const struct {
    std::uint32_t style;
    bool* flag;
    std::string prefix, russian;
} messageClasses[] = {
    {0x30, &g_bShow_zynMessageBox_Warning, "\n\nzyn Warning: ", "\n\nПредупреждение: "_cp1251},
    {0x70, &g_bShow_zynMessageBox_Warning, "\n\nzyn Warning: ", "\n\nПредупреждение: "_cp1251},
    {0x10, &g_bShow_zynMessageBox_Error, "\n\nzyn Error: ", "\n\nОшибка: "_cp1251},
    {0x50, &g_bShow_zynMessageBox_Error, "\n\nzyn Error: ", "\n\nОшибка: "_cp1251},
    {0x40, &g_bShow_zynMessageBox_Information, "\n\nzyn Info: ", "\n\n "},
    {0x60, &g_bShow_zynMessageBox_Information, "\n\nzyn Info: ", "\n\n "},
    {0x20, nullptr, "\n\n", "\n\n"},
    {0x40000, nullptr, "\n\n", "\n\n"},
};

TEST(MessagePrint, ClassGivesThePrefixAndItsFlagAloneSwallows) {
    for (const auto& c : messageClasses) {
        SCOPED_TRACE(c.style);
        for (bool* flag : {&g_bShow_zynMessageBox_Warning, &g_bShow_zynMessageBox_Error,
                           &g_bShow_zynMessageBox_Information}) {
            *flag = false;
            EXPECT_EQ(Printed("50%d %s", c.style), flag == c.flag ? "" : c.prefix + "50%d %s");
            *flag = true;
        }
        EXPECT_EQ(Printed("x", c.style), c.prefix + "x");
        EXPECT_EQ(Printed("", c.style) + Printed(nullptr, c.style), "");
    }
}

// In a process of its own: the prefixes stay.
TEST(MessagePrintDeathTest, RussianPrefixesStayOnceTheFlagWasSeen) {
    const auto countWrong = [](const char* firstText, std::uint32_t firstStyle) {
        g_bShow_zynMessageBox_Error = false;
        g_bShow_zynMessageBox_InRussian = true;
        Printed(firstText, firstStyle);
        g_bShow_zynMessageBox_InRussian = false;
        g_bShow_zynMessageBox_Error = true;
        int wrong = 0;
        for (const auto& c : messageClasses)
            wrong += Printed("x", c.style) != c.russian + "x";
        return wrong;
    };
    EXPECT_EXIT(std::_Exit(countWrong("", 0x30)), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(std::_Exit(countWrong("swallowed", 0x10)), testing::ExitedWithCode(0), "");
}

TEST(MessagePrint, MessagesOfSeveralThreadsDoNotMix) {
    testing::internal::CaptureStdout();
    std::vector<std::thread> threads;
    for (const char letter : {'a', 'b', 'c'})
        threads.emplace_back([text = std::string(300, letter)] {
            for (int i = 0; i < 200; ++i)
                zynMessagePrint(text.c_str(), 0);
        });
    for (std::thread& thread : threads)
        thread.join();
    const std::string all = testing::internal::GetCapturedStdout();
    ASSERT_EQ(all.size(), 600u * 302);
    for (std::size_t at = 0; at < all.size(); at += 302)
        EXPECT_EQ(all.substr(at, 302), "\n\n" + std::string(300, all[at + 2]));
}

class App : public CWinApp {
public:
    int DoMessageBox(const char* text, std::uint32_t style, std::uint32_t helpContext) override {
        m_shown += text + ("/" + std::to_string(style)) + "/" + std::to_string(helpContext) + ";";
        return 6;
    }
    std::string m_shown;
};

TEST(MessageBox, GoesToTheApplicationObjectUnlessItsClassIsSwallowed) {
    auto earlier = std::make_unique<CWinApp>();
    App app;
    earlier.reset();
    EXPECT_EQ(AfxGetApp(), &app);
    g_bShow_zynMessageBox_Information = false;
    EXPECT_EQ(zynMessageBoxConsole("a", 0x40), 1);
    g_bShow_zynMessageBox_Information = true;
    EXPECT_EQ(zynMessageBoxConsole("b", 0x10), 6);
    EXPECT_EQ(zynMessageBoxConsole("", 0x1040), 6);
    EXPECT_EQ(AfxCaptionMessageBox("c", "caption", 0), 6);
    EXPECT_EQ(app.m_shown, "b/16/0;/4160/0;c/0/0;");
}

TEST(MessageBox, GoesToStandardErrorWhereNothingBetterIsThere) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(zynMessageBoxConsole("text", 0x30), 1);
    {
        CWinApp plain;
        EXPECT_EQ(AfxCaptionMessageBox("boxed", "caption", 0x10), 1);
    }
    EXPECT_EQ(AfxCaptionMessageBox("text", "caption", 0x10), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "text\nboxed\ncaption: text\n");
}

} // namespace
