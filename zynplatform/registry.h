// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <cstdint>
#include <optional>
#include <string>
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
// or a text in which a backslash stands before a backslash or a quote. What is neither is ignored, and kept.
// Names of keys and values are compared without regard to case (Latin a-z, Cyrillic а-я and ё); of two values
// of one name the first counts. A key exists also when only a key below it is written down.
//
// The file is read anew at every call, so that a change made by another process is seen. A change is made to
// a copy that then replaces the file, behind a lock (a file of the same name with ".lock"): of two processes
// that write at once, both succeed. Safe from several threads.

namespace zynplatform {

// The registry can be used: its file was read, or there is none, which is an empty registry. False when there
// is a file that cannot be read.
ZYN_API bool RegistryIsReadable();

// Whether the key is there; `key` is in the library's code page, its parts separated by single backslashes.
// False also when the registry cannot be read.
ZYN_API bool RegistryKeyExists(std::string_view key);

// A key that this user may read and change.
class ZYN_API RegistryKey {
public:
    // Nothing when the key is not there or may not be changed, which takes the right to write to the file and
    // to its folder.
    static std::optional<RegistryKey> Open(std::string_view key);
    // Makes the key, and the file with its folders, when it is not there.
    static std::optional<RegistryKey> OpenOrCreate(std::string_view key);

    // The value of that name, when there is one and it is a number.
    std::optional<std::uint32_t> GetNumber(std::string_view name) const;
    // Sets the value, in place of one of any type; false when that fails, and nothing has changed then. It
    // fails also when the key is no longer there.
    bool SetNumber(std::string_view name, std::uint32_t value) const;

private:
    explicit RegistryKey(std::string_view key) : m_key(key) {}

    std::string m_key;
};

} // namespace zynplatform
