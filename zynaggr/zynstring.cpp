// SPDX-License-Identifier: MIT
#include "zynaggr/zynstring.h"

#include "zynaggr/zynstring_impl.h"
#include "zynplatform/environment.h"
#include "zynplatform/paths.h"

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

bool StringTraits<char>::Environment(const char* name, std::string& value) {
    using namespace zynplatform;
    const std::string nativeName = Recode(name ? name : "", ansiCodePage, utf8CodePage);
    std::string native;
    if (!GetEnvironmentValue(nativeName.c_str(), native)) return false;
    value = native.starts_with('/') ? FromNativePath(native) : Recode(native, utf8CodePage, ansiCodePage);
    return true;
}

} // namespace zyn
