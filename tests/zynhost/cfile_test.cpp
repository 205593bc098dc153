#include "zynhost/cfile.h"

#include "support/temp_folder.h"
#include "zynplatform/cp1251.h"

#include <gtest/gtest.h>

using namespace zynplatform::literals;

namespace {

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
    error.SetOsError(2);
    char text[256];
    EXPECT_TRUE(error.GetErrorMessage(text, sizeof text));
    EXPECT_STREQ(text, "Файл не найден."_cp1251);
    EXPECT_TRUE(error.GetErrorMessage(text, 5));
    EXPECT_STREQ(text, "Файл"_cp1251);
    EXPECT_FALSE(error.GetErrorMessage(text, 0) || error.GetErrorMessage(nullptr, 10));
    error.SetOsError(999); // without a text
    EXPECT_TRUE(error.GetErrorMessage(text, sizeof text));
    EXPECT_STREQ(text, "999");
}

TEST(HostFile, ShareBitsSayWhatOthersMayDoAndNoneMeansExclusive) {
    const TempFolder folder;
    folder.Write("f", "x");
    const struct {
        unsigned share;
        bool reads, writes; // what others may do
    } cases[] = {{0, false, false},
                 {0x10, false, false},
                 {0x20, true, false},
                 {0x30, false, true},
                 {0x40, true, true}};
    for (const auto& c : cases) {
        CFile first, second;
        ASSERT_TRUE(first.Open(folder.Path("f"), c.share, nullptr));
        for (const unsigned access : {CFile::modeRead, CFile::modeWrite, CFile::modeReadWrite}) {
            const bool allowed =
                (access == CFile::modeWrite || c.reads) && (access == CFile::modeRead || c.writes);
            CFileException error;
            EXPECT_EQ(second.Open(folder.Path("f"), access | CFile::shareDenyNone, &error), allowed)
                << c.share << ' ' << access;
            EXPECT_EQ(error.m_lOsError, allowed ? 0 : 32);
            EXPECT_EQ(error.m_cause, allowed ? CFileException::none : CFileException::sharingViolation);
            second.Close();
        }
    }
}

TEST(HostFile, OpeningClosesTheEarlierFileAlsoWhenItFails) {
    const TempFolder folder;
    folder.Write("f", "old content");
    CFile file;
    CFileException error;
    ASSERT_TRUE(file.Open(folder.Path("f"), CFile::modeWrite, nullptr)); // empties nothing
    EXPECT_EQ(file.GetLength(), 11);
    ASSERT_TRUE(file.Open(folder.Path("f"), CFile::modeCreate | CFile::modeReadWrite, nullptr));
    EXPECT_TRUE(file.Write("abc", 3) && file.SetLength(5) && file.SeekToBegin());
    char bytes[10];
    EXPECT_EQ(file.Read(bytes, sizeof bytes), 5u);
    EXPECT_EQ(folder.Read("f"), std::string("abc\0\0", 5));
    EXPECT_EQ(file.Open(folder.Path("none"), CFile::modeRead, &error), 0);
    EXPECT_EQ(error.m_cause, CFileException::fileNotFound);
    EXPECT_STREQ(error.m_strFileName, folder.Path("none"));
    EXPECT_EQ(file.m_hFile, CFile::hFileNull);
    EXPECT_FALSE(file.Close() || file.SetLength(0) || file.SeekToBegin() || file.Write("x", 1));
    EXPECT_EQ(file.GetLength(), -1);
    EXPECT_EQ(file.Read(bytes, 1), 0u);
    EXPECT_EQ(file.Open(nullptr, CFile::modeRead, nullptr), 0);
}

} // namespace
