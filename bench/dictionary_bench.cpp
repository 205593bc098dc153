// SPDX-License-Identifier: MIT
#include "keep_memory.h"
#include "zynaggr/zyn_translate.h"
#include "zynhost/application.h"
#include "zynplatform/locale.h"
#include "zynplatform/paths.h"

#include <benchmark/benchmark.h>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <libintl.h>
#include <random>
#include <string>
#include <vector>

// Loading a dictionary of so many entries, and looking texts up in it.

namespace {

namespace fs = std::filesystem;

// A host whose folder has the dictionary.
class Host : public CWinApp {
public:
    explicit Host(int entries) {
        fs::create_directories(m_folder);
        Write("translate#ru-RU.xml", entries, "Сообщение об ошибке номер ");
        Write("translate#de-DE.xml", entries, "Fehlermeldung Nummer ");
    }
    ~Host() override { fs::remove_all(m_folder); }
    CStringA GetHelpFilePath() const override {
        return CStringA(std::string_view(zynplatform::FromNativePath((m_folder / "host.hlp").string())));
    }

private:
    void Write(const char* name, int entries, const std::string& text) const {
        std::ofstream file(m_folder / name);
        file << "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<strings>\n";
        for (int i = 0; i < entries; ++i)
            file << "<s id=\"" << i + 1 << "\">" << text << i * 7919 % entries << "</s>\n";
        file << "</strings>\n";
    }

    fs::path m_folder = fs::temp_directory_path() / "zynaggr_dictionary_bench";
};

void Load(std::uint32_t lcid) {
    zynplatform::SetThreadLocale(lcid);
    CzynTranslate::Init(true, nullptr);
}

void LoadDictionary(benchmark::State& state) {
    const Host host(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        Load(1031);
        if (!CzynTranslate::IsNeedTranslate()) state.SkipWithError("no dictionary");
        state.PauseTiming();
        Load(1049);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Translate(benchmark::State& state) {
    const int entries = static_cast<int>(state.range(0));
    const Host host(entries);
    Load(1031);
    std::vector<CStringA> texts;
    std::mt19937 random(1);
    for (int i = 0; i < 4096; ++i) {
        const std::string number = std::to_string(random() % static_cast<unsigned>(entries));
        texts.push_back(CStringA(u"Сообщение об ошибке номер ") + number.c_str());
        if (CzynTranslate::Translate(texts.back()) != "Fehlermeldung Nummer " + number)
            state.SkipWithError("wrong translation");
    }
    std::size_t next = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(CzynTranslate::Translate(texts[next++ % texts.size()]));
    Load(1049);
}

// The same texts in a message catalogue, made by msgfmt.
class Catalogue {
public:
    explicit Catalogue(int entries) {
        const fs::path messages = m_folder / "en_US" / "LC_MESSAGES";
        fs::create_directories(messages);
        std::ofstream file(m_folder / "texts.po");
        file << "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n";
        for (int i = 0; i < entries; ++i)
            file << "msgid \"Сообщение об ошибке номер " << i << "\"\nmsgstr \"Fehlermeldung Nummer " << i
                 << "\"\n";
        file.close();
        const std::string command =
            "msgfmt " + (m_folder / "texts.po").string() + " -o " + (messages / "texts.mo").string();
        m_isMade = std::system(command.c_str()) == 0;
    }
    ~Catalogue() { fs::remove_all(m_folder); }
    // Catalogues are used in a locale other than "C" only.
    bool Open() const {
        return m_isMade && (std::setlocale(LC_ALL, "C.UTF-8") != nullptr) &&
               setenv("LANGUAGE", "en_US", 1) == 0 && bindtextdomain("texts", m_folder.c_str()) &&
               bind_textdomain_codeset("texts", "UTF-8") && textdomain("texts");
    }

private:
    fs::path m_folder = fs::temp_directory_path() / "zynaggr_catalogue_bench";
    bool m_isMade = false;
};

void Gettext(benchmark::State& state) {
    const int entries = static_cast<int>(state.range(0));
    const Catalogue catalogue(entries);
    if (!catalogue.Open()) state.SkipWithError("no catalogue");
    std::vector<std::string> texts;
    std::mt19937 random(1);
    for (int i = 0; i < 4096; ++i) {
        const std::string number = std::to_string(random() % static_cast<unsigned>(entries));
        texts.push_back("Сообщение об ошибке номер " + number);
        if (gettext(texts.back().c_str()) != "Fehlermeldung Nummer " + number)
            state.SkipWithError("wrong translation");
    }
    std::size_t next = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(gettext(texts[next++ % texts.size()].c_str()));
    std::setlocale(LC_ALL, "C");
}

const bool keepsMemory = KeepMemory();

BENCHMARK(LoadDictionary)
    ->Name("dictionary, load/ours")
    ->Arg(3'125)
    ->Arg(12'500)
    ->Arg(50'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Translate)->Name("translate/ours")->Arg(1'000)->Arg(10'000)->Arg(100'000);
BENCHMARK(Gettext)->Name("translate/gettext")->Arg(10'000);

} // namespace
