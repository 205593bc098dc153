// SPDX-License-Identifier: MIT
#include "support/test.h"

TEST(Cp1251, LiteralsAreBytesOfTheCodePage) {
    EXPECT_STREQ("Ошибка"_cp1251, "\xCE\xF8\xE8\xE1\xEA\xE0");
    EXPECT_STREQ("[Ёё] № 1: «x» — €…\n"_cp1251, "[\xA8\xB8] \xB9 1: \xABx\xBB \x97 \x88\x85\n");
    EXPECT_STREQ(""_cp1251, "");
}

TEST(Cp1251, OnlyLatinAndRussianLettersAreFolded) {
    const std::string_view upper = "ABCDEFGHIJKLMNOPQRSTUVWXYZАБВГДЕЁЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯ"_cp1251;
    const std::string_view lower = "abcdefghijklmnopqrstuvwxyzабвгдеёжзийклмнопрстуфхцчшщъыьэюя"_cp1251;
    ASSERT_EQ(upper.size(), 26u + 33u);
    for (int i = 0; i < 256; ++i) {
        const char c = static_cast<char>(i);
        const auto inUpper = upper.find(c), inLower = lower.find(c);
        EXPECT_EQ(zynplatform::Cp1251Lower(c), inUpper == upper.npos ? c : lower[inUpper]) << i;
        EXPECT_EQ(zynplatform::Cp1251Upper(c), inLower == lower.npos ? c : upper[inLower]) << i;
    }
}
