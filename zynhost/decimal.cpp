// SPDX-License-Identifier: MIT
#include "zynhost/decimal.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

std::int32_t zyn::DecimalValue(const char* text) {
    constexpr long long lowest = std::numeric_limits<std::int32_t>::min();
    constexpr long long highest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(
        std::clamp(std::strtoll(text ? text : "", nullptr, 10), lowest, highest));
}
