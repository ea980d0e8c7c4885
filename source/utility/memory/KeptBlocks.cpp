#include "source/utility/memory/KeptBlocks.h"

namespace kst {

void KeptBlocks::start(PageAllocator& pages, std::byte* base, std::size_t span) {
    const std::size_t entries = (span / page_bytes + 1) * sizeof(Page);
    const std::size_t size = (entries + page_bytes - 1) & ~(page_bytes - 1);
    // Fresh memory is zero, an empty table. Only the parts for pages in use are ever touched.
    void* const table = pages.reserve(size);
    if (!table || !pages.commit(table, size))
        return;
    base_ = base;
    pages_ = static_cast<Page*>(table);
}

bool KeptBlocks::is_listed(std::uint32_t number, std::size_t place) const noexcept {
    const std::byte* const page = base_ + std::size_t{number - 1} * page_bytes;
    for (std::size_t next = pages_[number].first; next != 0; next = read(page + next * class_step) & link_mask)
        if (next == place)
            return true;
    return false;
}

} // namespace kst
