#include "support/failing_new.h"
#include "support/ini_model.h"
#include "zynhost/application.h"

#include <new>
#include <set>
#include <tuple>
#include <vector>

using IniEditTest = IniFileTest;

TEST_F(IniEditTest, QueriesFindTheFirstOfEqualNames) {
    Load("x=0\n[One]\n; note\nKey=1\n\nkey=2\nempty=\nspaced =3\n[ONE]\nkey=4\nlater=5\n[\xCF]\n\xCA=\xFF\n");
    const std::tuple<const char*, const char*, bool, const char*> cases[] = {
        {"", "x", true, "0"},           {"one", "KEY", true, "1"},     {"One", "empty", true, ""},
        {"One", "spaced", false, "*"},  {"One", "spaced ", true, "3"}, {"One", "later", false, "*"},
        {"One", "", true, "; note"},    {" One", "key", false, "*"},   {"Two", "key", false, "*"},
        {"\xEF", "\xEA", true, "\xFF"},
    };
    const std::string model = ini.Model(), file = File();
    for (const auto& [section, key, isThere, value] : cases) {
        EXPECT_EQ(isThere, ini.isParamSet(section, key)) << section << "/" << key;
        CStringA found("old");
        EXPECT_TRUE(ini.GetString(section, key, found, "*", false));
        EXPECT_EQ(value, found) << section << "/" << key;
    }
    EXPECT_TRUE(ini.isGroupeSet("oNE") && ini.isGroupeSet("") && !ini.isGroupeSet("One "));
    EXPECT_EQ(model, ini.Model());
    EXPECT_EQ(file, File());
}

TEST_F(IniEditTest, IntegersAreDecimalDigitsWithOrWithoutAMinus) {
    const std::pair<std::string, int> cases[] = {
        {"12", 12}, {"-7", -7},   {"007", 7}, {"-", 0},    {"", 99},
        {"1a", 99}, {"0x1F", 99}, {"+1", 99}, {"1 2", 99}, {"99999999999", 2147483647}};
    for (const auto& [stored, value] : cases) {
        const std::string before = "[s]\r\nk=" + stored + "\r\n";
        Load(before);
        EXPECT_EQ(value, ini.GetInt("s", "k", 99, false)) << stored;
        EXPECT_EQ(before, File());
        EXPECT_EQ(value, ini.GetInt("s", "K", 99, true)) << stored;
        EXPECT_EQ(value == 99 ? "[s]\r\nK=99\r\n" : before, File()) << stored;
    }
    EXPECT_EQ(-5, ini.GetInt("s", "new", -5, false));
    EXPECT_FALSE(ini.isParamSet("s", "new"));
}

TEST_F(IniEditTest, ListsHoldThePairsInOrder) {
    Load("[s]\n; c\nb=1\n\n=no key\na=2\nB=3\n[S]\nz=9\n");
    CStringArray keys;
    CzynINI::KeyValArray pairs(8);
    std::string all;
    for (int round = 0; round < 2; ++round) { // the second one replaces what the first one found
        EXPECT_TRUE(ini.GetListKeys("S", keys) && ini.GetListKeysVals("s", pairs));
        ASSERT_EQ(keys.GetSize(), pairs.GetSize());
        for (int i = 0; i < keys.GetSize(); ++i)
            all += keys[i] + " " + pairs.GetAt(i)->m_sKey + "=" + pairs.GetAt(i)->m_sVal + ",";
    }
    EXPECT_EQ("b b=1,a a=2,B B=3,b b=1,a a=2,B B=3,", all);

    for (const bool values : {true, false}) {
        ini.m_sErr.Empty();
        EXPECT_FALSE(values ? ini.GetListKeysVals("none", pairs) : ini.GetListKeys("none", keys));
        EXPECT_EQ("Секция ini не найдена"_cp1251, ini.GetErrDescription());
        EXPECT_EQ(0, values ? pairs.GetSize() : keys.GetSize());
    }
}

