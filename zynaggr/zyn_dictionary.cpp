// SPDX-License-Identifier: MIT

// Building the dictionary from pairs of files.

#include "zynaggr/hash_impl.h"
#include "zynaggr/zyn_dictionary_impl.h"
#include "zynaggr/zyn_translate.h"
#include "zynhost/application.h"
#include "zynhost/memory.h"
#include "zynhost/stringresources.h"
#include "zynplatform/filesystem.h"
#include "zynplatform/paths.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

constexpr std::uint32_t lcidEnglish = 9;
constexpr std::uint32_t lcidEnglishUS = 1033;
constexpr std::uint32_t lcidRussian = 1049;

constexpr const char* sourceMark = "#ru-RU";
constexpr unsigned ownLanguageResource = 3001;

// Counts what a message box is to say of, and keeps the first few.
class Report {
public:
    explicit Report(const char* heading) : m_sText(heading) {}

    void Add(const CStringA& sLine) {
        if (++m_nCount <= shown) m_sText += sLine;
    }
    bool IsEmpty() const { return m_nCount == 0; }
    CStringA Text() const {
        if (IsEmpty()) return {};
        return m_nCount > shown ? m_sText + "and other" : m_sText;
    }

private:
    static constexpr int shown = 5;
    CStringA m_sText;
    int m_nCount = 0;
};

// One run of Init. Sees the protected side of the class that it works for.
class DictionaryLoader : public CzynTranslate {
public:
    DictionaryLoader(std::uint32_t nLCID, bool bSilent)
        : m_sFixedEnding(nLCID == lcidEnglish     ? "#en.xml"
                         : nLCID == lcidEnglishUS ? "#en-US.xml"
                                                  : ""),
          m_bSilent(bSilent) {
        const auto language =
            std::ranges::find(zyn_langs, static_cast<std::int32_t>(nLCID), &SZYNLanguage::nLCID);
        if (language != zyn_langs.end()) m_sCulture = language->strCulture;
    }

    // Takes in a file of Russian texts and its translations; files of other kinds are passed over.
    void AddFile(const CStringA& sFile) {
        const int mark = sFile.Find(sourceMark);
        if (mark < 0) return;
        std::vector<int> known;
        for (const auto& [id, sSource] : m_aSources)
            known.push_back(id);
        if (!LoadXmlMap(sFile, m_aSources, true)) return;
        if (LoadTranslation(sFile.Left(mark)))
            Merge();
        else
            std::erase_if(m_aSources,
                          [&](const auto& entry) { return !std::ranges::binary_search(known, entry.first); });
    }

    // Moves what was merged into the dictionary.
    void FillDictionary() {
        std::vector<std::pair<std::string_view, Translation>> entries(m_aMerged.begin(), m_aMerged.end());
        std::ranges::sort(entries, {}, [](const auto& entry) { return entry.first; });
        for (const auto& [source, translation] : entries) // ascending: in an empty one each is appended
            zyn::dictionary.Add(source.data(), Shown(translation));
        m_aMerged.clear();
    }

private:
    // A text of the translation map, with the id under which it was met first.
    struct Translation {
        int id;
        const CStringA* text;
    };

    bool LoadTranslation(const CStringA& sStem) {
        CStringA sFile = sStem + m_sFixedEnding;
        if (!m_sFixedEnding.IsEmpty() && LoadXmlMap(sFile, m_aTranslations, true)) return true;
        if (!m_sCulture.IsEmpty()) {
            sFile = sStem + "#" + m_sCulture + ".xml";
            if (LoadXmlMap(sFile, m_aTranslations, true)) return true;
        }
        if (!m_bSilent) Show("Could not find translation data file!\n\n" + sFile, MB_ICONEXCLAMATION);
        return false;
    }

    // The host may translate while it shows a box, and add to the dictionary.
    void Show(const CStringA& sText, std::uint32_t nIcon) {
        FillDictionary();
        AfxMessageBox(sText, nIcon);
    }

    // Takes a pair in, unless the text has a translation already; false when that is another one.
    bool Add(int id, const CStringA& sSource, const CStringA& sTranslation) {
        if (const auto* const item = zyn::dictionary.Find(sSource.View()))
            return item->m_sValue == sTranslation;
        const auto [entry, added] = m_aMerged.try_emplace(sSource.View(), Translation{id, &sTranslation});
        return added || Shown(entry->second) == sTranslation;
    }

    void Merge() {
        Report missing("Could not find translation for strings:\r\n");
        Report variants("Found different translation variants in different files for strings:\r\n");
        m_aMerged.reserve(m_aSources.size());
        auto translation = m_aTranslations.begin();
        for (const auto& [id, sSource] : m_aSources) {
            while (translation != m_aTranslations.end() && translation->first < id)
                ++translation;
            if (translation == m_aTranslations.end() || translation->first != id) {
                CStringA sLine;
                sLine.Format("[#%d] ", id);
                missing.Add(sLine + sSource + "\r\n");
                continue;
            }
            if (!Add(id, sSource, translation->second)) variants.Add("\"" + sSource + "\"\n");
        }
        if (!m_bSilent && !(missing.IsEmpty() && variants.IsEmpty()))
            Show(missing.Text() + variants.Text(), MB_ICONHAND);
    }

    static CStringA Shown(const Translation& translation) {
        if (!m_bShowStringId) return *translation.text;
        CStringA sText;
        sText.Format("[%i] ", translation.id);
        return sText + *translation.text;
    }

