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
    using namespace zynplatform;
    const std::string nativeName = Recode(name ? name : "", ansiCodePage, utf8CodePage);
    std::string native;
    if (!GetEnvironmentValue(nativeName.c_str(), native)) return false;
    value = native.starts_with('/') ? FromNativePath(native) : Recode(native, utf8CodePage, ansiCodePage);
    return true;
}

} // namespace zyn