TEST_F(IniEditTest, EditsPutTheirLinesWhereTheyBelong) {
    struct Change {
        const char* section;
        const char* key;
        const char* value; // null deletes
        const char* comment = nullptr;
    };
    // clang-format off
    const struct {
        const char* text;
        std::vector<Change> changes;
        const char* model;
    } cases[] = {
        // behind the last pair, before what follows it
        {"[s]\na=1\n; end\n\n", {{"s", "b", " 2\t"}}, "<s|>{a:1}{b:2}{:; end}{:}"},
        {"[s]\n; only\n", {{"s", "a", "1", ""}}, "<s|>{a:1}{:; only}"},
        {"[s]\n=x\n; c\n", {{"s", "a", "1"}}, "<s|>{a:1}{=:x}{:; c}"},
        {"x=1\n[s]\na=1\n", {{"t", "b", "2"}}, "<|>{x:1}<s|>{a:1}<t|>{b:2}"},
        {"[s]\na=1\n", {{"", "b", "2"}}, "<s|>{a:1}<|>{b:2}"},
        // the comment, which the insertion point does not count
        {"", {{"s", "a", "1", "no"}}, "<s|>{:;no}{a:1}"},
        {"[s]\na=1\n", {{"s", "b", "2", "; note"}}, "<s|>{a:1}{:; note}{b:2}"},
        {"[s]\na=1\n", {{"s", "b", "2", "n"}}, "<s|>{a:1}{b:2}"},
        {"[s]\na=1\n", {{"s", "a", "2", "note"}}, "<s|>{a:2}"},
        {"[s]\na=1\n", {{"s", "b", "2", "note"}, {"s", "c", "3"}}, "<s|>{a:1}{:;note}{c:3}{b:2}"},
        // spelling and copies
        {"[S]\nKEY=1\n", {{"s", "key", "2"}}, "<s|>{key:2}"},
        {"[s]\nk=1\nK=2\nk=3\n[S]\nk=4\n", {{"s", "k", "x"}}, "<s|>{k:x}{K___copy:2}{k___copy:3}<S___copy|>{k:4}"},
        // an empty key means the first line without one, and makes it a pair
        {"[s]\na=1\n; c\n", {{"s", "", "v"}}, "<s|>{a:1}{=:v}"},
        {"[s]\na=1\n", {{"s", "", "v"}}, "<s|>{a:1}{=:v}"},
        // null means an empty text
        {"a=1\n;\n", {{nullptr, "a", ""}, {nullptr, nullptr, nullptr}}, "<|>{a:}"},
        // deleting
        {"[s]\nk=1\n;\nK=2\nkk=3\n[s]\nk=4\n", {{"S", "k", nullptr}}, "<s|>{:;}{kk:3}<s|>{k:4}"},
        {"[s]\nk=1\n", {{"none", "k", nullptr}, {"s", "none", nullptr}}, "<s|>{k:1}"},
        {"[s]\nk=1\n;\n\n", {{"s", "", nullptr}}, "<s|>{k:1}"},
        // the insertion point stays behind
        {"[s]\na=1\nb=2\nc=3\n", {{"s", "a", nullptr}, {"s", "b", nullptr}, {"s", "d", "4"}}, "<s|>{c:3}{}{}{d:4}"},
        {"[s]\na=1\n", {{"s", "a", nullptr}, {"s", "c", "3", "note"}, {"s", "D", "4"}, {"s", "C", "5"}, {"s", "d", nullptr}}, "<s|>{}{:;note}{C:5}"},
    };
    // clang-format on
    for (const bool direct : {true, false})
        for (const auto& c : cases) {
            Load(c.text);
            ini.SetWriteMode(direct);
            for (const auto& [section, key, value, comment] : c.changes)
                EXPECT_TRUE(value ? ini.WriteString(section, key, value, comment) : ini.Delete(section, key));
            EXPECT_EQ(c.model, ini.Model()) << c.text;
            const std::string written = File();
            EXPECT_TRUE(ini.InternalSave() && ini.Flush());
            EXPECT_EQ(direct ? File() : c.text, written) << c.text;
        }
}

