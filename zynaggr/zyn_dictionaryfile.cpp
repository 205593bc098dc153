// SPDX-License-Identifier: MIT

// Reading dictionary files, line by line.

#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynfile.h"
#include "zynaggr/zynstringadapter.h"
#include "zynhost/application.h"
#include "zynhost/decimal.h"
#include "zynplatform/codepage.h"
#include "zynplatform/cp1251.h"

#include <optional>
#include <string>
#include <string_view>

namespace {

constexpr std::string_view blanksAndQuotes = " \"";

class DictionaryFile {
public:
    // The page is what the texts of a UTF-8 file are converted to.
    explicit DictionaryFile(unsigned codePage) : m_nCodePage(codePage) {}

    // Reads up to the first entry; false when this is no dictionary file.
    bool Open(const char* szFile, bool bSilent);
    // Reads an entry whole; false at the end of the file.
    bool Next(CStringA& sAttributes, CStringA& sText);

private:
    bool ReadLine(CStringA& sLine);
    void ToNarrow(CStringA& sText);

    CzynFile m_file;
    unsigned m_nCodePage;
    bool m_bUtf8 = false;
    std::u16string m_sWide; // serves every entry of the file
};

bool IsUtf8Declared(const CStringA& sLine) {
    constexpr std::string_view introducer = "encoding=\"";
    const std::string_view line = sLine.View();
    const std::size_t begin = line.find(introducer);
    if (begin == line.npos || begin == 0) return false;
    const std::string_view rest = line.substr(begin + introducer.size());
    const std::size_t quote = rest.find('"');
    return quote != rest.npos && CStringA(rest.substr(0, quote)).MakeLower() == "utf-8";
}

bool DictionaryFile::Open(const char* szFile, bool bSilent) {
    if (!m_file.Open(szFile, CFile::modeRead | CFile::shareDenyWrite, nullptr)) {
        if (!bSilent)
            AfxMessageBox(CStringA("Error open file \"") + szFile +
                              "\"\n\n Localization impossible! Using Russian interface!",
                          MB_ICONHAND);
        return false;
    }
    CStringA sLine;
    if (ReadLine(sLine)) m_bUtf8 = IsUtf8Declared(sLine);
    return ReadLine(sLine) && sLine.Find("<strings>") >= 0;
}

bool DictionaryFile::ReadLine(CStringA& sLine) {
    if (!m_file.ReadString(sLine)) return false;
    if (sLine.View().ends_with('\r')) sLine.ReleaseBuffer(sLine.GetLength() - 1);
    return true;
}

bool DictionaryFile::Next(CStringA& sAttributes, CStringA& sText) {
    constexpr std::string_view closing = "</s>";
    for (CStringA sLine; ReadLine(sLine);) {
        std::string_view line = sLine.View();
        const std::size_t start = line.find("<s");
        if (start == line.npos) continue;
        line.remove_prefix(start + 2);
        const std::size_t tagEnd = line.find('>');
        if (tagEnd == line.npos || line.find("/>") != line.npos) continue;
        sAttributes = CStringA(line.substr(0, tagEnd));

        line.remove_prefix(tagEnd + 1);
        sText.Empty();
        std::size_t end = line.find(closing);
        while (end == line.npos) {
            sText.Append(line);
            if (!ReadLine(sLine)) return false;
            line = sLine.View();
            end = line.find(closing);
        }
        sText.Append(line.substr(0, end));
        if (m_bUtf8) ToNarrow(sText);
        for (const auto& [entity, character] :
             {std::pair{"&apos;", "'"}, {"&amp;", "&"}, {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}})
            sText.Replace(entity, character);
        CzynTranslate::ConvertSpecSymbols(sText.GetBuffer(sText.GetLength()));
        sText.ReleaseBuffer();
        return true;
    }
    return false;
}

void DictionaryFile::ToNarrow(CStringA& sText) {
    using namespace zynplatform;
    const std::string_view text = sText.View();
    if (const std::size_t size = WideLength(utf8CodePage, text.data(), text.size()); size > m_sWide.size())
        m_sWide.resize(size);
    const std::size_t length = ToWide(utf8CodePage, text.data(), text.size(), m_sWide.data());
    const std::size_t narrow = NarrowLength(m_nCodePage, m_sWide.data(), length);
    zynplatform::ToNarrow(m_nCodePage, m_sWide.data(), length, sText.GetBuffer(static_cast<int>(narrow)));
    sText.ReleaseBuffer(static_cast<int>(narrow));
}

std::string_view Trimmed(std::string_view text, std::string_view characters) {
    const std::size_t first = text.find_first_not_of(characters);
    if (first == text.npos) return {};
    return text.substr(first, text.find_last_not_of(characters) - first + 1);
}

bool IsLetterOrDigit(char c) {
    return (c >= '0' && c <= '9') || zynplatform::Cp1251Lower(c) != zynplatform::Cp1251Upper(c);
}

// Takes the text up to the next '=' off the front, and the '=' with it.
std::string_view TakePiece(std::string_view& rest) {
    const std::size_t end = rest.find('=');
    const std::string_view piece = rest.substr(0, end);
    rest.remove_prefix(end == rest.npos ? rest.size() : end + 1);
    return piece;
}

// The first value of that name. A value ends where the letters and digits of the next name begin, so it needs
// its quotes.
std::optional<CStringA> FindAttribute(std::string_view attributes, std::string_view wanted) {
    std::string_view name = TakePiece(attributes);
    while (!name.empty()) {
        const std::string_view rest = attributes;
        name = Trimmed(name, " \t\n\v\f\r");
        if (name.empty()) break;
        std::string_view raw = TakePiece(attributes);
        raw = raw.substr(0, raw.find_last_not_of(" \t\r\n") + 1);
        std::string_view value = rest, next;
        if (!raw.empty()) {
            std::size_t last = raw.size() - 1;
            while (last > 0 && IsLetterOrDigit(raw[last]))
                --last;
            value = raw.substr(0, last);
            next = raw.substr(last + 1);
        }
        if (name == wanted) {
            CStringA sValue(Trimmed(value, blanksAndQuotes));
            CzynTranslate::ConvertSpecSymbols(sValue.GetBuffer(sValue.GetLength()));
            sValue.ReleaseBuffer();
            return sValue;
        }
        name = next;
    }
    return {};
}

// The value of a hexadecimal or octal digit, or something beyond every base.
unsigned DigitValue(char c) {
    if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
    if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A' + 10);
    return 99;
}

// Reads what stands behind a backslash; null when it is no escape, else where the text goes on.
const char* DecodeEscape(const char* in, char& out) {
    constexpr std::string_view names = "\"'?\\abfnrtv", characters = "\"'?\\\a\b\f\n\r\t\v";
    if (const std::size_t i = names.find(*in); i != names.npos) {
        out = characters[i];
        return in + 1;
    }
    const bool hex = *in == 'x' || *in == 'X';
    const char* digit = hex ? in + 1 : in;
    const unsigned base = hex ? 16 : 8;
    unsigned value = 0;
    int count = 0;
    for (; count < (hex ? 2 : 3) && DigitValue(*digit) < base; ++count)
        value = value * base + DigitValue(*digit++);
    if (count == 0) return nullptr;
    out = static_cast<char>(value);
    return digit;
}

} // namespace

