#include "zynaggr/zyn_langs.h"

#include "zynplatform/locale_table.h"

#include <iterator>
#include <utility>

namespace {

template <std::size_t... I> std::array<SZYNLanguage, sizeof...(I)> Languages(std::index_sequence<I...>) {
    using zynplatform::localeTable;
    return {SZYNLanguage(localeTable[I].lcid, localeTable[I].culture, localeTable[I].display,
                         localeTable[I].language)...};
}

} // namespace

std::array<SZYNLanguage, 207> zyn_langs =
    Languages(std::make_index_sequence<std::size(zynplatform::localeTable)>());
