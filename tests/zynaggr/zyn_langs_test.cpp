#include "zynaggr/zyn_langs.h"
#include "zynplatform/locale.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <sstream>
#include <thread>

TEST(Langs, TableIsStillTheOneThatWasComparedRowByRow) {
    std::set<std::string> displayNames;
    std::uint64_t hash = 0xCBF29CE484222325; // FNV-1a, over the rows in order
    for (const SZYNLanguage& row : zyn_langs) {
        displayNames.insert(row.strDisplayName.GetString());
        CStringA line;
        line.Format("%d %s %s %s\n", row.nLCID, row.strCulture.GetString(), row.strDisplayName.GetString(),
                    row.strLanguage.GetString());
        for (const char c : line.View())
            hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    }
    EXPECT_EQ(hash, 10372320838057686129u);
    EXPECT_EQ(displayNames.size(), zyn_langs.size()); // no name twice
}

// A culture, and the names whose row it is; "=" is the culture that is written like the name. It has every
// name of the C library's list of supported locales, and what they lead to; those at the end have no row.
constexpr const char* posixNames =
    "=: af_ZA am_ET ar_AE ar_BH ar_DZ ar_EG ar_IQ ar_JO ar_KW ar_LB ar_LY ar_MA ar_OM ar_QA ar_SA ar_SY "
    "ar_TN ar_YE as_IN be_BY bg_BG bn_IN bo_CN br_FR ca_ES cs_CZ cy_GB da_DK de_AT de_CH de_DE de_LI "
    "de_LU dsb_DE dv_MV el_GR en_AU en_CA en_GB en_IE en_IN en_NZ en_PH en_SG en_US en_ZA en_ZW es_AR "
    "es_BO es_CL es_CO es_CR es_DO es_EC es_ES es_GT es_HN es_MX es_NI es_PA es_PE es_PR es_PY es_SV "
    "es_US es_UY es_VE et_EE eu_ES fa_IR fi_FI fil_PH fo_FO fr_BE fr_CA fr_CH fr_FR fr_LU fy_NL ga_IE "
    "gl_ES gu_IN he_IL hi_IN hr_HR hu_HU hy_AM id_ID ig_NG is_IS it_CH it_IT ja_JP ka_GE kk_KZ kl_GL "
    "kn_IN ko_KR kok_IN ky_KG lb_LU lo_LA lt_LT lv_LV mi_NZ mk_MK ml_IN mr_IN ms_MY mt_MT nb_NO ne_NP "
    "nl_BE nl_NL nn_NO oc_FR or_IN pa_IN pl_PL ps_AF pt_BR pt_PT quz_PE ro_RO ru_RU rw_RW sa_IN sah_RU "
    "se_NO si_LK sk_SK sl_SI sq_AL sv_FI sv_SE sw_KE ta_IN te_IN th_TH tk_TM tn_ZA tr_TR tt_RU ug_CN "
    "uk_UA ur_PK vi_VN wo_SN xh_ZA yo_NG zh_CN zh_HK zh_SG zh_TW zu_ZA "
    "ar-SA: ar ar_IN ar_SD ar_SS az-Latn-AZ: az_AZ az_IR be-BY: be_BY@latin bn-IN: bn_BD bo-CN: bo_IN "
    "bs-Latn-BA: bs bs_BA bs-Cyrl-BA: bs_BA@cyrillic ca-ES: ca_AD ca_ES@valencia ca_FR ca_IT de-DE: de_BE "
    "de_IT el-GR: el_CY en-029: en_029 es-ES: es es_CU eu-ES: eu_FR fil-PH: tl_PH fy-NL: fy_DE "
    "ha-Latn-NG: ha_NG iu-Cans-CA: iu_CA kh-KH: km_KH mn-Cyrl-MN: mn_MN mn-Mong-CN: mn_CN nb-NO: no_NO no "
    "nl-NL: nl_AW ns-ZA: nso_ZA pa-IN: pa_PK ru-RU: ru ru_UA sq-AL: sq_MK sr-Cyrl-CS: sr sr_ME sr_RS "
    "sr-Latn-CS: sr_RS@latin sr@latin sr-Cyrl-BA: sr_BA sr-Latn-BA: sr_BA@latin sw-KE: sw_TZ syr-SY: syr "
    "ta-IN: ta_LK tg-Cyrl-TJ: tg_TJ tmz-Latn-DZ: ber_DZ ber_MA tr-TR: tr_CY tr_IN tr-IN: ur_IN tt-RU: "
    "tt_RU@iqtelif uz-Latn-UZ: uz_UZ uz-Cyrl-UZ: uz_UZ@cyrillic wen-DE: hsb_DE zh-CN: zh zh-HK: yue_HK "
    "zh-TW: cmn_TW hak_TW lzh_TW nan_TW nan_TW@latin "
    "en-US: C POSIX _RU aa_DJ aa_ER aa_ER@saaho aa_ET agr_PE ak_GH an_ES anp_IN ast_ES ayc_PE bem_ZM "
    "bhb_IN bho_IN bho_NP bi_VU brx_IN byn_ER ce_RU chr_US ckb_IQ crh_UA csb_PL cv_RU doi_IN dz_BT en_AG "
    "en_BW en_DK en_HK en_IL en_NG en_SC en_ZM eo ff_SN fur_IT gd_GB gez_ER gez_ER@abegede gez_ET "
    "gez_ET@abegede gv_GB hif_FJ hne_IN ht_HT ia_FR ik_CA kab_DZ ks_IN ks_IN@devanagari ku_TR kw_GB lg_UG "
    "li_BE li_NL lij_IT ln_CD mag_IN mai_IN mai_NP mfe_MU mg_MG mhr_RU miq_NI mjw_IN mni_IN mnw_MM my_MM "
    "nds_DE nds_NL nhn_MX niu_NU niu_NZ nr_ZA om_ET om_KE os_RU pap_AW pap_CW raj_IN rif_MA sat_IN sc_IT "
    "sd_IN sd_IN@devanagari sgs_LT shn_MM shs_CA sid_ET sm_WS so_DJ so_ET so_KE so_SO ss_ZA st_ZA szl_PL "
    "tcy_IN the_NP ti_ER ti_ET tig_ER to_TO tpi_PG ts_ZA unm_US ve_ZA wa_BE wae_CH wal_ET yi_US yuw_PG ";

