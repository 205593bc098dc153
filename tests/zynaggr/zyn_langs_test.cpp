#include "zynaggr/zyn_langs.h"
#include "zynplatform/locale.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <thread>

TEST(Langs, TableIsStillTheOneThatWasComparedRowByRow) {
    const struct {
        std::size_t index;
        const char* row;
    } someRows[] = {{18, "14337 ar-AE Arabic (U.A.E.) ar"},
                    {22, "2092 az-Cyrl-AZ Azeri (Azerbaijan, Cyrillic) "},
                    {102, "2066  Korean (Johab) ko"},
                    {122, "1044 nb-NO Norwegian (Bokm?l, Norway) no"},
                    {151, "2074 sr-Latn-CS Serbian (Serbia, Latin) sr-Latn"},
                    {206, "1077 zu-ZA Zulu/isiZulu (South Africa) "}};
    std::vector<std::string> rows;
    std::set<std::string> displayNames;
    std::uint64_t hash = 0xCBF29CE484222325; // FNV-1a, over the rows in order
    for (const SZYNLanguage& row : zyn_langs) {
        displayNames.insert(row.strDisplayName.GetString());
        rows.push_back(std::to_string(row.nLCID) + " " + row.strCulture.GetString() + " " +
                       row.strDisplayName.GetString() + " " + row.strLanguage.GetString());
        for (const char c : rows.back() + "\n")
            hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    }
    EXPECT_EQ(hash, 10372320838057686129u);
    EXPECT_EQ(displayNames.size(), zyn_langs.size()); // no name twice
    for (const auto& [index, row] : someRows)
        EXPECT_EQ(rows[index], row);
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
