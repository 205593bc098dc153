// SPDX-License-Identifier: MIT
#include "fuzz.h"

#include "zynaggr/zynstring.h"
#include "zynaggr/zynstringw.h"
#include "zynhost/cstring.h"

#include <array>
#include <string>
#include <tuple>
#include <vector>

// The input is a text and a program of edits on it, which are made on the 8-bit and the 16-bit string and on
// a standard one; then formats, which the C library prints as well, and delimiters to split by.

namespace {

std::u16string Widened(std::string_view text) {
    return {text.begin(), text.end()}; // ASCII
}
std::string Ascii(std::string_view text) {
    std::string ascii(text);
    for (char& c : ascii)
        c = static_cast<char>((c & 0x7F) != 0 ? c & 0x7F : '.');
    return ascii;
}

struct Strings {
    CzynStringA narrow;
    CzynStringW wide;
    std::string model;

    void Compare() const {
        Check(std::string_view(narrow, static_cast<std::size_t>(narrow.GetLength())) == model);
        Check(std::u16string_view(wide, static_cast<std::size_t>(wide.GetLength())) == Widened(model));
    }
};

void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t at = 0; !from.empty() && (at = text.find(from, at)) != text.npos; at += to.size())
        text.replace(at, from.size(), to);
}

void Edit(Strings& s, Input& input) {
    const unsigned kind = input.Below(8);
    const int number = input.Number();
    const std::string a = Ascii(input.Text(8)), b = Ascii(input.Text(8));
    const std::u16string wideA = Widened(a), wideB = Widened(b);
    const auto length = static_cast<int>(s.model.size());
    const auto at = static_cast<std::size_t>(std::clamp(number, 0, length));
    switch (kind) {
    case 0:
        s.narrow.Insert(number, a.c_str());
        s.wide.Insert(number, wideA.c_str());
        s.model.insert(at, a);
        break;
    case 1: {
        const unsigned count = input.Byte();
        s.narrow.Delete(static_cast<unsigned>(number), count);
        s.wide.Delete(static_cast<unsigned>(number), count);
        s.model.erase(at, count);
        break;
    }
    case 2:
        if (s.model.size() > 4096) break; // or it would grow eightfold at each step
        s.narrow.Replace(a.c_str(), b.c_str());
        s.wide.Replace(wideA.c_str(), wideB.c_str());
        ReplaceAll(s.model, a, b);
        break;
    case 3:
        if (a.empty()) break;
        s.narrow.Trim(a.c_str());
        s.wide.Trim(wideA.c_str());
        s.model.erase(s.model.find_last_not_of(a) + 1);
        s.model.erase(0, s.model.find_first_not_of(a));
        break;
    case 4:
        s.narrow += a.c_str();
        s.wide += wideA.c_str();
        s.model += a;
        break;
    case 5:
        s.narrow = s.narrow.Mid(number, 5);
        s.wide = s.wide.Mid(number, 5);
        s.model = s.model.substr(at, number < length ? 5 : 0);
        break;
    case 6:
        s.narrow.Insert(number, s.narrow.GetCString() + s.narrow.GetLength() / 2); // its own text
        s.wide.Insert(number, s.wide.GetCString() + s.wide.GetLength() / 2);
        s.model.insert(at, std::string(s.model, s.model.size() / 2));
        break;
    default: {
        const std::size_t found = a.empty() ? 0 : s.model.find(a, static_cast<unsigned>(number));
        const int expected = s.model.empty() || found == s.model.npos ? -1 : static_cast<int>(found);
        Check(s.narrow.Find(a.c_str(), static_cast<unsigned>(number)) == expected);
        Check(s.wide.Find(wideA.c_str(), static_cast<unsigned>(number)) == expected);
    }
    }
}

// Pieces between runs of delimiters.
std::vector<std::string> Split(const std::string& text, const std::string& delimiters) {
    std::vector<std::string> pieces{""};
    for (const char c : text)
        if (delimiters.find(c) == delimiters.npos)
            pieces.back() += c;
        else if (!pieces.back().empty())
            pieces.emplace_back();
    if (pieces.back().empty()) pieces.pop_back();
    return pieces;
}

