// SPDX-License-Identifier: MIT
#include "support/encodings.h"
#include "support/ini_model.h"
#include "support/ini_reference.h"
#include "zynaggr/zynmessage.h"

#include <sys/inotify.h>

using IniSaveTest = IniFileTest;

TEST_F(IniSaveTest, ModelAndLayoutFollowTheRulesWhateverWasRead) {
    // clang-format off
    const std::string pieces[] = {
        "\n", "\n", "\n", "\n", "[a]", "[b] ;", "[", "]", "]", "=", "=", "x", "\0"s, " ", "\t", "\r", ";", "#", "\xC8", "-", "0", "1",
        "1=", "2=a\n", "10=b\n", "-10=c\n", "-4294967296=d\n", "4294967295=e\n"}; // numbers from the 22nd on
    // clang-format on
    std::mt19937 random(5);
    for (int round = 0; round < 100'000; ++round) {
        std::string text;
        const std::size_t first = round % 100 == 0 ? 22 : 0;
        for (std::size_t count = random() % (7 * first + 24); count > 0; --count)
            text += pieces[first + random() % (std::size(pieces) - first)];
        OpenIni read;
        EXPECT_TRUE(read.ParseText(text));
        IniReference rules(text);
        ASSERT_EQ(rules.Model(), read.Model(true)) << testing::PrintToString(text);
        ASSERT_EQ(rules.Text(), read.ComposeText().View()) << testing::PrintToString(text);
    }
}

TEST_F(IniSaveTest, NewFileIsMadeInTheCodePageWithAnEmptyBackup) {
    EXPECT_TRUE(ini.WriteString("с"_cp1251, "k", "v", nullptr));
    EXPECT_EQ("[\xF1]\r\nk=v\r\n", File());
    EXPECT_TRUE(folder.Has("f.ini.bak") && Backup().empty() && !folder.Has("f.ini.01.bak"));
    OpenIni nameless;
    EXPECT_FALSE(nameless.InternalSave());
    EXPECT_EQ(readOnlyText, nameless.GetErrDescription());
}

TEST_F(IniSaveTest, FailedSavesTellWhyAndAreMadeGoodLater) {
    const std::tuple<std::optional<zynplatform::OpenMode>, CStringA, std::string> cases[] = {
        {{{.deny = zynplatform::accessWrite}}, readOnlyText, "<s|>{k:3}"},    // refuses numbers at once
        {{{.access = zynplatform::accessRead}}, openFailedText, "<s|>{k:4}"}, // passes the write check
        {{}, "Ошибка при записи файла ini: Недостаточно места на диске."_cp1251, "<s|>{k:4}"},
    };
    for (const auto& [mode, error, model] : cases) {
        Load("[s]\nk=1\n");
        ini.SetWriteMode(false);
        EXPECT_TRUE(ini.WriteString("s", "k", "2", nullptr));
        std::optional<OtherHandle> other;
        std::optional<FullDisk> full;
        mode ? void(other.emplace(folder.Path("f.ini"), *mode)) : void(full.emplace(1));
        EXPECT_FALSE(ini.Flush());
        EXPECT_EQ(error, ini.GetErrDescription());
        EXPECT_TRUE(ini.m_bWriteMode);
        EXPECT_FALSE(ini.WriteString("s", "k", "3", nullptr) || ini.WriteInt("s", "k", 4, nullptr));
        EXPECT_EQ(model, ini.Model());
        EXPECT_TRUE(!ini.Delete("s", "k") && ini.Delete("none", "k")); // where there is nothing to save
        EXPECT_EQ("d", ini.GetString("s", "new", "d", true));          // the save's result does not count
        ini.RenameGroupe("s", "t");
        ini.SetWriteMode(false);
        EXPECT_TRUE(ini.WriteString("t", "k", "5", nullptr) && ini.Delete("t", "none"));
        EXPECT_EQ(error != readOnlyText, ini.WriteInt("t", "k", 5, nullptr));
        ini.m_sErr.Empty();
        ini.SetWriteMode(true);
        EXPECT_EQ(error, ini.GetErrDescription());
        EXPECT_TRUE(ini.m_bWriteMode);
        EXPECT_EQ("[s]\nk=1\n", File());
        other.reset();
        full.reset();
        EXPECT_TRUE(ini.WriteInt("t", "k", 6, nullptr));
        EXPECT_EQ("", ini.GetErrDescription());
        EXPECT_EQ(";"s + "Группа опций [t] была переименована. Старое название группы [s]"_cp1251 +
                      "\r\n[t]\r\nnew=d\r\nk=6\r\n",
                  File());
    }
}