    CStringA m_sFixedEnding;
    CStringA m_sCulture;
    bool m_bSilent;
    std::map<int, CStringA> m_aSources;      // by id, of all files so far
    std::map<int, CStringA> m_aTranslations; // likewise
    // What the dictionary does not have yet. It points into the two maps, from which no text of it is taken.
    std::unordered_map<std::string_view, Translation, zyn::TextHash> m_aMerged;
};

// Where the host's dictionaries are, with a backslash at its end; nothing when there is no such place.
CStringA DictionaryFolder() {
    const CStringA sHelpFile = AfxGetApp()->GetHelpFilePath();
    const std::string path = zynplatform::ToLibraryPath(sHelpFile.View());
    if (const std::size_t end = path.rfind('\\'); end != path.npos && end > 0)
        return CStringA(std::string_view(path).substr(0, end + 1));
    std::string current;
    if (zynplatform::GetCurrentFolder(current) && !current.ends_with('\\')) current += '\\';
    return CStringA(std::string_view(current));
}

bool IsEnglishEdition() {
    CStringA sLanguage = zynFindStringResource(zynLibraryModule(), ownLanguageResource);
    return sLanguage.MakeLower() == "english";
}

std::uint64_t Hash(std::string_view text) {
    return zyn::HashText(text, [](std::uint64_t block) { return block; });
}

std::uint32_t Tag(std::uint64_t hash) {
    return static_cast<std::uint32_t>(hash >> 32);
}

// Leaves the Russian interface in force, unless told that a dictionary is there.
class LoadingDictionary {
public:
    LoadingDictionary(std::uint32_t nLCID) {
        zyn::dictionaryLocale = nLCID;
        zyn::dictionary.Clear();
    }
    ~LoadingDictionary() {
        if (m_bLoaded) return;
        zyn::dictionaryLocale = 0;
        CzynTranslate::SetShouldTranslate(false);
    }
    LoadingDictionary(const LoadingDictionary&) = delete;
    LoadingDictionary& operator=(const LoadingDictionary&) = delete;
    void Succeed() { m_bLoaded = true; }

private:
    bool m_bLoaded = false;
};

} // namespace

void zyn::Dictionary::Add(const char* text, const char* translation) {
    if (2 * static_cast<std::size_t>(m_map.GetSize() + 1) > m_entries.size()) Grow();
    const int index = m_map.Add(text, translation);
    if (index < 0) AfxThrowMemoryException(); // the map has only shown it
    Enter(m_map.GetAt(index));
}

void zyn::Dictionary::Enter(const Item* item) {
    const std::string_view key = item->m_sKey.View();
    const std::uint64_t hash = Hash(key);
    m_entries[Place(key, hash)] = {Tag(hash), key, item};
}

void zyn::Dictionary::Clear() {
    m_entries.clear();
    m_map.Clear();
}

const zyn::Dictionary::Item* zyn::Dictionary::Find(std::string_view text) const {
    return m_entries.empty() ? nullptr : m_entries[Place(text, Hash(text))].item;
}

// The place of the text's entry, or the free one where it belongs.
std::size_t zyn::Dictionary::Place(std::string_view text, std::uint64_t hash) const {
    const std::uint32_t tag = Tag(hash);
    const std::size_t mask = m_entries.size() - 1;
    std::size_t at = static_cast<std::size_t>(hash) & mask;
    while (m_entries[at].item && !(m_entries[at].tag == tag && m_entries[at].key == text))
        at = (at + 1) & mask;
    return at;
}

void zyn::Dictionary::Grow() {
    std::vector<Entry> entries(std::max<std::size_t>(64, 2 * m_entries.size()));
    m_entries.swap(entries);
    for (int i = 0; i < m_map.GetSize(); ++i)
        Enter(m_map.GetAt(i));
}

bool CzynTranslate::Init(bool bSilent, CStringA* /*psUnused*/) {
    auto lcid = static_cast<std::uint32_t>(GetSystemLocale());
    if (lcid == zyn::noLocale) return false;
    if (lcid == lcidRussian) {
        if (!IsEnglishEdition()) {
            zyn::dictionaryLocale = 0;
            m_bTranslate = false;
            return true;
        }
        lcid = lcidEnglishUS;
    }
    m_bTranslate = true;
    if (zyn::dictionaryLocale == lcid) return true;

    LoadingDictionary loading(lcid);
    DictionaryLoader loader(lcid, bSilent);
    const CStringA sFolder = DictionaryFolder();
    for (const std::string& name : zynplatform::FindFiles(std::string(sFolder) + "translate#*.xml"))
        loader.AddFile(sFolder + name.c_str());
    loader.FillDictionary();
    if (zyn::dictionary.GetSize() > 0) {
        loading.Succeed();
        return true;
    }
    if (!bSilent)
        AfxMessageBox("Dictionary not found!\nLocalization impossible!\nRussian interface will be used!",
                      MB_ICONHAND);
    return false;
}

int CzynTranslate::GetTranslateFiles(const char* szFolder, std::set<int>& aLanguages) {
    aLanguages.clear();
    if (!szFolder) return 0;
    const std::string folder = zynplatform::ToLibraryPath(szFolder);
    for (const std::string& name : zynplatform::FindFiles(folder + "\\translate#*.xml")) {
        const std::string title = name.substr(0, name.rfind('.'));
        const CStringA sCulture(std::string_view(title).substr(title.rfind('#') + 1));
        const auto language = std::ranges::find(zyn_langs, sCulture, &SZYNLanguage::strCulture);
        if (language != zyn_langs.end()) aLanguages.insert(static_cast<int>(language - zyn_langs.begin()));
    }
    return static_cast<int>(aLanguages.size());
}
