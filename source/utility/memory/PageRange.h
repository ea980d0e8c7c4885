#pragma once

#include "source/utility/memory/Allocator.h"
#include "source/utility/memory/PageAllocator.h"
#include "source/utility/platform/VirtualMemory.h"

#include <cstddef>
#include <cstdint>

namespace kst {

/// The address range of one allocator: reserved at once, handed out page by page, never given back.
///
///     base        next_page     committed                end
///      | handed out  | has memory   | no memory           |
///
/// Blocks and pages are named by their byte offset from the base, which fits 32 bits where a pointer doesn't. Offset 0
/// is a page's header and never a block, so that it stands for "none".
class PageRange {
public:
    PageRange() = default;

    /// Reserves `size` bytes, a multiple of the page size below 4 GiB. Without address space the range is empty.
    PageRange(PageAllocator& pages, std::size_t size)
        : pages_(&pages), base_(static_cast<std::byte*>(pages.reserve(size))), size_(base_ ? size : 0) {}

    bool holds(const void* pointer) const noexcept { return offset_of(pointer) < size_; }

    /// The page that `pointer` lies in was handed out.
    bool in_use(const void* pointer) const noexcept { return offset_of(pointer) < next_page_; }

    std::size_t offset_of(const void* pointer) const noexcept {
        return reinterpret_cast<std::uintptr_t>(pointer) - reinterpret_cast<std::uintptr_t>(base_);
    }
    std::byte* at(std::size_t offset) const noexcept { return base_ + offset; }

    /// Bytes in pages that were handed out.
    std::size_t allocated() const noexcept { return next_page_; }
    std::size_t address_space() const noexcept { return size_; }

    /// The next page, or null when the range is used up or the system has no memory.
    std::byte* take_page() {
        if (next_page_ == committed_ && !commit_more())
            return nullptr;
        std::byte* const page = base_ + next_page_;
        next_page_ += page_bytes;
        return page;
    }

private:
    /// Each commit is a system call of about a microsecond, so memory is made for 16 pages ahead; only pages that are
    /// touched cost anything. A range that outgrows a large page goes on in steps of one, which the system then backs
    /// as a whole: blocks in any order cost a third of the time that they do in small pages.
    static constexpr std::size_t small_step = 16 * page_bytes;

    bool commit_more() {
        const std::size_t step = committed_ < large_page_bytes ? small_step : large_page_bytes;
        const std::size_t left = size_ - committed_;
        const std::size_t more = left < step ? left : step;
        if (more == 0 || !pages_->commit(base_ + committed_, more))
            return false;
        committed_ += more;
        return true;
    }

    PageAllocator* pages_ = nullptr;
    std::byte* base_ = nullptr;
    std::size_t size_ = 0;
    std::size_t next_page_ = 0;
    std::size_t committed_ = 0;
};

} // namespace kst
