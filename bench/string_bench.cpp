// SPDX-License-Identifier: MIT
#include "zynaggr/zynstring.h"
#include "zynaggr/zynstringw.h"
#include "zynplatform/cp1251.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cwchar>
#include <string>
#include <strings.h>

#ifdef HAVE_Qt5Core
#include <QString>
#endif

// Both string classes against std::string, std::u16string, QString and the C library doing the same job. The
// long text is about 1 kB of words.

using namespace zynplatform::literals;

namespace {

std::string Words() {
    std::string text;
    for (int i = 0; text.size() < 1000; ++i)
        text.append("word").append(std::to_string(i)).append(i % 7 ? " " : ",");
    return text;
}

// ---- The same jobs by each class. `Piece` is what a user has at hand for it to take.

template <class C> struct Ours {
    using Character = C;
    using Text = zyn::BasicString<C>;
    using Piece = std::basic_string<C>;
    static constexpr const char* name = "ours";

    static Piece Of(const std::string& text) { return {text.begin(), text.end()}; }
    static void Append(Text& text, const Piece& piece) { text += piece.c_str(); }
    static void Append(Text& text, C character) { text += character; }
    static void Reserve(Text& text, int length) { text.GetBuffer(length + 1); }
    static Text MakeFrom(const Piece& piece) { return piece.c_str(); }
    static Text Copied(const Text& text) { return text; }
    static int Compare(const Text& text, const Piece& piece) { return text.Compare(piece.c_str(), true); }
    static int Find(const Text& text, const Piece& piece) { return text.Find(piece.c_str(), 0); }
    static int Find(const Text& text, C character) { return text.Find(character, 0); }
    static int Replace(Text& text, const Piece& from, const Piece& to) {
        return text.Replace(from.c_str(), to.c_str());
    }
    static void Format(Text& text, const Piece& format, const Piece& argument) {
        text.Format(format.c_str(), 42, argument.c_str(), 1234567);
    }
    static int Tokenize(const Text& text, const Piece& set) {
        int count = 0;
        for (int position = 0;; ++count) {
            const Text token = text.Tokenize(set.c_str(), position);
            if (position < 0) return count;
            benchmark::DoNotOptimize(token.GetCString());
        }
    }
};

template <class C> struct Std {
    using Character = C;
    using Text = std::basic_string<C>;
    using Piece = std::basic_string<C>;
    static constexpr const char* name = sizeof(C) == 1 ? "std::string" : "std::u16string";

    static Piece Of(const std::string& text) { return {text.begin(), text.end()}; }
    static void Append(Text& text, const Piece& piece) { text += piece.c_str(); }
    static void Append(Text& text, C character) { text += character; }
    static void Reserve(Text& text, int length) { text.reserve(static_cast<std::size_t>(length)); }
    static Text MakeFrom(const Piece& piece) { return piece.c_str(); }
    static Text Copied(const Text& text) { return text; }
    static int Compare(const Text& text, const Piece& piece) { return text.compare(piece.c_str()); }
    static int Find(const Text& text, const Piece& piece) {
        return static_cast<int>(text.find(piece.c_str()));
    }
    static int Find(const Text& text, C character) { return static_cast<int>(text.find(character)); }
    static int Replace(Text& text, const Piece& from, const Piece& to) {
        int count = 0;
        for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size(), ++count)
            text.replace(at, from.size(), to);
        return count;
    }
    static void Format(Text& text, const Piece& format, const Piece& argument) requires(sizeof(C) == 1) {
        char buffer[4000];
        std::snprintf(buffer, sizeof buffer, format.c_str(), 42, argument.c_str(), 1234567);
        text = buffer;
    }
    static int Tokenize(const Text& text, const Piece& set) {
        int count = 0;
        for (std::size_t at = text.find_first_not_of(set); at != text.npos; ++count) {
            const std::size_t end = text.find_first_of(set, at);
            const Text token = text.substr(at, end == text.npos ? end : end - at);
            benchmark::DoNotOptimize(token.data());
            at = text.find_first_not_of(set, end);
        }
        return count;
    }
};

#ifdef HAVE_Qt5Core
struct Qt {
    using Character = char16_t;
    using Text = QString;
    using Piece = QString;
    static constexpr const char* name = "QString";

