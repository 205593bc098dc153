// SPDX-License-Identifier: MIT
#include "support/failing_new.h"
#include "support/host.h"
#include "zynaggr/ini.h"

#include <set>
#include <sstream>

TEST(IniEditTest, FailedAllocationLosesNoLineAndHasAText) {
    const Host silent(0); // arrays that cannot grow show a message box
    const std::string lines[] = {"; first", "[one] tail", "a=1", "free text", "[two]", "=x", "z=26"};
    std::string text;
    for (const std::string& line : lines)
        text += line + "\r\n";
    std::set<CStringA> errors;
    for (const auto kind : {FailingNew::once, FailingNew::onwards})
        for (long n = 1, failures = 1; failures > 0; ++n) {
            silent.folder.Write("f.ini", text);
            CzynINI object(silent.folder.Path("f.ini"));
            for (int i = 0; i < 600; ++i) // so that there is an index
                object.isParamSet(i % 2 ? "one" : "two", "none");
            try {
                const FailingNew failing(n, kind);
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
                failures = failing.Failures();
            } catch (const std::bad_alloc&) {
            }
            errors.insert(object.GetErrDescription());
            object.SetWriteMode(true);
            EXPECT_TRUE(object.WriteString("after", "k", "v", nullptr)) << n;
            std::istringstream file(silent.folder.Read("f.ini"));
            std::multiset<std::string> found;
            for (std::string line; std::getline(file, line, '\r'); file.ignore())
                found.insert(line);
            for (const std::string& line : lines)
                ASSERT_EQ(1u, found.count(line)) << n << line;
        }
    EXPECT_TRUE(errors.contains("Ошибка при выделении памяти под объект секции ini"_cp1251));
    EXPECT_TRUE(errors.contains("Ошибка при выделении памяти под объект опции ini"_cp1251));
}
