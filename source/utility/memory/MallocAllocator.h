#pragma once

#include "source/utility/memory/Allocator.h"

#include <atomic>
#include <cstdint>

namespace kst {

/// The end of the chain: the C heap behind a header. Takes every size, gives blocks aligned to 16 or more, and may be
/// called by several threads without a lock.
///
///     raw            block - 16    block - 8    block
///      | padding      | size        | raw        | size bytes ...
///
/// The C heap aligns to 16, so that padding is only there for larger alignments. The size is kept since the C heap
/// tells how large a block is, not how much of it was asked for, and `used` must fall by what it rose.
class MallocAllocator final : public Allocator {
public:
    constexpr MallocAllocator() = default;

    bool can_allocate(std::size_t) const noexcept override { return true; }
    /// True for everything: stands last in the chain.
    bool owns(const void*) const noexcept override { return true; }
    /// Throws kst::ErrorWithCStack "Out of memory allocating SIZE bytes"; std::bad_alloc when there is not even memory
    /// for that text. Never null.
    void* allocate(std::size_t size) override { return allocate_aligned(size, 16); }
    void deallocate(void* pointer) noexcept override;
    void report(std::ostream& stream, bool detailed) const override;

    /// As allocate(), for an alignment that is a power of two from 16 up.
    void* allocate_aligned(std::size_t size, std::size_t alignment);

    /// Bytes asked for, with 36 for each block as the cost of header and C heap.
    std::int64_t used() const noexcept { return used_.load(std::memory_order_relaxed); }
    std::int64_t max_used() const noexcept { return max_used_.load(std::memory_order_relaxed); }

private:
    void count(std::int64_t bytes) noexcept;

    std::atomic<std::int64_t> used_{0};
    std::atomic<std::int64_t> max_used_{0};
};

} // namespace kst
