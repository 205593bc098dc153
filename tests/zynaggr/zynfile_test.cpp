#include "zynaggr/zynfile.h"

#include "support/temp_folder.h"
#include "zynplatform/cp1251.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <vector>

using namespace zynplatform::literals;

namespace {

constexpr unsigned allOnes = ~0u;

TEST(ZynFileTest, FlagsDecideWhatMayBeDoneWithTheFile) {
    const struct {
        unsigned flags;
        bool makesMissing, reads;
        const char* afterWriting; // "xy" at position 0 of a file that held "12345"; null: not writable
    } cases[] = {
        {0x0000, false, true, nullptr},   // rb
        {0x4000, false, true, nullptr},   // rt
        {0x0002, false, true, "xy345"},   // r+b
        {0x4002, false, true, "xy345"},   // r+t
        {0x0001, true, false, "12345xy"}, // ab
        {0x0003, true, false, "12345xy"}, // ab
        {0x1000, true, true, "xy"},       // w+b
        {0x1002, true, true, "xy"},       // w+b
        {0x1001, true, false, "xy"},      // wb
        {0x3001, true, false, "12345xy"}, // ab
        {0x3002, true, true, "12345xy"},  // a+b
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.flags);
        const TempFolder folder;
        CzynFile missing, file;
        EXPECT_EQ(c.makesMissing ? 1 : 0, missing.Open(folder.Path("new"), c.flags, nullptr));
        EXPECT_EQ(c.makesMissing, folder.Has("new"));
        folder.Write("f", "12345");
        ASSERT_EQ(1, file.Open(folder.Path("f"), c.flags, nullptr));
        char byte = 0;
        const bool empties = (c.flags & 0x3000) == 0x1000;
        EXPECT_EQ(c.reads && !empties ? 1u : 0u, file.Read(&byte, 1));
        file.Seek(0, 0);
        EXPECT_EQ(c.afterWriting != nullptr, file.Write("xy", 2));
        EXPECT_TRUE(file.Close());
        EXPECT_EQ(c.afterWriting ? c.afterWriting : "12345", folder.Read("f"));
    }
}

TEST(ZynFileTest, ShareBitsDenyOthers) {
    const TempFolder folder;
    folder.Write("f", "x");
    const struct {
        unsigned share;
        bool othersRead, othersWrite;
    } cases[] = {{0x00, true, true},
                 {0x40, true, true},
                 {0x20, true, false},
                 {0x30, false, true},
                 {0x10, false, false}};
    for (const auto& c : cases) {
        CzynFile holder, reader, writer;
        ASSERT_EQ(1, holder.Open(folder.Path("f"), c.share, nullptr));
        CFileException error;
        EXPECT_EQ(c.othersRead, reader.Open(folder.Path("f"), 0, &error) == 1) << c.share;
        EXPECT_EQ(c.othersRead ? 0 : CFileException::sharingViolation, error.m_cause);
        EXPECT_EQ(c.othersWrite, writer.Open(folder.Path("f"), 1, nullptr) == 1) << c.share;
    }
}

TEST(ZynFileTest, FailedOpenFillsTheRecord) {
    const TempFolder folder;
    CzynFile file;
    CFileException error;
    EXPECT_EQ(0, file.Open(folder.Path("none"), 0, &error));
    EXPECT_EQ(CFileException::fileNotFound, error.m_cause);
    EXPECT_EQ(2, error.m_lOsError);
    EXPECT_STREQ(folder.Path("none"), error.m_strFileName);
    error.m_cause = 0;
    EXPECT_EQ(0, file.Open(nullptr, 0, &error));
    EXPECT_EQ(CFileException::fileNotFound, error.m_cause);
    EXPECT_STREQ(folder.Path("none"), error.m_strFileName);
    EXPECT_EQ(0, file.Open(folder.Path(), 1, &error)); // a folder
    EXPECT_EQ(CFileException::accessDenied, error.m_cause);
}

