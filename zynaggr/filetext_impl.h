// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/zynencoding.h"

#include <string>
#include <string_view>

namespace zyn {

// The bytes of a file as 16-bit text and back, with whatever the encoding holds: characters above U+FFFF are
// surrogate pairs in the one and one character in the other. What is no text becomes U+FFFD, a partial unit
// at the end nothing. zynEncUnknown and zynEncCP866 are taken for the 8-bit code page.
std::u16string DecodeText(zynTextEncoding encoding, std::string_view bytes);
std::string EncodeText(zynTextEncoding encoding, std::u16string_view text);

// The bytes in code page 1251, one for each 16-bit unit: '?' for what that page does not have.
std::string DecodeTo1251(zynTextEncoding encoding, std::string_view bytes);

// Whether the text that the bytes were decoded to lacks something of them.
bool IsLost(zynTextEncoding encoding, std::string_view bytes, std::string_view text);

// The mark of an encoding; empty when it has none.
std::string_view MarkOf(zynTextEncoding encoding);

// What the bytes of a file are in: what their mark says, or else the caller, or else their content.
zynTextEncoding FindEncoding(std::string_view bytes, const zynEncodingChoice& choice,
                             std::size_t& markLength);

} // namespace zyn
