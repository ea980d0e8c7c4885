#pragma once

#include "source/utility/memory/KeptBlocks.h"
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
/// Freed blocks up to 512 bytes are kept in front of the allocators (see KeptBlocks), and go out again for the next
/// request of their size. Keeping never costs a page: before an allocator takes a new one, it gets back all that is
/// kept of it, and merges. In the statistics a kept block is free.
///
/// Any thread may call. The object starts itself at the first request; another thread that comes while it does is
/// served by the malloc allocator. It is made to be a constant-initialised static, that works before any constructor
/// and after the last destructor: nothing takes it down.
class AllocatorChain {
public:
    constexpr explicit AllocatorChain(PageAllocator& pages, const ChainRanges& ranges = {})
        : pages_(pages), ranges_(ranges), span_(pages) {}
    AllocatorChain(const AllocatorChain&) = delete;
    AllocatorChain& operator=(const AllocatorChain&) = delete;
    ~AllocatorChain() = default;

    /// A block of `size` bytes (0 counts as 1), aligned for an object of that size, up to 16. Throws as
    /// MallocAllocator::allocate.
    void* allocate(std::size_t size) {
        if (size <= SmallHeapAllocator::largest_max_size) [[likely]] {
            if (!process_has_one_thread()) [[unlikely]]
                return allocate_locked(size);
            if (void* const block = reuse(words_of(size)))
                return block;
        }
        return allocate_new(size);
    }
    /// As allocate(), with an alignment that is a power of two.
    void* allocate_aligned(std::size_t size, std::size_t alignment);

    /// Takes a block back; null does nothing.
    void deallocate(void* pointer) noexcept {
        if (!in_span(pointer))
            return deallocate_from_malloc(pointer);
        auto* const block = static_cast<std::byte*>(pointer);
        if (!process_has_one_thread()) [[unlikely]]
            return deallocate_locked(block);
        if (!keep(block)) [[unlikely]]
            deallocate_small(block);
    }

    /// Gives all kept blocks back to their allocators, which merge them.
    void merge_kept() noexcept;
    /// Merges, and walks all pages and lists of the heaps; false if any promise of their layout is broken.
    bool check();

    /// Writes the statistics of all allocators, in their order. Each is a picture of one moment; the text is made from
    /// a copy, so that the stream may allocate.
    void report(std::ostream& stream, bool detailed);

private:
    enum class State : std::uint8_t { unused, starting, ready };
    enum Link : std::uint8_t { slots, heap_16, heap_8, heap_4, c_heap };

    static constexpr std::size_t words_of(std::size_t size) {
        return size == 0 ? 1 : (size + class_step - 1) / class_step;
    }
    bool is_ready() const noexcept { return state_.load(std::memory_order_acquire) == State::ready; }
    /// Blocks from there prove that the chain has started.
    bool in_span(const void* pointer) const noexcept {
        return reinterpret_cast<std::uintptr_t>(pointer) - reinterpret_cast<std::uintptr_t>(span_.base()) <
               span_.size();
    }
    SmallHeapAllocator& heap(Link link) noexcept { return *heaps_[link - heap_16]; }
    void count_reused(Link link, std::size_t size) noexcept {
        link == slots ? slots_->count_reused(size) : heap(link).count_reused(size);
    }

    void count_kept(Link link, std::size_t size) noexcept {
        link == slots ? slots_->count_kept(size) : heap(link).count_kept(size);
    }
    Link owner_of(const void* block) const noexcept {
        for (const Link link : {heap_16, heap_8, heap_4})
            if (heaps_[link - heap_16]->owns(block))
                return link;
        return slots;
    }

    /// The short way of `new`: a kept block. Before the start nothing is kept of any size.
    void* reuse(std::size_t words) noexcept {
        void* const block = kept_.reuse(words);
        if (block) [[likely]]
            count_reused(route_[words], words * class_step);
        return block;
    }
    /// The short way of `delete`: a live block in a page of one size.
    bool keep(std::byte* block) noexcept {
        if (!kept_.is_ready() || !kept_.is_live(block)) [[unlikely]]
            return false;
        const std::size_t words = kept_.words_of_page(block);
        if (words == 0 || !kept_.keep(block, words)) [[unlikely]]
            return false;
        count_kept(route_[words], words * class_step);
        return true;
    }

    void start();
    void* allocate_locked(std::size_t size);
    void deallocate_locked(std::byte* block) noexcept;
    Link first_that_takes(std::size_t size) const noexcept;
    void* allocate_new(std::size_t size);
    void* allocate_small(std::size_t size);
    void deallocate_small(std::byte* block) noexcept;
    void deallocate_from_malloc(void* pointer) noexcept;
    void* enter(Link link, void* block, std::size_t size) noexcept;
    std::size_t words_to_keep(const std::byte* block) noexcept;
    void merge_kept_of(Link link) noexcept;

    PageAllocator& pages_;
    ChainRanges ranges_;
    std::atomic<State> state_{State::unused};
    SpinLock lock_;
    ReservedSpan span_;
    KeptBlocks kept_;
    MallocAllocator malloc_;
    std::optional<SlotAllocator> slots_;
    std::array<std::optional<SmallHeapAllocator>, 3> heaps_;
    /// The first allocator that takes a size, by its words: the walk along the chain, made once.
    std::array<Link, SmallHeapAllocator::largest_max_size / class_step + 1> route_{};
};

} // namespace kst
