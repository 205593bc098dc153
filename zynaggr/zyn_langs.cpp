// SPDX-License-Identifier: MIT
#include "zynaggr/zyn_langs.h"

#include "zynplatform/locale_table.h"
#include "zynplatform/moduleentry.h"

#include <iterator>
#include <utility>

namespace {

template <std::size_t... I> std::array<SZYNLanguage, sizeof...(I)> Languages(std::index_sequence<I...>) {
    using zynplatform::localeTable;
    return {SZYNLanguage(localeTable[I].lcid, localeTable[I].culture, localeTable[I].display,
                         localeTable[I].language)...};
}

using Table = decltype(zyn_langs);

} // namespace

// The table under its exported name, but left alone at the end of the process.
extern ZYN_API zynplatform::UntilUnload<Table> langsUntilUnload asm("zyn_langs");
static_assert(sizeof(langsUntilUnload) == sizeof(Table));
zynplatform::UntilUnload<Table>
    langsUntilUnload(Languages(std::make_index_sequence<std::size(zynplatform::localeTable)>()));
