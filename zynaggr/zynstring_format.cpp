// Formatting of both string classes. The C library prints 8-bit text; what it does not know is printed here,
// directive by directive, the numbers by the C library still.

#include "zynaggr/format_impl.h"
#include "zynaggr/zynstring_impl.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace zyn {

namespace {

// Widths and precisions beyond it are taken as this. It is so far beyond the room that what it pushes behind
// the room stays behind it.
constexpr int widest = 3 * static_cast<int>(detail::formatRoom);

template <class C> using Text = std::basic_string<C>;
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
    // False for a number used with two types, or one that is left out: where the next stands is then not
    // known.
    template <class C> bool Read(const std::vector<FormatDirective<C>>& directives, PassedArguments& passed) {
        std::vector<FormatType> types;
        const auto use = [&](int argument, FormatType type) {
            if (argument == 0) return true;
            const auto index = static_cast<std::size_t>(argument) - 1;
            if (index >= types.size()) types.resize(index + 1, FormatType::none);
            if (types[index] != FormatType::none && types[index] != type) return false;
            types[index] = type;
            return true;
        };
        for (const FormatDirective<C>& directive : directives)
            if (!use(directive.widthArgument, FormatType::integer) ||
                !use(directive.precisionArgument, FormatType::integer) ||
                !use(directive.argument, directive.type))
                return false;
        for (const FormatType type : types) {
            if (type == FormatType::none) return false;
            Read(type, passed, m_values.emplace_back());
        }
        return true;
    }
    const Argument& At(int argument) const { return m_values[static_cast<std::size_t>(argument) - 1]; }
    int SizeAt(int argument, int otherwise) const {
        return argument == 0 ? otherwise : static_cast<int>(At(argument).integer);
    }

private:
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

    std::vector<Argument> m_values;
};

// Collects what is printed, as far as there is room.
template <class C> class Output {
public:
    Output(C* buffer, std::size_t size) : m_buffer(buffer), m_room(size - 1) {}

    void Put(View<C> text) {
        const std::size_t count = std::min(text.size(), m_room - m_length);
        detail::Copy(m_buffer + m_length, text.data(), count);
        m_length += count;
        m_isCut = m_isCut || count < text.size();
    }
    void PutPadded(View<C> text, bool isLeft, int width) {
        const std::size_t missing = width > 0 && static_cast<std::size_t>(width) > text.size()
                                        ? static_cast<std::size_t>(width) - text.size()
                                        : 0;
        const Text<C> padding(std::min(missing, m_room + 1), C(' '));
        if (!isLeft) Put(padding);
        Put(text);
        if (isLeft) Put(padding);
    }
    // The length, or -1 when there was more.
    int End() {
        m_buffer[m_length] = 0;
        return m_isCut ? -1 : static_cast<int>(m_length);
    }

private:
    C* m_buffer;
    std::size_t m_room;
    std::size_t m_length = 0;
    bool m_isCut = false;
};

template <class To, class From> Text<To> Converted(View<From> text) {
    if constexpr (std::is_same_v<To, From>)
        return Text<To>(text);
    else {
        Text<To> result(detail::ConvertedLength(text.data(), text.size(), static_cast<To*>(nullptr)), To(0));
        detail::Convert(text.data(), text.size(), result.data());
        return result;
    }
}

// Text up to its zero or the precision, whichever comes first.
template <class To, class From> Text<To> TextOf(const void* pointer, int precision) {
    const std::size_t most = precision < 0 ? std::size_t(-1) : static_cast<std::size_t>(precision);
    if (!pointer) return Converted<To>(View<char>("(null)").substr(0, most));
    const auto* const text = static_cast<const From*>(pointer);
    std::size_t length = 0;
    while (length < most && text[length] != 0)
        ++length;
    return Converted<To>(View<From>(text, length));
}

// By the C library, from the directive written anew without "n$" and "*".
template <class C>
std::string NumberOf(const FormatDirective<C>& directive, const Argument& value, bool isLeft, int precision) {
    std::string format = "%";
    for (const C flag : directive.flags)
        if (flag != '-') format += static_cast<char>(flag);
    format += "*";
    if (precision >= 0) (format += '.') += std::to_string(precision);
    const FormatType type = directive.type;
    if (type == FormatType::integer && *directive.length == 'h') format += directive.length;
    if (type == FormatType::longInteger || type == FormatType::longLong) format += "ll";
    if (type == FormatType::longReal) format += 'L';
    format += directive.conversion;
    const int width = isLeft ? 0 : std::clamp(directive.width, 0, widest);
    const auto print = [&](char* buffer, std::size_t size) {
        const char* const f = format.c_str();
        switch (type) {
        case FormatType::integer:
            return std::snprintf(buffer, size, f, width, static_cast<int>(value.integer));
        case FormatType::realNumber:
            return std::snprintf(buffer, size, f, width, static_cast<double>(value.real));
        case FormatType::longReal:
            return std::snprintf(buffer, size, f, width, value.real);
        case FormatType::pointer:
            return std::snprintf(buffer, size, f, width, value.pointer);
        default:
            return std::snprintf(buffer, size, f, width, value.integer);
        }
    };
    const int length = print(nullptr, 0);
    if (length <= 0) return {};
    std::string text(static_cast<std::size_t>(length), '\0');
    print(text.data(), text.size() + 1);
    return text;
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
    Text<C> text;
    switch (directive.conversion) {
    case 's':
    case 'S':
        text = IsNarrow(directive) ? TextOf<C, char>(value.pointer, precision)
                                   : TextOf<C, WCHAR>(value.pointer, precision);
        break;
    case 'c':
    case 'C': {
        const auto narrow = static_cast<char>(value.integer);
        const auto wide = static_cast<WCHAR>(value.integer);
        text =
            IsNarrow(directive) ? Converted<C>(View<char>(&narrow, 1)) : Converted<C>(View<WCHAR>(&wide, 1));
        break;
    }
    default:
        text = Converted<C>(View<char>(NumberOf(directive, value, isLeft, precision)));
    }
    output.PutPadded(text, isLeft, directive.width);
}

template <class C> int PrintAll(C* buffer, std::size_t size, View<C> format, std::va_list list) {
    buffer[0] = 0;
    std::vector<FormatDirective<C>> directives;
    FormatReader<C> reader(format);
    for (FormatDirective<C> directive; reader.Next(directive);)
        directives.push_back(directive);
    Arguments arguments;
    PassedArguments passed;
    va_copy(passed.list, list);
    const bool understood = reader.IsWellFormed() && arguments.Read(directives, passed);
    va_end(passed.list);
    if (!understood) return -1;
    Output<C> output(buffer, size);
    for (const FormatDirective<C>& directive : directives) {
        output.Put(directive.literal);
        static constexpr C percent = '%';
        if (directive.type != FormatType::none)
            Print(output, directive, arguments);
        else if (directive.conversion == '%')
            output.Put({&percent, 1});
    }
    return output.End();
}

// Whether the C library would take a directive for something else: it knows no "I64", its wide text has
// 32-bit characters, and "%n" would write.
bool IsForeign(std::string_view format) {
    constexpr std::string_view foreign = "IwSCn";
    for (std::size_t at = 0; (at = format.find('%', at)) != format.npos; ++at) {
        at = format.find_first_not_of("0123456789$*.-+ #'hlqjzt", at + 1);
        if (at == format.npos) return false;
        const bool isLong = format[at - 1] == 'l' && (format[at] == 's' || format[at] == 'c');
        if (isLong || foreign.find(format[at]) != foreign.npos) return true;
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