    static Piece Of(const std::string& text) { return Piece::fromStdString(text); }
    static void Append(Text& text, const Piece& piece) { text += piece; }
    static void Append(Text& text, char16_t character) { text += QChar(character); }
    static void Reserve(Text& text, int length) { text.reserve(length); }
    static Text MakeFrom(const Piece& piece) { return Text(piece.constData(), piece.size()); }
    static Text Copied(const Text& text) { return MakeFrom(text); } // not shared
    static int Compare(const Text& text, const Piece& piece) { return text.compare(piece); }
    static int Find(const Text& text, const Piece& piece) { return text.indexOf(piece); }
    static int Find(const Text& text, char16_t character) { return text.indexOf(QChar(character)); }
    static int Replace(Text& text, const Piece& from, const Piece& to) {
        text.replace(from, to);
        return 1;
    }
    static void Format(Text& text, const Piece&, const Piece& argument) {
        text = QString::asprintf("item %d of %ls costs %d", 42, qUtf16Printable(argument), 1234567);
    }
};
#endif

// ---- The jobs

template <class S> void AppendCharacters(benchmark::State& state) {
    for (auto _ : state) {
        typename S::Text text;
        for (int i = 0; i < 1000; ++i)
            S::Append(text, static_cast<typename S::Character>('a' + i % 26));
        benchmark::DoNotOptimize(text);
    }
}

// Texts that end in a zero, or strings.
template <class S, bool asksForRoom, bool takesStrings = false> void AppendTexts(benchmark::State& state) {
    const auto piece = S::Of("twenty characters...");
    const auto string = S::MakeFrom(piece);
    for (auto _ : state) {
        typename S::Text text;
        if (asksForRoom) S::Reserve(text, 1000);
        for (int i = 0; i < 50; ++i)
            if constexpr (takesStrings)
                text += string;
            else
                S::Append(text, piece);
        benchmark::DoNotOptimize(text);
    }
}

template <class S> void Copy(benchmark::State& state) {
    const auto text = S::MakeFrom(S::Of(Words().substr(0, static_cast<std::size_t>(state.range(0)))));
    for (auto _ : state) {
        auto copy = S::Copied(text);
        benchmark::DoNotOptimize(copy);
    }
}

template <class S> void Compare(benchmark::State& state) {
    const auto words = S::Of(Words().substr(0, static_cast<std::size_t>(state.range(0))));
    const auto text = S::MakeFrom(words);
    for (auto _ : state)
        benchmark::DoNotOptimize(S::Compare(text, words));
}

template <class S> void Find(benchmark::State& state) {
    const auto text = S::MakeFrom(S::Of(Words()));
    const auto pattern = S::Of("word99,");
    for (auto _ : state)
        benchmark::DoNotOptimize(S::Find(text, pattern));
}

template <class S> void FindCharacter(benchmark::State& state) {
    const auto text = S::MakeFrom(S::Of(Words() + '#'));
    for (auto _ : state)
        benchmark::DoNotOptimize(S::Find(text, typename S::Character('#')));
}

// A text in which the pattern's beginning and end stand everywhere, and the pattern nowhere.
template <class S> void FindMisled(benchmark::State& state) {
    const auto length = static_cast<std::size_t>(state.range(0));
    const auto text = S::MakeFrom(S::Of(std::string(length, 'a')));
    const auto pattern = S::Of(std::string(length / 4, 'a') + 'b' + std::string(length / 4, 'a'));
    for (auto _ : state)
        benchmark::DoNotOptimize(S::Find(text, pattern));
}

template <class S> void Replace(benchmark::State& state) {
    const auto words = S::Of(Words()), from = S::Of("word"), to = S::Of("item no ");
    for (auto _ : state) {
        auto text = S::MakeFrom(words);
        benchmark::DoNotOptimize(S::Replace(text, from, to));
    }
}

template <class S> void Format(benchmark::State& state) {
    const auto format = S::Of("item %d of %s costs %d"), name = S::Of("the list");
    typename S::Text text;
    for (auto _ : state) {
        S::Format(text, format, name);
        benchmark::DoNotOptimize(text);
    }
}

template <class S> void Tokenize(benchmark::State& state) {
    const auto text = S::MakeFrom(S::Of(Words()));
    const auto set = S::Of(" ,");
    for (auto _ : state)
        benchmark::DoNotOptimize(S::Tokenize(text, set));
}

// Texts that differ in the case of every letter: words, or a Russian sentence again and again.
std::string TextOfCase(benchmark::State& state, bool isRussian) {
    std::string text = Words();
    while (isRussian && text.size() < 2000)
        text.insert(0, "Съешь же ещё этих мягких французских булок, да выпей чаю. "_cp1251);
    return text.substr(0, static_cast<std::size_t>(state.range(0)));
}
template <bool isRussian> void CompareNoCase(benchmark::State& state) {
    const std::string text = TextOfCase(state, isRussian);
    CzynStringA upper(text.c_str());
    upper.MakeUpper();
    for (auto _ : state)
        benchmark::DoNotOptimize(upper.CompareNoCase(text.c_str()));
}
void StrCaseCmp(benchmark::State& state) { // ASCII only
    const std::string text = TextOfCase(state, false);
    CzynStringA folded(text.c_str());
    const std::string upper(folded.MakeUpper());
    for (auto _ : state)
        benchmark::DoNotOptimize(strcasecmp(upper.c_str(), text.c_str()));
}

