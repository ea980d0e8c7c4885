#include "source/utility/memory/KeptBlocks.h"

#include <algorithm>

namespace kst {

void KeptBlocks::start(PageAllocator& pages, std::byte* base, std::size_t span) {
    const std::size_t entries = (span / page_bytes + 1) * sizeof(Page);
    const std::size_t size = (entries + page_bytes - 1) & ~(page_bytes - 1);
    // Fresh memory is zero, an empty book. Only the parts for pages in use are ever touched.
    void* const book = pages.reserve(size);
    if (!book || !pages.commit(book, size))
        return;
    base_ = base;
    pages_ = static_cast<Page*>(book);
}

void KeptBlocks::add(const std::byte* block, std::size_t words) noexcept {
    const std::size_t offset = offset_of(block);
    Page& page = page_of(offset);
    if (page.words_of_all != words) {
        const bool first =
            page.first == 0 && std::all_of(page.live.begin(), page.live.end(), [](auto w) { return w == 0; });
        page.words_of_all = static_cast<std::uint16_t>(first ? words : 0);
    }
    const std::size_t place = offset % page_bytes / class_step;
    page.live[place / 64] |= std::uint64_t{1} << place % 64;
}

void KeptBlocks::remove(const std::byte* block) noexcept {
    const std::size_t offset = offset_of(block);
    const std::size_t place = offset % page_bytes / class_step;
    page_of(offset).live[place / 64] &= ~(std::uint64_t{1} << place % 64);
}

} // namespace kst