char* CzynTranslate::ConvertSpecSymbols(char* szText) {
    if (!szText) return nullptr;
    char* out = szText;
    for (const char* in = szText; *in;) {
        if (*in != '\\') {
            *out++ = *in++;
            continue;
        }
        const bool o = in[1] == 'o' || in[1] == 'O';
        char character;
        if (const char* next = DecodeEscape(in + (o ? 2 : 1), character)) {
            *out++ = character;
            in = next;
        } else if (o) {
            *out++ = in[1]; // the backslash is dropped
            in += 2;
        } else {
            *out++ = *in++;
        }
    }
    *out = 0;
    return szText;
}

bool CzynTranslate::LoadXml(const char* szFile, CStringArray& aTexts, bool bSilent) {
    DictionaryFile file(zynplatform::ansiCodePage);
    if (!file.Open(szFile, bSilent)) return false;
    for (CStringA sAttributes, sText; file.Next(sAttributes, sText);)
        aTexts.Add(sText);
    return true;
}

bool CzynTranslate::LoadXmlMap(const char* szFile, std::map<int, CStringA>& aTexts, bool bSilent) {
    DictionaryFile file(CzynStringAdapter::m_st_encoding);
    if (!file.Open(szFile, bSilent)) return false;
    int counter = 1, id = 0;
    for (CStringA sAttributes, sText; file.Next(sAttributes, sText);) {
        if (const auto number = FindAttribute(sAttributes.View(), "id")) id = zyn::DecimalValue(*number);
        if (id == 0) id = counter++;
        while (!aTexts.try_emplace(id, sText).second)
            id = counter++;
    }
    return true;
}
