// SPDX-License-Identifier: MIT
#pragma once

// zynAggr: everything, in one header. Each unit's header is its manual and can be included by itself.

#include "zynaggr/dllmain.h"          // the module's entry point
#include "zynaggr/ini.h"              // the INI engine
#include "zynaggr/ini_transaction.h"  // edits of one file by several processes
#include "zynaggr/utf8.h"             // between UTF-8 and the library's texts
#include "zynaggr/zyn_langs.h"        // locales of interface languages
#include "zynaggr/zyn_translate.h"    // translation dictionaries, the interface language
#include "zynaggr/zyncsv.h"           // reading separated text
#include "zynaggr/zyncsvwriter.h"     // writing it
#include "zynaggr/zyndatabuf.h"       // serialising into a buffer
#include "zynaggr/zyndatabufex.h"     // the same with an iterator
#include "zynaggr/zyndatetime.h"      // dates
#include "zynaggr/zyndatetimespan.h"  // time spans
#include "zynaggr/zynencoding.h"      // text encodings: detection, marks
#include "zynaggr/zynerror.h"         // error records
#include "zynaggr/zynfile.h"          // files and helpers for files by name
#include "zynaggr/zynhelpers.h"       // small helpers
#include "zynaggr/zynmap.h"           // integer/pointer pair map
#include "zynaggr/zynmessage.h"       // messages to the console and in message boxes
#include "zynaggr/zynstacklogger.h"   // tracing calls
#include "zynaggr/zynstring.h"        // 8-bit string
#include "zynaggr/zynstringadapter.h" // one text in 8-bit and 16-bit form
#include "zynaggr/zynstringfile.h"    // text files in any encoding
#include "zynaggr/zynstringw.h"       // 16-bit string
#include "zynaggr/zynstrmap.h"        // string-keyed maps
#include "zynaggr/zynsync.h"          // counter, critical sections, stopwatch
#include "zynaggr/zyntaggr.h"         // pointer array
