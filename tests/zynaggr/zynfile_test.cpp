// SPDX-License-Identifier: MIT
#include "support/host.h"
#include "zynaggr/zynfile.h"

constexpr std::uint64_t failed64 = ~std::uint64_t{0};

TEST(ZynFile, OpenFlagsActAsTheModeStringTheyMean) {
    const std::pair<unsigned, std::string> cases[] = {
        {0x0000, "rb"},  {0x0001, "ab"}, {0x0002, "r+b"}, {0x0003, "ab"},  {0x1000, "w+b"}, {0x1001, "wb"},
        {0x1002, "w+b"}, {0x1003, "wb"}, {0x3000, "a+b"}, {0x3041, "ab"},  {0x3002, "a+b"}, {0x2002, "r+b"},
        {0x4020, "rt"},  {0xC001, "at"}, {0x4002, "r+t"}, {0x5000, "w+t"}, {0x7002, "a+t"}, {0x8F80, "rb"},
    };
    for (const auto& [flags, mode] : cases) {
        SCOPED_TRACE(mode);
        const bool text = mode.back() == 't', update = mode[1] == '+';
        const TempFolder folder;
        CzynFile file;
        EXPECT_EQ(file.Open(folder.Path("new"), flags, nullptr), mode[0] != 'r');
        EXPECT_EQ(folder.Has("new"), mode[0] != 'r');
        folder.Write("f", "old\r\n\rx");
        ASSERT_EQ(file.Open(folder.Path("f"), flags, nullptr), 1);
        file.SeekToBegin();
        char bytes[20];
        std::string content = mode[0] == 'w' ? "" : "old\r\n\rx";
        const std::string seen = (mode[0] != 'r' && !update) || content.empty() ? ""
                                 : text                                         ? "old\n\rx"
                                                                                : content;
        EXPECT_EQ(std::string(bytes, file.Read(bytes, sizeof bytes)), seen);
        file.SeekToBegin();
        EXPECT_EQ(file.WriteString("W\n\nX"), mode[0] != 'r' || update);
        EXPECT_TRUE(file.Close());
        const std::string written = text ? "W\r\n\r\nX" : "W\n\nX";
        if (mode[0] != 'r' || update)
            content.replace(mode[0] == 'a' ? content.size() : 0, written.size(), written);
        EXPECT_EQ(folder.Read("f"), content);
    }
}

TEST(ZynFile, ShareBitsSayWhatOthersMayDo) {
    const TempFolder folder;
    const std::tuple<unsigned, bool, bool> cases[] = {
        {0, true, true}, {0x10, false, false}, {0x20, true, false}, {0x30, false, true}, {0x40, true, true}};
    for (const auto& [share, reads, writes] : cases)
        for (const unsigned access : {0u, 2u, 0x1001u}) {
            folder.Write("f", "old");
            CzynFile first, second;
            CFileException error;
            ASSERT_TRUE(first.Open(folder.Path("f"), share, nullptr));
            const bool allowed = (access == 0 || writes) && (access == 0x1001 || reads);
            EXPECT_EQ(second.Open(folder.Path("f"), access, &error), allowed) << share << ' ' << access;
            EXPECT_EQ(error.m_lOsError, allowed ? -1 : 32);
            EXPECT_EQ(folder.Read("f"), allowed && access == 0x1001 ? "" : "old");
            // What was open before is left behind only once that is decided.
            first.Open(folder.Path("f"), 0, nullptr);
            EXPECT_EQ(first.IsFileOpen(), reads && (share & 0x10) == 0);
        }
}

TEST(ZynFile, PositionsAndLengthsAreThoseOfTheFile) {
    const TempFolder folder;
    CzynFile file;
    ASSERT_TRUE(file.Open(folder.Path("f"), 0x1000, nullptr));
    EXPECT_TRUE(file.Write("0123456789", 10));
    const std::tuple<std::int64_t, unsigned, std::uint64_t, std::int64_t> seeks[] = {
        {4, 0, 4, 4}, {2, 1, 6, 6},         {-3, 1, 3, 3},         {-1, 2, 9, 9},
        {0, 7, 0, 9}, {-1, 0, failed64, 9}, {-11, 2, failed64, 9}, {5, 2, 15, 15}};
    for (const auto& [offset, from, result, position] : seeks) {
        EXPECT_EQ(file.Seek(offset, from), result);
        EXPECT_EQ(file.GetLength(), 10);
        EXPECT_EQ(file.GetPosition(), position) << offset << ' ' << from;
    }
    EXPECT_TRUE(file.SetLength(4) && file.SetLength(6));
    EXPECT_FALSE(file.SetLength(std::uint64_t{1} << 63));
    EXPECT_EQ(file.GetPosition(), 6);
    EXPECT_EQ(folder.Read("f"), std::string("0123\0\0", 6));
    char byte = 0;
    if (file.SetLength(std::uint64_t{5} << 30)) { // where files can be sparse
        EXPECT_TRUE(file.WriteString("far"));
        EXPECT_EQ(file.Seek(-2, 2), (std::uint64_t{5} << 30) + 1);
        EXPECT_EQ(file.Read(&byte, 1), 1u);
        EXPECT_EQ(byte, 'a');
    }
}

