// SPDX-License-Identifier: MIT
#include "support/failing_new.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

struct State {
    long countdown; // allocations until the failing one, itself included; 0: none fails
    long failures;
    FailingNew::Kind kind;
};
constinit thread_local State state{};

void* AllocateOrNull(std::size_t size) noexcept {
    if (state.countdown == 0 || --state.countdown > 0) return std::malloc(size ? size : 1);
    if (state.kind == FailingNew::onwards) state.countdown = 1;
    ++state.failures;
    return nullptr;
}

void* Allocate(std::size_t size) {
    if (void* memory = AllocateOrNull(size)) return memory;
    throw std::bad_alloc();
}

} // namespace

FailingNew::FailingNew(long nth, Kind kind) {
    state = {nth, 0, kind};
}

FailingNew::~FailingNew() {
    state = {};
}

long FailingNew::Failures() const {
    return state.failures;
}

// clang-format off
void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return AllocateOrNull(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return AllocateOrNull(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
// clang-format on
