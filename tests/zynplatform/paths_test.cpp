#include "zynplatform/paths.h"

#include "zynplatform/cp1251.h"
#include "zynplatform/environment.h"

#include <cstdlib>
#include <gtest/gtest.h>

using namespace zynplatform;

namespace {

TEST(PathsTest, NamesAreTranslatedBothWays) {
    const struct {
        const char* native;
        const char* library;
    } cases[] = {
        {"", ""},
        {"a/b.ini", "a\\b.ini"},
        {"/home/Вася/Отчёт №1.ini", "\\home\\Вася\\Отчёт №1.ini"_cp1251},
        {"caf\xC3\xA9", "caf\x98"
                        "C3\x98"
                        "A9"}, // no such letter in the code page
        {"bad\xFF\xD0", "bad\x98"
                        "FF\x98"
                        "D0"},
        {"a\\b", "a\x98"
                 "5Cb"},
        {"\xC2\x98", "\x98"
                     "C2\x98"
                     "98"},
        {"\xF0\x9F\x98\x80", "\x98"
                             "F0\x98"
                             "9F\x98"
                             "98\x98"
                             "80"},
        {"\xE0\x81\x81", "\x98"
                         "E0\x98"
                         "81\x98"
                         "81"}, // overlong
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.library, FromNativePath(c.native));
        EXPECT_EQ(c.native, ToNativePath(c.library));
    }
    EXPECT_EQ("/etc/app\\.ini", ToNativePath("/etc/app\\.ini")); // native already
    EXPECT_EQ("\\etc\\app.ini", ToLibraryPath("/etc/app.ini"));
    EXPECT_EQ("etc/app.ini", ToLibraryPath("etc/app.ini"));
}

TEST(PathsTest, EnvironmentIsAnsweredWithTheVariablesOfThisSystem) {
    const struct {
        const char* asked;
        const char* set;
        const char* value;
        const char* answer;
    } cases[] = {
        {"ZYN_TEST_DIR", "ZYN_TEST_DIR", "/opt/x", "\\opt\\x"},
        {"ZYN_TEST_DIR", "ZYN_TEST_DIR", "C:\\dir", "C:\\dir"},
        {"ZYN_TEST_DIR", "ZYN_TEST_DIR", "", ""},
        {"USERPROFILE", "HOME", "/home/u", "\\home\\u"},
        {"TEMP", "TMPDIR", "/var/tmp", "\\var\\tmp"},
        {"SystemRoot", "HOME", "/home/u", ""}, // only with itself
    };
    for (const auto& c : cases) {
        const char* before = std::getenv(c.set);
        const std::string kept = before ? before : "";
        setenv(c.set, c.value, 1);
        std::string value = "old";
        EXPECT_EQ(*c.answer != 0, GetEnvironmentPath(c.asked, value)) << c.asked;
        EXPECT_EQ(c.answer, value);
        before ? setenv(c.set, kept.c_str(), 1) : unsetenv(c.set);
    }
}

} // namespace
