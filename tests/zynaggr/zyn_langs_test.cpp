#include "zynaggr/zyn_langs.h"
#include "zynplatform/locale.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <sstream>
#include <thread>

namespace {

// Culture and identifier of each row, in order.
constexpr const char* cultures =
    "af-ZA 1078 sq-AL 1052 gsw-FR 1156 am-ET 1118 ar-DZ 5121 ar-BH 15361 ar-EG 3073 ar-IQ 2049 ar-JO 11265 "
    "ar-KW 13313 ar-LB 12289 ar-LY 4097 ar-MA 6145 ar-OM 8193 ar-QA 16385 ar-SA 1025 ar-SY 10241 ar-TN 7169 "
    "ar-AE 14337 ar-YE 9217 hy-AM 1067 as-IN 1101 az-Cyrl-AZ 2092 az-Latn-AZ 1068 ba-RU 1133 eu-ES 1069 "
    "be-BY "
    "1059 bn-IN 1093 bs-Cyrl-BA 8218 bs-Latn-BA 5146 br-FR 1150 bg-BG 1026 ca-ES 1027 zh-HK 3076 zh-MO 5124 "
    "zh-CN 2052 zh-SG 4100 zh-TW 1028 hr-BA 4122 hr-HR 1050 cs-CZ 1029 da-DK 1030 gbz-AF 1164 dv-MV 1125 "
    "nl-BE 2067 nl-NL 1043 en-AU 3081 en-BZ 10249 en-CA 4105 en-029 9225 en-IN 16393 en-IE 6153 en-JM 8201 "
    "en-MY 17417 en-NZ 5129 en-PH 13321 en-SG 18441 en-ZA 7177 en-TT 11273 en-GB 2057 en-US 1033 en-ZW 12297 "
    "et-EE 1061 fo-FO 1080 fil-PH 1124 fi-FI 1035 fr-BE 2060 fr-CA 3084 fr-FR 1036 fr-LU 5132 fr-MC 6156 "
    "fr-CH 4108 fy-NL 1122 gl-ES 1110 ka-GE 1079 de-AT 3079 de-DE 1031 de-LI 5127 de-LU 4103 de-CH 2055 "
    "el-GR "
    "1032 kl-GL 1135 gu-IN 1095 ha-Latn-NG 1128 he-IL 1037 hi-IN 1081 hu-HU 1038 is-IS 1039 ig-NG 1136 id-ID "
    "1057 iu-Latn-CA 2141 iu-Cans-CA 1117 ga-IE 2108 it-IT 1040 it-CH 2064 ja-JP 1041 kn-IN 1099 kk-KZ 1087 "
    "kh-KH 1107 qut-GT 1158 rw-RW 1159 kok-IN 1111 - 2066 ko-KR 1042 ky-KG 1088 lo-LA 1108 lv-LV 1062 lt-LT "
    "1063 dsb-DE 2094 lb-LU 1134 mk-MK 1071 ms-BN 2110 ms-MY 1086 ml-IN 1100 mt-MT 1082 mi-NZ 1153 arn-CL "
    "1146 mr-IN 1102 moh-CA 1148 mn-Cyrl-MN 1104 mn-Mong-CN 2128 ne-NP 1121 nb-NO 1044 nn-NO 2068 oc-FR 1154 "
    "or-IN 1096 ps-AF 1123 fa-IR 1065 pl-PL 1045 pt-BR 1046 pt-PT 2070 pa-IN 1094 quz-BO 1131 quz-EC 2155 "
    "quz-PE 3179 ro-RO 1048 rm-CH 1047 ru-RU 1049 smn-FI 9275 smj-NO 4155 smj-SE 5179 se-FI 3131 se-NO 1083 "
    "se-SE 2107 sms-FI 8251 sma-NO 6203 sma-SE 7227 sa-IN 1103 sr-Cyrl-BA 7194 sr-Latn-BA 6170 sr-Cyrl-CS "
    "3098 sr-Latn-CS 2074 ns-ZA 1132 tn-ZA 1074 si-LK 1115 sk-SK 1051 sl-SI 1060 es-AR 11274 es-BO 16394 "
    "es-CL 13322 es-CO 9226 es-CR 5130 es-DO 7178 es-EC 12298 es-SV 17418 es-GT 4106 es-HN 18442 es-MX 2058 "
    "es-NI 19466 es-PA 6154 es-PY 15370 es-PE 10250 es-PR 20490 es-ES 3082 es-ES_tradnl 1034 es-US 21514 "
    "es-UY 14346 es-VE 8202 sw-KE 1089 sv-FI 2077 sv-SE 1053 syr-SY 1114 tg-Cyrl-TJ 1064 tmz-Latn-DZ 2143 "
    "ta-IN 1097 tt-RU 1092 te-IN 1098 th-TH 1054 bo-BT 2129 bo-CN 1105 tr-TR 1055 tk-TM 1090 ug-CN 1152 "
    "uk-UA "
    "1058 wen-DE 1070 tr-IN 2080 ur-PK 1056 uz-Cyrl-UZ 2115 uz-Latn-UZ 1091 vi-VN 1066 cy-GB 1106 wo-SN 1160 "
    "xh-ZA 1076 sah-RU 1157 ii-CN 1144 yo-NG 1130 zu-ZA 1077 ";

// The cultures that have a neutral language name.
constexpr const char* languages =
    "af: af-ZA ar: ar-DZ ar-BH ar-EG ar-IQ ar-JO ar-KW ar-LB ar-LY ar-MA ar-OM ar-QA ar-SA ar-SY ar-TN ar-AE "
    "ar-YE bs-Latn: bs-Latn-BA bg: bg-BG ca: ca-ES zh-CHS: zh-HK zh-MO zh-CN zh-SG zh-TW hr: hr-HR cs: cs-CZ "
    "da: da-DK nl: nl-BE nl-NL en: en-AU en-BZ en-CA en-029 en-IN en-IE en-JM en-MY en-NZ en-PH en-SG en-ZA "
    "en-TT en-GB en-US en-ZW et: et-EE fi: fi-FI fr: fr-BE fr-CA fr-FR fr-LU fr-MC fr-CH de: de-AT de-DE "
    "de-LI de-LU de-CH el: el-GR he: he-IL hi: hi-IN hu: hu-HU id: id-ID it: it-IT it-CH ja: ja-JP ko: - "
    "ko-KR lv: lv-LV lt: lt-LT ms: ms-BN ms-MY mt: mt-MT no: nb-NO nn-NO fa: fa-IR pl: pl-PL pt: pt-BR pt-PT "
    "ro: ro-RO ru: ru-RU sr-Cyrl: sr-Cyrl-BA sr-Cyrl-CS sr-Latn: sr-Latn-BA sr-Latn-CS sk: sk-SK sl: sl-SI "
    "es: es-AR es-BO es-CL es-CO es-CR es-DO es-EC es-SV es-GT es-HN es-MX es-NI es-PA es-PY es-PE es-PR "
    "es-ES es-ES_tradnl es-US es-UY es-VE sv: sv-FI sv-SE th: th-TH tr: tr-TR uk: uk-UA ur: tr-IN ur-PK vi: "
    "vi-VN cy: cy-GB ";

} // namespace

