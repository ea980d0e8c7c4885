#include "source/utility/memory/SmallHeapAllocator.h"

#include "source/utility/memory/BadPointer.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>

namespace kst {
namespace {

constexpr std::uint32_t page_mask = page_bytes - 1;

} // namespace

SmallHeapAllocator::SmallHeapAllocator(PageAllocator& pages, std::size_t max_size, std::size_t granularity,
                                       std::size_t address_space)
    : range_(pages, address_space),
      max_size_(max_size),
      granularity_(granularity),
      unit_(granularity < 8 ? 4 : granularity / 2),
      bitmap_bytes_(page_bytes / (unit_ * 8)),
      unit_shift_(static_cast<std::uint32_t>(std::countr_zero(unit_))),
      class_shift_(static_cast<std::uint32_t>(std::countr_zero(granularity))),
      units_(static_cast<std::uint32_t>(page_bytes / unit_)) {
    assert(std::has_single_bit(granularity) && granularity >= class_step && granularity <= 16);
    assert(max_size <= largest_max_size && max_size % granularity == 0);
}

/// Whole words, and no less than the smallest block.
std::uint32_t SmallHeapAllocator::smallest_fit(std::size_t size) const noexcept {
    return static_cast<std::uint32_t>(std::max(round_to_words(size), 2 * unit_));
}

void* SmallHeapAllocator::allocate(std::size_t size) {
    assert(can_allocate(size));
    const std::uint32_t bytes = smallest_fit(size);
    const std::size_t index = class_of(bytes);
    if (free_lists_[index].head != 0)
        return take(pop_class(index), bytes);
    if (const std::size_t larger = splittable_class(bytes); larger != 0)
        return split(larger, bytes);
    if (large_free_.head == 0 && !add_page())
        return nullptr;
    return carve(bytes);
}

bool SmallHeapAllocator::must_grow(std::size_t size) const noexcept {
    const std::uint32_t bytes = smallest_fit(size);
    return free_lists_[class_of(bytes)].head == 0 && large_free_.head == 0 && splittable_class(bytes) == 0;
}

/// Marks a block, which is on no list, as in use.
void* SmallHeapAllocator::take(std::uint32_t offset, std::size_t size) noexcept {
    bitmap(offset & ~page_mask).set(((offset & page_mask) >> unit_shift_) + 1);
    ++live_[live_class(size)];
    count_reused(size);
    return range_.at(offset);
}

/// The lowest class with free blocks that leave a block behind `size` bytes; 0 if none has. A rest below two units
/// could not be a block: one class up is that little in steps of 4.
std::size_t SmallHeapAllocator::splittable_class(std::size_t size) const noexcept {
    const std::size_t first = class_of(size) + (2 * unit_ + granularity_ - 1) / granularity_;
    std::size_t word = first / 64;
    std::uint64_t bits = word < filled_classes_.size() ? filled_classes_[word] >> first % 64 << first % 64 : 0;
    while (bits == 0) {
        if (++word >= filled_classes_.size())
            return 0;
        bits = filled_classes_[word];
    }
    return word * 64 + static_cast<std::size_t>(std::countr_zero(bits));
}

void* SmallHeapAllocator::split(std::size_t from_class, std::uint32_t size) noexcept {
    const std::uint32_t offset = pop_class(from_class);
    const std::uint32_t rest = offset + size;
    bitmap(offset & ~page_mask).set((rest & page_mask) >> unit_shift_);
    add_to_class(from_class - class_of(size), rest);
    return take(offset, size);
}

/// Takes `size` bytes from the head of the first large free block.
void* SmallHeapAllocator::carve(std::uint32_t size) noexcept {
    const std::uint32_t offset = large_free_.head;
    const std::uint32_t whole = large_size(offset);
    const std::uint32_t rest_size = whole - size;
    const std::uint32_t rest = offset + size;
    if (rest_size > max_size_) {
        // Stays the head of the large blocks, only further on.
        const Links moved = links(offset);
        if (moved.next != 0)
            links(moved.next).previous = rest;
        links(rest) = moved;
        large_size(rest) = rest_size;
        large_free_.head = rest;
    } else {
        unlink(large_free_, offset);
        if (rest_size < 2 * unit_)
            return take(offset, whole);
        add_to_class(class_of(rest_size), rest);
    }
    bitmap(offset & ~page_mask).set((rest & page_mask) >> unit_shift_);
    return take(offset, size);
}

bool SmallHeapAllocator::add_page() {
    std::byte* const page = range_.take_page();
    if (!page)
        return false;
    std::memset(page, 0, bitmap_bytes_);
    const auto offset = static_cast<std::uint32_t>(range_.offset_of(page) + bitmap_bytes_);
    bitmap(offset & ~page_mask).set((offset & page_mask) >> unit_shift_);
    add_free(offset, static_cast<std::uint32_t>(page_bytes - bitmap_bytes_));
    return true;
}

void SmallHeapAllocator::deallocate(void* pointer) noexcept {
    auto size = static_cast<std::uint32_t>(live_size(pointer));
    if (size == 0)
        return stop_at_bad_pointer(pointer);
    const auto offset = static_cast<std::uint32_t>(range_.offset_of(pointer));
    const std::uint32_t first = (offset & page_mask) >> unit_shift_;
    PageBitmap map = bitmap(offset & ~page_mask);
    const std::uint32_t before = map.previous_set(first);
    // Directly before a start there is only an in-use bit, so a start bit there makes this one its in-use bit.
    if (before + 1 == first && is_start(map, before))
        return stop_at_bad_pointer(pointer);
    --live_[live_class(size)];
    used_ -= size;
    map.clear(first + 1);

    const std::uint32_t end = first + (size >> unit_shift_);
    std::uint32_t merged = offset;
    if (end != units_ && !map.test(end + 1)) {
        const std::uint32_t next_size = (map.next_set(end + 2) - end) << unit_shift_;
        remove_free(offset + size, next_size);
        map.clear(end);
        size += next_size;
    }
    if (before != units_ && is_start(map, before)) { // and its in-use bit, which would come after it, is clear
        const std::uint32_t previous_size = (first - before) << unit_shift_;
        merged = offset - previous_size;
        remove_free(merged, previous_size);
        map.clear(first);
        size += previous_size;
    }
    add_free(merged, size);
}

void SmallHeapAllocator::add_free(std::uint32_t offset, std::uint32_t size) noexcept {
    if (size <= max_size_)
        return add_to_class(class_of(size), offset);
    large_size(offset) = size;
    push(large_free_, offset);
}

void SmallHeapAllocator::remove_free(std::uint32_t offset, std::uint32_t size) noexcept {
    if (size > max_size_)
        return unlink(large_free_, offset);
    const std::size_t index = class_of(size);
    unlink(free_lists_[index], offset);
    if (free_lists_[index].head == 0)
        filled_classes_[index / 64] &= ~(std::uint64_t{1} << index % 64);
}

void SmallHeapAllocator::push(FreeList& list, std::uint32_t offset) noexcept {
    if (list.head != 0)
        links(list.head).previous = offset;
    links(offset).next = list.head;
    list.head = offset;
    ++list.count;
}

/// The head's previous link is undefined, so that a pop doesn't touch the block that follows.
void SmallHeapAllocator::unlink(FreeList& list, std::uint32_t offset) noexcept {
    --list.count;
    const Links& block = links(offset); // not copied: a load of both words would wait for two stores of one each
    if (offset == list.head) {
        list.head = block.next;
        return;
    }
    links(block.previous).next = block.next;
    if (block.next != 0)
        links(block.next).previous = block.previous;
}

void SmallHeapAllocator::add_to_class(std::size_t index, std::uint32_t offset) noexcept {
    filled_classes_[index / 64] |= std::uint64_t{1} << index % 64;
    push(free_lists_[index], offset);
}

std::uint32_t SmallHeapAllocator::pop_class(std::size_t index) noexcept {
    FreeList& list = free_lists_[index];
    const std::uint32_t offset = list.head;
    list.head = links(offset).next;
    --list.count;
    if (list.head == 0)
        filled_classes_[index / 64] &= ~(std::uint64_t{1} << index % 64);
    return offset;
}

} // namespace kst
