#include "fuzz.h"

#include "support/ini_model.h"
#include "zynaggr/zynhelpers.h"

#include <vector>

// The input is an INI file. Saved and read again it gives the same lines, but for what saving is there to
// change.

namespace {

struct Line {
    enum Kind { header, pair, text } kind;
    std::string name, rest;
    bool operator==(const Line&) const = default;
};
using Lines = std::vector<Line>;

// The lines of the model, as they stand or as a save has to write them.
Lines LinesOf(const OpenIni& ini, bool saved) {
    Lines lines;
    bool afterPair = false;
    for (int i = 0; i < ini.m_aSections.GetSize(); ++i) {
        const CzynINI::SSection& section = *ini.m_aSections.GetAt(i);
        if (!section.m_sName.IsEmpty()) {
            if (saved && afterPair) lines.push_back({Line::text, "", ""});
            lines.push_back(
                {Line::header, std::string(section.m_sName.View()), std::string(section.m_sTail.View())});
        }
        afterPair = true;
        std::vector<std::pair<std::int32_t, Line>> numbered;
        Lines others;
        for (int k = 0; k < section.m_aOptions.GetSize(); ++k) {
            const CzynINI::SOption& option = *section.m_aOptions.GetAt(k);
            const bool isPair = !option.m_sKey.IsEmpty() || option.m_bEmptyKey;
            const Line line{isPair ? Line::pair : Line::text, std::string(option.m_sKey.View()),
                            std::string(option.m_sValue.View())};
            if (saved && IsNumber(option.m_sKey, false))
                numbered.emplace_back(zyn::DecimalValue(option.m_sKey), line);
            else
                others.push_back(line);
            afterPair = !option.m_sKey.IsEmpty();
        }
        std::stable_sort(numbered.begin(), numbered.end(),
                         [](const auto& left, const auto& right) { return left.first < right.first; });
        for (const auto& [number, line] : numbered)
            if (!line.rest.empty()) lines.push_back(line);
        lines.insert(lines.end(), others.begin(), others.end());
    }
    return lines;
}

// What a file in the code page holds may look like another encoding, having no mark; and a zero behind the
// shorter mark makes the longer one.
bool IsTakenForAnother(const std::string& text, zynTextEncoding encoding) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    const auto length = static_cast<int>(text.size());
    const zynTextEncoding marked = zynGetBufferEncodeByBOM(bytes, length, nullptr);
    if (encoding > zynEncCP1251) return !text.empty() && marked != encoding;
    return marked > zynEncCP1251 || IsBufUCS4BE(bytes, length) || IsBufUCS4LE(bytes, length) ||
           IsBufUtf8(bytes, length) || IsBufUCS2(bytes, length) || IsBufUCS2BE(bytes, length);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TempFolder folder;
    static const StandingClock clock;
    folder.Write("f.ini", {reinterpret_cast<const char*>(data), size});
    OpenIni ini(folder.Path("f.ini"));
    Check(ini.Parse());
    for (int round = 0; round < 2; ++round) {
        const std::string before = folder.Read("f.ini");
        const Lines expected = LinesOf(ini, true);
        Check(ini.InternalSave() && ini.m_sErr.IsEmpty());
        Check(folder.Read("f.ini.bak") == before);
        if (IsTakenForAnother(folder.Read("f.ini"), ini.m_nEncoding)) break;
        ini.SetNeedReload();
        Check(ini.Parse());
        Check(LinesOf(ini, false) == expected);
    }
    return 0;
}
