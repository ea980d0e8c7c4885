#include "source/utility/platform/VirtualMemory.h"

#include <cstdint>
#include <sys/mman.h>

namespace kst {

void* reserve_address_range(std::size_t size) noexcept {
    const std::size_t slack = size >= large_page_bytes ? large_page_bytes : 0;
    // PROT_NONE keeps the range out of the commit charge also where the system doesn't overcommit.
    void* const base = mmap(nullptr, size + slack, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (base == MAP_FAILED || slack == 0)
        return base == MAP_FAILED ? nullptr : base;
    auto* const start = static_cast<std::byte*>(base);
    const std::size_t before = -reinterpret_cast<std::uintptr_t>(base) & (large_page_bytes - 1);
    if (before != 0)
        munmap(start, before);
    munmap(start + before + size, slack - before);
    return start + before;
}

bool commit_pages(void* address, std::size_t size) noexcept {
    if (mprotect(address, size, PROT_READ | PROT_WRITE) != 0)
        return false;
    if (size % large_page_bytes == 0)
        static_cast<void>(madvise(address, size, MADV_HUGEPAGE)); // a wish: small pages do as well
    return true;
}

void release_address_range(void* address, std::size_t size) noexcept {
    munmap(address, size);
}

} // namespace kst