TEST_F(IniSaveTest, NothingIsSavedOverWhatCouldNotBeRead) {
    const std::tuple<std::string, std::uintmax_t, bool> cases[] = {{"\xFF\xFE\0\0a\0"s, 6, true},
                                                                   {"[s]\nk=1\n", 1u << 30, false}};
    for (const auto& [bytes, size, isLoaded] : cases) { // a hole behind the bytes; as an empty file
        Load("\xEF\xBB\xBF[s]\r\nk=0\r\n");
        folder.Write("f.ini", bytes);
        fs::resize_file(folder.Native("f.ini"), size);
        ini.SetNeedReload();
        EXPECT_EQ(isLoaded, ini.Parse());
        EXPECT_EQ(isLoaded ? "" : "<s|>{k:0}", ini.Model());
        EXPECT_EQ(zynEncUTF8, ini.m_nEncoding);
        EXPECT_EQ("d", ini.GetString("s", "k", "d", true));
        for (const bool deferred : {false, true}) {
            ini.SetWriteMode(!deferred);
            EXPECT_FALSE(ini.WriteString("s", "k", "2", nullptr) && ini.Flush());
            EXPECT_FALSE(ini.GetErrDescription().IsEmpty());
        }
        ini.SetWriteMode(true);
        EXPECT_TRUE(fs::file_size(folder.Native("f.ini")) == size && !folder.Has("f.ini.new"));
        Load("[s]\r\nk=1\r\n");
        EXPECT_TRUE(ini.WriteString("s", "l", "2", nullptr));
        EXPECT_EQ("[s]\r\nk=1\r\nl=2\r\n", File());
    }
}

TEST_F(IniSaveTest, EditsComeToStandOnAModelThatWasLoadedOrNowhere) {
    Load("[s]\r\nk=1\r\n");
    folder.Write("f.ini", "[s]\r\nk=2\r\n");
    clock.Pass(1001);
    for (const bool isDirect : {true, false, false}) {
        const OtherHandle other(folder.Path("f.ini"), {.deny = zynplatform::accessRead});
        ini.SetWriteMode(isDirect);
        EXPECT_FALSE(ini.WriteString("s", "l", "3", nullptr));
        EXPECT_EQ(openFailedText, ini.GetErrDescription());
        EXPECT_EQ("<s|>{k:1}", ini.Model());
    }
    EXPECT_EQ(2, ini.GetInt("s", "k", 0, false)); // tried again at once
    EXPECT_EQ("", ini.GetErrDescription());
    EXPECT_TRUE(ini.WriteString("s", "l", "3", nullptr) && ini.Flush());
    EXPECT_EQ("[s]\r\nk=2\r\nl=3\r\n", File());

    zynplatform::SetTickSource([] { return 5u; }); // the system has just started
    OpenIni early(folder.Path("f.ini"));
    EXPECT_TRUE(early.WriteString("s", "l", "5", nullptr));
    EXPECT_EQ("[s]\r\nk=2\r\nl=5\r\n", File());
    folder.Write("f.ini", "[s]\r\nk=6\r\n");
    early.SetNeedReload();
    EXPECT_EQ(6, early.GetInt("s", "k", 0, false));
}