TEST(Locale, EveryNameOfTheCLibraryHasItsRow) {
    std::istringstream words(posixNames);
    std::string culture, name;
    while (words >> name) {
        if (name.back() == ':') {
            culture = name.substr(0, name.size() - 1);
            continue;
        }
        std::string own = name;
        std::ranges::replace(own, '_', '-');
        const char* const wanted = culture == "=" ? own.c_str() : culture.c_str();
        const auto row = std::ranges::find(zyn_langs, CStringA(wanted), &SZYNLanguage::strCulture);
        ASSERT_NE(row, zyn_langs.end()) << wanted;
        const auto lcid = static_cast<std::uint32_t>(row->nLCID);
        const bool isPlain = name.find('@') == name.npos;
        name.insert(std::min(name.find('@'), name.size()), ".UTF-8");
        EXPECT_EQ(zynplatform::LocaleFromPosixName(name), lcid) << name;
        EXPECT_TRUE(!isPlain || zynplatform::LocaleFromPosixName(name + "@euro") == lcid) << name;
    }
    EXPECT_EQ(zynplatform::LocaleFromPosixName(""), 1033u);
}

TEST(Locale, FollowsTheEnvironmentUntilAThreadSetsItsOwn) {
    const auto locale = zynplatform::GetThreadLocale;
    for (const char* variable : {"LC_ALL", "LC_MESSAGES"})
        unsetenv(variable);
    setenv("LANG", "fr_FR.UTF-8", 1);
    EXPECT_EQ(locale(), 1036u);
    setenv("LC_MESSAGES", "de_DE.UTF-8", 1);
    EXPECT_EQ(locale(), 1031u);
    zynplatform::SetThreadLocale(1049);
    EXPECT_EQ(locale(), 1049u);
    std::thread([&] { EXPECT_EQ(locale(), 1031u); }).join();
    zynplatform::SetThreadLocale(0);
    EXPECT_EQ(locale(), 1031u);
    unsetenv("LC_MESSAGES");
    unsetenv("LANG");
}
