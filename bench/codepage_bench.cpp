// SPDX-License-Identifier: MIT
#include "keep_memory.h"
#include "zynaggr/zynencoding.h"
#include "zynaggr/zynstringfile.h"
#include "zynplatform/codepage.h"
#include "zynplatform/vectorcode_impl.h"

#include <benchmark/benchmark.h>
#include <cstring>
#include <iconv.h>
#include <memory>
#include <string>
#include <string_view>

#ifdef HAVE_icuuc
#include <unicode/ucnv.h>
#endif
#ifdef HAVE_Qt5Core
#include <QByteArray>
#include <QString>
#include <QTextCodec>
#endif

// 16 MB of text from one encoding to another, each time into a new buffer, against the system's converter and
// two libraries; and how long it takes to see what a text is encoded in.

namespace {

constexpr std::size_t textSize = 16 << 20;

struct Texts {
    std::string cp1251, utf8, swapped;
    std::u16string ucs2;
};

Texts Make(std::u16string_view sample) {
    Texts texts;
    while (texts.ucs2.size() < textSize)
        texts.ucs2 += sample;
    texts.cp1251.resize(texts.ucs2.size());
    zynplatform::ToNarrow(1251, texts.ucs2.data(), texts.ucs2.size(), texts.cp1251.data());
    texts.utf8.resize(zynplatform::NarrowLength(65001, texts.ucs2.data(), texts.ucs2.size()));
    zynplatform::ToNarrow(65001, texts.ucs2.data(), texts.ucs2.size(), texts.utf8.data());
    for (const char16_t unit : texts.ucs2)
        (texts.swapped += static_cast<char>(unit >> 8)) += static_cast<char>(unit & 0xFF);
    return texts;
}

// Made once: several benchmarks use them.
const Texts& Russian() {
    static const Texts texts =
        Make(u"Съешь же ещё этих мягких французских булок, да выпей чаю. Всего: 25 шт. по 140 руб.\r\n");
    return texts;
}
const Texts& Ascii() {
    static const Texts texts =
        Make(u"The quick brown fox jumps over the lazy dog; key_17=value of the parameter number 17\r\n");
    return texts;
}

std::string_view Bytes(const std::string& text) {
    return text;
}
std::string_view Bytes(const std::u16string& text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}

struct Output {
    std::unique_ptr<char[]> bytes;
    std::size_t size = 0;
};

using Convert = Output (*)(std::string_view text);

template <zynTextEncoding from, zynTextEncoding to> Output Ours(std::string_view text) {
    unsigned char* out = nullptr;
    int size = 0;
    CzynStringFile::ConvertEncoding(from, reinterpret_cast<unsigned char*>(const_cast<char*>(text.data())),
                                    static_cast<int>(text.size()), to, out, size);
    return {std::unique_ptr<char[]>(reinterpret_cast<char*>(out)), static_cast<std::size_t>(size)};
}

constexpr const char* Name(zynTextEncoding encoding) {
    return encoding == zynEncCP1251   ? "CP1251"
           : encoding == zynEncUTF8   ? "UTF-8"
           : encoding == zynEncUCS2LE ? "UTF-16LE"
                                      : "UTF-16BE";
}

// As on a processor without the best instructions of this one.
template <zynTextEncoding from, zynTextEncoding to, zynplatform::Instructions instructions>
Output OursWith(std::string_view text) {
    zynplatform::UseInstructions(instructions);
    Output output = Ours<from, to>(text);
    zynplatform::UseInstructions(zynplatform::BestInstructions());
    return output;
}

template <zynTextEncoding from, zynTextEncoding to> Output Iconv(std::string_view text) {
    const iconv_t converter = iconv_open(Name(to), Name(from));
    const std::size_t room = 2 * text.size();
    Output output{std::unique_ptr<char[]>(new char[room]), 0};
    char* source = const_cast<char*>(text.data());
    char* target = output.bytes.get();
    std::size_t left = text.size(), rest = room;
    iconv(converter, &source, &left, &target, &rest);
    iconv_close(converter);
    output.size = room - rest;
    return output;
}

#ifdef HAVE_icuuc
template <zynTextEncoding from, zynTextEncoding to> Output Icu(std::string_view text) {
    UErrorCode error = U_ZERO_ERROR;
    const std::size_t room = 2 * text.size();
    Output output{std::unique_ptr<char[]>(new char[room]), 0};
    UConverter* const source = ucnv_open(from == zynEncCP1251 ? "windows-1251" : Name(from), &error);
    UConverter* const target = ucnv_open(to == zynEncCP1251 ? "windows-1251" : Name(to), &error);
    char* out = output.bytes.get();
    const char* in = text.data();
    ucnv_convertEx(target, source, &out, out + room, &in, in + text.size(), nullptr, nullptr, nullptr,
                   nullptr, true, true, &error);
    ucnv_close(source);
    ucnv_close(target);
    output.size = static_cast<std::size_t>(out - output.bytes.get());
    return output;
}
#endif

#ifdef HAVE_Qt5Core
template <zynTextEncoding from, zynTextEncoding to> Output Qt(std::string_view text) {
    static QTextCodec* const page = QTextCodec::codecForName("windows-1251");
    const int size = static_cast<int>(text.size());
    QString wide;
    if (from == zynEncCP1251)
        wide = page->toUnicode(text.data(), size);
    else if (from == zynEncUTF8)
        wide = QString::fromUtf8(text.data(), size);
    else
        wide = QString::fromRawData(reinterpret_cast<const QChar*>(text.data()), size / 2);
    // What is made stays in its own type, as a user would leave it; the copy is outside the time.
    static QString keptWide;
    static QByteArray kept;
    std::string_view bytes;
    if (to == zynEncUCS2BE) {
        static QTextCodec* const swapped = QTextCodec::codecForName("UTF-16BE");
        QTextCodec::ConverterState noMark(QTextCodec::IgnoreHeader);
        kept = swapped->fromUnicode(wide.constData(), wide.size(), &noMark);
        bytes = {kept.constData(), static_cast<std::size_t>(kept.size())};
    } else if (to == zynEncUCS2LE) {
        keptWide = wide;
        bytes = {reinterpret_cast<const char*>(keptWide.constData()),
                 static_cast<std::size_t>(keptWide.size()) * 2};
    } else {
        kept = to == zynEncUTF8 ? wide.toUtf8() : page->fromUnicode(wide);
        bytes = {kept.constData(), static_cast<std::size_t>(kept.size())};
    }
    benchmark::DoNotOptimize(bytes.data());
    return {nullptr, bytes.size()};
}
#endif

Output Copy(std::string_view text) {
    Output output{std::unique_ptr<char[]>(new char[text.size()]), text.size()};
    std::memcpy(output.bytes.get(), text.data(), text.size());
    return output;
}

void Run(benchmark::State& state, Convert convert, std::string_view text, std::string_view wanted) {
    {
        const Output output = convert(text);
        if (output.size != wanted.size() ||
            (output.bytes && std::memcmp(output.bytes.get(), wanted.data(), wanted.size()) != 0))
            state.SkipWithError("wrong text");
    }
    for (auto _ : state) {
        const Output output = convert(text);
        benchmark::DoNotOptimize(output.size);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void Detect(benchmark::State& state) {
    const std::string_view text = Russian().utf8;
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    for (auto _ : state) {
        bool isUtf8 = IsBufUtf8(bytes, static_cast<int>(text.size()));
        if (!isUtf8) state.SkipWithError("not seen");
        benchmark::DoNotOptimize(isUtf8);
    }
}

void DetectFloor(benchmark::State& state) {
    const std::string& text = Russian().utf8;
    std::string target(text.size(), '\0');
    for (auto _ : state) {
        std::memcpy(target.data(), text.data(), text.size());
        benchmark::ClobberMemory();
    }
}

template <zynTextEncoding encoding> std::string_view In(const Texts& texts) {
    if constexpr (encoding == zynEncCP1251)
        return Bytes(texts.cp1251);
    else if constexpr (encoding == zynEncUTF8)
        return Bytes(texts.utf8);
    else if constexpr (encoding == zynEncUCS2BE)
        return Bytes(texts.swapped);
    else
        return Bytes(texts.ucs2);
}

template <zynTextEncoding from, zynTextEncoding to> void Register(const std::string& pair) {
    for (const bool isAscii : {false, true}) {
        const auto add = [&](const char* implementation, Convert convert, bool copies = false) {
            benchmark::RegisterBenchmark(
                (pair + (isAscii ? ", ASCII/" : ", Russian/") + implementation).c_str(),
                [=](benchmark::State& state) {
                    const Texts& texts = isAscii ? Ascii() : Russian();
                    Run(state, convert, In<from>(texts), copies ? In<from>(texts) : In<to>(texts));
                })
                ->Unit(benchmark::kMillisecond);
        };
        add("ours", Ours<from, to>);
        if (to != zynEncUCS2BE) { // which is one way for all
            using zynplatform::Instructions;
            add("ours, AVX2", OursWith<from, to, Instructions::avx2>);
            add("ours, 16-byte vectors", OursWith<from, to, Instructions::common>);
        }
        add("iconv", Iconv<from, to>);
#ifdef HAVE_icuuc
        add("ICU", Icu<from, to>);
#endif
#ifdef HAVE_Qt5Core
        add("Qt", Qt<from, to>);
#endif
        add("floor: memcpy", Copy, true);
    }
}

const bool registered = [] {
    KeepMemory();
    Register<zynEncCP1251, zynEncUTF8>("CP1251 to UTF-8");
    Register<zynEncUTF8, zynEncCP1251>("UTF-8 to CP1251");
    Register<zynEncUTF8, zynEncUCS2LE>("UTF-8 to UCS-2");
    Register<zynEncUCS2LE, zynEncUTF8>("UCS-2 to UTF-8");
    Register<zynEncUCS2LE, zynEncUCS2BE>("UCS-2 to UCS-2BE");
    return true;
}();

BENCHMARK(Detect)->Name("detect UTF-8, Russian/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(DetectFloor)->Name("detect UTF-8, Russian/floor: memcpy")->Unit(benchmark::kMillisecond);

} // namespace