TEST_F(IniSaveTest, QueriesDoNotOpenTheFileForWriting) {
    Load("[s]\r\nk=1\r\n");
    const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(inotify_add_watch(watch, folder.Native("f.ini").c_str(), IN_CLOSE_WRITE), 0);
    ini.SetNeedReload();
    EXPECT_EQ(1, ini.GetInt("s", "k", 0, false));
    char event[1000];
    EXPECT_EQ(-1, read(watch, event, sizeof event));
    close(watch);
}

TEST_F(IniSaveTest, PathsAreExpandedFromTheFilesFolder) {
    // clang-format off
    enum { silent, notice, noPath, noParentPath, atRoot };
    const char* const messages[] = {
        "",
        "Путь из ini '%s' заменен полным путем '%s'"_cp1251,
        "Отсутствует полный путь к ini, преобразование путей из ini не выполнено!"_cp1251,
        "Отсутствует полный путь к ini; преобразование путя '%s' из ini не выполнено!"_cp1251,
        "Полный путь к ini начинается от корня файловой системы; преобразование путя '%s' из ini не выполнено!"_cp1251,
    };
    const std::tuple<const char*, const char*, const char*, int> cases[] = {
        {R"(\a\b\f.ini)", R"(.\x\y)", R"(\a\b\x\y)", notice},  {R"(\a\b\f.ini)", R"(.\)", R"(\a\b\)", notice},
        {R"(\a\b\f.ini)", R"(..\x)", R"(\a\x)", notice},       {R"(\a\b\f.ini)", R"(..\..\x)", R"(\a\..\x)", notice},
        {R"(\f.ini)", R"(.\x)", R"(\x)", notice},               {R"(\f.ini)", "..\\x ", R"(..\x)", atRoot},
        {R"(c:\f.ini)", R"(.\x)", R"(c:\x)", notice},           {R"(c:\f.ini)", R"(..\x)", R"(..\x)", atRoot},
        {"f.ini", R"(.\x)", R"(.\x)", noPath},                  {"f.ini", R"(..\x)", R"(..\x)", noParentPath},
        {R"(\a\f.ini)", "./x", "./x", silent},                  {R"(\a\f.ini)", R"( .\x)", R"( .\x)", silent},
        {R"(\a\f.ini)", R"(...\x)", R"(...\x)", silent},        {R"(\a\f.ini)", "..", "..", silent},
        {R"(\a\f.ini)", R"(""c:\d e"" )", R"(c:\d e)", silent}, {R"(\a\f.ini)", R"("half)", R"("half)", silent},
        {R"(\a\f.ini)", R"(")", "", silent},                    {R"(\a\f.ini)", R"(half")", R"(half")", silent},
        {R"(\a\f.ini)", " \t", "", silent},                     {R"(\a\f.ini)", R"(.\100%s)", R"(\a\100%s)", notice},
    };
    // clang-format on
    for (const bool print : {true, false})
        for (const auto& [name, path, expanded, kind] : cases) {
            ini.m_sIniName = name;
            ini.m_bPrintInfo = print;
            ini.m_sErr = "old";
            g_bShow_zynMessageBox_Warning = print; // a warning is shown either way
            testing::internal::CaptureStdout();
            EXPECT_EQ(expanded, ini.ExpandPath(path)) << name << " " << path;
            EXPECT_EQ(print, g_bShow_zynMessageBox_Warning);
            CStringA message;
            message.Format(messages[kind], path, expanded);
            const bool warned = kind > notice, noticed = kind == notice;
            const std::string shown = (warned ? "\n\nzyn Warning: "s : "\n\n"s) + message.GetString();
            EXPECT_EQ(warned || (noticed && print) ? shown : "", testing::internal::GetCapturedStdout());
            EXPECT_EQ(warned || (noticed && !print) ? "old\n" + message : CStringA("old"), ini.m_sErr);
        }
    g_bShow_zynMessageBox_Warning = true;
}
