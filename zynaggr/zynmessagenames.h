// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

// The name of a window message, for logs: "WM_CREATE" for 1, "WM_SIZEPARENT" for 0x0361; the low 32 bits
// count. The result is static text that must not be written to; it is never null, and empty for a message
// that has no name here.
//
// With `all` false the messages that come by the hundred (pointer movement and hit tests, the cursor and
// colour queries, idling, cancelled modes, the system timer) have no name either, so that a log can skip
// them.
//
// Where an identifier has several names, one of them answers: 0x001A is always "WM_WININICHANGE", 0x0109
// always "WM_KEYLAST". Safe from several threads.
ZYN_API char* zynGetStringFromMsg(unsigned long message, bool all);
