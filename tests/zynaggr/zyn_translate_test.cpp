// SPDX-License-Identifier: MIT
#include "support/host.h"
#include "zynaggr/ini.h"
#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynerror.h"
#include "zynaggr/zynhelpers.h"
#include "zynplatform/registry.h"

using zynplatform::RegistryKey;

TEST(Translate, GivesTheTextItselfUnlessADictionaryHasIt) {
    const CStringA known = "Модуль: "_cp1251;
    CzynTranslate::AddStringTranslationPair(known, "module ");
    CzynTranslate::AddStringTranslationPair(known, "Module: ");
    EXPECT_FALSE(CzynTranslate::IsNeedTranslate());
    EXPECT_EQ(CzynTranslate::Translate(known), known.GetString()); // the same pointer
    CzynTranslate::SetShouldTranslate(true);
    EXPECT_TRUE(CzynTranslate::IsNeedTranslate());
    EXPECT_STREQ(CzynTranslate::Translate(known), "Module: ");
    for (const char* text : {static_cast<const char*>(nullptr), "", "модуль: "_cp1251, "Модуль:"_cp1251})
        EXPECT_EQ(static_cast<const void*>(CzynTranslate::Translate(text)), text);
    const SzynErrorDescription error(-1, nullptr, nullptr, 0, nullptr, 7, nullptr, nullptr, nullptr);
    EXPECT_EQ(SzynErrorDescription(error).Print(nullptr, true), "Module:  7; ");
    CzynTranslate::SetShouldTranslate(false);
}

TEST(Translate, KeepsToAFormatWhoseTranslationReadsOtherArguments) {
    const char* const format = "%s %*d%% %.1f %ld %c";
    const auto isUsed = [&](const char* translation) {
        CzynTranslate::AddStringTranslationPair(format, translation);
        return CStringA(CzynTranslate::TranslateFormat(format)) == translation;
    };
    CzynTranslate::SetShouldTranslate(true);
    for (const char* same : {"%%[%-10s] %-*x %g (%+li) %c", "%1$s %3$*2$d %4$f %5$ld %6$c"})
        EXPECT_TRUE(isUsed(same)) << same;
    // Fewer, more, ill-formed, other types, of which the C library does not know all, and another order.
    for (const char* other :
         {"", "%s %*d%% %.1f %ld", "%s %*d%% %.1f %ld %c %s", "%s %*d%% %.1f %ld %c %",
          "%s %*d%% %.1f %ld %c %n", "%s %*d%% %.1f %ld %c%*%", "%ls %*d%% %.1f %ld %c", "%s %*d %.1f %d %c",
          "%s %*d %.1f %Id %c", "%s %*Ld %.1f %ld %c", "%s %*d %.1f %ld %p", "%s %*d %.*f %ld %c",
          "%s %*c %.1f %ld %d", "%s %*d %.1f %c %ld", "%1$s %3$*3$d %4$f %5$ld %6$c",
          "%1$s %3$*2$d %4$.*2$f %5$ld %6$c", "%1$s %3$*2$d %4$f %5$ld %5$c"})
        EXPECT_FALSE(isUsed(other)) << other;
    EXPECT_TRUE(CzynTranslate::TranslateFormat("%n") && !CzynTranslate::TranslateFormat(nullptr));

    const TempFolder folder; // what the library formats itself
    folder.Write("a.ini", "[old]\nkey=1\n");
    for (const char* own :
         {"; Опция '%s' была переименована. Старое название опции '%s'"_cp1251,
          "Группа опций [%s] была переименована. Старое название группы [%s]"_cp1251,
          "Путь из ini '%s' заменен полным путем '%s'"_cp1251, "Код ошибки: %i;\nОписание ошибки: %s"_cp1251})
        CzynTranslate::AddStringTranslationPair(own, "%n %s %s %s %s");
    CzynINI ini;
    ini.SetINI(folder.Path("a.ini"), false, 0);
    ini.RenameParam("old", "key", "k");
    ini.RenameGroupe("old", "new");
    testing::internal::CaptureStdout();
    EXPECT_EQ(ini.ExpandPath(".\\x"), folder.Path("x"));
    CStringA text;
    zynGetDescriptionSystemError(2, text, true);
    text = testing::internal::GetCapturedStdout().c_str() + text + folder.Read("a.ini").c_str();
    for (const char* shown : {"Путь из ini '.\\x' заменен"_cp1251, "Код ошибки: 2"_cp1251,
                              "Группа опций [new]"_cp1251, "; Опция 'k' была переименована"_cp1251})
        EXPECT_GE(text.Find(shown), 0) << text;
    CzynTranslate::SetShouldTranslate(false);
}

