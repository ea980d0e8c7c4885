#pragma once

#include "source/utility/memory/MallocAllocator.h"
#include "source/utility/memory/SlotAllocator.h"
#include "source/utility/memory/SmallHeapAllocator.h"
#include "source/utility/memory/SpinLock.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <optional>

namespace kst {

/// Address space of the allocators with a range, in bytes.
struct ChainRanges {
    std::size_t slots = 64u << 20;
    std::size_t heap_16 = 256u << 20;
    std::size_t heap_8 = 192u << 20;
    std::size_t heap_4 = 192u << 20;
};

/// The chain that every `new` and `delete` goes through once kst_global_new is linked. A request goes to the first
/// allocator that takes its size:
///
///     slots      1 to 4 bytes                                   (aligned to 4)
///     heap 16    multiples of 16 up to 512                      (aligned to 16)
///     heap 8     multiples of 8 up to 512: what 16 leaves       (aligned to 8)
///     heap 4     multiples of 4 up to 512: what 8 leaves        (aligned to 4)
///     malloc     the rest                                       (aligned to 16)
///
/// Sizes count rounded up to 4, so every block is aligned for any object of exactly its size. When a range is used up
/// the request goes on to the next allocator that takes the size and aligns its blocks as well.
///
/// Any thread may call. The object starts itself at the first request; before that, and while it does, requests go to
/// the malloc allocator. It is made to be a constant-initialised static, that works before any constructor and after
/// the last destructor: nothing takes it down.
class AllocatorChain {
public:
    constexpr explicit AllocatorChain(PageAllocator& pages, const ChainRanges& ranges = {})
        : pages_(pages), ranges_(ranges) {}
    AllocatorChain(const AllocatorChain&) = delete;
    AllocatorChain& operator=(const AllocatorChain&) = delete;
    ~AllocatorChain() = default;

    /// A block of `size` bytes (0 counts as 1), aligned for an object of that size, up to 16. Throws as
    /// MallocAllocator::allocate.
    void* allocate(std::size_t size);
    /// As allocate(), with an alignment that is a power of two.
    void* allocate_aligned(std::size_t size, std::size_t alignment);
    /// Takes a block back; null does nothing.
    void deallocate(void* pointer) noexcept;

    /// Writes the statistics of all allocators, in their order. Each is a picture of one moment; the text is made from
    /// a copy, so that the stream may allocate.
    void report(std::ostream& stream, bool detailed);

private:
    enum class State : std::uint8_t { unused, starting, ready };
    enum Link : std::uint8_t { slots, heap_16, heap_8, heap_4, c_heap };

    void start();
    Link first_that_takes(std::size_t size) const noexcept;
    void* allocate_from_next(Link used_up, std::size_t size);

    PageAllocator& pages_;
    ChainRanges ranges_;
    std::atomic<State> state_{State::unused};
    SpinLock lock_;
    MallocAllocator malloc_;
    std::optional<SlotAllocator> slots_;
    std::array<std::optional<SmallHeapAllocator>, 3> heaps_;
    /// The first allocator that takes a size, by its words: the walk along the chain, made once.
    std::array<Link, SmallHeapAllocator::largest_max_size / class_step + 1> route_{};
};

} // namespace kst
