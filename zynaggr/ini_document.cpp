// SPDX-License-Identifier: MIT
#include "zynaggr/ini_document_impl.h"

#include "zynaggr/filetext_impl.h"
#include "zynplatform/codepage.h"

#include <algorithm>
#include <limits>
#include <new>

namespace zyn {
namespace {

std::size_t UnitSize(zynTextEncoding encoding) {
    return std::max(zynGetMinBYTEInCharForEncoding(encoding), 1u);
}

// Not less than what the text was decoded from: each ill-formed part, of up to three bytes, counts as three.
std::size_t Utf8Length(std::u16string_view text) {
    std::size_t length = 0;
    for (const char16_t unit : text) {
        const bool isHalf = (unit & 0xF800) == 0xD800;
        length += unit < 0x80 ? 1 : unit < 0x800 || isHalf ? 2 : 3;
    }
    return length;
}

// The bytes of the first character of a text, or of what is none and decodes to one unit.
std::size_t FirstCharacter(zynTextEncoding encoding, std::string_view bytes) {
    if (encoding != zynEncUTF8) return UnitSize(encoding);
    std::size_t length = 1;
    const std::size_t most = std::min<std::size_t>(bytes.size(), 3);
    while (length < most && DecodeText(encoding, bytes.substr(0, length + 1)).size() == 1)
        ++length;
    const std::u16string pair = bytes.size() > 3 ? DecodeText(encoding, bytes.substr(0, 4)) : u"";
    return pair.size() == 2 && (pair[0] & 0xFC00) == 0xD800 ? 4 : length;
}

} // namespace

IniDocument::IniDocument(zynTextEncoding encoding, bool isFaithful, std::string_view bytes,
                         std::size_t markLength)
    : m_encoding(encoding),
      m_isFaithful(isFaithful),
      m_unit(UnitSize(encoding)),
      m_bytes(bytes.substr(0, bytes.size() - (bytes.size() - markLength) % m_unit)),
      m_tail(bytes.substr(m_bytes.size())) {
    std::size_t at = markLength;
    m_starts.push_back(static_cast<std::uint32_t>(at));
    bool isLineLeft = at < m_bytes.size();
    while (isLineLeft) {
        const std::size_t end = FindLineEnd(at);
        at = SkipLineEnd(end);
        m_starts.push_back(static_cast<std::uint32_t>(at));
        // What begins with the CR of a LF CR counts as a line, even if there is nothing else.
        isLineLeft = at < m_bytes.size() || (at > end + m_unit && UnitAt(at - m_unit) == '\r');
    }
    m_nRead = Count();
}

std::string_view IniDocument::Mark() const {
    return m_starts.front() > 0 ? std::string_view(m_bytes).substr(0, m_starts.front()) : MarkOf(m_encoding);
}

std::string_view IniDocument::Bytes(int line) const {
    const auto at = static_cast<std::size_t>(line);
    return std::string_view(m_bytes).substr(m_starts[at], m_starts[at + 1] - m_starts[at]);
}

std::unique_ptr<IniDocument> IniDocument::Recoded(zynTextEncoding encoding, bool isMarked,
                                                  bool isLossy) const {
    bool isSame = m_tail.empty();
    const auto recode = [&](std::string_view bytes) {
        const std::u16string text = DecodeText(m_encoding, bytes);
        std::string recoded = EncodeText(encoding, text);
        isSame = isSame && EncodeText(m_encoding, text) == bytes && DecodeText(encoding, recoded) == text;
        return recoded;
    };
    const std::size_t begin = m_starts[0], end = m_starts[static_cast<std::size_t>(m_nRead)];
    const std::string mark(isMarked ? MarkOf(encoding) : "");
    auto result = std::make_unique<IniDocument>(
        encoding, m_isFaithful, mark + recode(std::string_view(m_bytes).substr(begin, end - begin)),
        mark.size());
    for (int line = m_nRead; line < Count(); ++line)
        result->Append(recode(Bytes(line)));
    return isSame || isLossy ? std::move(result) : nullptr;
}

int IniDocument::Append(std::string_view bytes) {
    if (bytes.size() > std::numeric_limits<std::uint32_t>::max() - m_bytes.size()) throw std::bad_alloc();
    m_starts.reserve(m_starts.size() + 1);
    m_bytes += bytes;
    m_starts.push_back(static_cast<std::uint32_t>(m_bytes.size()));
    return Count() - 1;
}

int IniDocument::FindPair(bool isLast) const {
    int& found = m_pairs[isLast];
    if (found != -2) return found;
    found = -1;
    for (int i = 0; i < m_nRead && found == -1; ++i) {
        const int number = isLast ? m_nRead - 1 - i : i;
        const IniDocumentLine line(*this, number);
        const IniLine& pieces = line.Pieces();
        if (pieces.kind == IniLine::pair && !pieces.name.IsEmpty() && !pieces.value.IsEmpty()) found = number;
    }
    return found;
}

bool IniDocument::LacksLastEnd() const {
    if (m_nRead == 0) return false;
    const IniDocumentLine last(*this, m_nRead - 1);
    return last.End().empty() && !last.Bytes().empty();
}

// What holds no '?' has lost nothing.
std::string IniDocument::BytesOf(int line, Piece piece, std::string_view now) const {
    if (!Has(line) || now.find('?') == now.npos) return Encode(now);
    const IniDocumentLine origin(*this, line);
    const IniLine& pieces = origin.Pieces();
    if (piece == value)
        return pieces.value.Of(origin.Text()) == now ? std::string(origin.Bytes(pieces.value)) : Encode(now);
    const std::string bytes = origin.NameBytes();
    return DecodeTo1251(m_encoding, bytes) == now ? bytes : Encode(now);
}

std::string IniDocument::Encode(std::string_view text) const {
    if (m_encoding == zynEncCP1251) return std::string(text);
    return EncodeText(m_encoding, DecodeText(zynEncCP1251, text));
}

std::string IniDocument::EncodeUtf8(std::string_view utf8) const {
    if (m_encoding == zynEncUTF8) return std::string(utf8);
    return EncodeText(m_encoding, DecodeText(zynEncUTF8, utf8));
}

std::string IniDocument::Utf8(std::string_view bytes) const {
    return EncodeText(zynEncUTF8, DecodeText(m_encoding, bytes));
}

// The character at a place in the bytes, as far as it is ASCII; else a zero byte.
char IniDocument::UnitAt(std::size_t at) const {
    if (at >= m_bytes.size()) return '\0';
    if (m_unit == 1) return m_bytes[at];
    const bool isHighFirst = m_encoding == zynEncUCS2BE || m_encoding == zynEncUCS4BE;
    const std::size_t low = isHighFirst ? m_unit - 1 : 0;
    for (std::size_t i = 0; i < m_unit; ++i)
        if (i != low && m_bytes[at + i] != 0) return '\0';
    return m_bytes[at + low];
}

std::size_t IniDocument::FindLineEnd(std::size_t from) const {
    const std::string_view bytes(m_bytes);
    if (m_unit == 1) {
        const std::string_view line = bytes.substr(from, bytes.find('\n', from) - from);
        return from + std::min(line.find('\r'), line.size());
    }
    while (from < bytes.size() && UnitAt(from) != '\r' && UnitAt(from) != '\n')
        from += m_unit;
    return from;
}

// A CR behind a LF ends no line. It goes with the line above, unless it is clearly that of a CR LF.
std::size_t IniDocument::SkipLineEnd(std::size_t end) const {
    if (end == m_bytes.size()) return end;
    const bool isPair = UnitAt(end) == '\r' && UnitAt(end + m_unit) == '\n';
    const std::size_t next = end + (isPair ? 2 : 1) * m_unit;
    const bool endsWithLineFeed = UnitAt(next - m_unit) == '\n';
    const bool isFollowed = endsWithLineFeed && UnitAt(next) == '\r';
    return isFollowed && !(isPair && UnitAt(next + m_unit) == '\n') ? next + m_unit : next;
}

IniDocumentLine::IniDocumentLine(const IniDocument& document, int line)
    : m_encoding(document.Encoding()),
      m_bytes(document.Bytes(line)),
      m_contentSize(m_bytes.size()),
      m_text(DecodeTo1251(m_encoding, m_bytes)) {
    while (!m_text.empty() && (m_text.back() == '\r' || m_text.back() == '\n')) {
        m_text.pop_back();
        m_contentSize -= UnitSize(m_encoding);
    }
    m_pieces = SplitIniLine(m_text, FindIniMark(m_text), document.IsFaithful());
    if (m_encoding != zynEncUTF8 || m_contentSize == m_text.size()) return;
    m_units = DecodeText(m_encoding, m_bytes.substr(0, m_contentSize));
    if (Utf8Length(m_units) != m_contentSize) m_units.clear();
}

std::string_view IniDocumentLine::Bytes(IniSpan span) const {
    const std::size_t begin = Offset(span.begin);
    return m_bytes.substr(begin, Offset(span.end) - begin);
}

std::size_t IniDocumentLine::Offset(std::size_t place) const {
    const std::size_t unit = UnitSize(m_encoding);
    if (m_contentSize == m_text.size() * unit) return place * unit;
    if (!m_units.empty()) return Utf8Length(std::u16string_view(m_units).substr(0, place));
    std::size_t offset = 0;
    for (std::size_t at = 0; at < place;) {
        const std::string_view rest = m_bytes.substr(offset, m_contentSize - offset);
        const std::size_t size = FirstCharacter(m_encoding, rest);
        at += DecodeText(m_encoding, rest.substr(0, size)).size();
        offset += size;
    }
    return offset;
}

} // namespace zyn
