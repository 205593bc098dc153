#include "zynaggr/zynstringw.h"

#include "zynaggr/zynstring_impl.h"
#include "zynplatform/environment.h"

#include <cstdio>
#include <vector>

namespace zyn {

template class BasicString<WCHAR>;

bool StringTraits<WCHAR>::Environment(const WCHAR* name, std::u16string& value) {
    using zynplatform::utf8CodePage;
    const std::size_t length = detail::LengthOf(name);
    std::string nativeName(zynplatform::NarrowLength(utf8CodePage, name, length), '\0');
    zynplatform::ToNarrow(utf8CodePage, name, length, nativeName.data());
    std::string native;
    if (!zynplatform::GetEnvironmentValue(nativeName.c_str(), native)) return false;
    value.resize(zynplatform::WideLength(utf8CodePage, native.data(), native.size()));
    zynplatform::ToWide(utf8CodePage, native.data(), native.size(), value.data());
    if (value.starts_with(u'/')) std::replace(value.begin(), value.end(), u'/', u'\\');
    return true;
}

// ---- Formatting. The C library prints no 16-bit text, so directives are taken apart here; numbers it prints
// still.

namespace {

using View = std::u16string_view;

constexpr std::size_t mostArguments = 100;

// Widths and precisions beyond it are taken as this. It is so far beyond the room that what it pushes behind
// the room stays behind it.
constexpr int widest = 3 * static_cast<int>(detail::formatRoom);

struct Directive {
    View literal;          // the text before it
    std::string flags;     // of "-+ #0"
    int width = -1;        // -1: none
    int precision = -1;    // -1: none
    int widthArgument = 0; // number of the argument that gives it, from 1 on; 0: none
    int precisionArgument = 0;
    int argument = 0;
    std::string length;  // "", "h", "hh", "l", "ll", "L", "j", "z", "t"
    char conversion = 0; // 0: the text at the format's end
};

enum class Type { none, integer, longInteger, longLong, realNumber, longReal, pointer };

union Argument {
    long long integer;
    long double real;
    const void* pointer;
};

// Takes a format apart; arguments are numbered in order, or all by "n$".
class FormatParser {
public:
    explicit FormatParser(View format) : m_rest(format) {}

    bool Run(std::vector<Directive>& directives) {
        while (!m_rest.empty()) {
            Directive directive;
            directive.literal = m_rest.substr(0, m_rest.find(u'%'));
            m_rest.remove_prefix(directive.literal.size());
            if (!m_rest.empty() && !Parse(directive)) return false;
            directives.push_back(std::move(directive));
        }
        return true;
    }

private:
    bool Take(char16_t c) {
        if (!m_rest.starts_with(c)) return false;
        m_rest.remove_prefix(1);
        return true;
    }
    // A number, -1 when there is none.
    int TakeNumber() {
        int number = -1;
        for (; !m_rest.empty() && m_rest[0] >= u'0' && m_rest[0] <= u'9'; m_rest.remove_prefix(1))
            number = std::min(std::max(number, 0) * 10 + (m_rest[0] - u'0'), 1'000'000);
        return number;
    }
    // "n$" makes the number; without it the next in order.
    bool TakeArgument(int& argument) {
        const View before = m_rest;
        const int number = TakeNumber();
        if (number > 0 && Take(u'$')) {
            argument = number;
        } else {
            m_rest = before;
            argument = ++m_next;
        }
        return static_cast<std::size_t>(argument) <= mostArguments;
    }
    bool TakeSize(int& size, int& argument) {
        if (Take(u'*')) return TakeArgument(argument);
        size = TakeNumber();
        return true;
    }
    void TakeLength(std::string& length) {
        static constexpr struct {
            View text;
            const char* length;
        } lengths[] = {{u"I64", "ll"}, {u"I32", ""}, {u"hh", "hh"}, {u"ll", "ll"}, {u"h", "h"}, {u"l", "l"},
                       {u"w", "l"},    {u"L", "L"},  {u"j", "j"},   {u"z", "z"},   {u"t", "t"}, {u"I", "z"}};
        for (const auto& row : lengths)
            if (m_rest.starts_with(row.text)) {
                m_rest.remove_prefix(row.text.size());
                length = row.length;
                return;
            }
    }
    bool Parse(Directive& directive) {
        Take(u'%');
        // The argument's number stands before the flags, and looks like a width until the "$".
        const View before = m_rest;
        const int number = TakeNumber();
        if (number > 0 && Take(u'$'))
            directive.argument = number;
        else
            m_rest = before;
        while (!m_rest.empty() && View(u"-+ #0").find(m_rest[0]) != View::npos) {
            directive.flags += static_cast<char>(m_rest[0]);
            m_rest.remove_prefix(1);
        }
        if (!TakeSize(directive.width, directive.widthArgument)) return false;
        if (Take(u'.')) {
            if (!TakeSize(directive.precision, directive.precisionArgument)) return false;
            if (directive.precisionArgument == 0) directive.precision = std::max(directive.precision, 0);
        }
        TakeLength(directive.length);
        if (m_rest.empty() || m_rest[0] >= 0x80) return false;
        directive.conversion = static_cast<char>(m_rest[0]);
        m_rest.remove_prefix(1);
        if (directive.conversion == '%') return true;
        if (directive.argument == 0) directive.argument = ++m_next;
        return static_cast<std::size_t>(directive.argument) <= mostArguments;
    }

