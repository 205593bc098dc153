// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynplatform/console.h"

#include <cwchar>
#include <fcntl.h>

using namespace zynplatform;

// The variables that tell the encoding, for the time of a scope.
struct Locale {
    Locale(const char* first, const char* second, const char* third)
        : all("LC_ALL", first), type("LC_CTYPE", second), lang("LANG", third) {}
    Variable all, type, lang;
};

static void WriteInColours() {
    std::fputs("host", stdout);
    for (const unsigned attribute : {14u, 12u, 9u, 15u}) {
        SetTextAttribute(attribute);
        Write("я%s"_cp1251);
    }
    Flush();
}

TEST(Console, OnlyATerminalGetsColoursAndUnaskedItsEncoding) {
    const Locale locale("", "", "ru_RU.UTF-8");
    for (const bool encoded : {true, false}) {
        UseTerminalEncoding(encoded);
        testing::internal::CaptureStdout();
        WriteInColours();
        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  encoded ? "hostя%sя%sя%sя%s" : "host\xFF%s\xFF%s\xFF%s\xFF%s");
    }
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(master >= 0 && grantpt(master) == 0 && unlockpt(master) == 0);
    const int terminal = open(ptsname(master), O_RDWR | O_NOCTTY), saved = dup(1);
    dup2(terminal, 1);
    WriteInColours();
    dup2(saved, 1);
    std::string bytes(1024, 0);
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(0, read(master, bytes.data(), bytes.size()))));
    for (const int file : {saved, terminal, master})
        close(file);
    EXPECT_EQ(bytes, "host\x1b[93mя%s\x1b[91mя%s\x1b[94mя%s\x1b[0mя%s");
}

TEST(ConsoleDeathTest, FollowsAHostThatPrintsWideCharacters) {
    const auto print = [] {
        if (!std::freopen("/dev/null", "w", stdout)) std::_Exit(1); // a stream not used yet
        dup2(STDERR_FILENO, fileno(stdout));
        std::wprintf(L"1,");
        Write("2,");
        std::wprintf(L"3,");
        Write("4,");
        std::fwprintf(stderr, L"5,");
        ShowMessage("6", nullptr);
        std::_Exit(0);
    };
    EXPECT_EXIT(print(), testing::ExitedWithCode(0), "1,2,3,4,5,6\n");
}

TEST(Console, EncodingComesFromTheFirstVariableThatIsSet) {
    const std::array<const char*, 4> cases[] = {
        {"", "", "", "я"}, // the variables, and the bytes of a Cyrillic letter
        {"C", "", "ru_RU.KOI8-R", "я"},
        {"", "", "ru_RU.koi8-r", "\xD1"},
        {"", "ru_RU.CP866@x", "ru_RU.KOI8-R", "\xEF"},
        {"ru_RU.cp1251", "ru_RU.CP866", "", "\xFF"},
        {"", "", "ru_RU.CP866x", "я"},
        {"", "", "ru_RU.CP65533", "\xFF"}, // unknown to the system
    };
    for (const auto& [all, type, lang, letter] : cases) {
        const Locale locale(all, type, lang);
        const std::string text(300, *"я"_cp1251); // longer than what is converted at a time
        const std::string bytes = ToTerminal(text), last = bytes.substr(bytes.size() * 299 / 300);
        EXPECT_EQ(std::tuple(last, FromTerminal(bytes), TerminalToUtf8(Utf8ToTerminal("я"))),
                  std::tuple(letter, text, "я"))
            << all << '/' << type << '/' << lang;
    }
}
