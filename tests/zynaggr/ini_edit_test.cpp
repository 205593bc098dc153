#include "support/failing_new.h"
#include "support/ini_model.h"
#include "support/temp_folder.h"
#include "zynhost/application.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/file.h"

#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <vector>

using namespace zynplatform::literals;

namespace {

using Edit = std::function<void(OpenIni&)>;

struct IniEditTest : testing::Test {
    IniEditTest() { ini.SetINI(folder.Path("f.ini"), false, 0); }

    // Has the object work on a new text.
    void Load(std::string_view text) {
        folder.Write("f.ini", text);
        ini.SetNeedReload();
        EXPECT_TRUE(ini.Parse());
    }
    std::string File() const { return folder.Read("f.ini"); }

    StandingClock clock;
    TempFolder folder;
    OpenIni ini;
};

// Nobody may write the file while this lives, and a write check finds it read-only.
class ReadOnly {
public:
    explicit ReadOnly(const CStringA& name) {
        EXPECT_EQ(0u, zynplatform::OpenFile(name, {.deny = zynplatform::accessWrite}, m_handle));
    }
    ~ReadOnly() { zynplatform::CloseFile(m_handle); }

private:
    zynplatform::FileHandle m_handle = zynplatform::noFile;
};

// A CzynINI whose file cannot be read.
struct UnreadableIni : OpenIni {
    bool Parse() override {
        ++m_parses;
        return false;
    }
    bool InternalSave() override {
        ++m_saves;
        return true;
    }
    int m_parses = 0, m_saves = 0;
};

struct SilentApplication : CWinApp {
    int DoMessageBox(const char*, std::uint32_t, std::uint32_t) override { return IDOK; }
};

const CStringA readOnlyText("Файл ini доступен только для чтения"_cp1251);

} // namespace

TEST_F(IniEditTest, QueriesFindTheFirstOfEqualNames) {
    Load("x=0\n[One]\n; note\nKey=1\n\nkey=2\nempty=\nspaced =3\n[ONE]\nkey=4\nlater=5\n[\xCF]\n\xCA=\xFF\n");
    const struct {
        const char* section;
        const char* key;
        bool isThere;
        const char* value;
    } cases[] = {
        {"", "x", true, "0"},           {"one", "KEY", true, "1"},     {"One", "empty", true, ""},
        {"One", "spaced", false, "*"},  {"One", "spaced ", true, "3"}, {"One", "later", false, "*"},
        {"One", "", true, "; note"},    {" One", "key", false, "*"},   {"Two", "key", false, "*"},
        {"\xEF", "\xEA", true, "\xFF"},
    };
    const std::string model = ini.Model(), file = File();
    for (const auto& c : cases) {
        EXPECT_EQ(c.isThere, ini.isParamSet(c.section, c.key)) << c.section << "/" << c.key;
        EXPECT_EQ(c.value, ini.GetString(c.section, c.key, "*", false)) << c.section << "/" << c.key;
        CStringA value("old");
        EXPECT_TRUE(ini.GetString(c.section, c.key, value, "*", false));
        EXPECT_EQ(c.value, value);
    }
    EXPECT_TRUE(ini.isGroupeSet("oNE"));
    EXPECT_TRUE(ini.isGroupeSet(""));
    EXPECT_FALSE(ini.isGroupeSet("One "));
    EXPECT_EQ(model, ini.Model());
    EXPECT_EQ(file, File());
}

TEST_F(IniEditTest, IntegersAreDecimalDigitsWithOrWithoutAMinus) {
    const struct {
        const char* stored;
        int value;
    } cases[] = {{"12", 12}, {"-7", -7},   {"007", 7}, {"-", 0},    {"", 99},
                 {"1a", 99}, {"0x1F", 99}, {"+1", 99}, {"1 2", 99}, {"99999999999", 2147483647}};
    for (const auto& c : cases) {
        const std::string before = std::string("[s]\r\nk=") + c.stored + "\r\n";
        Load(before);
        EXPECT_EQ(c.value, ini.GetInt("s", "k", 99, false)) << c.stored;
        EXPECT_EQ(before, File());
        EXPECT_EQ(c.value, ini.GetInt("s", "K", 99, true)) << c.stored;
        EXPECT_EQ(c.value == 99 ? "[s]\r\nK=99\r\n" : before, File()) << c.stored;
    }
    EXPECT_EQ(-5, ini.GetInt("s", "new", -5, false));
    EXPECT_FALSE(ini.isParamSet("s", "new"));
}