    View m_rest;
    int m_next = 0;
};

Type TypeOf(const Directive& directive) {
    const std::string& length = directive.length;
    switch (directive.conversion) {
    case 'd':
    case 'i':
    case 'o':
    case 'u':
    case 'x':
    case 'X':
        if (length == "ll" || length == "j") return Type::longLong;
        return length == "l" || length == "z" || length == "t" ? Type::longInteger : Type::integer;
    case 'c':
    case 'C':
        return Type::integer;
    case 'a':
    case 'A':
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
        return length == "L" ? Type::longReal : Type::realNumber;
    case 's':
    case 'S':
    case 'p':
        return Type::pointer;
    default:
        return Type::none;
    }
}

// A list that functions can advance for each other: what a va_list parameter is differs between machines.
struct PassedArguments {
    std::va_list list;
};

// Reads the arguments in the order in which they were passed.
class Arguments {
public:
    // False for a number used with two types, or one that is left out: where the next stands is then not
    // known.
    bool Read(const std::vector<Directive>& directives, PassedArguments& passed) {
        std::vector<Type> types;
        const auto use = [&](int argument, Type type) {
            if (argument == 0) return true;
            const auto index = static_cast<std::size_t>(argument) - 1;
            if (index >= types.size()) types.resize(index + 1, Type::none);
            if (types[index] != Type::none && types[index] != type) return false;
            types[index] = type;
            return type != Type::none;
        };
        for (const Directive& directive : directives)
            if (!use(directive.widthArgument, Type::integer) ||
                !use(directive.precisionArgument, Type::integer) ||
                !use(directive.argument, TypeOf(directive)))
                return false;
        for (const Type type : types) {
            if (type == Type::none) return false;
            Read(type, passed, m_values.emplace_back());
        }
        return true;
    }
    const Argument& At(int argument) const { return m_values[static_cast<std::size_t>(argument) - 1]; }
    int SizeAt(int argument, int otherwise) const {
        return argument == 0 ? otherwise : static_cast<int>(At(argument).integer);
    }

private:
    static void Read(Type type, PassedArguments& passed, Argument& value) {
        switch (type) {
        case Type::longInteger:
            value.integer = va_arg(passed.list, long);
            break;
        case Type::longLong:
            value.integer = va_arg(passed.list, long long);
            break;
        case Type::realNumber:
            value.real = va_arg(passed.list, double);
            break;
        case Type::longReal:
            value.real = va_arg(passed.list, long double);
            break;
        case Type::pointer:
            value.pointer = va_arg(passed.list, const void*);
            break;
        default:
            value.integer = va_arg(passed.list, int);
        }
    }

    std::vector<Argument> m_values;
};

// Collects what is printed, as far as there is room.
class Output {
public:
    Output(WCHAR* buffer, std::size_t size) : m_buffer(buffer), m_room(size - 1) {}

