#include "support/failing_new.h"
#include "support/host.h"
#include "support/ini_model.h"

#include <new>
#include <set>

using IniEditTest = IniFileTest;

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
