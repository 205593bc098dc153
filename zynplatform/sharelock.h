#pragma once

#include <cstdint>

namespace zynplatform {

// Announces on an open descriptor what its open does and denies (FileAccess bits) until the descriptor is
// closed. 0, or error 32 when it conflicts with another open; the caller then closes the descriptor.
std::uint32_t TakeShareLock(int descriptor, unsigned access, unsigned deny);

} // namespace zynplatform