TEST(ZynFileTest, ClosedFileAndNullsGiveTheirResults) {
    CzynFile file;
    char buffer[4];
    CStringA line("old");
    EXPECT_FALSE(file.Close() || file.Flush() || file.IsFileOpen() || file.SetLength(0));
    EXPECT_EQ(allOnes, file.Read(buffer, 1));
    EXPECT_FALSE(file.Write("x", 1));
    EXPECT_EQ(0u, file.Seek(0, 0));
    EXPECT_EQ(-1, file.GetPosition());
    EXPECT_EQ(-1, file.GetLength());
    EXPECT_EQ(nullptr, file.ReadString(buffer, 4));
    EXPECT_FALSE(file.ReadString(line));
    EXPECT_STREQ("", line);
    const TempFolder folder;
    ASSERT_EQ(1, file.Open(folder.Path("f"), 0x1002, nullptr));
    EXPECT_EQ(allOnes, file.Read(nullptr, 1));
    EXPECT_FALSE(file.Write(nullptr, 1) || file.WriteString(nullptr) || file.SetLength(1ull << 63));
    EXPECT_TRUE(file.WriteString("abc"));
    EXPECT_EQ(0u, file.Seek(0, 7));
    EXPECT_EQ(~0ull, file.Seek(-9, 1));
    EXPECT_EQ(3, file.GetPosition());
    EXPECT_EQ(3u, file.SeekToEnd());
    EXPECT_TRUE(file.SetLength((5ull << 30) + 1)); // beyond 4 GiB
    EXPECT_EQ((5ll << 30) + 1, file.GetLength());
    EXPECT_EQ((5ull << 30) - 1, file.Seek(-2, 2));
    EXPECT_EQ(2u, file.Read(buffer, 4));
}

