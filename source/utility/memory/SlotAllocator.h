#pragma once

#include "source/utility/memory/Allocator.h"
#include "source/utility/memory/PageRange.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace kst {

/// Objects of a few bytes without any header. Size classes go in steps of 4 bytes, and a page serves one class at a
/// time:
///
///     0    u32  block size
///     4    u32  live blocks
///     8    u16  first free block of this page, in words of 4 bytes from its start; 0 is none
///     10   u16  how often the page was taken
///     12   u16  previous page of the class list
///     14   u16  next page of the class list; of an empty page: next empty page
///     16   blocks
///
/// A live block holds nothing of ours. A free block is too small for an address, so the list of a class goes over its
/// pages that have free blocks, and each page lists its own: a free block's word holds the next one's place in the low
/// 12 bits, and a mark of the page and its generation in the others. When the last block of a page is freed, the page
/// with all its blocks leaves the class in one step and serves whatever class needs a page next.
///
/// The mark is how a second delete is told: data of a live block may look like it once in a million, and then the
/// page's list is walked to be sure.
class SlotAllocator final : public Allocator {
public:
    static constexpr std::size_t largest_max_size = 64;

    /// Serves 1 to `max_size` bytes from `address_space` bytes, at most 256 MiB, so that a page number fits 16 bits.
    SlotAllocator(PageAllocator& pages, std::size_t max_size, std::size_t address_space);

    bool can_allocate(std::size_t size) const noexcept override { return size <= max_size_; }
    bool owns(const void* pointer) const noexcept override { return range_.holds(pointer); }
    void* allocate(std::size_t size) override;
    void deallocate(void* pointer) noexcept override;
    void report(std::ostream& stream, bool detailed) const override;

    /// The size of a live block; 0 for a pointer that can be told not to be one, without a stop.
    std::size_t live_size(const void* pointer) const noexcept;

    /// While the chain keeps a block it is free for the counts. Its page holds it as in use until deallocate_kept().
    void count_kept(std::size_t size) noexcept { --classes_[size / class_step].live; }
    void count_reused(std::size_t size) noexcept {
        SizeClass& size_class = classes_[size / class_step];
        if (++size_class.live > size_class.max_live)
            size_class.max_live = size_class.live;
    }
    /// Takes back a block that the chain kept.
    void deallocate_kept(void* pointer, std::size_t size) noexcept {
        ++classes_[size / class_step].live;
        deallocate(pointer);
    }

    std::size_t live(std::size_t size) const noexcept { return classes_[round_to_words(size) / class_step].live; }
    std::size_t free_pages() const noexcept { return free_page_count_; }

private:
    struct PageHeader {
        std::uint32_t block_size;
        std::uint32_t live;
        std::uint16_t first_free;
        std::uint16_t generation;
        std::uint16_t previous;
        std::uint16_t next;
    };
    static_assert(sizeof(PageHeader) == 16);

    struct SizeClass {
        std::uint16_t first_page = 0; ///< number + 1 of the first page with free blocks
        std::byte* bump = nullptr;    ///< next place in the page that is being filled
        std::uint32_t live = 0;
        std::uint32_t max_live = 0;
    };

    PageHeader& page(std::uint16_t number) const noexcept;
    PageHeader& page_of(const void* pointer) const noexcept;
    std::uint16_t number_of(const PageHeader& header) const noexcept;
    bool in_free_list(const PageHeader& header, const void* pointer) const noexcept;
    void* pop(SizeClass& size_class) noexcept;
    void* bump(SizeClass& size_class, std::uint32_t size);
    PageHeader* take_page(std::uint32_t size);
    void list_page(SizeClass& size_class, PageHeader& header) noexcept;
    void unlist_page(SizeClass& size_class, PageHeader& header) noexcept;
    void retire_page(SizeClass& size_class, PageHeader& header) noexcept;

    std::array<SizeClass, largest_max_size / class_step + 1> classes_{};
    PageRange range_;
    std::uint16_t first_empty_page_ = 0; ///< number + 1
    std::size_t free_page_count_ = 0;
    std::size_t max_size_;
};

} // namespace kst