void Tokenise(const Strings& s, const std::string& delimiters) {
    if (delimiters.empty()) return;
    const CStringA host(s.model.c_str());
    int narrowAt = 0, wideAt = 0, hostAt = 0;
    for (const std::string& piece : Split(s.model, delimiters)) {
        Check(s.narrow.Tokenize(delimiters.c_str(), narrowAt).Compare(piece.c_str(), true) == 0 &&
              narrowAt > 0);
        Check(s.wide.Tokenize(Widened(delimiters).c_str(), wideAt).Compare(Widened(piece).c_str(), true) ==
              0);
        Check(host.Tokenize(delimiters.c_str(), hostAt) == piece.c_str());
    }
    Check(s.narrow.Tokenize(delimiters.c_str(), narrowAt).IsEmpty() && narrowAt == -1);
    Check(s.wide.Tokenize(Widened(delimiters).c_str(), wideAt).IsEmpty() && wideAt == -1);
    Check(host.Tokenize(delimiters.c_str(), hostAt).IsEmpty() && hostAt == -1);
}

// A directive of random flags, width and precision, with a "*" for one of them at times.
template <class Value>
void Format(Input& input, std::string_view conversions, const char* length, Value value) {
    std::string format = Ascii(input.Text(4));
    ReplaceAll(format, "%", "%%");
    format += '%';
    for (unsigned flags = input.Byte(), i = 0; i < 5; ++i)
        if (flags >> i & 1) format += "-+ #0"[i];
    const unsigned width = input.Byte() * (input.Below(8) == 0 ? 20 : 1), precision = input.Byte();
    if (width % 3 != 0) format += std::to_string(width);
    if (precision % 3 != 0) format += "." + std::to_string(precision / 8);
    format += length;
    format += conversions[input.Below(static_cast<unsigned>(conversions.size()))];
    format += "|";
    char expected[4000];
    const int written = std::snprintf(expected, sizeof expected, format.c_str(), value);
    const int result = written < 4000 ? written : -1;
    CzynStringA narrow;
    CzynStringW wide;
    Check(narrow.Format(format.c_str(), value) == result && narrow.Compare(expected, true) == 0);
    if constexpr (!std::is_pointer_v<Value>) {
        Check(wide.Format(Widened(format).c_str(), value) == result &&
              wide.Compare(Widened(expected).c_str(), true) == 0);
    } else {
        const std::u16string text = Widened(value);
        Check(wide.Format(Widened(format).c_str(), text.c_str()) == result &&
              wide.Compare(Widened(expected).c_str(), true) == 0);
    }
}

// Whatever a format holds, with as many zeros as arguments as the 16-bit string, which takes it apart itself,
// ever looks for.
void FormatAnything(std::string_view text) {
    std::u16string format;
    for (const char c : text)
        format += static_cast<char16_t>(static_cast<unsigned char>(c) * (c < 0 ? 255 : 1));
    for (std::size_t at = 0; (at = format.find_first_of(u"sSnL", at)) != format.npos; ++at)
        format[at] = u'd';
    CzynStringW wide;
    std::apply([&](auto... zeros) { wide.Format(format.c_str(), zeros...); }, std::array<long long, 100>{});
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::string text = Ascii(input.Text());
    Strings s{text.c_str(), Widened(text).c_str(), text};
    for (int steps = 0; steps < 12 && !input.IsEmpty(); ++steps) {
        Edit(s, input);
        s.Compare();
    }
    Tokenise(s, Ascii(input.Text(4)));
    Format(input, "diouxX", "", input.Number());
    Format(input, "c", "", static_cast<int>(input.Below(127)) + 1);
    Format(input, "diouxX", "ll", std::int64_t{input.Number()} << input.Below(32));
    Format(input, "eEfFgGaA", "", input.Number() / 7.0);
    Format(input, "s", "", s.model.c_str());
    FormatAnything(input.Rest());
    return 0;
}
