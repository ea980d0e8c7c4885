#include "source/utility/platform/VirtualMemory.h"

#include <sys/mman.h>

namespace kst {

void* reserve_address_range(std::size_t size) noexcept {
    // PROT_NONE keeps the range out of the commit charge also where the system doesn't overcommit.
    void* const base = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return base == MAP_FAILED ? nullptr : base;
}

bool commit_pages(void* address, std::size_t size) noexcept {
    return mprotect(address, size, PROT_READ | PROT_WRITE) == 0;
}

void release_address_range(void* address, std::size_t size) noexcept {
    munmap(address, size);
}

} // namespace kst
