// SPDX-License-Identifier: MIT
#pragma once

#include "zynhost/cstring.h"
#include "zynplatform/export.h"

#include <array>
#include <cstdint>

// A locale that an interface can be translated into.
struct SZYNLanguage {
    SZYNLanguage(int nID, const CStringA& sCulture, const CStringA& sDisplayName, const CStringA& sLanguage)
        : nLCID(nID), strCulture(sCulture), strDisplayName(sDisplayName), strLanguage(sLanguage) {}

    std::int32_t nLCID;      // locale identifier, as 1049
    CStringA strCulture;     // as "ru-RU"; empty in one row. Dictionary files are named by it
    CStringA strDisplayName; // English name, as "Russian (Russia)"
    CStringA strLanguage;    // neutral language name, as "ru"; empty in 89 rows
};

// The locales known to the library. Positions in the table are part of its interface (see
// CzynTranslate::GetTranslateFiles); where something is looked up in it, the first match counts. Filled when
// the library is loaded; to be read only.
extern ZYN_API std::array<SZYNLanguage, 207> zyn_langs;
