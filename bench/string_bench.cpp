#include "zynaggr/zynstring.h"
#include "zynaggr/zynstringw.h"

#include <benchmark/benchmark.h>
#include <string>
#include <strings.h>
#include <vector>

// Both string classes against std::string and std::u16string doing the same job. The text is about 1 kB of
// words.

namespace {

template <class C> std::basic_string<C> Words() {
    std::basic_string<C> text;
    for (int i = 0; text.size() < 1000; ++i) {
        const std::string word = std::string("word").append(std::to_string(i)).append(i % 7 ? " " : ",");
        text.append(word.begin(), word.end());
    }
    return text;
}

template <class C> std::basic_string<C> Of(const char* text) {
    return std::basic_string<C>(text, text + std::char_traits<char>::length(text));
}

template <class C> void AppendCharacters(benchmark::State& state) {
    for (auto _ : state) {
        zyn::BasicString<C> text;
        for (int i = 0; i < 1000; ++i)
            text += static_cast<C>('a' + i % 26);
        benchmark::DoNotOptimize(text.GetCString());
    }
}
// The library's capacity grows by 16 characters at a time, by rule; the peer does as it likes.
template <class C> void AppendCharactersStd(benchmark::State& state) {
    for (auto _ : state) {
        std::basic_string<C> text;
        for (int i = 0; i < 1000; ++i)
            text += static_cast<C>('a' + i % 26);
        benchmark::DoNotOptimize(text.data());
    }
}

template <class C> void AppendTexts(benchmark::State& state) {
    const auto piece = Of<C>("twenty characters...");
    for (auto _ : state) {
        zyn::BasicString<C> text;
        text.GetBuffer(1001);
        for (int i = 0; i < 50; ++i)
            text += piece.c_str();
        benchmark::DoNotOptimize(text.GetCString());
    }
}
template <class C> void AppendTextsStd(benchmark::State& state) {
    const auto piece = Of<C>("twenty characters...");
    for (auto _ : state) {
        std::basic_string<C> text;
        text.reserve(1001);
        for (int i = 0; i < 50; ++i)
            text += piece.c_str();
        benchmark::DoNotOptimize(text.data());
    }
}

template <class C> void Find(benchmark::State& state) {
    const zyn::BasicString<C> text(Words<C>().c_str());
    const auto pattern = Of<C>("word99,");
    for (auto _ : state)
        benchmark::DoNotOptimize(text.Find(pattern.c_str(), 0));
}
template <class C> void FindStd(benchmark::State& state) {
    const auto text = Words<C>();
    const auto pattern = Of<C>("word99,");
    for (auto _ : state)
        benchmark::DoNotOptimize(text.find(pattern.c_str()));
}

// A text in which the pattern's beginning stands everywhere, and the pattern nowhere.
template <class C> void FindMisled(benchmark::State& state) {
    const auto length = static_cast<unsigned>(state.range(0));
    const zyn::BasicString<C> text(C('a'), length);
    zyn::BasicString<C> pattern(C('a'), length / 2);
    pattern += C('b');
    for (auto _ : state)
        benchmark::DoNotOptimize(text.Find(pattern, 0));
}

template <class C> void Replace(benchmark::State& state) {
    const auto words = Words<C>(), from = Of<C>("word"), to = Of<C>("item no ");
    for (auto _ : state) {
        zyn::BasicString<C> text(words.c_str());
        benchmark::DoNotOptimize(text.Replace(from.c_str(), to.c_str()));
    }
}
template <class C> void ReplaceStd(benchmark::State& state) {
    const auto words = Words<C>(), from = Of<C>("word"), to = Of<C>("item no ");
    for (auto _ : state) {
        std::basic_string<C> text(words);
        for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size())
            text.replace(at, from.size(), to);
        benchmark::DoNotOptimize(text.data());
    }
}

template <class C> void Tokenize(benchmark::State& state) {
    const zyn::BasicString<C> text(Words<C>().c_str());
    const auto set = Of<C>(" ,");
    for (auto _ : state) {
        int count = 0;
        for (int position = 0;; ++count) {
            const auto token = text.Tokenize(set.c_str(), position);
            if (position < 0) break;
            benchmark::DoNotOptimize(token.GetCString());
        }
        benchmark::DoNotOptimize(count);
    }
}
template <class C> void TokenizeStd(benchmark::State& state) {
    const auto text = Words<C>(), set = Of<C>(" ,");
    for (auto _ : state) {
        int count = 0;
        for (std::size_t at = text.find_first_not_of(set); at != text.npos; ++count) {
            const std::size_t end = text.find_first_of(set, at);
            const std::basic_string<C> token = text.substr(at, end == text.npos ? end : end - at);
            benchmark::DoNotOptimize(token.data());
            at = text.find_first_not_of(set, end);
        }
        benchmark::DoNotOptimize(count);
    }
}

