#include "source/utility/memory/SlotAllocator.h"

#include "source/utility/memory/BadPointer.h"
#include "source/utility/memory/FormatBytes.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <ostream>

namespace kst {
namespace {

constexpr std::uint32_t link_bits = 12;
constexpr std::uint32_t link_mask = (1u << link_bits) - 1;

/// The upper 20 bits of every free block's word. They differ between pages, and each time that a page is taken, since
/// its unwritten blocks still hold the words of the time before.
constexpr std::uint32_t mark_of(std::uint32_t page_number, std::uint32_t generation) {
    return ((page_number << 16 | generation) * 0x9E3779B1u ^ 0xA5C3'1000u) & ~link_mask;
}

std::uint32_t read_word(const std::byte* block) noexcept {
    std::uint32_t word = 0;
    std::memcpy(&word, block, sizeof word);
    return word;
}

void write_word(std::byte* block, std::uint32_t word) noexcept {
    std::memcpy(block, &word, sizeof word);
}

std::size_t offset_in_page(const void* pointer) noexcept {
    return reinterpret_cast<std::uintptr_t>(pointer) & (page_bytes - 1);
}

/// `pointer` lies in the part of a page that was not filled yet. A bump pointer at a page's start has no such part: it
/// stands at the end of the page before, which is full.
bool beyond(const std::byte* bump, const void* pointer) noexcept {
    const std::size_t unfilled = (page_bytes - offset_in_page(bump)) & (page_bytes - 1);
    return reinterpret_cast<std::uintptr_t>(pointer) - reinterpret_cast<std::uintptr_t>(bump) < unfilled;
}

} // namespace

SlotAllocator::SlotAllocator(PageAllocator& pages, std::size_t max_size, std::size_t address_space)
    : range_(pages, address_space), max_size_(max_size) {
    assert(max_size % class_step == 0 && max_size <= largest_max_size);
    assert(address_space / page_bytes <= 0xFFFF);
}

SlotAllocator::PageHeader& SlotAllocator::page(std::uint16_t number) const noexcept {
    return *reinterpret_cast<PageHeader*>(range_.at((number - std::size_t{1}) * page_bytes));
}

SlotAllocator::PageHeader& SlotAllocator::page_of(const void* pointer) const noexcept {
    return *reinterpret_cast<PageHeader*>(range_.at(range_.offset_of(pointer) & ~(page_bytes - 1)));
}

std::uint16_t SlotAllocator::number_of(const PageHeader& header) const noexcept {
    return static_cast<std::uint16_t>(range_.offset_of(&header) / page_bytes + 1);
}

void* SlotAllocator::allocate(std::size_t size) {
    const auto bytes = static_cast<std::uint32_t>(std::max(round_to_words(size), class_step));
    SizeClass& size_class = classes_[bytes / class_step];
    void* const block = size_class.first_page != 0 ? pop(size_class) : bump(size_class, bytes);
    if (!block)
        return nullptr;
    size_class.max_live = std::max(size_class.max_live, ++size_class.live);
    return block;
}

void* SlotAllocator::pop(SizeClass& size_class) noexcept {
    PageHeader& header = page(size_class.first_page);
    std::byte* const block = reinterpret_cast<std::byte*>(&header) + header.first_free * class_step;
    header.first_free = static_cast<std::uint16_t>(read_word(block) & link_mask);
    write_word(block, 0); // whatever the owner leaves unwritten must not look free
    ++header.live;
    if (header.first_free == 0)
        unlist_page(size_class, header);
    return block;
}

void* SlotAllocator::bump(SizeClass& size_class, std::uint32_t size) {
    const std::size_t offset = offset_in_page(size_class.bump);
    if (offset == 0 || offset + size > page_bytes) {
        PageHeader* const header = take_page(size);
        if (!header)
            return nullptr;
        size_class.bump = reinterpret_cast<std::byte*>(header + 1);
    }
    std::byte* const block = size_class.bump;
    ++page_of(block).live;
    size_class.bump += size;
    return block;
}

SlotAllocator::PageHeader* SlotAllocator::take_page(std::uint32_t size) {
    PageHeader* header = nullptr;
    if (first_empty_page_ != 0) {
        header = &page(first_empty_page_);
        first_empty_page_ = header->next;
        --free_page_count_;
    } else {
        header = reinterpret_cast<PageHeader*>(range_.take_page());
    }
    if (header) // a new page is all zero
        *header = PageHeader{size, 0, 0, static_cast<std::uint16_t>(header->generation + 1), 0, 0};
    return header;
}

void SlotAllocator::deallocate(void* pointer) noexcept {
    if (live_size(pointer) == 0)
        return stop_at_bad_pointer(pointer);
    PageHeader& header = page_of(pointer);
    SizeClass& size_class = classes_[header.block_size / class_step];
    write_word(static_cast<std::byte*>(pointer), header.first_free | mark_of(number_of(header), header.generation));
    if (header.first_free == 0)
        list_page(size_class, header);
    header.first_free = static_cast<std::uint16_t>(offset_in_page(pointer) / class_step);
    --size_class.live;
    if (--header.live == 0)
        retire_page(size_class, header);
}

std::size_t SlotAllocator::live_size(const void* pointer) const noexcept {
    if (!range_.in_use(pointer))
        return 0;
    const PageHeader& header = page_of(pointer);
    const std::size_t offset = offset_in_page(pointer);
    const std::uint32_t size = header.block_size;
    const bool at_block = offset >= sizeof(PageHeader) &&
                          (size == class_step ? offset % class_step : (offset - sizeof(PageHeader)) % size) == 0;
    if (!at_block || header.live == 0 || beyond(classes_[size / class_step].bump, pointer))
        return 0;
    const std::uint32_t mark = read_word(static_cast<const std::byte*>(pointer)) & ~link_mask;
    const bool freed = mark == mark_of(number_of(header), header.generation) && in_free_list(header, pointer);
    return freed ? 0 : size;
}

bool SlotAllocator::in_free_list(const PageHeader& header, const void* pointer) const noexcept {
    const auto* const start = reinterpret_cast<const std::byte*>(&header);
    for (std::uint32_t place = header.first_free; place != 0; place = read_word(start + place * class_step) & link_mask)
        if (start + place * class_step == pointer)
            return true;
    return false;
}

void SlotAllocator::list_page(SizeClass& size_class, PageHeader& header) noexcept {
    const std::uint16_t number = number_of(header);
    header.previous = 0;
    header.next = size_class.first_page;
    if (header.next != 0)
        page(header.next).previous = number;
    size_class.first_page = number;
}

void SlotAllocator::unlist_page(SizeClass& size_class, PageHeader& header) noexcept {
    if (header.next != 0)
        page(header.next).previous = header.previous;
    if (header.previous != 0)
        page(header.previous).next = header.next;
    else
        size_class.first_page = header.next;
}

void SlotAllocator::retire_page(SizeClass& size_class, PageHeader& header) noexcept {
    unlist_page(size_class, header);
    const std::uintptr_t filled =
        reinterpret_cast<std::uintptr_t>(size_class.bump) - reinterpret_cast<std::uintptr_t>(&header);
    if (filled <= page_bytes)
        size_class.bump = nullptr;
    header.next = first_empty_page_;
    first_empty_page_ = number_of(header);
    ++free_page_count_;
}

void SlotAllocator::report(std::ostream& stream, bool detailed) const {
    std::int64_t objects = 0;
    std::int64_t used = 0;
    for (std::size_t i = 1; i < classes_.size(); ++i) {
        objects += classes_[i].live;
        used += static_cast<std::int64_t>(classes_[i].live * class_step * i);
    }
    const auto allocated = static_cast<std::int64_t>(range_.allocated());
    const auto address_space = static_cast<std::int64_t>(range_.address_space());
    if (!detailed) {
        stream << "Slot allocator:      " << format_bytes(used) << " in " << objects << " objects, "
               << format_bytes(address_space) << " address space.\n";
        return;
    }
    stream << "Slot allocator\n--------------\n\n";
    for (std::size_t i = 1; i <= max_size_ / class_step; ++i)
        stream << classes_[i].live << " objects of size " << class_step * i << " (max count " << classes_[i].max_live
               << ")\n";
    stream << "\nObjects:          " << objects << "\nFree pages:       " << free_page_count_
           << "\nUsed memory:      " << format_bytes(used) << "\nAllocated memory: " << format_bytes(allocated)
           << "\nOverhead:         " << format_bytes(allocated - used)
           << "\nAddress space:    " << format_bytes(address_space) << '\n';
}

} // namespace kst
