#include "support/failing_new.h"
#include "support/host.h"
#include "support/ini_model.h"

#include <new>
#include <set>

using IniEditTest = IniFileTest;

TEST_F(IniEditTest, EditsAreSavedAtOnceOrCollectedButDefaultsAndRenamesAreSaved) {
    const std::string option("; Опция 'b' была переименована. Старое название опции 'A'"_cp1251);
    const std::string group(";Группа опций [New] была переименована. Старое название группы [S]"_cp1251);
    for (const bool direct : {true, false}) {
        const std::string text = "[s] tail\r\na=1\r\nempty=\r\n";
        Load(text);
        ini.SetWriteMode(direct);
        const auto file = [&](std::string_view whenDirect) { return direct ? whenDirect : text; };
        EXPECT_EQ("1", ini.GetString("S", "a", "d", true)); // spelt anew, but nothing is saved
        EXPECT_EQ(1, ini.GetInt("S", "A", 2, true));
        EXPECT_EQ(text, File());
        EXPECT_TRUE(ini.WriteString("s", "A", " 2\t", nullptr));
        EXPECT_EQ(file("[s] tail\r\nA=2\r\nempty=\r\n"), File());
        EXPECT_TRUE(ini.WriteInt("s", "a", 3, nullptr));
        EXPECT_EQ(file("[s] tail\r\na=3\r\nempty=\r\n"), File());
        EXPECT_TRUE(ini.Delete("s", "none") && ini.Delete("s", "empty"));
        EXPECT_EQ(file("[s] tail\r\na=3\r\n"), File());
        CStringA value(" new ");
        EXPECT_TRUE(ini.GetString("s", "k", value, value, true)); // the default may be the value itself
        EXPECT_EQ(" new ", value);
        EXPECT_EQ("[s] tail\r\na=3\r\nk=new\r\n", File());
        EXPECT_EQ(7, ini.GetInt("s", "k", 7, true));
        EXPECT_EQ("[s] tail\r\na=3\r\nk=7\r\n", File());
        ini.RenameParam("S", "A", "b");
        const std::string renamed = option + "\r\nb=3\r\nk=7\r\n";
        EXPECT_EQ("[s] tail\r\n" + renamed, File());
        ini.RenameGroupe("S", "New");
        EXPECT_EQ(group + "\r\n[New] tail\r\n" + renamed, File());
        // Read back, the comment is a line of its own; without reading it is not in the model.
        EXPECT_EQ(direct, ini.Model().starts_with("<|>{:;")) << ini.Model();
        ini.SetWriteMode(true);
    }
}

TEST_F(IniEditTest, ReadOnlyFileRefusesWriteIntAtOnceAndWriteStringAtTheSave) {
    folder.Write("f.ini", "[s]\nk=1\n");
    const OtherHandle held(folder.Path("f.ini"), {.deny = zynplatform::accessWrite});
    EXPECT_FALSE(ini.WriteInt("s", "k", 2, nullptr));
    EXPECT_EQ(readOnlyText, ini.GetErrDescription());
    EXPECT_EQ("<s|>{k:1}", ini.Model());
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
    const Host silent(0); // arrays that cannot grow show a message box
    const std::string lines[] = {"; first", "[one] tail", "a=1", "free text", "[two]", "=x", "z=26"};
    std::string text;
    for (const std::string& line : lines)
        text += line + "\r\n";
    std::set<CStringA> errors;
    for (const auto kind : {FailingNew::once, FailingNew::onwards}) {
        long failures = 1;
        for (long n = 1; failures > 0; ++n) {
            folder.Write("f.ini", text);
            CzynINI object(folder.Path("f.ini"));
            for (int i = 0; i < 600; ++i) // so that there is an index
                object.isParamSet(i % 2 ? "one" : "two", "none");
            {
                const FailingNew failing(n, kind);
                try {
                    CStringArray keys;
                    CzynINI::KeyValArray pairs(8);
                    object.GetString("zero", "new", "default", true);
                    object.GetString("one", "new", "default", true);
                    object.WriteString("three", "k", "v", "with a comment");
                    object.WriteString("one", "commented", "v", "with a comment");
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
