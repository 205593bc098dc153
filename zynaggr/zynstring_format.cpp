// SPDX-License-Identifier: MIT

// Formatting of both string classes. The C library prints 8-bit text; what it does not know is printed here,
// directive by directive, the numbers by the C library still.

#include "zynaggr/format_impl.h"
#include "zynaggr/zynstring_impl.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

namespace zyn {

namespace {

// Widths and precisions beyond it are taken as this. It is so far beyond the room that what it pushes behind
// the room stays behind it.
constexpr int widest = 3 * static_cast<int>(detail::formatRoom);

template <class C> using View = std::basic_string_view<C>;

union Argument {
    long long integer;
    long double real;
    const void* pointer;
};

// A list that functions can advance for each other: what a va_list parameter is differs between machines.
struct PassedArguments {
    std::va_list list;
};

// Reads the arguments in the order in which they were passed.
class Arguments {
public:
    // False for an ill-formed format, a number used with two types, or one that is left out: where the next
    // stands is then not known.
    template <class C> bool Read(View<C> format, PassedArguments& passed) {
        Types types;
        FormatReader<C> reader(format);
        for (FormatDirective<C> directive; reader.Next(directive);)
            if (!types.Add(directive.widthArgument, FormatType::integer) ||
                !types.Add(directive.precisionArgument, FormatType::integer) ||
                !types.Add(directive.argument, directive.type))
                return false;
        for (int i = 0; i < types.count; ++i) {
            if (types.all[i] == FormatType::none) return false;
            Read(types.all[i], passed, m_values[i]);
        }
        return reader.IsWellFormed();
    }
    const Argument& At(int argument) const { return m_values[argument - 1]; }
    int SizeAt(int argument, int otherwise) const {
        return argument == 0 ? otherwise : static_cast<int>(At(argument).integer);
    }

private:
    struct Types {
        bool Add(int argument, FormatType type) {
            if (argument == 0) return true;
            while (count < argument)
                all[count++] = FormatType::none;
            const FormatType before = std::exchange(all[argument - 1], type);
            return before == FormatType::none || before == type;
        }

        FormatType all[mostFormatArguments];
        int count = 0;
    };

    static void Read(FormatType type, PassedArguments& passed, Argument& value) {
        switch (type) {
        case FormatType::longInteger:
            value.integer = va_arg(passed.list, long);
            break;
        case FormatType::longLong:
            value.integer = va_arg(passed.list, long long);
            break;
        case FormatType::realNumber:
            value.real = va_arg(passed.list, double);
            break;
        case FormatType::longReal:
            value.real = va_arg(passed.list, long double);
            break;
        case FormatType::pointer:
            value.pointer = va_arg(passed.list, const void*);
            break;
        default:
            value.integer = va_arg(passed.list, int);
        }
    }