TEST(UILanguage, KeysComeFirstThenTheProfileAndZeroOrATextIsNotSet) {
    const std::string own = "[SOFTWARE\\Orvant\\Settings]\n", german = "\"DefLangCode\"=dword:407\n";
    const std::string fallback = "[Software\\Orvant\\Модуль Tessel\\Settings]\n\"DefLangCode\"=dword:40c\n";
    const std::tuple<std::string, unsigned long, unsigned long> cases[] = {
        {"", 1034, 1034},
        {fallback, 1036, 1034},
        {own + "\"DefLangCode\"=\"1031\"\n", 1034, 0}, // the key is there: no look at the profile
        {own + "\"DefLangCode\"=dword:0\n" + fallback, 1036, 0},
        {own + german + fallback, 1031, 1031},
        {own + "\"bShowStringId\"=dword:5\n", 1034, 0},
        {own + german, 1031, 1031},
        {own + "\"bShowStringId\"=dword:0\n", 1034, 0},
    };
    Host host(1049);
    const Variable registry("ZYN_REGISTRY", host.folder.Native("registry"));
    host.profile["Settings/DefLangCode"] = 1034;
    std::string shown;
    for (const auto& [content, read, global] : cases) {
        host.folder.Write("registry", content);
        EXPECT_EQ(CzynTranslate::GetGlobalUILang(), global) << content;
        shown += CzynTranslate::GetShowStringId() ? "1" : "0";
        EXPECT_EQ(CzynTranslate::ReadUILangFromReg(), read) << content;
    }
    EXPECT_EQ(shown + (CzynTranslate::GetShowStringId() ? "1" : "0"), "000000110"); // read with the language
}

TEST(UILanguage, IsWrittenToTheKeyIfThatIsThereAndToTheProfileIfAsked) {
    const TempFolder folder;
    const auto own = [](const char* name) {
        const auto key = RegistryKey::Open("software\\orvant\\settings");
        return key ? key->GetNumber(name) : std::nullopt;
    };
    const Variable registry("ZYN_REGISTRY", folder.Native("registry"));
    CzynTranslate::SetGlobalUILang(1033, true);
    CzynTranslate::SaveShowStringId(true);
    EXPECT_TRUE(CzynTranslate::GetGlobalUILang() == 0 && CzynTranslate::ReadUILangFromReg() == 0);
    EXPECT_EQ(CzynTranslate::GetSystemLocale(), 0xFFFFFFFFul);
    EXPECT_FALSE(folder.Has("registry"));

    Host host(1049);
    EXPECT_EQ(CzynTranslate::GetSystemLocale(), 1049u);
    CzynTranslate::SaveUILangToReg(1031); // makes the key
    EXPECT_EQ(own("DefLangCode"), 1031u);
    CzynTranslate::SetGlobalUILang(0xFFFFFFFF, false);
    EXPECT_TRUE(own("DefLangCode") == 0xFFFFFFFF && host.profile.empty());
    CzynTranslate::SetGlobalUILang(1033, true);
    EXPECT_TRUE(own("DefLangCode") == 1033u && host.profile["Settings/DefLangCode"] == 1033);
    for (const bool show : {true, false}) {
        CzynTranslate::SaveShowStringId(show);
        EXPECT_TRUE(own("bShowStringId") == show && !CzynTranslate::GetShowStringId());
    }
    EXPECT_FALSE(CzynTranslate::SetCurLocaleFromReg(true, nullptr));
}