TEST_F(IniEditTest, ListsHoldThePairsInOrder) {
    Load("[s]\n; c\nb=1\n\n=no key\na=2\nB=3\n[S]\nz=9\n");
    CStringArray keys;
    keys.Add("old");
    EXPECT_TRUE(ini.GetListKeys("S", keys));
    ASSERT_EQ(3, keys.GetSize());
    EXPECT_EQ("b", keys[0]);
    EXPECT_EQ("a", keys[1]);
    EXPECT_EQ("B", keys[2]);
    CzynINI::KeyValArray pairs(8);
    pairs.Add(new SKeyVal("old", "old"));
    EXPECT_TRUE(ini.GetListKeysVals("s", pairs));
    ASSERT_EQ(3, pairs.GetSize());
    EXPECT_EQ("B", pairs.GetAt(2)->m_sKey);
    EXPECT_EQ("3", pairs.GetAt(2)->m_sVal);

    EXPECT_FALSE(ini.GetListKeys("none", keys));
    EXPECT_EQ("Секция ini не найдена"_cp1251, ini.GetErrDescription());
    EXPECT_EQ(0, keys.GetSize());
    ini.m_sErr.Empty();
    EXPECT_FALSE(ini.GetListKeysVals("none", pairs));
    EXPECT_EQ("Секция ini не найдена"_cp1251, ini.GetErrDescription());
    EXPECT_EQ(0, pairs.GetSize());
}