    Argument m_values[mostFormatArguments];
};

// Collects what is printed, as far as there is room. Text of the other kind is converted, one for one.
template <class C> class Output {
public:
    Output(C* buffer, std::size_t size) : m_buffer(buffer), m_room(size - 1) {}

    template <class From> void Put(View<From> text) {
        C* const target = m_buffer + m_length;
        const std::size_t count = Take(text.size());
        if constexpr (std::is_same_v<C, From>)
            detail::Copy(target, text.data(), count);
        else
            detail::Convert(text.data(), count, target);
    }
    template <class From> void PutPadded(View<From> text, bool isLeft, int width) {
        const std::size_t all = width > 0 ? static_cast<std::size_t>(width) : 0;
        const std::size_t missing = all - std::min(all, text.size());
        if (!isLeft) PutBlanks(missing);
        Put(text);
        if (isLeft) PutBlanks(missing);
    }
    // The length, or -1 when there was more.
    int End() {
        m_buffer[m_length] = 0;
        return m_isCut ? -1 : static_cast<int>(m_length);
    }

private:
    void PutBlanks(std::size_t count) {
        C* const target = m_buffer + m_length;
        std::fill_n(target, Take(count), C(' '));
    }
    std::size_t Take(std::size_t wanted) {
        const std::size_t count = std::min(wanted, m_room - m_length);
        m_length += count;
        m_isCut = m_isCut || count < wanted;
        return count;
    }

    C* m_buffer;
    std::size_t m_room;
    std::size_t m_length = 0;
    bool m_isCut = false;
};

// Text up to its zero or the precision, whichever comes first.
template <class C, class From>
void PutText(Output<C>& output, const void* pointer, int precision, bool isLeft, int width) {
    const auto most = static_cast<std::size_t>(precision); // none: without a limit
    if (!pointer) return output.PutPadded(View<char>("(null)").substr(0, most), isLeft, width);
    const auto* const text = static_cast<const From*>(pointer);
    std::size_t length = precision < 0 ? zynplatform::LengthOf(text) : 0;
    while (precision >= 0 && length < most && text[length] != 0)
        ++length;
    output.PutPadded(View<From>(text, length), isLeft, width);
}

// By the C library, from the directive written anew without "n$" and "*".
template <class C>
int PrintNumber(char* buffer, std::size_t size, const FormatDirective<C>& directive, const Argument& value,
                bool isLeft, int precision) {
    std::string format = "%";
    for (const C flag : directive.flags)
        if (flag != '-') format += static_cast<char>(flag);
    format += "*";
    if (precision >= 0) (format += '.') += std::to_string(precision);
    const FormatType type = directive.type;
    if (type == FormatType::integer && *directive.length == 'h') format += directive.length;
    if (type == FormatType::longInteger) format += 'l';
    if (type == FormatType::longLong) format += "ll";
    if (type == FormatType::longReal) format += 'L';
    format += directive.conversion;
    const char* const f = format.c_str();
    const int width = isLeft ? 0 : std::clamp(directive.width, 0, widest);
    switch (type) {
    case FormatType::integer:
        return std::snprintf(buffer, size, f, width, static_cast<int>(value.integer));
    case FormatType::longInteger:
        return std::snprintf(buffer, size, f, width, static_cast<long>(value.integer));
    case FormatType::realNumber:
        return std::snprintf(buffer, size, f, width, static_cast<double>(value.real));
    case FormatType::longReal:
        return std::snprintf(buffer, size, f, width, value.real);
    case FormatType::pointer:
        return std::snprintf(buffer, size, f, width, value.pointer);
    default:
        return std::snprintf(buffer, size, f, width, value.integer);
    }
}

template <class C>
void PutNumber(Output<C>& output, const FormatDirective<C>& directive, const Argument& value, bool isLeft,
               int precision) {
    const auto put = [&](const char* text, std::size_t length) {
        output.PutPadded(View<char>(text, length), isLeft, directive.width);
    };
    std::array<char, 500> room;
    const bool hasFlags = directive.flags.find_first_not_of(C('-')) != View<C>::npos;
    const bool isSigned = directive.conversion == 'd' || directive.conversion == 'i';
    if (isSigned && !hasFlags && precision < 0 && *directive.length != 'h') // most numbers
        return put(room.data(),
                   static_cast<std::size_t>(std::to_chars(room.begin(), room.end(), value.integer).ptr -
                                            room.begin()));
    const int length = PrintNumber(room.data(), room.size(), directive, value, isLeft, precision);
    if (length < static_cast<int>(room.size()))
        return put(room.data(), static_cast<std::size_t>(std::max(length, 0)));
    std::string text(static_cast<std::size_t>(length), '\0');
    PrintNumber(text.data(), text.size() + 1, directive, value, isLeft, precision);
    put(text.data(), text.size());
}

template <class C> void Print(Output<C>& output, FormatDirective<C> directive, const Arguments& arguments) {
    directive.width = arguments.SizeAt(directive.widthArgument, directive.width);
    bool isLeft = directive.flags.find(C('-')) != View<C>::npos;
    if (directive.widthArgument != 0 && directive.width < 0) { // as a "-" flag
        isLeft = true;
        directive.width = -std::max(directive.width, -widest);
    }
    const int precision =
        std::min(arguments.SizeAt(directive.precisionArgument, directive.precision), widest);
    const Argument& value = arguments.At(directive.argument);
    switch (directive.conversion) {
    case 's':
    case 'S':
        return IsNarrow(directive)
                   ? PutText<C, char>(output, value.pointer, precision, isLeft, directive.width)
                   : PutText<C, WCHAR>(output, value.pointer, precision, isLeft, directive.width);
    case 'c':
    case 'C': {
        const auto narrow = static_cast<char>(value.integer);
        const auto wide = static_cast<WCHAR>(value.integer);
        return IsNarrow(directive) ? output.PutPadded(View<char>(&narrow, 1), isLeft, directive.width)
                                   : output.PutPadded(View<WCHAR>(&wide, 1), isLeft, directive.width);
    }
    default:
        PutNumber(output, directive, value, isLeft, precision);
    }
}

template <class C> int PrintAll(C* buffer, std::size_t size, View<C> format, std::va_list list) {
    buffer[0] = 0;
    Arguments arguments;
    PassedArguments passed;
    va_copy(passed.list, list);
    const bool understood = arguments.Read(format, passed);
    va_end(passed.list);
    if (!understood) return -1;
    Output<C> output(buffer, size);
    FormatReader<C> reader(format);
    for (FormatDirective<C> directive; reader.Next(directive);) {
        output.Put(directive.literal);
        static constexpr C percent = '%';
        if (directive.type != FormatType::none)
            Print(output, directive, arguments);
        else if (directive.conversion == '%')
            output.Put(View<C>(&percent, 1));
    }
    return output.End();
}

// What stands between a percent sign and its conversion.
constexpr auto isBeforeConversion = [] {
    std::array<bool, 256> table{};
    for (const char c : std::string_view("0123456789$*.-+ #'hlqjzt"))
        table[static_cast<unsigned char>(c)] = true;
    return table;
}();

// Whether the C library would take a directive for something else: it knows no "I64", its wide text has
// 32-bit characters, and "%n" would write.
bool IsForeign(const char* format) {
    constexpr std::string_view foreign = "IwSCn";
    while ((format = std::strchr(format, '%')) != nullptr) {
        while (isBeforeConversion[static_cast<unsigned char>(*++format)])
            ;
        if (*format == 0) return false;
        const bool isLong = format[-1] == 'l' && (*format == 's' || *format == 'c');
        if (isLong || foreign.find(*format) != foreign.npos) return true;
        ++format;
    }
    return false;
}

} // namespace

int StringTraits<char>::Format(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
    if (IsForeign(format)) return PrintAll<char>(buffer, size, format, arguments);
    const int length = std::vsnprintf(buffer, size, format, arguments);
    if (length < 0) *buffer = 0;
    return length < 0 || static_cast<std::size_t>(length) >= size ? -1 : length;
}

int StringTraits<WCHAR>::Format(WCHAR* buffer, std::size_t size, const WCHAR* format,
                                std::va_list arguments) {
    return PrintAll<WCHAR>(buffer, size, format, arguments);
}

} // namespace zyn
