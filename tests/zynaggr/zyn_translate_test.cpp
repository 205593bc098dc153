#include "support/host.h"
#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynerror.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/registry.h"

#include <gtest/gtest.h>

using namespace zynplatform::literals;
using zynplatform::RegistryKey;

namespace {

constexpr const char* languageEntry = "Settings/DefLangCode";

// A registry of the test's own, at first with no key in it.
struct UILanguage : testing::Test, CzynTranslate {
    UILanguage() { setenv("ZYN_REGISTRY", m_folder.Native("registry").c_str(), 1); }
    ~UILanguage() override { unsetenv("ZYN_REGISTRY"); }

    TempFolder m_folder;
};

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

TEST_F(UILanguage, WithoutKeysComesFromTheProfileOrIsNotSet) {
    EXPECT_EQ(GetSystemLocale(), 0xFFFFFFFFul);
    SetGlobalUILang(1033, true);
    SaveShowStringId(true);
    EXPECT_EQ(GetGlobalUILang() + ReadUILangFromReg(), 0u);
    EXPECT_FALSE(m_folder.Has("registry"));

    Host host(1049);
    EXPECT_EQ(GetSystemLocale(), 1049u);
    SetGlobalUILang(1033, false);
    EXPECT_TRUE(host.profile.empty());
    SetGlobalUILang(1033, true);
    EXPECT_EQ(host.profile[languageEntry], 1033);
    EXPECT_TRUE(GetGlobalUILang() == 1033 && ReadUILangFromReg() == 1033);
    EXPECT_FALSE(SetCurLocaleFromReg(true, nullptr));
}

TEST_F(UILanguage, KeysComeFirstAndZeroOrATextIsNotSet) {
    Host host(1049);
    host.profile[languageEntry] = 1034;
    SaveUILangToReg(1031); // makes the key
    EXPECT_TRUE(ReadUILangFromReg() == 1031 && GetGlobalUILang() == 1031);
    SetGlobalUILang(0xFFFFFFFF, false);
    EXPECT_EQ(GetGlobalUILang(), 0xFFFFFFFFul);

    m_folder.Write("registry", "[Software\\Orvant\\Settings]\n\"DefLangCode\"=\"1031\"\n");
    EXPECT_EQ(GetGlobalUILang(), 0u); // the key is there: no look at the profile
    EXPECT_EQ(ReadUILangFromReg(), 1034u);
    const auto fallback = RegistryKey::OpenOrCreate("Software\\Orvant\\Модуль Tessel\\Settings"_cp1251);
    ASSERT_TRUE(fallback && fallback->SetNumber("DefLangCode", 1036));
    EXPECT_EQ(ReadUILangFromReg(), 1036u);
    SaveUILangToReg(0);
    EXPECT_EQ(ReadUILangFromReg(), 1036u);
}

TEST_F(UILanguage, ShowingIdsIsReadWithTheLanguage) {
    SaveUILangToReg(1031);
    const auto key = RegistryKey::Open("software\\orvant\\settings");
    for (const unsigned shown : {5u, 0u, 1u}) {
        const bool before = GetShowStringId();
        if (shown == 5)
            ASSERT_TRUE(key->SetNumber("bShowStringId", 5));
        else
            SaveShowStringId(shown != 0);
        EXPECT_EQ(key->GetNumber("bShowStringId"), shown);
        EXPECT_EQ(GetShowStringId(), before);
        ReadUILangFromReg();
        EXPECT_EQ(GetShowStringId(), shown != 0);
    }
    SaveShowStringId(false);
    ReadUILangFromReg();
}

} // namespace
