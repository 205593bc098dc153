#include "zynaggr/zyn_translate.h"
#include "zynhost/application.h"
#include "zynplatform/locale.h"
#include "zynplatform/paths.h"

#include <benchmark/benchmark.h>
#include <filesystem>
#include <fstream>
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

BENCHMARK(LoadDictionary)->Arg(5'000)->Arg(50'000)->Unit(benchmark::kMillisecond);
BENCHMARK(Translate)->Arg(1'000)->Arg(10'000)->Arg(100'000);

} // namespace
