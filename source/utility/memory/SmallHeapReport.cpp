// The slow side of the heap: statistics, and the check of all that its layout promises.

#include "source/utility/memory/FormatBytes.h"
#include "source/utility/memory/SmallHeapAllocator.h"

#include <numeric>
#include <ostream>

namespace kst {

void SmallHeapAllocator::report(std::ostream& stream, bool detailed) const {
    const std::uint64_t objects = std::accumulate(live_.begin(), live_.end(), std::uint64_t{0});
    const auto bytes = [](std::size_t value) { return format_bytes(static_cast<std::int64_t>(value)); };
    if (!detailed) {
        stream << "Heap allocator (" << granularity_ << "): " << bytes(used_) << " in " << objects << " objects, "
               << bytes(range_.address_space()) << " address space.\n";
        return;
    }
    stream << "Heap allocator (" << granularity_ << ")\n------------------\n\n";
    for (std::size_t i = 1; i < class_of(max_size_); ++i)
        if (live_[i] != 0 || free_lists_[i].count != 0)
            stream << live_[i] << " objects of size " << granularity_ * i << ", " << free_lists_[i].count
                   << " free slots.\n";
    stream << "\nObjects:          " << objects << "\nUsed memory:      " << bytes(used_)
           << "\nMax used memory:  " << bytes(max_used_) << "\nUnused allocated: " << bytes(max_used_ - used_)
           << "\nAllocated memory: " << bytes(range_.allocated())
           << "\nOverhead:         " << bytes(range_.allocated() - max_used_)
           << "\nAddress space:    " << bytes(range_.address_space()) << '\n';
}

/// Every page is filled by blocks without a gap or two free neighbours, and they sum up to the counts.
bool SmallHeapAllocator::check_pages(std::size_t& free_blocks) const {
    std::size_t used = 0;
    std::array<std::uint32_t, class_count> live{};
    for (std::size_t page = 0; page < range_.allocated(); page += page_bytes) {
        const PageBitmap map = bitmap(page);
        auto unit = static_cast<std::uint32_t>(bitmap_bytes_ / unit_);
        bool previous_free = false;
        if (map.next_set(0) != unit)
            return false;
        while (unit < units_) {
            const std::uint32_t end = map.next_set(unit + 2);
            const std::size_t size = std::size_t{end - unit} << unit_shift_;
            const bool free = !map.test(unit + 1);
            if (!map.test(unit) || !map.is_start(unit) || (free && previous_free))
                return false;
            free_blocks += free ? 1 : 0;
            used += free ? 0 : size;
            live[live_class(size)] += free ? 0 : 1;
            previous_free = free;
            unit = end;
        }
    }
    return used == used_ && live == live_;
}

/// Every block of the list is free and of a fitting size, and the links agree in both directions.
bool SmallHeapAllocator::check_list(const FreeList& list, std::size_t smallest, std::size_t largest) const {
    std::uint32_t count = 0;
    for (std::uint32_t offset = list.head, before = 0; offset != 0; before = offset, offset = links(offset).next) {
        const PageBitmap map = bitmap(offset / page_bytes * page_bytes);
        const std::uint32_t first = offset % page_bytes >> unit_shift_;
        const std::size_t size = std::size_t{map.next_set(first + 2) - first} << unit_shift_;
        if (offset >= range_.allocated() || !map.test(first) || map.test(first + 1) || size < smallest ||
            size > largest || (before != 0 && links(offset).previous != before) ||
            (size > max_size_ && large_size(offset) != size))
            return false;
        ++count;
    }
    return count == list.count;
}

bool SmallHeapAllocator::check() const {
    std::size_t free_blocks = 0;
    if (!check_pages(free_blocks) || !check_list(large_free_, max_size_ + 1, page_bytes))
        return false;
    std::size_t listed = large_free_.count;
    for (std::size_t i = 0; i < class_count; ++i) {
        const bool marked = (filled_classes_[i / 64] >> i % 64 & 1) != 0;
        if (marked != (free_lists_[i].head != 0) || !check_list(free_lists_[i], i * granularity_, i * granularity_))
            return false;
        listed += free_lists_[i].count;
    }
    return listed == free_blocks && used_ <= max_used_ && max_used_ <= range_.allocated();
}

} // namespace kst
