// SPDX-License-Identifier: MIT
#pragma once

// A peer, quiet.
#ifdef HAVE_simpleini
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wall"
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#define SI_CONVERT_ICU // for wide text only, which is not used here
#include <SimpleIni.h>
#pragma GCC diagnostic pop
#endif