TEST_F(IniEditTest, LookingUpWithCreationRespellsAndMarksAlsoWithoutASave) {
    const char* const text = "[S]\nKEY=1\nkey=2\n[s]\n";
    for (const bool asInt : {true, false}) {
        Load(text);
        asInt ? ini.GetInt("s", "Key", 0, true) : ini.GetString("s", "Key", "", true).GetLength();
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
        Load("[x]\r\nk=1\r\n[s] tail\r\na=1\r\n[s]\r\na=2\r\n");
        ini.SetWriteMode(direct);
        ini.RenameParam("S", "A", "b");
        const std::string top = "[x]\r\nk=1\r\n", end = option + "\r\nb=1\r\n\r\n[s]\r\na=2\r\n";
        EXPECT_EQ(top + "\r\n[s] tail\r\n" + end, File());
        ini.RenameGroupe("S", "New");
        const std::string renamed = top + ";" + group + "\r\n\r\n[New] tail\r\n" + end;
        EXPECT_EQ(renamed, File());
        // Read back, the comment is a line of the section above; without reading it is not in the model.
        const std::string comment = direct ? "{:;" + group + "}{:}" : "";
        EXPECT_EQ("<x|>{k:1}" + comment + "<New| tail>{:" + option + "}{b:1}" + (direct ? "{:}" : "") +
                      "<s|>{a:2}",
                  ini.Model());
        ini.RenameGroupe("none", "x");
        ini.RenameParam("none", "b", "x");
        ini.RenameParam("New", "none", "x");
        EXPECT_EQ(renamed, File());
        ini.SetWriteMode(true);
        EXPECT_EQ(direct ? renamed : top + "\r\n[New] tail\r\n" + end, File()); // written once
    }
}

TEST_F(IniEditTest, ReadOnlyFileRefusesWriteIntAtOnceAndWriteStringAtTheSave) {
    folder.Write("f.ini", "[s]\nk=1\n");
    const OtherHandle held(folder.Path("f.ini"), {.deny = zynplatform::accessWrite});
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

TEST_F(IniEditTest, FailedAllocationLosesNoLineAndHasAText) {
    struct : CWinApp {
        int DoMessageBox(const char*, std::uint32_t, std::uint32_t) override { return IDOK; }
    } silent; // arrays that cannot grow show a message box
    const std::string lines[] = {"; first", "[one] tail", "a=1", "free text", "[two]", "=x", "z=26"};
    std::string text;
    for (const std::string& line : lines)
        text += line + "\r\n";
    std::set<CStringA> errors;
    for (const auto kind : {FailingNew::once, FailingNew::onwards}) {
        long failures = 1;
        for (long n = 1; failures > 0; ++n) {
            folder.Write("f.ini", text);
            OpenIni object(folder.Path("f.ini"));
            {
                const FailingNew failing(n, kind);
                try {
                    CStringArray keys;
                    CzynINI::KeyValArray pairs(8);
                    object.GetString("zero", "new", "default", true);
                    object.GetString("one", "new", "default", true);
                    object.WriteString("three", "k", "v", "with a comment");
                    object.WriteInt("two", "number", 5, nullptr);
                    object.RenameParam("three", "k", "l");
                    object.GetListKeys("two", keys);
                    object.GetListKeysVals("two", pairs);
                    object.SetWriteMode(false);
                    object.Delete("two", "number");
                    object.RenameGroupe("three", "four");
                    object.Flush();
                } catch (const std::bad_alloc&) {
                }
                failures = failing.Failures();
            }
            errors.insert(object.GetErrDescription());
            object.SetWriteMode(true);
            EXPECT_TRUE(object.WriteString("after", "k", "v", nullptr)) << n;
            const std::string file = "\r\n" + File();
            for (const std::string& line : lines) {
                const std::string wanted = "\r\n" + line + "\r\n";
                ASSERT_NE(file.npos, file.find(wanted)) << n << file;
                EXPECT_EQ(file.find(wanted), file.rfind(wanted)) << n << file;
            }
        }
    }
    EXPECT_TRUE(errors.contains("Ошибка при выделении памяти под объект секции ini"_cp1251));
    EXPECT_TRUE(errors.contains("Ошибка при выделении памяти под объект опции ini"_cp1251));
}
