// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/ini_line_impl.h"
#include "zynaggr/zynencoding.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zyn {

// The bytes of an INI file, line by line, for writing back exactly what was not edited.
//
// A line has its own end: CR LF, LF CR, LF, CR, or none for the last one. Lines are numbered from 0 in the
// order of the file, as the parser counts them; further ones can be appended, which stand nowhere until
// somebody writes them. Bytes are of the file's encoding and never made from a text that has lost something.
//
// Places in a line count the characters of code page 1251 that it is decoded to, one for each 16-bit unit.
class IniDocument {
public:
    // The file's bytes, of which the first ones are its mark. Of a faithful document blanks around a name do
    // not belong to it.
    IniDocument(zynTextEncoding encoding, bool isFaithful, std::string_view bytes = {},
                std::size_t markLength = 0);

    zynTextEncoding Encoding() const { return m_encoding; }
    bool IsFaithful() const { return m_isFaithful; }
    std::string_view Mark() const;                   // as the file has it, else that of the encoding
    std::string_view Tail() const { return m_tail; } // a partial unit at the end of the file
    bool Has(int line) const { return line >= 0 && line < Count(); }
    int Count() const { return static_cast<int>(m_starts.size()) - 1; }
    int CountRead() const { return m_nRead; } // without the appended ones
    // Of the lines read: the first or the last pair that has a key and a value, or -1; whether the last line
    // has no end.
    int FindPair(bool isLast) const;
    bool LacksLastEnd() const;

    // The same lines, all of them, in another encoding, with or without its mark; null when that would not be
    // the same text, which it need not be with `isLossy`.
    std::unique_ptr<IniDocument> Recoded(zynTextEncoding encoding, bool isMarked, bool isLossy) const;

    std::string_view Bytes(int line) const;
    // Takes a line with its end, if it is to have one; its number.
    int Append(std::string_view bytes);

    // The name or the value in a line, in the bytes of the line as long as it still is `now`, else encoded. A
    // line that there is not has neither.
    enum Piece { name, value };
    std::string BytesOf(int line, Piece piece, std::string_view now) const;

    // A text of the code page, or in UTF-8, in the file's encoding, and back.
    std::string Encode(std::string_view text) const;
    std::string EncodeUtf8(std::string_view utf8) const;
    std::string Utf8(std::string_view bytes) const;

private:
    std::size_t FindLineEnd(std::size_t from) const;
    std::size_t SkipLineEnd(std::size_t end) const;
    char UnitAt(std::size_t at) const;

    zynTextEncoding m_encoding;
    bool m_isFaithful;
    std::size_t m_unit; // bytes
    std::string m_bytes;
    std::string m_tail;
    std::vector<std::uint32_t> m_starts; // of each line, and the end of the last one
    int m_nRead = 0;
    mutable int m_pairs[2] = {-2, -2}; // the first and the last one; not yet looked for
};

// One line of a document.
class IniDocumentLine {
public:
    IniDocumentLine(const IniDocument& document, int line);

    std::string_view Text() const { return m_text; } // in the code page, without its end
    const IniLine& Pieces() const { return m_pieces; }
    std::string_view Bytes() const { return m_bytes; } // all of them
    std::string_view End() const { return m_bytes.substr(m_contentSize); }
    // Those of a span of the text; Before and Behind are what is around it, the line end included.
    std::string_view Bytes(IniSpan span) const;
    std::string_view Before(IniSpan span) const { return m_bytes.substr(0, Offset(span.begin)); }
    std::string_view Behind(IniSpan span) const { return m_bytes.substr(Offset(span.end)); }
    // Those of a section's name.
    std::string NameBytes() const { return std::string(Bytes(m_pieces.prefix)).append(Bytes(m_pieces.name)); }

private:
    std::size_t Offset(std::size_t place) const;

    zynTextEncoding m_encoding;
    std::string_view m_bytes;
    std::size_t m_contentSize;
    std::string m_text;
    std::u16string m_units; // of well-formed UTF-8 that is longer than the text
    IniLine m_pieces;
};

} // namespace zyn
