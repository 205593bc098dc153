#include "zynplatform/console.h"

#include "zynplatform/cp1251.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

using namespace zynplatform;
using namespace zynplatform::literals;

namespace {

void SetLocale(const char* all, const char* type, const char* lang) {
    setenv("LC_ALL", all, 1);
    setenv("LC_CTYPE", type, 1);
    setenv("LANG", lang, 1);
}

void WriteInColours() {
    std::fputs("host", stdout);
    for (const unsigned attribute : {14u, 12u, 9u, 15u}) {
        SetTextAttribute(attribute);
        Write("я%s"_cp1251);
    }
    Flush();
}

// What the function writes to standard output when that is a terminal.
std::string OnTerminal(void (*function)()) {
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    EXPECT_TRUE(master >= 0 && grantpt(master) == 0 && unlockpt(master) == 0);
    const int terminal = open(ptsname(master), O_RDWR | O_NOCTTY);
    std::fflush(stdout);
    const int saved = dup(1);
    dup2(terminal, 1);
    function();
    dup2(saved, 1);
    char bytes[1024];
    const ssize_t length = read(master, bytes, sizeof(bytes));
    for (const int file : {saved, terminal, master})
        close(file);
    return std::string(bytes, length > 0 ? static_cast<std::size_t>(length) : 0);
}

TEST(Console, OnlyATerminalGetsColoursAndUnaskedItsEncoding) {
    SetLocale("", "", "ru_RU.UTF-8");
    testing::internal::CaptureStdout();
    WriteInColours();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "host\xFF%s\xFF%s\xFF%s\xFF%s");
    UseTerminalEncoding(true);
    testing::internal::CaptureStdout();
    WriteInColours();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "hostя%sя%sя%sя%s");
    UseTerminalEncoding(false);
    EXPECT_EQ(OnTerminal(WriteInColours), "host\x1b[93mя%s\x1b[91mя%s\x1b[94mя%s\x1b[0mя%s");
}

TEST(Console, EncodingComesFromTheFirstVariableThatIsSet) {
    const struct {
        const char *all, *type, *lang, *bytes; // of a Cyrillic letter
    } cases[] = {
        {"", "", "", "я"},
        {"C", "", "ru_RU.KOI8-R", "я"},
        {"", "", "ru_RU.koi8-r", "\xD1"},
        {"", "ru_RU.CP866@x", "ru_RU.KOI8-R", "\xEF"},
        {"ru_RU.cp1251", "ru_RU.CP866", "", "\xFF"},
        {"", "", "ru_RU.CP866x", "я"},
        {"", "", "ru_RU.CP65533", "\xFF"}, // unknown to the system
    };
    for (const auto& c : cases) {
        SetLocale(c.all, c.type, c.lang);
        SCOPED_TRACE(testing::Message() << c.all << '/' << c.type << '/' << c.lang);
        const std::string text(300, *"я"_cp1251); // longer than what is converted at a time
        const std::string bytes = ToTerminal(text);
        EXPECT_EQ(bytes.substr(bytes.size() * 299 / 300), c.bytes);
        EXPECT_EQ(FromTerminal(bytes), text);
    }
}

} // namespace