template <class C> void Fold(benchmark::State& state) {
    auto text = Ours<C>::MakeFrom(Ours<C>::Of(Words()));
    for (auto _ : state) {
        text.MakeUpper().MakeLower();
        benchmark::DoNotOptimize(text.GetCString());
    }
}
void FoldStd(benchmark::State& state) {
    std::string text = Words();
    for (auto _ : state) {
        for (char& c : text)
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        for (char& c : text)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        benchmark::DoNotOptimize(text.data());
    }
}

void Trim(benchmark::State& state) {
    const std::string words = std::string(20, ' ') + Words() + std::string(20, ' ');
    for (auto _ : state) {
        CzynStringA text(words.c_str());
        benchmark::DoNotOptimize(text.Trim().GetCString());
    }
}
void TrimStd(benchmark::State& state) {
    const std::string words = std::string(20, ' ') + Words() + std::string(20, ' ');
    for (auto _ : state) {
        std::string text(words.c_str());
        text.erase(text.find_last_not_of(' ') + 1);
        text.erase(0, text.find_first_not_of(' '));
        benchmark::DoNotOptimize(text.data());
    }
}

void Swprintf(benchmark::State& state) { // by way of 32-bit characters
    const std::u16string name(u"the list");
    std::u16string text;
    for (auto _ : state) {
        wchar_t buffer[4000];
        const std::wstring wide(name.begin(), name.end());
        const int length =
            std::swprintf(buffer, std::size(buffer), L"item %d of %ls costs %d", 42, wide.c_str(), 1234567);
        text.assign(buffer, buffer + length);
        benchmark::DoNotOptimize(text);
    }
}

// ---- Their names

benchmark::internal::Benchmark* Register(bool isNarrow, std::string job, const char* implementation,
                                         benchmark::internal::Function* function) {
    job = (isNarrow ? "CzynStringA, " : "CzynStringW, ") + job + "/" + implementation;
    return benchmark::RegisterBenchmark(job.c_str(), function);
}

template <class S> void RegisterAll() {
    const auto add = [](const char* job, benchmark::internal::Function* function) {
        return Register(sizeof(typename S::Character) == 1, job, S::name, function);
    };
    add("append 1000 characters", AppendCharacters<S>);
    add("append 50 texts", AppendTexts<S, false>);
    add("append 50 texts, room asked for", AppendTexts<S, true>);
    add("append 50 strings, room asked for", AppendTexts<S, true, true>);
    add("copy", Copy<S>)->Arg(20)->Arg(1000);
    add("compare", Compare<S>)->Arg(20)->Arg(1000);
    add("find", Find<S>);
    add("find a character", FindCharacter<S>);
    add("replace", Replace<S>);
    if constexpr (requires(typename S::Text text) { S::Format(text, {}, {}); }) add("format", Format<S>);
    if constexpr (requires(typename S::Text text) { S::Tokenize(text, {}); }) add("tokenize", Tokenize<S>);
    if (S::name == std::string("ours"))
        add("find, misled", FindMisled<S>)->Arg(40'000)->Arg(160'000)->Arg(640'000);
}

const bool registered = [] {
    RegisterAll<Ours<char>>();
    RegisterAll<Std<char>>();
    Register(true, "compare without case, ASCII", "ours", CompareNoCase<false>)->Arg(20)->Arg(1000);
    Register(true, "compare without case, ASCII", "strcasecmp", StrCaseCmp)->Arg(20)->Arg(1000);
    Register(true, "compare without case, Russian", "ours", CompareNoCase<true>)->Arg(20)->Arg(1000);
    Register(true, "compare without case, Russian", "strcasecmp of ASCII", StrCaseCmp)->Arg(20)->Arg(1000);
    Register(true, "fold both ways", "ours", Fold<char>);
    Register(true, "fold both ways", "toupper, tolower", FoldStd);
    Register(true, "trim", "ours", Trim);
    Register(true, "trim", "std::string", TrimStd);
    RegisterAll<Ours<WCHAR>>();
    RegisterAll<Std<WCHAR>>();
#ifdef HAVE_Qt5Core
    RegisterAll<Qt>();
#endif
    Register(false, "format", "swprintf", Swprintf);
    Register(false, "fold both ways", "ours", Fold<WCHAR>);
    return true;
}();

} // namespace
