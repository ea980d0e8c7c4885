#pragma once

#include "source/utility/memory/Allocator.h"
#include "source/utility/memory/PageBitmap.h"
#include "source/utility/memory/PageRange.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace kst {

/// Blocks of up to `max_size` bytes without headers, in pages that begin with a bitmap (see PageBitmap). Neighbouring
/// free blocks of a page are always merged. Size classes go in steps of `granularity` bytes:
///
///     granularity   unit   bitmap     blocks start at multiples of
///     16            8      64 bytes   16 from the page's start
///     8             4      128        8
///     4             4      128        4
///
/// so that a heap which is only asked for multiples of its granularity aligns every block to it.
///
/// A free block holds, in its first 12 bytes:
///
///     0   u32  previous free block of the same list; undefined for the head
///     4   u32  next free block; 0 is none
///     8   u32  its size, if larger than max_size: such blocks stand in one list of their own
///
/// Links are offsets from the range's base: they fit the smallest block of two units of 4 bytes, where addresses don't.
class SmallHeapAllocator final : public Allocator {
public:
    static constexpr std::size_t largest_max_size = 512;

    /// Serves multiples of `granularity` (4, 8 or 16) up to `max_size` from `address_space` bytes, below 4 GiB.
    SmallHeapAllocator(PageAllocator& pages, std::size_t max_size, std::size_t granularity, std::size_t address_space);

    bool can_allocate(std::size_t size) const noexcept override {
        const std::size_t bytes = round_to_words(size);
        return bytes <= max_size_ && (bytes & (granularity_ - 1)) == 0;
    }
    bool owns(const void* pointer) const noexcept override { return range_.holds(pointer); }
    void* allocate(std::size_t size) override;
    void deallocate(void* pointer) noexcept override;
    void report(std::ostream& stream, bool detailed) const override;

    /// The bytes of the block in use that starts at `pointer`: at least what was asked for, more by one word where a
    /// rest was too small to be a block. 0 for a pointer that can be told not to be such a block, without a stop.
    std::size_t live_size(const void* pointer) const noexcept {
        const std::size_t offset = range_.offset_of(pointer);
        const std::size_t in_page = offset % page_bytes;
        const PageBitmap map = bitmap(offset - in_page);
        if (!range_.in_use(pointer) || (in_page & (granularity_ - 1)) != 0 || in_page < bitmap_bytes_)
            return 0;
        const auto first = static_cast<std::uint32_t>(in_page >> unit_shift_);
        return map.is_used_block(first) ? std::size_t{map.next_set(first + 2) - first} << unit_shift_ : 0;
    }

    /// A request of `size` bytes can only be met with a new page.
    bool must_grow(std::size_t size) const noexcept;

    /// While the chain keeps a block it is free for `used` and `max_used`. Its page and its class hold it as in use
    /// until deallocate_kept().
    void count_kept(std::size_t size) noexcept { used_ -= size; }
    void count_reused(std::size_t size) noexcept {
        used_ += size;
        if (used_ > max_used_)
            max_used_ = used_;
    }
    /// Takes back a block that the chain kept.
    void deallocate_kept(void* pointer, std::size_t size) noexcept {
        used_ += size;
        deallocate(pointer);
    }

    std::size_t granularity() const noexcept { return granularity_; }
    std::size_t unit() const noexcept { return unit_; }
    std::size_t bitmap_bytes() const noexcept { return bitmap_bytes_; }

    /// Bytes in blocks in use, rests of the last note included; and the most there were.
    std::size_t used() const noexcept { return used_; }
    std::size_t max_used() const noexcept { return max_used_; }
    std::size_t allocated() const noexcept { return range_.allocated(); }

    /// Walks all pages and lists. False if any promise of the layout is broken: blocks that fill each page without a
    /// gap, no two free neighbours, every free block in the list of its size once, counts and sums.
    bool check() const;

private:
    static constexpr std::size_t class_count = largest_max_size / class_step + 1;

    struct Links {
        std::uint32_t previous;
        std::uint32_t next;
    };
    struct LargeBlock {
        Links links;
        std::uint32_t size;
    };
    struct FreeList {
        std::uint32_t head = 0;
        std::uint32_t count = 0;
    };

    PageBitmap bitmap(std::size_t page) const noexcept { return {range_.at(page), units_}; }
    Links& links(std::uint32_t offset) const noexcept { return *reinterpret_cast<Links*>(range_.at(offset)); }
    std::uint32_t& large_size(std::uint32_t offset) const noexcept {
        return reinterpret_cast<LargeBlock*>(range_.at(offset))->size;
    }
    /// Whether a set bit is a start. In steps of 8 and 16 all blocks start at even units, so that parity tells at once.
    bool is_start(const PageBitmap& map, std::uint32_t bit) const noexcept {
        return granularity_ >= 8 ? bit % 2 == 0 : map.is_start(bit);
    }
    std::size_t class_of(std::size_t size) const noexcept { return size >> class_shift_; }
    /// Blocks in use count in the class of their size; the few that a rest made larger than max_size in the last.
    std::size_t live_class(std::size_t size) const noexcept { return class_of(size < max_size_ ? size : max_size_); }

    std::uint32_t smallest_fit(std::size_t size) const noexcept;
    void* take(std::uint32_t offset, std::size_t size) noexcept;
    std::size_t splittable_class(std::size_t size) const noexcept;
    void* split(std::size_t from_class, std::uint32_t size) noexcept;
    void* carve(std::uint32_t size) noexcept;
    bool add_page();

    void add_free(std::uint32_t offset, std::uint32_t size) noexcept;
    void remove_free(std::uint32_t offset, std::uint32_t size) noexcept;
    void push(FreeList& list, std::uint32_t offset) noexcept;
    void unlink(FreeList& list, std::uint32_t offset) noexcept;
    void add_to_class(std::size_t index, std::uint32_t offset) noexcept;
    std::uint32_t pop_class(std::size_t index) noexcept;

    bool check_pages(std::size_t& free_blocks) const;
    bool check_list(const FreeList& list, std::size_t smallest, std::size_t largest) const;

    std::array<FreeList, class_count> free_lists_{};
    std::array<std::uint32_t, class_count> live_{};
    /// One bit for each class that has free blocks.
    std::array<std::uint64_t, class_count / 64 + 1> filled_classes_{};
    FreeList large_free_;
    PageRange range_;
    std::size_t max_size_;
    std::size_t granularity_;
    std::size_t unit_;
    std::size_t bitmap_bytes_;
    std::uint32_t unit_shift_;
    std::uint32_t class_shift_;
    std::uint32_t units_;
    std::size_t used_ = 0;
    std::size_t max_used_ = 0;
};

} // namespace kst