TEST(Langs, AllRowsInOrder) {
    std::map<std::string, std::string> languageOf;
    std::istringstream words(languages);
    std::string language;
    for (std::string word; words >> word;)
        if (word.back() == ':')
            language = word.substr(0, word.size() - 1);
        else
            languageOf[word] = language;

    std::istringstream rows(cultures);
    std::map<std::string, int> displayNames;
    for (const SZYNLanguage& row : zyn_langs) {
        std::string culture;
        int lcid = 0;
        rows >> culture >> lcid;
        EXPECT_EQ(row.strCulture, culture == "-" ? "" : culture.c_str());
        EXPECT_EQ(row.nLCID, lcid) << culture;
        EXPECT_EQ(row.strLanguage, languageOf[culture].c_str()) << culture;
        EXPECT_TRUE(row.strDisplayName.View().find(" (") > 1 && row.strDisplayName.View().ends_with(')'));
        ++displayNames[row.strDisplayName.GetString()];
    }
    EXPECT_FALSE(rows >> language);
    EXPECT_EQ(displayNames.size(), zyn_langs.size()); // no name twice
    for (const char* name :
         {"Arabic (U.A.E.)", "Azeri (Azerbaijan, Cyrillic)", "Norwegian (Bokm?l, Norway)", "Korean (Johab)",
          "Serbian (Serbia, Latin)", "Spanish (Spain, Traditional Sort)", "Zulu/isiZulu (South Africa)"})
        EXPECT_EQ(displayNames.count(name), 1u) << name;
}

TEST(Locale, FollowsTheEnvironmentUntilAThreadSetsItsOwn) {
    const struct {
        const char* name;
        std::uint32_t lcid;
    } cases[] = {{"ru_RU.UTF-8", 1049}, {"ru_UA", 1049},        {"ru", 1049},    {"de_AT@euro", 3079},
                 {"sr_RS", 3098},       {"sr_RS@latin", 2074},  {"es_ES", 3082}, {"uz_UZ@cyrillic", 2115},
                 {"en_DK.utf8", 1033},  {"C.UTF-8", 1033},      {"POSIX", 1033}, {"", 1033},
                 {"_RU", 1033},         {"en_029.UTF-8", 9225}, {"eo", 1033},    {"zh_CN.GB18030", 2052}};
    for (const auto& [name, lcid] : cases)
        EXPECT_EQ(zynplatform::LocaleFromPosixName(name), lcid) << name;

    for (const char* variable : {"LC_ALL", "LC_MESSAGES"})
        unsetenv(variable);
    setenv("LANG", "fr_FR.UTF-8", 1);
    EXPECT_EQ(zynplatform::GetThreadLocale(), 1036u);
    setenv("LC_MESSAGES", "de_DE.UTF-8", 1);
    EXPECT_EQ(zynplatform::GetThreadLocale(), 1031u);
    zynplatform::SetThreadLocale(1049);
    EXPECT_EQ(zynplatform::GetThreadLocale(), 1049u);
    std::thread([] { EXPECT_EQ(zynplatform::GetThreadLocale(), 1031u); }).join();
    zynplatform::SetThreadLocale(0);
    EXPECT_EQ(zynplatform::GetThreadLocale(), 1031u);
    unsetenv("LC_MESSAGES");
    unsetenv("LANG");
}