TEST(ZynFile, ClosedFileAndNullsAnswerFailure) {
    const TempFolder folder;
    CzynFile file;
    CFileException error;
    EXPECT_EQ(file.Open(folder.Path("none/f"), 0, &error), 0);
    EXPECT_TRUE(error.m_cause == CFileException::badPath && error.m_lOsError == 3);
    EXPECT_EQ(file.Open(nullptr, 0, &error) + file.Open(nullptr, 0, nullptr), 0);
    EXPECT_EQ(error.m_cause, CFileException::fileNotFound);
    EXPECT_STREQ(error.m_strFileName, folder.Path("none/f"));
    CStringA line("old");
    char byte = 'x';
    EXPECT_FALSE(file.Close() || file.Flush() || file.Write("x", 1) || file.WriteString("x"));
    EXPECT_FALSE(file.SetLength(0) || file.ReadString(line) || file.ReadString(&byte, 1));
    EXPECT_STREQ(line, "");
    EXPECT_EQ(file.Read(&byte, 1), 0xFFFFFFFF);
    EXPECT_EQ(file.Seek(0, 0) + file.SeekToEnd(), 0u);
    EXPECT_EQ(file.GetPosition() + file.GetLength(), -2);
    if (!file.Open("/dev/full", 1, nullptr)) GTEST_SKIP();
    EXPECT_EQ(file.Read(nullptr, 1), 0xFFFFFFFF);
    EXPECT_FALSE(file.Write(nullptr, 1) || file.WriteString(nullptr) || file.ReadString(nullptr, 9));
    EXPECT_FALSE(file.SetLength(1));
    for (const bool isFlushed : {true, false}) {
        EXPECT_TRUE(file.WriteString("lost") && (!isFlushed || file.Flush()));
        EXPECT_FALSE(file.Close() || file.IsFileOpen());
        EXPECT_TRUE(file.Open("/dev/full", 1, nullptr));
    }
    EXPECT_FALSE(file.WriteString(std::string(100'000, 'x').c_str()) || file.Close());
}

TEST(ZynFile, LinesOfAnyLengthArriveWhole) {
    const TempFolder folder;
    std::vector<std::string> lines = {"", std::string("z\0z", 3), "\r", "cr\r"};
    for (const unsigned length : {127u, 128u, 129u, 0u, 255u, 256u, 257u, 50'000u, 0u, 5u})
        lines.emplace_back(length, static_cast<char>('a' + lines.size()));
    std::string bytes;
    for (const std::string& line : lines)
        bytes += line + '\n';
    bytes.pop_back();
    folder.Write("f", bytes);
    CzynFile file;
    CStringA line("old");
    for (const unsigned flags : {0x4000u, 0u}) {
        ASSERT_TRUE(file.Open(folder.Path("f"), flags, nullptr));
        for (std::string expected : lines) {
            if (flags != 0 && expected.ends_with('\r')) expected.pop_back();
            EXPECT_TRUE(file.ReadString(line));
            EXPECT_TRUE(line.View() == expected) << expected.size() << ' ' << line.GetLength();
        }
        EXPECT_FALSE(file.ReadString(line));
        EXPECT_STREQ(line, "");
    }
    folder.Write("f", "abc\n\nabcd\nz");
    ASSERT_TRUE(file.Open(folder.Path("f"), 0, nullptr));
    char buffer[6];
    EXPECT_EQ(file.ReadString(buffer, 0), nullptr);
    EXPECT_STREQ(file.ReadString(buffer, 1), "");
    for (const char* expected : {"abc\n", "\n", "abcd", "\n", "z"})
        EXPECT_STREQ(file.ReadString(buffer, 5), expected);
    EXPECT_FALSE(file.ReadString(buffer, 5) || file.ReadString(buffer, 1));
}

TEST(ZynFile, CopiesShareTheStreamAndCloseItOnce) {
    const TempFolder folder;
    CzynFile file, other;
    ASSERT_TRUE(file.Open(folder.Path("f"), 0x1010, nullptr));
    {
        CzynFile copy(file), assigned;
        assigned = copy;
        EXPECT_TRUE(file.WriteString("one ") && copy.WriteString("two ") && assigned.WriteString("three"));
    }
    EXPECT_TRUE(file.IsFileOpen() && file.Flush());
    EXPECT_EQ(folder.Read("f"), "one two three");
    {
        CzynFile copy(file);
        EXPECT_TRUE(copy.Close());
        EXPECT_FALSE(file.IsFileOpen() || file.Close() || copy.Close());
        ASSERT_TRUE(other.Open(folder.Path("f"), 0x1010, nullptr)); // gets the handle's number
    }
    EXPECT_TRUE(other.WriteString("new") && other.Close());
    EXPECT_EQ(folder.Read("f"), "new");
}

TEST(ZynFileHelpers, NamesDecide) {
    const TempFolder folder;
    folder.Write("f", "x");
    const CStringA f = folder.Path("f"), g = folder.Path("g"), dir = folder.Path("папка");
    for (const char* empty : {static_cast<const char*>(nullptr), ""}) {
        EXPECT_FALSE(CzynFile::Rename(empty, g) || CzynFile::Rename(f, empty) || CzynFile::Remove(empty));
        EXPECT_FALSE(CzynFile::CreateFolder(empty) || CzynFile::IsFileExist(empty));
        EXPECT_FALSE(CzynFile::IsFileAttrAllowWrite(empty) || CzynFile::CreateBackupFile(empty, 1));
        EXPECT_FALSE(CzynFile::CopyFile(empty, g, false, false) || CzynFile::CopyFile(f, empty, false, true));
    }
    EXPECT_TRUE(CzynFile::CreateFolder(dir) && CzynFile::CreateFolder(dir) && folder.Has("папка"));
    EXPECT_FALSE(CzynFile::CreateFolder(folder.Path("none/below")) || CzynFile::Remove(dir));
    EXPECT_TRUE(CzynFile::IsFileExist(dir) && CzynFile::IsFileExist(f) && !CzynFile::IsFileExist(g));
    EXPECT_TRUE(CzynFile::IsFileAttrAllowWrite(f) && !CzynFile::IsFileAttrAllowWrite(g));
    EXPECT_FALSE(CzynFile::CreateBackupFile(g, 1) || folder.Has("g.bak.tmp") || folder.Has("g.bak"));
    EXPECT_TRUE(CzynFile::CopyFile(f, g, true, false) && !CzynFile::CopyFile(f, g, true, false));
    fs::create_symlink("/dev/full", folder.Native("full"));
    EXPECT_TRUE(!CzynFile::CopyFile(f, folder.Path("full"), false, false) && folder.Has("full"));
    EXPECT_TRUE(!CzynFile::Rename(f, g) && CzynFile::Remove(g) && CzynFile::Rename(f, g));
}

TEST(ZynFileHelpers, NormalizingReplacesWhatAFileNameMayNotHold) {
    std::string expected(256, '~');
    const std::string kept = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz !#'()+,-.^_`~";
    for (const char c : kept + "АБВГДЕЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯабвгдежзийклмнопрстуфхцчшщъыьэюяЁё№"_cp1251)
        expected[static_cast<unsigned char>(c)] = c;
    expected['"'] = '\'';
    expected['*'] = 'x';
    expected['?'] = expected['\\'] = expected['/'] = '_';
    CStringA name;
    for (int byte = 0; byte < 256; ++byte)
        name += static_cast<char>(byte);
    CzynFile::NormalizeFileName(name);
    EXPECT_EQ(name.View(), expected);
}

// What stands in the files whose names begin with "f.", by the rest of their names.
using Backups = std::map<std::string, std::string>;
static Backups BackupsIn(const TempFolder& folder) {
    Backups backups;
    for (const auto& entry : fs::directory_iterator(folder.Native()))
        if (const std::string name = entry.path().filename(); name.size() > 1 && entry.is_regular_file())
            backups[name.substr(2)] = folder.Read(name);
    return backups;
}

TEST(ZynFileHelpers, BackupsRotate) {
    const std::tuple<int, int, Backups, Backups> cases[] = {
        {1, 2, {}, {{"bak", "2"}}},
        {3, 5, {}, {{"bak", "5"}, {"01.bak", "4"}, {"02.bak", "3"}}},
        {0, 1, {{"bak", "b"}, {"01.bak", "a"}}, {{"bak", "1"}, {"01.bak", "a"}}},
        {3, 1, {{"bak", "b"}, {"02.bak", "old"}}, {{"bak", "1"}, {"01.bak", "b"}}},
        {3, 1, {{"01.bak", "a"}, {"bak.tmp", "rest"}}, {{"bak", "1"}, {"02.bak", "a"}}},
        {101, 1, {{"99.bak", "x"}, {"100.bak", "y"}}, {{"bak", "1"}, {"100.bak", "x"}}},
    };
    for (const auto& [count, runs, before, after] : cases) {
        const TempFolder folder;
        for (const auto& [suffix, content] : before)
            folder.Write("f." + suffix, content);
        for (int run = 1; run <= runs; ++run) {
            folder.Write("f", std::to_string(run));
            fs::permissions(folder.Native("f"), fs::perms{0606});
            EXPECT_TRUE(CzynFile::CreateBackupFile(folder.Path("f"), count));
        }
        EXPECT_EQ(BackupsIn(folder), after);
        EXPECT_EQ(folder.Read("f"), std::to_string(runs));
        EXPECT_EQ(fs::status(folder.Native("f.bak")).permissions(), fs::perms{0606});
    }
}

TEST(ZynFileHelpers, BackupGoesToTheTemporaryFolderWhenItsOwnRefuses) {
    const TempFolder folder, temporary;
    const Variable temp("TEMP", temporary.Native()), none("TMPDIR", {});
    fs::create_directory(folder.Native("f.bak.tmp"));
    temporary.Write("f.bak", "earlier");
    folder.Write("f", "now");
    EXPECT_TRUE(CzynFile::CreateBackupFile(folder.Path("f"), 3));
    EXPECT_TRUE(CzynFile::CreateBackupFile(folder.Native("f").c_str(), 3)); // its native name
    fs::create_directory(temporary.Native("f.bak.tmp"));
    EXPECT_FALSE(CzynFile::CreateBackupFile(folder.Path("f"), 3));
    temp.Set({}); // strangers write to what is left
    const std::string unique = folder.Native().filename();
    folder.Write(unique, "x");
    fs::create_directory(folder.Native(unique + ".bak.tmp"));
    EXPECT_TRUE(CzynFile::CreateBackupFile(folder.Path(unique), 1));
    EXPECT_EQ(fs::status("/tmp/" + unique + ".bak").permissions(), fs::perms{0600});
    EXPECT_TRUE(fs::remove("/tmp/" + unique + ".bak"));
    fs::remove(folder.Native(unique));
    EXPECT_EQ(BackupsIn(temporary), (Backups{{"bak", "now"}, {"01.bak", "now"}, {"02.bak", "earlier"}}));
    EXPECT_TRUE(BackupsIn(folder).empty());
}

TEST(ZynFileHelpers, CopyTakesTheRightsAlongOnlyWhenAskedAndWarnsWhenRefused) {
    const Host app(0);
    const TempFolder& folder = app.folder;
    const CStringA f = folder.Path("f");
    for (const char* name : {"", "f", "foreign"}) {
        if (*name) folder.Write(name, name);
        fs::permissions(folder.Native(name), fs::perms{0777});
    }
    const mode_t mask = umask(022);
    EXPECT_TRUE(CzynFile::CopyFile(f, folder.Path("plain"), true, false));
    EXPECT_TRUE(CzynFile::CopyFile(f, folder.Path("same"), true, true));
    umask(mask);
    EXPECT_EQ(fs::status(folder.Native("plain")).permissions(), fs::perms{0755});
    EXPECT_EQ(fs::status(folder.Native("same")).permissions(), fs::perms{0777});
    if (geteuid() != 0 || seteuid(65534) != 0) GTEST_SKIP() << "needs a file of another user";
    EXPECT_FALSE(CzynFile::CopyFile(f, folder.Path("foreign"), false, true));
    EXPECT_EQ(seteuid(0), 0);
    EXPECT_EQ(app.boxes, std::vector<std::string>{"48 SetNamedSecurityInfo Error {CzynFile::CopyFile}"});
    EXPECT_EQ(folder.Read("foreign"), "f"); // the copy stays
}
