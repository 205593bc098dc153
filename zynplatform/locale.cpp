#include "zynplatform/locale.h"

#include "zynplatform/locale_table.h"

#include <cstdlib>

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

std::string_view ScriptOfModifier(std::string_view modifier) {
    if (modifier == "latin") return "Latn";
    if (modifier == "cyrillic") return "Cyrl";
    return {};
}

} // namespace

std::uint32_t LocaleFromPosixName(std::string_view name) {
    std::string_view script;
    if (const std::size_t modifier = name.find('@'); modifier != name.npos) {
        script = ScriptOfModifier(name.substr(modifier + 1));
        name = name.substr(0, modifier);
    }
    LocaleParts wanted(name.substr(0, name.find('.')), '_');
    if (wanted.region == "RS") wanted.region = "CS"; // the table has Serbia under its former code

    std::uint32_t best = englishUnitedStates;
    int bestScore = -1;
    for (const LocaleRow& row : localeTable) {
        const LocaleParts parts(row.culture, '-');
        if (parts.language.empty() || parts.language != wanted.language) continue;
        const auto lcid = static_cast<std::uint32_t>(row.lcid);
        const bool usualRegion = lcid >> 10 == 1;
        const int score = 4 * (parts.region == wanted.region) +
                          2 * (!script.empty() && parts.script == script) + usualRegion;
        if (score <= bestScore) continue;
        best = lcid;
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