    void Put(View text) {
        const std::size_t count = std::min(text.size(), m_room - m_length);
        detail::Copy(m_buffer + m_length, text.data(), count);
        m_length += count;
        m_isCut = m_isCut || count < text.size();
    }
    void PutPadded(View text, const Directive& directive, int width) {
        const std::size_t missing = width > 0 && static_cast<std::size_t>(width) > text.size()
                                        ? static_cast<std::size_t>(width) - text.size()
                                        : 0;
        const std::u16string padding(std::min(missing, m_room + 1), u' ');
        const bool left = directive.flags.find('-') != std::string::npos;
        if (!left) Put(padding);
        Put(text);
        if (left) Put(padding);
    }
    // The length, or -1 when there was more.
    int End() {
        m_buffer[m_length] = 0;
        return m_isCut ? -1 : static_cast<int>(m_length);
    }

private:
    WCHAR* m_buffer;
    std::size_t m_room;
    std::size_t m_length = 0;
    bool m_isCut = false;
};

std::u16string Widen(std::string_view text) {
    std::u16string wide(zynplatform::WideLength(zynplatform::ansiCodePage, text.data(), text.size()), u'\0');
    zynplatform::ToWide(zynplatform::ansiCodePage, text.data(), text.size(), wide.data());
    return wide;
}

// Text of either width, up to its zero or the precision, whichever comes first.
std::u16string TextOf(const void* pointer, bool isNarrow, int precision) {
    const std::size_t most = precision < 0 ? std::size_t(-1) : static_cast<std::size_t>(precision);
    if (!pointer) return std::u16string(View(u"(null)").substr(0, most));
    std::size_t length = 0;
    if (isNarrow) {
        const char* const text = static_cast<const char*>(pointer);
        while (length < most && text[length] != 0)
            ++length;
        return Widen({text, length});
    }
    const auto* const text = static_cast<const WCHAR*>(pointer);
    while (length < most && text[length] != 0)
        ++length;
    return std::u16string(text, length);
}

// By the C library, from the directive written anew without "n$" and "*".
std::u16string NumberOf(const Directive& directive, const Argument& value, int precision) {
    std::string format = "%";
    for (const char flag : directive.flags)
        if (flag != '-') format += flag;
    format += "*";
    if (precision >= 0) (format += '.') += std::to_string(precision);
    const Type type = TypeOf(directive);
    const bool isNarrowed = directive.length == "h" || directive.length == "hh";
    format += type == Type::integer && isNarrowed                 ? directive.length
              : type == Type::integer                             ? ""
              : type == Type::longReal                            ? "L"
              : type == Type::realNumber || type == Type::pointer ? ""
                                                                  : "ll";
    format += directive.conversion;
    const bool isLeft = directive.flags.find('-') != std::string::npos;
    const int width = isLeft ? 0 : std::clamp(directive.width, 0, widest);
    const auto print = [&](char* buffer, std::size_t size) {
        const char* const f = format.c_str();
        switch (type) {
        case Type::integer:
            return std::snprintf(buffer, size, f, width, static_cast<int>(value.integer));
        case Type::realNumber:
            return std::snprintf(buffer, size, f, width, static_cast<double>(value.real));
        case Type::longReal:
            return std::snprintf(buffer, size, f, width, value.real);
        case Type::pointer:
            return std::snprintf(buffer, size, f, width, value.pointer);
        default:
            return std::snprintf(buffer, size, f, width, value.integer);
        }
    };
    const int length = print(nullptr, 0);
    if (length <= 0) return {};
    std::string text(static_cast<std::size_t>(length), '\0');
    print(text.data(), text.size() + 1);
    return Widen(text);
}

void Print(Output& output, Directive directive, const Arguments& arguments) {
    directive.width = arguments.SizeAt(directive.widthArgument, directive.width);
    if (directive.widthArgument != 0 && directive.width < 0) { // as a "-" flag
        directive.flags += '-';
        directive.width = -std::max(directive.width, -widest);
    }
    int precision = arguments.SizeAt(directive.precisionArgument, directive.precision);
    precision = std::min(precision, widest);
    const bool isNarrow = directive.length == "h" || (directive.length.empty() && directive.conversion < 'a');
    const Argument& value = arguments.At(directive.argument);
    switch (directive.conversion) {
    case 's':
    case 'S':
        output.PutPadded(TextOf(value.pointer, isNarrow, precision), directive, directive.width);
        break;
    case 'c':
    case 'C':
        output.PutPadded(isNarrow ? Widen(std::string(1, static_cast<char>(value.integer)))
                                  : std::u16string(1, static_cast<WCHAR>(value.integer)),
                         directive, directive.width);
        break;
    default:
        output.PutPadded(NumberOf(directive, value, precision), directive, directive.width);
    }
}

} // namespace

int StringTraits<WCHAR>::Format(WCHAR* buffer, std::size_t size, const WCHAR* format, std::va_list list) {
    buffer[0] = 0;
    std::vector<Directive> directives;
    Arguments arguments;
    PassedArguments passed;
    va_copy(passed.list, list);
    const bool understood = FormatParser(format).Run(directives) && [&] {
        // "%%" takes no argument.
        std::vector<Directive> taking;
        std::copy_if(directives.begin(), directives.end(), std::back_inserter(taking),
                     [](const Directive& directive) { return directive.argument != 0; });
        return arguments.Read(taking, passed);
    }();
    va_end(passed.list);
    if (!understood) return -1;
    Output output(buffer, size);
    for (const Directive& directive : directives) {
        output.Put(directive.literal);
        if (directive.conversion == '%')
            output.Put(u"%");
        else if (directive.conversion != 0)
            Print(output, directive, arguments);
    }
    return output.End();
}

} // namespace zyn
