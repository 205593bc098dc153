// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// The pieces of the tracer's texts.

namespace zyn {

// "17:05:09.123 ", the local time.
std::string StackTime();

// "t0x0A1C L000:1234567 ", the thread's id, the depth and the tick, in pieces that are valid until the thread
// asks again.
std::array<std::string_view, 3> StackPrefix(std::uint32_t threadId, std::int32_t depth);
constexpr std::size_t longestStackPrefix = 48;

} // namespace zyn
