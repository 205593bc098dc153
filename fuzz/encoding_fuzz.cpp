// SPDX-License-Identifier: MIT
#include "fuzz.h"

#include "zynaggr/zynstringadapter.h"
#include "zynaggr/zynstringfile.h"
#include "zynplatform/codepage.h"

#include <string>

// The input is a text of unknown encoding. It is recognised, and converted between any two encodings and code
// pages, there and back.

namespace {

struct Text {
    std::string bytes;
    bool isThere = false;
    bool operator==(const Text&) const = default;
};

Text Convert(zynTextEncoding from, const Text& text, zynTextEncoding to) {
    const auto src = Exactly(std::string_view(text.bytes));
    unsigned char* out = nullptr;
    int length = 0;
    Text result;
    result.isThere = CzynStringFile::ConvertEncoding(from, reinterpret_cast<unsigned char*>(src.get()),
                                                     static_cast<int>(text.bytes.size()), to, out, length);
    Check(result.isThere == (out != nullptr) && (result.isThere || length == 0));
    result.bytes.assign(reinterpret_cast<char*>(out), static_cast<std::size_t>(length));
    CzynStringFile::FreeBuffer(out);
    return result;
}

// Of other pairs the caller must not ask.
bool IsConverted(zynTextEncoding from, zynTextEncoding to) {
    const auto isKnown = [](zynTextEncoding encoding) { return encoding < zynEncUCS4LE; };
    return from == to || (isKnown(from) && to < zynEncCP866);
}

bool StartsWithMark(zynTextEncoding encoding, const Text& text) {
    const auto exact = Exactly(std::string_view(text.bytes));
    return GetBomLength(encoding, reinterpret_cast<unsigned char*>(exact.get()),
                        static_cast<int>(text.bytes.size())) != 0;
}

std::string Reversed(std::string bytes, std::size_t unit) {
    for (std::size_t i = 0; i + unit <= bytes.size(); i += unit)
        std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(i),
                     bytes.begin() + static_cast<std::ptrdiff_t>(i + unit));
    return bytes;
}

bool Is(bool (*test)(const unsigned char*, int), std::string_view bytes) {
    const auto exact = Exactly(bytes);
    return test(reinterpret_cast<unsigned char*>(exact.get()), static_cast<int>(bytes.size()));
}

template <class To, class From>
std::basic_string<To> Converted(unsigned page, std::basic_string_view<From> text, auto announce,
                                auto convert) {
    const auto src = Exactly(text);
    const std::size_t length = announce(page, src.get(), text.size());
    const std::unique_ptr<To[]> target(new To[length]);
    Check(convert(page, src.get(), text.size(), target.get()) == length);
    return {target.get(), length};
}

std::u16string Wide(unsigned page, std::string_view text) {
    return Converted<WCHAR>(page, text, zynplatform::WideLength, zynplatform::ToWide);
}

std::string Narrow(unsigned page, std::u16string_view text) {
    return Converted<char>(page, text, zynplatform::NarrowLength, zynplatform::ToNarrow);
}

void Recognise(const std::string& bytes) {
    const auto length = static_cast<int>(bytes.size());
    const auto exact = Exactly(std::string_view(bytes));
    const auto* const buffer = reinterpret_cast<const unsigned char*>(exact.get());
    int mark = -1;
    const zynTextEncoding marked = zynGetBufferEncodeByBOM(buffer, length, &mark);
    Check(mark == 0 || GetBomLength(marked, buffer, length) == mark);
    Check(Is(IsBufUCS2, bytes) == Is(IsBufUCS2BE, Reversed(bytes, 2)));
    Check(Is(IsBufUCS4LE, bytes) == Is(IsBufUCS4BE, Reversed(bytes, 4)));
    if (Is(IsBufUtf8, bytes)) Check(Narrow(65001, Wide(65001, bytes)) == bytes); // it is well-formed
}

// What stands before a text must not change how it is converted, wherever blocks begin.
void ConvertByPage(unsigned page, const std::string& bytes, std::size_t shift) {
    const std::u16string wide = Wide(page, bytes);
    Check(Wide(page, std::string(shift, 'x') + bytes) ==
              (wide.empty() ? u"" : std::u16string(shift, u'x') + wide) ||
          wide.empty());
    if (page != 1251 && page != 65001) return;
    const std::string narrow = Narrow(page, wide);
    Check(Narrow(page, std::u16string(shift, u'x') + wide) == std::string(shift, 'x') + narrow);
    Check(Wide(page, narrow) == wide && (page == 65001 || narrow == bytes));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr unsigned pages[] = {1251, 65001, 866, 1252, 932, 12345};
    Input input(data, size);
    const auto from = static_cast<zynTextEncoding>(input.Below(9));
    const auto to = static_cast<zynTextEncoding>(input.Below(9));
    const unsigned page = pages[input.Below(6)];
    const std::size_t shift = input.Below(70);
    const Text text{std::string(input.Rest()), true};
    Recognise(text.bytes);
    ConvertByPage(page, text.bytes, shift);
    // Once converted, a text survives the way there and back, but for marks, which 8-bit text loses.
    const Text there = IsConverted(from, to) ? Convert(from, text, to) : Text();
    if (there.isThere && IsConverted(to, from) && !StartsWithMark(from, text) && !StartsWithMark(to, there))
        Check(Convert(from, Convert(to, there, from), to) == there);
    return 0;
}
