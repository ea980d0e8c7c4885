#include "source/utility/memory/BadPointer.h"

#include <cstdio>
#include <cstdlib>

namespace kst {

void stop_at_bad_pointer([[maybe_unused]] const void* pointer) noexcept {
#ifndef NDEBUG
    // No stream: they allocate, and the lock of the chain is held.
    std::fprintf(stderr, "Bad pointer %p passed to delete: no block in use starts there\n", pointer);
    std::abort();
#endif
}

} // namespace kst
