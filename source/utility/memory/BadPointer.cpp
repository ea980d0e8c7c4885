#include "source/utility/memory/BadPointer.h"

#include <cstdio>
#include <cstdlib>

namespace kst {

void stop_at_bad_pointer([[maybe_unused]] const void* pointer, [[maybe_unused]] BadPointer reason) noexcept {
#ifndef NDEBUG
    // No stream: they allocate, and the lock of the chain is held.
    std::fprintf(stderr, "Bad pointer %p passed to delete: %s\n", pointer,
                 reason == BadPointer::freed_twice ? "the block is free already" : "no block starts there");
    std::abort();
#endif
}

} // namespace kst
