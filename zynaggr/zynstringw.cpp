// SPDX-License-Identifier: MIT
#include "zynaggr/zynstringw.h"

#include "zynaggr/zynstring_impl.h"
#include "zynplatform/environment.h"

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

} // namespace zyn
