// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynhost/cfile.h"

TEST(FileException, EverySystemErrorHasItsCause) {
    // The cause of each error from 0 on, as a hexadecimal digit; '-' is the generic one.
    std::string causes = "0-23452----65--37325aaaa9969-59-bc3-4-ed"
                         "------------3353-a5a6-8-55634-35--------"
                         "5-5--35-a------------------2c--3d46--a--"
                         "---333-----99-----------37--------3-----"
                         "-3-----c--5-----------65-------6-6------"
                         "------3-3-------------------------------"
                         "---------------------------3------------";
    causes.resize(1200, '-');
    causes.replace(995, 5, "aaa-5");
    constexpr std::string_view digits = "0-23456789abcde"; // in the order of the causes' numbers
    for (std::uint32_t error = 0; error < causes.size(); ++error)
        EXPECT_EQ(digits[CFileException::OsErrorToException(error)], causes[error]) << error;
}

TEST(FileException, MessageIsTheSystemsTextCutToTheRoom) {
    CFileException error;
    char text[256];
    const std::tuple<std::uint32_t, unsigned, const char*> cases[] = {
        {2, 256, "Файл не найден."_cp1251},
        {2, 5, "Файл"_cp1251},
        {999, 256, "999"}}; // the last without a text
    for (const auto& [code, room, shown] : cases) {
        error.SetOsError(code);
        EXPECT_TRUE(error.GetErrorMessage(text, room));
        EXPECT_STREQ(text, shown);
    }
    EXPECT_FALSE(error.GetErrorMessage(text, 0) || error.GetErrorMessage(nullptr, 10));
}
