#include "zynhost/cstring.h"

#include "zynhost/memory.h"
#include "zynplatform/codepage.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/environment.h"
#include "zynplatform/textsearch_impl.h"

#include <algorithm>
#include <cerrno>
#include <climits>
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

std::string Narrow(const WCHAR* text) {
    const std::size_t length = text ? std::char_traits<WCHAR>::length(text) : 0;
    std::string narrow(zynplatform::NarrowLength(zynplatform::ansiCodePage, text, length), '\0');
    zynplatform::ToNarrow(zynplatform::ansiCodePage, text, length, narrow.data());
    return narrow;
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

CStringA::CStringA(const WCHAR* text) : m_text(Narrow(text)) {
    Checked(m_text);
}

CStringA& CStringA::operator=(const WCHAR* text) {
    return *this = CStringA(text);
}

void CStringA::ThrowTooLong() {
    AfxThrowMemoryException();
}

CStringA& CStringA::Append(std::string_view text) {
    if (text.size() > static_cast<std::size_t>(INT_MAX) - m_text.size()) AfxThrowMemoryException();
    m_text.append(text);
    return *this;
}

CStringA CStringA::Joined(std::string_view left, std::string_view right) {
    CStringA joined;
    joined.m_text.reserve(left.size() + right.size());
    joined.m_text = left;
    joined.Append(right);
    return joined;
}

CStringA CStringA::Left(int count) const {
    return CStringA(View().substr(0, Clamp(count)));
}

CStringA CStringA::Right(int count) const {
    const std::size_t length = std::min(Clamp(count), m_text.size());
    return CStringA(View().substr(m_text.size() - length));
}

CStringA CStringA::Mid(int first) const {
    return Mid(first, GetLength());
}

CStringA CStringA::Mid(int first, int count) const {
    return CStringA(View().substr(std::min(Clamp(first), m_text.size()), Clamp(count)));
}

int CStringA::Find(char character, int start) const {
    return Position(m_text.find(character, Clamp(start)));
}

int CStringA::Find(const char* text, int start) const {
    return text ? Find(std::string_view(text), start) : -1;
}

int CStringA::Find(std::string_view text, int start) const {
    if (Clamp(start) > m_text.size()) return -1;
    return Position(text.empty() ? Clamp(start) : FindText(View(), text, Clamp(start)));
}

int CStringA::ReverseFind(char character) const {
    return Position(m_text.rfind(character));
}

int CStringA::Replace(char from, char to) {
    if (from == to) return 0;
    int changed = 0;
    for (char& c : m_text)
        if (c == from) {
            c = to;
            ++changed;
        }
    return changed;
}

int CStringA::Replace(const char* from, const char* to) {
    const std::string_view pattern(from ? from : "");
    const std::string_view replacement(to ? to : "");
    if (pattern.empty()) return 0;
    int changed = 0;
    std::string result;
    std::size_t copied = 0;
    for (std::size_t hit; (hit = FindText(View(), pattern, copied)) != std::string::npos;
         copied = hit + pattern.size()) {
        Checked(result.append(m_text, copied, hit - copied).append(replacement));
        ++changed;
    }
    if (changed == 0) return 0;
    Checked(result.append(m_text, copied));
    m_text = std::move(result);
    return changed;
}

int CStringA::Remove(char character) {
    return static_cast<int>(std::erase(m_text, character));
}

CStringA& CStringA::TrimLeft() {
    m_text.erase(0, m_text.find_first_not_of(whiteSpace));
    return *this;
}

CStringA& CStringA::TrimRight() {
    m_text.erase(m_text.find_last_not_of(whiteSpace) + 1);
    return *this;
}

CStringA& CStringA::TrimLeft(char character) {
    m_text.erase(0, m_text.find_first_not_of(character));
    return *this;
}

CStringA& CStringA::TrimRight(char character) {
    m_text.erase(m_text.find_last_not_of(character) + 1);
    return *this;
}

CStringA& CStringA::MakeLower() {
    std::transform(m_text.begin(), m_text.end(), m_text.begin(), zynplatform::Cp1251Lower);
    return *this;
}

CStringA& CStringA::MakeUpper() {
    std::transform(m_text.begin(), m_text.end(), m_text.begin(), zynplatform::Cp1251Upper);
    return *this;
}

int CStringA::Compare(const char* text) const {
    return std::strcmp(m_text.c_str(), text ? text : "");
}

int CStringA::CompareNoCase(const char* text) const {
    const char* left = m_text.c_str();
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
    WithFormatted(format, arguments, [this](std::string_view text) { m_text = text; });
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
        position < 0 ? std::string::npos : m_text.find_first_not_of(set, Clamp(position));
    if (start == std::string::npos) {
        position = -1;
        return {};
    }
    const std::size_t end = std::min(m_text.find_first_of(set, start), m_text.size());
    position = static_cast<int>(end) + 1;
    return CStringA(View().substr(start, end - start));
}

char* CStringA::GetBuffer(int length) {
    if (length > GetLength()) m_text.resize(Clamp(length));
    return m_text.data();
}

void CStringA::ReleaseBuffer(int length) {
    m_text.resize(length < 0 ? std::strlen(m_text.c_str()) : Clamp(length));
}

bool CStringA::GetEnvironmentVariable(const char* name) {
    std::string value;
    const bool found = zynplatform::GetEnvironmentPath(name, value);
    m_text = std::move(value);
    return found;
}