template <class C> void Compare(benchmark::State& state) {
    const zyn::BasicString<C> text(Words<C>().c_str());
    const auto other = Words<C>();
    for (auto _ : state)
        benchmark::DoNotOptimize(text.Compare(other.c_str(), true));
}
template <class C> void CompareStd(benchmark::State& state) {
    const auto text = Words<C>(), other = Words<C>();
    for (auto _ : state)
        benchmark::DoNotOptimize(text.compare(other.c_str()));
}

void CompareNoCase(benchmark::State& state) {
    CzynStringA text(Words<char>().c_str());
    text.MakeUpper();
    const auto other = Words<char>();
    for (auto _ : state)
        benchmark::DoNotOptimize(text.CompareNoCase(other.c_str()));
}
void CompareNoCaseStd(benchmark::State& state) {
    CzynStringA upper(Words<char>().c_str());
    const std::string text(upper.MakeUpper()), other = Words<char>();
    for (auto _ : state)
        benchmark::DoNotOptimize(strcasecmp(text.c_str(), other.c_str()));
}

template <class C> void Fold(benchmark::State& state) {
    zyn::BasicString<C> text(Words<C>().c_str());
    for (auto _ : state) {
        text.MakeUpper().MakeLower();
        benchmark::DoNotOptimize(text.GetCString());
    }
}
void FoldStd(benchmark::State& state) {
    auto text = Words<char>();
    for (auto _ : state) {
        for (char& c : text)
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        for (char& c : text)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        benchmark::DoNotOptimize(text.data());
    }
}

void Trim(benchmark::State& state) {
    const std::string words = std::string(20, ' ') + Words<char>() + std::string(20, ' ');
    for (auto _ : state) {
        CzynStringA text(words.c_str());
        benchmark::DoNotOptimize(text.Trim().GetCString());
    }
}
void TrimStd(benchmark::State& state) {
    const std::string words = std::string(20, ' ') + Words<char>() + std::string(20, ' ');
    for (auto _ : state) {
        std::string text(words.c_str());
        text.erase(text.find_last_not_of(' ') + 1);
        text.erase(0, text.find_first_not_of(' '));
        benchmark::DoNotOptimize(text.data());
    }
}

} // namespace

#define BOTH(workload, name)                                                                                 \
    BENCHMARK(name<char>)->Name("CzynStringA, " workload "/ours");                                           \
    BENCHMARK(name##Std<char>)->Name("CzynStringA, " workload "/std::string");                               \
    BENCHMARK(name<WCHAR>)->Name("CzynStringW, " workload "/ours");                                          \
    BENCHMARK(name##Std<WCHAR>)->Name("CzynStringW, " workload "/std::u16string")

BOTH("append 1000 characters", AppendCharacters);
BOTH("append 50 texts", AppendTexts);
BOTH("find", Find);
BENCHMARK(FindMisled<char>)->Name("CzynStringA, find, misled/ours")->Arg(40'000)->Arg(160'000)->Arg(640'000);
BENCHMARK(FindMisled<WCHAR>)->Name("CzynStringW, find, misled/ours")->Arg(40'000)->Arg(160'000)->Arg(640'000);
BOTH("replace", Replace);
BOTH("tokenize", Tokenize);
BOTH("compare", Compare);
BENCHMARK(CompareNoCase)->Name("CzynStringA, compare without case/ours");
BENCHMARK(CompareNoCaseStd)->Name("CzynStringA, compare without case/strcasecmp");
BENCHMARK(Fold<char>)->Name("CzynStringA, fold both ways/ours");
BENCHMARK(FoldStd)->Name("CzynStringA, fold both ways/toupper, tolower");
BENCHMARK(Fold<WCHAR>)->Name("CzynStringW, fold both ways/ours");
BENCHMARK(Trim)->Name("CzynStringA, trim/ours");
BENCHMARK(TrimStd)->Name("CzynStringA, trim/std::string");
