// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace zynplatform {

// Who may do what with a file: from one open file to another.

// Gives `to` the permission bits and the access list of `from`. Two errors, for the two halves of that.
struct RightsCopied {
    std::uint32_t reading = 0;
    std::uint32_t setting = 0;
};
RightsCopied CopyRights(int from, int to);

// Makes `to` the same as `from` to everybody: owner, group, permission bits and all attributes, the access
// list among them. False when some of that cannot be given.
bool TakeOverIdentity(int from, int to);

// Gives as much of that as can be given, and in no case rights to people who have none on `from`.
void TakeOverAtMost(int from, int to);

} // namespace zynplatform
