#pragma once

#include "zynaggr/zynstrmap.h"

#include <cstdint>

// The process's translation dictionary, shared by the units that fill it and that look things up in it.

namespace zyn {

inline constexpr std::uint32_t noLocale = 0xFFFFFFFF;

extern CzynStrStrMap dictionary;
extern std::uint32_t dictionaryLocale; // see CzynTranslate::GetGurLocale

} // namespace zyn
