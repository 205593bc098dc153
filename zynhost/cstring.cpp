// SPDX-License-Identifier: MIT
#include "zynhost/cstring.h"

#include "zynhost/memory.h"
#include "zynplatform/codepage.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/environment.h"
#include "zynplatform/textsearch_impl.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

using zynplatform::FindText;

namespace {

constexpr std::string_view whiteSpace = " \t\n\v\f\r";

std::size_t Clamp(int position) {
    return position > 0 ? static_cast<std::size_t>(position) : 0;
}

int Position(std::size_t found) {
    return found == std::string_view::npos ? -1 : static_cast<int>(found);
}

// Gives the text to `use`; it is empty where it cannot be formed.
template <class Use> void WithFormatted(const char* format, std::va_list arguments, Use use) {
    char buffer[512]; // as most texts fit, most are formed once
    std::va_list again;
    va_copy(again, arguments);
    errno = 0;
    const int result = std::vsnprintf(buffer, sizeof buffer, format, arguments);
    const bool isTooLong = result < 0 && errno == EOVERFLOW;
    const auto length = static_cast<std::size_t>(std::max(result, 0));
    std::string large;
    if (length >= sizeof buffer) {
        large.resize(length);
        std::vsnprintf(large.data(), length + 1, format, again);
    }
    va_end(again);
    if (isTooLong) AfxThrowMemoryException();
    use(large.empty() ? std::string_view(buffer, length) : std::string_view(large));
}

} // namespace

CStringA::CStringA(const WCHAR* text) {
    const std::size_t length = text ? std::char_traits<WCHAR>::length(text) : 0;
    const std::size_t narrow = zynplatform::NarrowLength(zynplatform::ansiCodePage, text, length);
    zynplatform::ToNarrow(zynplatform::ansiCodePage, text, length, m_text.Resize(narrow));
}

CStringA::CStringA(char character, int count) {
    const std::size_t length = Clamp(count);
    std::fill_n(m_text.Resize(length), length, character);
}

CStringA& CStringA::operator=(const WCHAR* text) {
    return *this = CStringA(text);
}

CStringA CStringA::Joined(std::string_view left, std::string_view right) {
    CStringA joined;
    joined.m_text.Reserve(left.size() + right.size());
    joined.m_text.Append(left);
    joined.m_text.Append(right);
    return joined;
}

CStringA CStringA::Left(int count) const {
    return Mid(0, count);
}

CStringA CStringA::Right(int count) const {
    return Mid(GetLength() - std::min(std::max(count, 0), GetLength()));
}

CStringA CStringA::Mid(int first) const {
    return Mid(first, GetLength());
}

CStringA CStringA::Mid(int first, int count) const {
    const auto part = View().substr(std::min(Clamp(first), m_text.Length()), Clamp(count));
    return part.size() == m_text.Length() ? *this : CStringA(part);
}

int CStringA::Find(char character, int start) const {
    return Position(View().find(character, Clamp(start)));
}

int CStringA::Find(const char* text, int start) const {
    return text ? Find(std::string_view(text), start) : -1;
}

int CStringA::Find(std::string_view text, int start) const {
    if (Clamp(start) > m_text.Length()) return -1;
    return Position(text.empty() ? Clamp(start) : FindText(View(), text, Clamp(start)));
}

int CStringA::ReverseFind(char character) const {
    return Position(View().rfind(character));
}

int CStringA::Replace(char from, char to) {
    if (from == to || Find(from) < 0) return 0;
    int changed = 0;
    for (char *c = Own(), *const end = c + m_text.Length(); c != end; ++c)
        if (*c == from) {
            *c = to;
            ++changed;
        }
    return changed;
}

int CStringA::Replace(const char* from, const char* to) {
    const std::string_view pattern(from ? from : "");
    const std::string_view replacement(to ? to : "");
    if (pattern.empty()) return 0;
    int changed = 0;
    CStringA result;
    std::size_t copied = 0;
    for (std::size_t hit; (hit = FindText(View(), pattern, copied)) != std::string_view::npos;
         copied = hit + pattern.size()) {
        result.Append(View().substr(copied, hit - copied)).Append(replacement);
        ++changed;
    }
    if (changed == 0) return 0;
    *this = std::move(result.Append(View().substr(copied)));
    return changed;
}

int CStringA::Remove(char character) {
    if (Find(character) < 0) return 0;
    char *const text = Own(), *const end = text + m_text.Length();
    const auto removed = end - std::remove(text, end, character);
    m_text.Resize(m_text.Length() - static_cast<std::size_t>(removed));
    return static_cast<int>(removed);
}

// A part of the text in the place of the whole.
CStringA& CStringA::Keep(std::string_view part) {
    if (part.size() != m_text.Length()) m_text.Assign(part);
    return *this;
}

CStringA& CStringA::TrimLeft() {
    return Keep(View().substr(std::min(View().find_first_not_of(whiteSpace), m_text.Length())));
}

CStringA& CStringA::TrimRight() {
    return Keep(View().substr(0, View().find_last_not_of(whiteSpace) + 1));
}

CStringA& CStringA::TrimLeft(char character) {
    return Keep(View().substr(std::min(View().find_first_not_of(character), m_text.Length())));
}

CStringA& CStringA::TrimRight(char character) {
    return Keep(View().substr(0, View().find_last_not_of(character) + 1));
}

CStringA& CStringA::MakeLower() {
    char* const text = Own();
    std::transform(text, text + m_text.Length(), text, zynplatform::Cp1251Lower);
    return *this;
}

CStringA& CStringA::MakeUpper() {
    char* const text = Own();
    std::transform(text, text + m_text.Length(), text, zynplatform::Cp1251Upper);
    return *this;
}

int CStringA::Compare(const char* text) const {
    return std::strcmp(m_text.Get(), text ? text : "");
}

int CStringA::CompareNoCase(const char* text) const {
    const char* left = m_text.Get();
    const char* right = text ? text : "";
    for (;; ++left, ++right) {
        const int difference = static_cast<unsigned char>(zynplatform::Cp1251Lower(*left)) -
                               static_cast<unsigned char>(zynplatform::Cp1251Lower(*right));
        if (difference != 0 || *left == 0) return difference;
    }
}

void CStringA::Format(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    FormatV(format, arguments);
    va_end(arguments);
}

void CStringA::FormatV(const char* format, std::va_list arguments) {
    WithFormatted(format, arguments, [this](std::string_view text) { m_text.Assign(text); });
}

void CStringA::AppendFormat(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    WithFormatted(format, arguments, [this](std::string_view text) { Append(text); });
    va_end(arguments);
}

CStringA CStringA::Tokenize(const char* delimiters, int& position) const {
    const std::string_view set(delimiters ? delimiters : "");
    const std::size_t start =
        position < 0 ? std::string_view::npos : View().find_first_not_of(set, Clamp(position));
    if (start == std::string_view::npos) {
        position = -1;
        return {};
    }
    const std::size_t end = std::min(View().find_first_of(set, start), m_text.Length());
    position = static_cast<int>(end) + 1;
    return CStringA(View().substr(start, end - start));
}

char* CStringA::GetBuffer(int length) {
    return m_text.Lend(std::max(Clamp(length), m_text.Length()));
}

void CStringA::ReleaseBuffer(int length) {
    m_text.Resize(length < 0 ? std::strlen(m_text.Get()) : Clamp(length));
}

bool CStringA::GetEnvironmentVariable(const char* name) {
    std::string value;
    const bool found = zynplatform::GetEnvironmentPath(name, value);
    *this = value;
    return found;
}
