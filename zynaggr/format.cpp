// SPDX-License-Identifier: MIT
#include "zynaggr/format_impl.h"

#include <algorithm>
#include <type_traits>

namespace zyn {

namespace {

constexpr int largestNumber = 1'000'000;

FormatType TypeOf(char conversion, std::string_view length) {
    switch (conversion) {
    case 'd':
    case 'i':
    case 'o':
    case 'u':
    case 'x':
    case 'X':
        if (length == "ll" || length == "j") return FormatType::longLong;
        return length == "l" || length == "z" || length == "t" ? FormatType::longInteger
                                                               : FormatType::integer;
    case 'c':
    case 'C':
        return FormatType::integer;
    case 'a':
    case 'A':
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
        return length == "L" ? FormatType::longReal : FormatType::realNumber;
    case 's':
    case 'S':
    case 'p':
        return FormatType::pointer;
    default:
        return FormatType::none;
    }
}

// Conversions of one kind may stand for each other: numbers of one type in whatever notation.
char KindOf(const FormatDirective<char>& directive) {
    const bool isNumber = std::string_view("sScCp").find(directive.conversion) == std::string_view::npos;
    return isNumber ? '0' : directive.conversion;
}

// The next directive that reads something; one without a type at the end.
FormatDirective<char> NextReading(FormatReader<char>& format) {
    FormatDirective<char> directive;
    while (format.Next(directive))
        if (directive.type != FormatType::none) return directive;
    return {};
}

} // namespace

template <class C> bool IsNarrow(const FormatDirective<C>& directive) {
    const std::string_view length = directive.length;
    if (length == "h" || length == "l") return length == "h";
    const bool isCapital = directive.conversion == 'S' || directive.conversion == 'C';
    return isCapital != std::is_same_v<C, char>;
}
template bool IsNarrow(const FormatDirective<char>&);
template bool IsNarrow(const FormatDirective<WCHAR>&);

template <class C> bool FormatReader<C>::Next(FormatDirective<C>& directive) {
    if (m_rest.empty()) return false;
    directive = {};
    directive.literal = m_rest.substr(0, m_rest.find(C('%')));
    m_rest.remove_prefix(directive.literal.size());
    if (!Take('%') || Parse(directive)) return true;
    m_rest = {};
    return m_isWellFormed = false;
}

template <class C> bool FormatReader<C>::Take(char c) {
    if (!m_rest.starts_with(C(c))) return false;
    m_rest.remove_prefix(1);
    return true;
}

// A number, -1 when there is none.
template <class C> int FormatReader<C>::TakeNumber() {
    int number = -1;
    for (; !m_rest.empty() && m_rest[0] >= '0' && m_rest[0] <= '9'; m_rest.remove_prefix(1))
        number = std::min(std::max(number, 0) * 10 + (m_rest[0] - '0'), largestNumber);
    return number;
}

// "n$" makes the number; without it the next in order.
template <class C> bool FormatReader<C>::TakeArgument(int& argument) {
    const View before = m_rest;
    const int number = TakeNumber();
    if (number > 0 && Take('$')) {
        argument = number;
    } else {
        m_rest = before;
        argument = ++m_next;
    }
    return argument <= mostFormatArguments;
}

template <class C> bool FormatReader<C>::TakeSize(int& size, int& argument) {
    if (Take('*')) return TakeArgument(argument);
    size = TakeNumber();
    return true;
}

template <class C> const char* FormatReader<C>::TakeLength() {
    static constexpr struct {
        std::string_view text;
        const char* length;
    } lengths[] = {{"I64", "ll"}, {"I32", ""}, {"hh", "hh"}, {"ll", "ll"}, {"h", "h"}, {"l", "l"},
                   {"w", "l"},    {"L", "L"},  {"j", "j"},   {"z", "z"},   {"t", "t"}, {"I", "z"}};
    for (const auto& [text, length] : lengths)
        if (std::ranges::equal(text, m_rest.substr(0, text.size()))) {
            m_rest.remove_prefix(text.size());
            return length;
        }
    return "";
}

// What stands between a percent sign and the letter of the conversion.
template <class C> bool FormatReader<C>::TakeOptions(FormatDirective<C>& directive) {
    // The argument's number stands before the flags, and looks like a width until the "$".
    const View before = m_rest;
    const int number = TakeNumber();
    if (number > 0 && Take('$'))
        directive.argument = number;
    else
        m_rest = before;
    static constexpr C flags[] = {'-', '+', ' ', '#', '0'};
    directive.flags = m_rest.substr(0, m_rest.find_first_not_of(View(flags, std::size(flags))));
    m_rest.remove_prefix(directive.flags.size());
    if (!TakeSize(directive.width, directive.widthArgument)) return false;
    if (Take('.')) {
        if (!TakeSize(directive.precision, directive.precisionArgument)) return false;
        if (directive.precisionArgument == 0) directive.precision = std::max(directive.precision, 0);
    }
    directive.written = m_rest;
    directive.length = TakeLength();
    directive.written.remove_suffix(m_rest.size());
    return true;
}

template <class C> bool FormatReader<C>::Parse(FormatDirective<C>& directive) {
    constexpr std::string_view bare = "dscuxXfg%"; // most have nothing but such a letter
    const bool isBare = !m_rest.empty() && std::ranges::find(bare, m_rest[0]) != bare.end();
    if (!isBare && !TakeOptions(directive)) return false;
    if (m_rest.empty() || static_cast<std::make_unsigned_t<C>>(m_rest[0]) >= 0x80) return false;
    directive.conversion = static_cast<char>(m_rest[0]);
    m_rest.remove_prefix(1);
    if (directive.conversion == '%') return directive.widthArgument + directive.precisionArgument == 0;
    directive.type = TypeOf(directive.conversion, directive.length);
    if (directive.argument == 0) directive.argument = ++m_next;
    return directive.type != FormatType::none && directive.argument <= mostFormatArguments;
}

template class FormatReader<char>;
template class FormatReader<WCHAR>;

bool ReadSameArguments(std::string_view left, std::string_view right) {
    FormatReader<char> ofLeft(left), ofRight(right);
    while (true) {
        const FormatDirective<char> one = NextReading(ofLeft), two = NextReading(ofRight);
        if (one.type != two.type || KindOf(one) != KindOf(two) || one.written != two.written ||
            one.argument != two.argument || one.widthArgument != two.widthArgument ||
            one.precisionArgument != two.precisionArgument)
            return false;
        if (one.type == FormatType::none) return ofLeft.IsWellFormed() && ofRight.IsWellFormed();
    }
}

} // namespace zyn
