#include "source/utility/memory/PageAllocator.h"

#include "source/utility/platform/VirtualMemory.h"

namespace kst {

void* SystemPageAllocator::reserve(std::size_t size) {
    return reserve_address_range(size);
}

bool SystemPageAllocator::commit(void* address, std::size_t size) {
    return commit_pages(address, size);
}

} // namespace kst
