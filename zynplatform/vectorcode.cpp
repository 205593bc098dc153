// SPDX-License-Identifier: MIT
#include "zynplatform/vectorcode_impl.h"

#include <algorithm>

namespace zynplatform {

#ifdef __x86_64__
extern const VectorCode avx2Code, avx512Code; // avx2.cpp, avx512.cpp
#endif

namespace {

template <class From, class To> Progress ConvertNothing(const From*, std::size_t, To*) {
    return {0, 0};
}
constexpr VectorCode commonCode{ConvertNothing, ConvertNothing,         ConvertNothing,
                                ConvertNothing, common::FindDifference, common::SameWithoutCase};

[[maybe_unused]] const bool isChosen = (UseInstructions(BestInstructions()), true);

const VectorCode& CodeOf([[maybe_unused]] Instructions instructions) {
#ifdef __x86_64__
    if (instructions == Instructions::avx512) return avx512Code;
    if (instructions == Instructions::avx2) return avx2Code;
#endif
    return commonCode;
}

} // namespace

// Other objects may be constructed before the choice is made.
constinit std::atomic<const VectorCode*> currentVectorCode{&commonCode};

Instructions BestInstructions() {
#ifdef __x86_64__
    __builtin_cpu_init();
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("popcnt")) return Instructions::common;
    const bool hasAvx512 = __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") &&
                           __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2") &&
                           __builtin_cpu_supports("bmi2");
    return hasAvx512 ? Instructions::avx512 : Instructions::avx2;
#else
    return Instructions::common;
#endif
}

void UseInstructions(Instructions instructions) {
    currentVectorCode = &CodeOf(std::min(instructions, BestInstructions()));
}

} // namespace zynplatform