TEST(ZynFileTest, LinesArriveWhole) {
    const TempFolder folder;
    const std::string lines[] = {"",
                                 "a",
                                 "with\r",
                                 std::string(127, 'b'),
                                 std::string(128, 'c'),
                                 std::string(129, 'd'),
                                 std::string(40'000, 'e'),
                                 std::string("z\0z", 3),
                                 "last"};
    std::string text;
    for (const std::string& line : lines)
        text += line + "\n";
    text.pop_back();
    folder.Write("f", text);
    CzynFile file;
    ASSERT_EQ(1, file.Open(folder.Path("f"), 0x20, nullptr));
    CStringA line;
    for (const std::string& expected : lines) {
        EXPECT_TRUE(file.ReadString(line));
        EXPECT_EQ(expected, line.View());
    }
    EXPECT_FALSE(file.ReadString(line));
    file.SeekToBegin();
    char buffer[100];
    EXPECT_STREQ("\n", file.ReadString(buffer, 100));
    EXPECT_STREQ("a", file.ReadString(buffer, 2));
    EXPECT_STREQ("\n", file.ReadString(buffer, 2));
}

TEST(ZynFileTest, CopiesShareTheStream) {
    const TempFolder folder;
    folder.Write("f", "abc");
    CzynFile copy;
    {
        CzynFile file;
        ASSERT_EQ(1, file.Open(folder.Path("f"), 0x0010, nullptr));
        copy = file;
        char byte;
        file.Read(&byte, 1);
    }
    EXPECT_EQ(1, copy.GetPosition());
    CzynFile second(copy);
    EXPECT_TRUE(copy.Close());
    EXPECT_FALSE(second.IsFileOpen());
    EXPECT_FALSE(second.Close());
}

TEST(ZynFileTest, BackupsRotate) {
    const TempFolder folder;
    const auto backup = [&](const char* text, int count) {
        folder.Write("f.ini", text);
        EXPECT_TRUE(CzynFile::CreateBackupFile(folder.Path("f.ini"), count));
        EXPECT_EQ(text, folder.Read("f.ini"));
        EXPECT_FALSE(folder.Has("f.ini.bak.tmp"));
    };
    EXPECT_FALSE(CzynFile::CreateBackupFile(folder.Path("f.ini"), 1));
    EXPECT_FALSE(folder.Has("f.ini.bak"));
    for (const char* text : {"1", "2", "3", "4", "5"})
        backup(text, 3);
    EXPECT_EQ("543", folder.Read("f.ini.bak") + folder.Read("f.ini.01.bak") + folder.Read("f.ini.02.bak"));
    EXPECT_FALSE(folder.Has("f.ini.03.bak"));
    CzynFile::Remove(folder.Path("f.ini.01.bak")); // a gap does not stop the rotation
    backup("6", 3);
    EXPECT_EQ("65", folder.Read("f.ini.bak") + folder.Read("f.ini.01.bak"));
    EXPECT_FALSE(folder.Has("f.ini.02.bak"));
    backup("7", 0); // counts as 1
    EXPECT_EQ("75", folder.Read("f.ini.bak") + folder.Read("f.ini.01.bak"));
}

TEST(ZynFileTest, BackupGoesToTheTemporaryFolderWhereTheFileCannotHaveOne) {
    const TempFolder folder, temporary;
    folder.Write("f.ini", "text");
    std::filesystem::create_directory(folder.Native("f.ini.bak.tmp"));
    setenv("TEMP", temporary.Native().c_str(), 1);
    EXPECT_TRUE(CzynFile::CreateBackupFile(folder.Native("f.ini").c_str(), 1)); // by its native name
    unsetenv("TEMP");
    EXPECT_EQ("text", temporary.Read("f.ini.bak"));
    EXPECT_FALSE(folder.Has("f.ini.bak"));
}

TEST(ZynFileTest, HelpersRefuseNullAndEmptyNames) {
    for (const char* name : {static_cast<const char*>(nullptr), ""}) {
        EXPECT_FALSE(CzynFile::Rename(name, "x") || CzynFile::Rename("x", name) || CzynFile::Remove(name));
        EXPECT_FALSE(CzynFile::CreateFolder(name) || CzynFile::IsFileExist(name) ||
                     CzynFile::IsFileAttrAllowWrite(name));
        EXPECT_FALSE(CzynFile::CopyFile(name, "x", false, false) || CzynFile::CreateBackupFile(name, 1));
    }
    const TempFolder folder;
    EXPECT_TRUE(CzynFile::CreateFolder(folder.Path("d")));
    EXPECT_TRUE(CzynFile::CreateFolder(folder.Path("d")));
    EXPECT_FALSE(CzynFile::CreateFolder(folder.Path("none") + "\\d"));
    EXPECT_TRUE(CzynFile::IsFileExist(folder.Path("d")));
    EXPECT_FALSE(CzynFile::Remove(folder.Path("d")));
}

TEST(ZynFileTest, NormalizeFileNameKeepsOnlyWhatANameMayHold) {
    const std::string kept =
        "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz -+_().,^~#!`'\xA8\xB8\xB9";
    for (int c = 1; c < 256; ++c) {
        const char byte = static_cast<char>(c);
        CStringA name(byte);
        CzynFile::NormalizeFileName(name);
        const char expected = c >= 0xC0 || kept.find(byte) != kept.npos    ? byte
                              : byte == '"'                                ? '\''
                              : byte == '*'                                ? 'x'
                              : byte == '?' || byte == '/' || byte == '\\' ? '_'
                                                                           : '~';
        EXPECT_EQ(CStringA(expected), name) << c;
    }
    CStringA report("Отчёт №1.txt"_cp1251);
    CzynFile::NormalizeFileName(report);
    EXPECT_STREQ("Отчёт №1.txt"_cp1251, report);
}

TEST(CFileExceptionTest, CausesOfSystemErrors) {
    const std::vector<std::uint32_t> codes[] = {
        {0},
        {1, 7, 31, 998, 5000, 0xFFFFFFFF},
        {2, 6, 18, 107},
        {3, 15, 17, 34, 52, 53, 55, 67, 70, 85, 111, 123, 124, 125, 144, 154, 161, 206, 208, 267},
        {4, 36, 68, 113},
        {5, 12, 19, 29, 54, 58, 64, 65, 71, 80, 82, 86, 170, 183, 999},
        {11, 26, 60, 66, 114, 182, 191, 193},
        {16, 145},
        {62},
        {24, 25, 27, 30, 131, 132},
        {20, 21, 22, 23, 57, 59, 88, 117, 995, 996, 997},
        {32},
        {33, 108, 167},
        {39, 112},
        {38}};
    for (int cause = 0; cause < 15; ++cause)
        for (const std::uint32_t code : codes[cause])
            EXPECT_EQ(cause, CFileException::OsErrorToException(code)) << code;
}

} // namespace
