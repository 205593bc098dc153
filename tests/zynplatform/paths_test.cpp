// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynplatform/environment.h"
#include "zynplatform/paths.h"

using namespace zynplatform;

TEST(PathsTest, NamesAreTranslatedBothWays) {
    const std::pair<const char*, std::string> cases[] = {
        // "~" stands for the byte that begins an escape.
        {"", ""},
        {"a/b.ini", "a\\b.ini"},
        {"/home/Вася/Отчёт №1.ini", "\\home\\Вася\\Отчёт №1.ini"_cp1251},
        {"caf\xC3\xA9", "caf~C3~A9"}, // no such letter in the code page
        {"bad\xFF\xD0", "bad~FF~D0"},
        {"/a\\b", "\\a~5Cb"},
        {"\xC2\x98", "~C2~98"},
        {"\xF0\x9F\x98\x80", "~F0~9F~98~80"},
        {"\xE0\x81\x81", "~E0~81~81"}, // overlong
    };
    for (auto [native, library] : cases) {
        std::replace(library.begin(), library.end(), '~', '\x98');
        EXPECT_EQ(library, FromNativePath(native));
        EXPECT_EQ(native, ToNativePath(library));
    }
    EXPECT_EQ("/etc/app\\.ini", ToNativePath("/etc/app\\.ini")); // native already
    EXPECT_EQ("\\etc\\app.ini", ToLibraryPath("/etc/app.ini"));
    EXPECT_EQ("etc\\app.ini", ToLibraryPath("etc/app.ini"));
    EXPECT_EQ("a\\b/c", ToLibraryPath("a\\b/c")); // a backslash makes it the library's
}

TEST(PathsTest, EnvironmentIsAnsweredWithTheVariablesOfThisSystem) {
    const std::array<const char*, 4> cases[] = {
        {"ZYN_TEST_DIR", "ZYN_TEST_DIR", "/opt/x", "\\opt\\x"},
        {"ZYN_TEST_DIR", "ZYN_TEST_DIR", "C:\\dir", "C:\\dir"},
        {"ZYN_TEST_DIR", "ZYN_TEST_DIR", "", ""},
        {"USERPROFILE", "HOME", "/home/u", "\\home\\u"},
        {"TEMP", "TMPDIR", "/var/tmp", "\\var\\tmp"},
        {"SystemRoot", "HOME", "/home/u", ""}, // only with itself
    };
    for (const auto& [asked, set, value, answer] : cases) {
        const Variable variable(set, value);
        std::string found = "old";
        EXPECT_EQ(*answer != 0, GetEnvironmentPath(asked, found)) << asked;
        EXPECT_EQ(answer, found);
    }
}
