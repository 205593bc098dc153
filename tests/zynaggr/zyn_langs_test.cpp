// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynaggr/zyn_langs.h"
#include "zynplatform/locale.h"

#include <sstream>

TEST(Langs, TableIsStillTheOneThatWasComparedRowByRow) {
    std::set<std::string> displayNames;
    CStringA rows;
    for (const SZYNLanguage& row : zyn_langs) {
        displayNames.insert(row.strDisplayName.GetString());
        rows.AppendFormat("%d %s %s %s\n", row.nLCID, row.strCulture.GetString(),
                          row.strDisplayName.GetString(), row.strLanguage.GetString());
    }
    EXPECT_EQ(Hash(rows.View()), 10372320838057686129u);
    EXPECT_EQ(displayNames.size(), zyn_langs.size()); // no name twice
}

// A culture, and names of the C library whose row it is though they are written otherwise.
constexpr const char* posixNames =
    "ar-SA: ar ar_IN ar_SD ar_SS az-Latn-AZ: az_AZ az_IR be-BY: be_BY@latin bn-IN: bn_BD bo-CN: bo_IN "
    "bs-Latn-BA: bs bs_BA bs-Cyrl-BA: bs_BA@cyrillic ca-ES: ca_AD ca_ES@valencia ca_FR ca_IT de-DE: de_BE "
    "de_IT el-GR: el_CY en-029: en_029 es-ES: es es_CU eu-ES: eu_FR fil-PH: tl_PH fy-NL: fy_DE "
    "ha-Latn-NG: ha_NG iu-Cans-CA: iu_CA kh-KH: km_KH mn-Cyrl-MN: mn_MN mn-Mong-CN: mn_CN nb-NO: no_NO no "
    "nl-NL: nl_AW ns-ZA: nso_ZA pa-IN: pa_PK ru-RU: ru ru_UA sq-AL: sq_MK sr-Cyrl-CS: sr sr_ME sr_RS "
    "sr-Latn-CS: sr_RS@latin sr@latin sr-Cyrl-BA: sr_BA sr-Latn-BA: sr_BA@latin sw-KE: sw_TZ syr-SY: syr "
    "ta-IN: ta_LK tg-Cyrl-TJ: tg_TJ tmz-Latn-DZ: ber_DZ ber_MA tr-TR: tr_CY tr_IN tr-IN: ur_IN tt-RU: "
    "tt_RU@iqtelif uz-Latn-UZ: uz_UZ uz-Cyrl-UZ: uz_UZ@cyrillic wen-DE: hsb_DE zh-CN: zh zh-HK: yue_HK "
    "zh-TW: cmn_TW hak_TW lzh_TW nan_TW nan_TW@latin "
    "en-US: C POSIX _RU en_AG en_BW en_DK en_HK en_IL en_NG en_SC en_ZM";

TEST(Locale, EveryNameOfTheCLibraryHasItsRow) {
    std::string plain;
    for (const SZYNLanguage& row : zyn_langs)
        if (const std::string name = row.strCulture.GetString();
            std::regex_match(name, std::regex("(?!tr-IN)[a-z]+-[A-Z]+")))
            plain += name + ": " + std::regex_replace(name, std::regex("-"), "_") + " ";
    std::istringstream words(plain + posixNames);
    std::set<std::string> languages;
    auto row = zyn_langs.end();
    for (std::string name; words >> name;) {
        languages.insert(name.substr(0, name.find_first_of("_-:")));
        if (name.back() == ':') {
            name.pop_back();
            row = std::ranges::find(zyn_langs, CStringA(name), &SZYNLanguage::strCulture);
            ASSERT_NE(row, zyn_langs.end()) << name;
            continue;
        }
        const auto lcid = static_cast<std::uint32_t>(row->nLCID);
        const bool isPlain = name.find('@') == name.npos;
        name.insert(std::min(name.find('@'), name.size()), ".UTF-8");
        EXPECT_EQ(zynplatform::LocaleFromPosixName(name), lcid) << name;
        EXPECT_TRUE(!isPlain || zynplatform::LocaleFromPosixName(name + "@euro") == lcid) << name;
    }
    for (int n = 0; n < 27 * 27 * 27; ++n) { // languages without a row, known to the C library or not
        std::string name;
        for (int rest = n; rest > 0; rest /= 27)
            name += static_cast<char>('`' + rest % 27);
        EXPECT_TRUE(languages.contains(name) || zynplatform::LocaleFromPosixName(name + "_IN") == 1033u)
            << name;
    }
}

TEST(Locale, FollowsTheEnvironmentUntilAThreadSetsItsOwn) {
    const auto locale = zynplatform::GetThreadLocale;
    const Variable all("LC_ALL", {}), messages("LC_MESSAGES", {}), lang("LANG", "fr_FR.UTF-8");
    EXPECT_EQ(locale(), 1036u);
    messages.Set("de_DE.UTF-8");
    EXPECT_EQ(locale(), 1031u);
    zynplatform::SetThreadLocale(1049);
    EXPECT_EQ(locale(), 1049u);
    std::thread([&] { EXPECT_EQ(locale(), 1031u); }).join();
    zynplatform::SetThreadLocale(0);
    EXPECT_EQ(locale(), 1031u);
}