TEST_F(IniEditTest, EditsPutTheirLinesWhereTheyBelong) {
    const auto write = [](const char* section, const char* key, const char* value, const char* comment) {
        return [=](OpenIni& i) { EXPECT_TRUE(i.WriteString(section, key, value, comment)); };
    };
    const auto remove = [](const char* section, const char* key) {
        return [=](OpenIni& i) { EXPECT_TRUE(i.Delete(section, key)); };
    };
    const struct {
        const char* text;
        std::vector<Edit> edits;
        const char* model;
    } cases[] = {
        // behind the last pair, before what follows it
        {"[s]\na=1\n; end\n\n", {write("s", "b", " 2\t", nullptr)}, "<s|>{a:1}{b:2}{:; end}{:}"},
        {"[s]\n; only\n", {write("s", "a", "1", "")}, "<s|>{a:1}{:; only}"},
        {"[s]\n=x\n; c\n", {write("s", "a", "1", nullptr)}, "<s|>{a:1}{=:x}{:; c}"},
        {"", {write("s", "a", "1", "no")}, "<s|>{:;no}{a:1}"},
        {"x=1\n[s]\na=1\n", {write("t", "b", "2", nullptr)}, "<|>{x:1}<s|>{a:1}<t|>{b:2}"},
        {"[s]\na=1\n", {write("", "b", "2", nullptr)}, "<s|>{a:1}<|>{b:2}"},
        // the comment
        {"[s]\na=1\n", {write("s", "b", "2", "note")}, "<s|>{a:1}{:;note}{b:2}"},
        {"[s]\na=1\n", {write("s", "b", "2", "; note")}, "<s|>{a:1}{:; note}{b:2}"},
        {"[s]\na=1\n", {write("s", "b", "2", "n")}, "<s|>{a:1}{b:2}"},
        {"[s]\na=1\n", {write("s", "a", "2", "note")}, "<s|>{a:2}"},
        // which the insertion point does not count
        {"[s]\na=1\n",
         {write("s", "b", "2", "note"), write("s", "c", "3", nullptr)},
         "<s|>{a:1}{:;note}{c:3}{b:2}"},
        // spelling and copies
        {"[S]\nKEY=1\n", {write("s", "key", "2", nullptr)}, "<s|>{key:2}"},
        {"[s]\nk=1\nK=2\nk=3\n[S]\nk=4\n",
         {write("s", "k", "x", nullptr)},
         "<s|>{k:x}{K___copy:2}{k___copy:3}<S___copy|>{k:4}"},
        // an empty key means the first line without one, and makes it a pair
        {"[s]\na=1\n; c\n", {write("s", "", "v", nullptr)}, "<s|>{a:1}{=:v}"},
        {"[s]\na=1\n", {write("s", "", "v", nullptr)}, "<s|>{a:1}{=:v}"},
        // deleting
        {"[s]\nk=1\n;\nK=2\nkk=3\n[s]\nk=4\n", {remove("S", "k")}, "<s|>{:;}{kk:3}<s|>{k:4}"},
        {"[s]\nk=1\n", {remove("none", "k"), remove("s", "none")}, "<s|>{k:1}"},
        {"[s]\nk=1\n;\n\n", {remove("s", "")}, "<s|>{k:1}"},
        // the insertion point stays behind
        {"[s]\na=1\nb=2\nc=3\nd=4\n",
         {remove("s", "a"), remove("s", "b"), remove("s", "c"), write("s", "e", "5", nullptr)},
         "<s|>{d:4}{}{}{}{e:5}"},
        {"[s]\na=1\nb=2\n",
         {remove("s", "a"), remove("s", "b"), write("s", "c", "3", "note"), write("s", "D", "4", nullptr),
          write("s", "C", "5", nullptr), remove("s", "d")},
         "<s|>{}{}{:;note}{C:5}"},
    };
    for (const bool direct : {true, false})
        for (const auto& c : cases) {
            Load(c.text);
            ini.SetWriteMode(direct);
            for (const Edit& edit : c.edits)
                edit(ini);
            EXPECT_EQ(c.model, ini.Model()) << c.text;
            if (direct) {
                const std::string written = File();
                EXPECT_TRUE(ini.InternalSave());
                EXPECT_EQ(written, File()) << c.text;
            } else {
                EXPECT_EQ(c.text, File());
            }
            EXPECT_TRUE(ini.Flush());
        }
}

TEST_F(IniEditTest, LookingUpWithCreationRespellsAndMarksAlsoWithoutASave) {
    const char* const text = "[S]\nKEY=1\nkey=2\n[s]\n";
    for (const Edit& edit : {Edit([](OpenIni& i) { i.GetString("s", "Key", "", true); }),
                             Edit([](OpenIni& i) { i.GetInt("s", "Key", 0, true); })}) {
        Load(text);
        edit(ini);
        EXPECT_EQ("<s|>{Key:1}{key___copy:2}<s___copy|>", ini.Model());
        EXPECT_EQ(text, File());
    }
    EXPECT_TRUE(ini.WriteString("other", "k", "v", nullptr));
    EXPECT_EQ("[s]\r\nKey=1\r\nkey___copy=2\r\n\r\n[s___copy]\r\n\r\n[other]\r\nk=v\r\n", File());
}

TEST_F(IniEditTest, DefaultsAreWrittenBackInBothModes) {
    for (const bool direct : {true, false}) {
        Load("[s]\r\na=\r\nb=x\r\n");
        ini.SetWriteMode(direct);
        EXPECT_EQ(" d ", ini.GetString("s", "a", " d ", true));
        EXPECT_EQ("[s]\r\na=d\r\nb=x\r\n", File());
        EXPECT_EQ("x", ini.GetString("s", "b", "d", true));
        EXPECT_EQ(5, ini.GetInt("s", "b", 5, true));
        EXPECT_EQ(6, ini.GetInt("t", "c", 6, true));
        EXPECT_EQ("[s]\r\na=d\r\nb=5\r\n\r\n[t]\r\nc=6\r\n", File());
        CStringA value(" new");
        EXPECT_TRUE(ini.GetString("t", "d", value, value, true)); // the default may be the value itself
        EXPECT_EQ(" new", value);
        EXPECT_EQ("new", ini.GetString("t", "d", "", false));
        ini.SetWriteMode(true);
    }
}

