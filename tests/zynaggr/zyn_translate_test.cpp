#include "support/host.h"
#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynerror.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/registry.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

using namespace zynplatform::literals;
using zynplatform::RegistryKey;

namespace {

// A registry of the test's own, at first with no key in it.
class UILanguage : public testing::Test {
protected:
    UILanguage() { setenv("ZYN_REGISTRY", m_folder.Native("registry").c_str(), 1); }
    ~UILanguage() override { unsetenv("ZYN_REGISTRY"); }

    std::optional<RegistryKey> Key(const char* key = "software\\orvant\\settings") {
        return RegistryKey::Open(key);
    }

    TempFolder m_folder;
};

constexpr const char* languageEntry = "Settings/DefLangCode";

} // namespace

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
    EXPECT_EQ(CzynTranslate::GetSystemLocale(), 0xFFFFFFFFul);
    CzynTranslate::SetGlobalUILang(1033, true);
    CzynTranslate::SaveShowStringId(true);
    EXPECT_EQ(CzynTranslate::GetGlobalUILang(), 0u);
    EXPECT_EQ(CzynTranslate::ReadUILangFromReg(), 0u);
    EXPECT_FALSE(m_folder.Has("registry"));

    Host host(1049);
    EXPECT_EQ(CzynTranslate::GetSystemLocale(), 1049u);
    CzynTranslate::SetGlobalUILang(1033, false);
    EXPECT_TRUE(host.profile.empty());
    CzynTranslate::SetGlobalUILang(1033, true);
    EXPECT_EQ(host.profile[languageEntry], 1033);
    EXPECT_EQ(CzynTranslate::GetGlobalUILang(), 1033u);
    EXPECT_EQ(CzynTranslate::ReadUILangFromReg(), 1033u);
    EXPECT_FALSE(CzynTranslate::SetCurLocaleFromReg(true, nullptr));
}

TEST_F(UILanguage, KeysComeFirstAndZeroOrATextIsNotSet) {
    Host host(1049);
    host.profile[languageEntry] = 1034;
    CzynTranslate::SaveUILangToReg(1031); // makes the key
    EXPECT_EQ(CzynTranslate::ReadUILangFromReg(), 1031u);
    EXPECT_EQ(CzynTranslate::GetGlobalUILang(), 1031u);
    CzynTranslate::SetGlobalUILang(0xFFFFFFFF, false);
    EXPECT_EQ(CzynTranslate::GetGlobalUILang(), 0xFFFFFFFFul);

    m_folder.Write("registry", "[Software\\Orvant\\Settings]\n\"DefLangCode\"=\"1031\"\n");
    EXPECT_EQ(CzynTranslate::GetGlobalUILang(), 0u); // the key is there: no look at the profile
    EXPECT_EQ(CzynTranslate::ReadUILangFromReg(), 1034u);
    const auto fallback = RegistryKey::OpenOrCreate("Software\\Orvant\\Модуль Tessel\\Settings"_cp1251);
    ASSERT_TRUE(fallback && fallback->SetNumber("DefLangCode", 1036));
    EXPECT_EQ(CzynTranslate::ReadUILangFromReg(), 1036u);
    CzynTranslate::SaveUILangToReg(0);
    EXPECT_EQ(CzynTranslate::ReadUILangFromReg(), 1036u);
}

TEST_F(UILanguage, ShowingIdsIsReadWithTheLanguage) {
    CzynTranslate::SaveUILangToReg(1031);
    ASSERT_TRUE(Key()->SetNumber("bShowStringId", 5));
    EXPECT_FALSE(CzynTranslate::GetShowStringId());
    CzynTranslate::ReadUILangFromReg();
    EXPECT_TRUE(CzynTranslate::GetShowStringId());
    CzynTranslate::SaveShowStringId(false);
    EXPECT_EQ(Key()->GetNumber("bShowStringId"), 0u);
    EXPECT_TRUE(CzynTranslate::GetShowStringId());
    CzynTranslate::ReadUILangFromReg();
    EXPECT_FALSE(CzynTranslate::GetShowStringId());
    CzynTranslate::SaveShowStringId(true);
    EXPECT_EQ(Key()->GetNumber("bShowStringId"), 1u);
}
