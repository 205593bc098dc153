#pragma once

#include "zynplatform/export.h"

#include <string_view>

// The user's registry: keys with values, one file per user.
//
// The file is $ZYN_REGISTRY, else $XDG_DATA_HOME/zynaggr/registry, else $HOME/.local/share/zynaggr/registry
// (native paths; an empty variable counts as not set). It is UTF-8 text, with or without a byte-order mark:
//
//     ; a comment; blank lines are ignored too
//     [Software\Vendor\Settings]
//     "Language"=dword:00000419
//     "Folder"="C:\\Data \"new\""
//
// A line in square brackets opens a key, the lines below it are its values: a 32-bit number in hexadecimal,
// or a text in which a backslash stands before a backslash or a quote. What is neither is ignored. Key names
// are compared without regard to case (Latin a-z, Cyrillic а-я and ё); a key exists also when only a key
// below it is written down.
//
// The file is read anew at every call, so that a change made by another process is seen. Safe from several
// threads.

namespace zynplatform {

// The registry can be used: its file was read, or there is none, which is an empty registry. False when there
// is a file that cannot be read.
ZYN_API bool RegistryIsReadable();

// Whether the key is there; `key` is in the library's code page, its parts separated by single backslashes.
// False also when the registry cannot be read.
ZYN_API bool RegistryKeyExists(std::string_view key);

} // namespace zynplatform
