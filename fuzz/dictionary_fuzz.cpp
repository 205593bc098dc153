// SPDX-License-Identifier: MIT
#include "fuzz.h"

#include "support/host.h"
#include "zynaggr/zyn_translate.h"

#include <set>

// The input is a Russian dictionary file and, behind a zero byte, its translation. Both ways of reading a
// file find the same texts, and Init adds translations for them.

namespace {

struct OpenTranslate : CzynTranslate {
    using CzynTranslate::LoadXml;
};

void DecodeEscapes(std::string_view text) {
    std::unique_ptr<char[]> copy(new char[text.size() + 1]);
    std::copy(text.begin(), text.end(), copy.get());
    copy[text.size()] = 0;
    Check(CzynTranslate::ConvertSpecSymbols(copy.get()) == copy.get());
    if (text.find('\\') == text.npos) Check(copy.get() == text);
}

std::set<std::string> Read(const CStringA& name) {
    CStringArray texts;
    OpenTranslate::LoadXml(name, texts, true);
    std::set<std::string> all;
    for (int i = 0; i < texts.GetSize(); ++i)
        all.emplace(texts[i]);
    return all;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Host host(9);
    constexpr const char* russian = "translate#f#ru-RU.xml";
    constexpr const char* english = "translate#f#en.xml";
    Input input(data, size);
    const std::string_view text = input.Text(size);
    DecodeEscapes(text);
    host.folder.Write(russian, text);
    host.folder.Write(english, input.Rest());
    const auto originals = Read(host.folder.Path(russian)), translations = Read(host.folder.Path(english));
    zynplatform::SetThreadLocale(1049);
    Check(CzynTranslate::Init(true, nullptr)); // forgets the last dictionary
    zynplatform::SetThreadLocale(9);
    if (!CzynTranslate::Init(true, nullptr)) return 0;
    for (const std::string& original : originals) {
        const char* const translated = CzynTranslate::Translate(original.c_str());
        Check(translated == original.c_str() || translations.contains(translated));
    }
    return 0;
}
