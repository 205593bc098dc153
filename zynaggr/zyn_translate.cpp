// SPDX-License-Identifier: MIT
#include "zynaggr/zyn_translate.h"

#include "zynaggr/format_impl.h"
#include "zynaggr/zyn_dictionary_impl.h"
#include "zynhost/application.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/locale.h"
#include "zynplatform/moduleentry.h"
#include "zynplatform/registry.h"
#include "zynplatform/syserror.h"

using namespace zynplatform::literals;
using zynplatform::RegistryKey;

bool CzynTranslate::m_bTranslate = false;
bool CzynTranslate::m_bShowStringId = false;

namespace {
zynplatform::UntilUnload<zyn::Dictionary> dictionaryUntilUnload;
} // namespace

zyn::Dictionary& zyn::dictionary = *dictionaryUntilUnload;
std::uint32_t zyn::dictionaryLocale = zyn::noLocale;

namespace {

constexpr const char* globalKey = "SOFTWARE\\Orvant\\Settings";
constexpr const char* userKey = "Software\\Orvant\\Settings";
constexpr const char* fallbackKey = "Software\\Orvant\\Модуль Tessel\\Settings"_cp1251;
constexpr const char* languageValue = "DefLangCode";
constexpr const char* showIdValue = "bShowStringId";
constexpr const char* profileSection = "Settings";

std::uint32_t NumberOrZero(const std::optional<RegistryKey>& key, const char* name) {
    return key ? key->GetNumber(name).value_or(0) : 0;
}

std::uint32_t ProfileLanguage() {
    CWinApp* const app = AfxGetApp();
    return app ? app->GetProfileInt(profileSection, languageValue, 0) : 0;
}

} // namespace

CzynTranslate::~CzynTranslate() = default;

namespace {
const bool areErrorsTranslated [[maybe_unused]] =
    (zynplatform::SetErrorTranslator(&CzynTranslate::Translate), true);
}

const char* CzynTranslate::Translate(const char* szText) {
    if (!m_bTranslate || !szText || !*szText) return szText;
    const zyn::Dictionary::Item* const item = zyn::dictionary.Find(szText);
    return item ? item->m_sValue.GetString() : szText;
}

const char* CzynTranslate::TranslateFormat(const char* szFormat) {
    const char* const szTranslation = Translate(szFormat);
    const bool bFits = szTranslation == szFormat || zyn::ReadSameArguments(szFormat, szTranslation);
    return bFits ? szTranslation : szFormat;
}

void CzynTranslate::AddStringTranslationPair(const CStringA& sText, const CStringA& sTranslation) {
    zyn::dictionary.Add(sText, sTranslation);
}

unsigned long CzynTranslate::GetSystemLocale() {
    return AfxGetApp() ? zynplatform::GetThreadLocale() : zyn::noLocale;
}

unsigned long CzynTranslate::GetGurLocale() {
    return zyn::dictionaryLocale;
}

unsigned long CzynTranslate::GetGlobalUILang() {
    const auto key = RegistryKey::Open(globalKey);
    return key ? NumberOrZero(key, languageValue) : ProfileLanguage();
}

void CzynTranslate::SetGlobalUILang(unsigned long nLCID, bool bAlsoProfile) {
    const auto lcid = static_cast<std::uint32_t>(nLCID);
    if (const auto key = RegistryKey::Open(globalKey)) key->SetNumber(languageValue, lcid);
    CWinApp* const app = bAlsoProfile ? AfxGetApp() : nullptr;
    if (app) app->WriteProfileInt(profileSection, languageValue, static_cast<int>(lcid));
}

unsigned long CzynTranslate::ReadUILangFromReg() {
    const auto key = RegistryKey::Open(userKey);
    std::uint32_t language = NumberOrZero(key, languageValue);
    if (key) m_bShowStringId = key->GetNumber(showIdValue).value_or(m_bShowStringId) != 0;
    if (language == 0) language = NumberOrZero(RegistryKey::Open(fallbackKey), languageValue);
    return language != 0 ? language : ProfileLanguage();
}

void CzynTranslate::SaveUILangToReg(unsigned long nLCID) {
    if (const auto key = RegistryKey::OpenOrCreate(userKey))
        key->SetNumber(languageValue, static_cast<std::uint32_t>(nLCID));
}

void CzynTranslate::SaveShowStringId(bool bShow) {
    if (const auto key = RegistryKey::Open(userKey)) key->SetNumber(showIdValue, bShow ? 1 : 0);
}

bool CzynTranslate::SetCurLocaleFromReg(bool /*bUnused*/, CStringA* /*psUnused*/) {
    return false;
}