TEST_F(IniEditTest, RenamesLeaveACommentAndSaveInBothModes) {
    const std::string group("Группа опций [New] была переименована. Старое название группы [S]"_cp1251);
    const std::string option("; Опция 'b' была переименована. Старое название опции 'A'"_cp1251);
    for (const bool direct : {true, false}) {
        Load("[x]\r\nk=1\r\n\r\n[s] tail\r\na=1\r\n[s]\r\na=2\r\n");
        ini.SetWriteMode(direct);
        ini.RenameParam("S", "A", "b");
        const std::string file = "[x]\r\nk=1\r\n\r\n[s] tail\r\n" + option + "\r\nb=1\r\n\r\n[s]\r\na=2\r\n";
        EXPECT_EQ(file, File());
        ini.RenameGroupe("S", "New");
        EXPECT_EQ("[x]\r\nk=1\r\n\r\n;" + group + "\r\n[New] tail\r\n" + option +
                      "\r\nb=1\r\n\r\n[s]\r\na=2\r\n",
                  File());
        // Read back, the comment is a line of the section above; without reading it is not in the model.
        EXPECT_EQ(direct ? "<x|>{k:1}{:}{:;" + group + "}<New| tail>{:" + option + "}{b:1}{:}<s|>{a:2}"
                         : "<x|>{k:1}{:}<New| tail>{:" + option + "}{b:1}<s|>{a:2}",
                  ini.Model());
        const std::string before = File();
        ini.RenameGroupe("none", "x");
        ini.RenameParam("none", "b", "x");
        ini.RenameParam("New", "none", "x");
        EXPECT_EQ(before, File());
        ini.SetWriteMode(true);
    }
}

TEST_F(IniEditTest, ReadOnlyFileRefusesWriteIntAtOnceAndWriteStringAtTheSave) {
    folder.Write("f.ini", "[s]\nk=1\n");
    ReadOnly held(folder.Path("f.ini"));
    EXPECT_FALSE(ini.WriteInt("s", "k", 2, nullptr));
    EXPECT_EQ(readOnlyText, ini.GetErrDescription());
    EXPECT_EQ("<s|>{k:1}", ini.Model());
    ini.m_sErr.Empty();
    EXPECT_FALSE(ini.WriteString("s", "k", "2", nullptr));
    EXPECT_EQ(readOnlyText, ini.GetErrDescription());
    EXPECT_EQ("<s|>{k:2}", ini.Model());
    EXPECT_FALSE(ini.Delete("s", "k"));
    EXPECT_EQ("<s|>", ini.Model());
    EXPECT_TRUE(ini.Delete("none", "k")); // nothing to save
    ini.SetWriteMode(false);
    EXPECT_TRUE(ini.WriteString("s", "k", "3", nullptr));
    EXPECT_TRUE(ini.Delete("s", "none"));
    EXPECT_FALSE(ini.WriteInt("s", "k", 4, nullptr));
    EXPECT_EQ("d", ini.GetString("s", "new", "d", true)); // the save's result does not count
    EXPECT_EQ("[s]\nk=1\n", File());
}

