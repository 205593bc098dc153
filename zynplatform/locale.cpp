// SPDX-License-Identifier: MIT
#include "zynplatform/locale.h"

#include "zynplatform/locale_table.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <span>
#include <utility>

namespace zynplatform {
namespace {

constexpr std::uint32_t englishUnitedStates = 1033;

thread_local std::uint32_t threadLocale = 0;

// "sr-Latn-CS" or "sr_CS" in its parts.
struct LocaleParts {
    std::string_view language, script, region;

    LocaleParts(std::string_view name, char separator) {
        const std::size_t first = name.find(separator), last = name.rfind(separator);
        language = name.substr(0, first);
        if (first == name.npos) return;
        region = name.substr(last + 1);
        if (last > first) script = name.substr(first + 1, last - first - 1);
    }
};

using Names = std::pair<std::string_view, std::string_view>;

// The other name under which the table has a language or a region; of the Chinese languages, what their
// speakers write.
constexpr Names languageNames[] = {{"no", "nb"},  {"km", "kh"},   {"nso", "ns"}, {"hsb", "wen"},
                                   {"tl", "fil"}, {"ber", "tmz"}, {"cmn", "zh"}, {"hak", "zh"},
                                   {"lzh", "zh"}, {"nan", "zh"},  {"yue", "zh"}};
constexpr Names regionNames[] = {{"RS", "CS"}, {"ME", "CS"}}; // Serbia and Montenegro were one
constexpr Names scriptNames[] = {{"latin", "Latn"}, {"cyrillic", "Cyrl"}};

std::string_view NameInTable(std::span<const Names> names, std::string_view name,
                             std::string_view otherwise) {
    const auto row = std::ranges::find(names, name, &Names::first);
    return row == names.end() ? otherwise : row->second;
}

constexpr std::int32_t urduOfIndia = 2080; // which the table has as Turkish

// Of the rows of a language the usual one is that with the first number of its kind; of these languages it is
// another one. Serbian has a usual one in each script.
constexpr std::string_view usualCultures[] = {"es-ES", "zh-CN", "bs-Latn-BA", "sr-Cyrl-CS", "sr-Latn-CS"};

int Usualness(const LocaleRow& row) {
    if (std::ranges::find(usualCultures, row.culture) != std::end(usualCultures)) return 2;
    return row.lcid >> 10 == 1 ? 1 : 0;
}

} // namespace

std::uint32_t LocaleFromPosixName(std::string_view name) {
    std::string_view script;
    if (const std::size_t modifier = name.find('@'); modifier != name.npos) {
        script = NameInTable(scriptNames, name.substr(modifier + 1), {});
        name = name.substr(0, modifier);
    }
    LocaleParts wanted(name.substr(0, name.find('.')), '_');
    wanted.language = NameInTable(languageNames, wanted.language, wanted.language);
    wanted.region = NameInTable(regionNames, wanted.region, wanted.region);

    std::uint32_t best = englishUnitedStates;
    int bestScore = -1;
    for (const LocaleRow& row : localeTable) {
        const LocaleParts parts(row.lcid == urduOfIndia ? "ur-IN" : row.culture, '-');
        if (parts.language.empty() || parts.language != wanted.language) continue;
        const int score = 8 * (parts.region == wanted.region) +
                          4 * (!script.empty() && parts.script == script) + Usualness(row);
        if (score <= bestScore) continue;
        best = static_cast<std::uint32_t>(row.lcid);
        bestScore = score;
    }
    return best;
}

std::uint32_t GetThreadLocale() {
    if (threadLocale != 0) return threadLocale;
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
        if (const char* value = std::getenv(variable); value && *value) return LocaleFromPosixName(value);
    return englishUnitedStates;
}

void SetThreadLocale(std::uint32_t lcid) {
    threadLocale = lcid;
}

} // namespace zynplatform
