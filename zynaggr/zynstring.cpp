#include "zynaggr/zynstring.h"

#include "zynaggr/zynstring_impl.h"
#include "zynplatform/environment.h"
#include "zynplatform/paths.h"

#include <cstdio>

namespace zyn {

template class BasicString<char>;

static_assert([] {
    for (int c = -128; c < 128; ++c) {
        const auto character = static_cast<char>(c);
        if (StringTraits<char>::Upper(character) != zynplatform::Cp1251Upper(character)) return false;
        if (StringTraits<char>::Lower(character) != zynplatform::Cp1251Lower(character)) return false;
    }
    return true;
}());

int StringTraits<char>::Format(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
    const int length = std::vsnprintf(buffer, size, format, arguments);
    if (length < 0) *buffer = 0;
    return length < 0 || static_cast<std::size_t>(length) >= size ? -1 : length;
}

bool StringTraits<char>::Environment(const char* name, std::string& value) {
    std::string native;
    if (!zynplatform::GetEnvironmentValue(name, native)) return false;
    if (native.starts_with('/')) {
        value = zynplatform::FromNativePath(native);
        return true;
    }
    using zynplatform::utf8CodePage;
    std::u16string wide(zynplatform::WideLength(utf8CodePage, native.data(), native.size()), u'\0');
    zynplatform::ToWide(utf8CodePage, native.data(), native.size(), wide.data());
    value.resize(wide.size());
    zynplatform::ToNarrow(zynplatform::ansiCodePage, wide.data(), wide.size(), value.data());
    return true;
}

} // namespace zyn