TEST_F(IniEditTest, NothingIsDoneWhenTheFileCannotBeRead) {
    UnreadableIni unreadable;
    CStringArray keys;
    CzynINI::KeyValArray pairs(8);
    CStringA value;
    EXPECT_EQ("d", unreadable.GetString("s", "k", "d", true));
    EXPECT_FALSE(unreadable.GetString("s", "k", value, "d", true));
    EXPECT_EQ("d", value);
    EXPECT_EQ(7, unreadable.GetInt("s", "k", 7, true));
    EXPECT_FALSE(unreadable.WriteString("s", "k", "v", nullptr));
    EXPECT_FALSE(unreadable.WriteInt("s", "k", 1, nullptr));
    EXPECT_FALSE(unreadable.Delete("s", "k"));
    unreadable.RenameGroupe("", "x");
    unreadable.RenameParam("", "", "x");
    EXPECT_FALSE(unreadable.GetListKeys("", keys));
    EXPECT_FALSE(unreadable.GetListKeysVals("", pairs));
    EXPECT_FALSE(unreadable.isParamSet("", "k"));
    EXPECT_FALSE(unreadable.isGroupeSet(""));
    EXPECT_EQ(12, unreadable.m_parses);
    EXPECT_EQ(0, unreadable.m_saves);
    EXPECT_EQ("", unreadable.Model());
}

TEST_F(IniEditTest, NullTextsCountAsEmpty) {
    Load("a=1\n");
    EXPECT_TRUE(ini.WriteString(nullptr, "a", nullptr, nullptr));
    EXPECT_TRUE(ini.GetString(nullptr, nullptr, nullptr, false).IsEmpty());
    EXPECT_TRUE(ini.Delete(nullptr, nullptr));
    EXPECT_EQ("<|>{a:}", ini.Model());
}

TEST_F(IniEditTest, FailedAllocationLosesNoLine) {
    const std::string lines[] = {"; first",   "[one] tail", "a=1", "; note",
                                 "free text", "[two]",      "=x",  "z=26"};
    std::string text;
    for (const std::string& line : lines)
        text += line + "\r\n";
    const Edit script = [](OpenIni& i) {
        CStringArray keys;
        CzynINI::KeyValArray pairs(8);
        i.GetString("one", "new", "default", true);
        i.WriteString("three", "k", "v", "with a comment");
        i.WriteInt("two", "number", 5, nullptr);
        i.RenameParam("three", "k", "l");
        i.GetListKeys("two", keys);
        i.GetListKeysVals("two", pairs);
        i.SetWriteMode(false);
        i.Delete("two", "number");
        i.RenameGroupe("three", "four");
        i.Flush();
    };
    const SilentApplication silent; // arrays that cannot grow show a message box
    for (const auto kind : {FailingNew::once, FailingNew::onwards})
        for (long n = 1, failures = 1; failures > 0; ++n) {
            folder.Write("f.ini", text);
            OpenIni object(folder.Path("f.ini"));
            {
                const FailingNew failing(n, kind);
                try {
                    script(object);
                } catch (const std::bad_alloc&) {
                }
                failures = failing.Failures();
            }
            object.SetWriteMode(true);
            EXPECT_TRUE(object.WriteString("after", "k", "v", nullptr)) << n;
            const std::string file = "\r\n" + File();
            for (const std::string& line : lines) {
                const std::size_t at = file.find("\r\n" + line + "\r\n");
                ASSERT_NE(file.npos, at) << n << line << file;
                EXPECT_EQ(file.npos, file.find("\r\n" + line + "\r\n", at + 1)) << n << line << file;
            }
        }
}

TEST_F(IniEditTest, FailedAllocationOfALineHasAText) {
    const SilentApplication silent;
    const std::string section("Ошибка при выделении памяти под объект секции ini"_cp1251);
    const std::string option("Ошибка при выделении памяти под объект опции ini"_cp1251);
    Load("[s]\n");
    ini.SetWriteMode(false);
    const struct {
        const char* section;
        std::string text;
    } cases[] = {{"new", section}, {"s", option}};
    for (const auto& c : cases) {
        bool seen = false;
        for (long n = 1, failures = 1; failures > 0 && !seen; ++n) {
            const FailingNew failing(n);
            try {
                const bool made = ini.FindCreateOption(c.section, "k", true, nullptr);
                seen = !made && ini.m_sErr.View() == c.text;
            } catch (const std::bad_alloc&) {
            }
            failures = failing.Failures();
        }
        EXPECT_TRUE(seen) << c.section;
    }
}
