#include "source/utility/memory/AllocatorChain.h"

#include <algorithm>
#include <ostream>

namespace kst {
namespace {

/// What a block of `size` bytes must be aligned to: an object of that size can need no more than the largest power of
/// two in it, and nobody may count on more than 16 without asking.
std::size_t natural_alignment(std::size_t size) {
    const std::size_t words = round_to_words(size);
    return std::min<std::size_t>(words & (~words + 1), 16);
}

} // namespace

void AllocatorChain::start() {
    State expected = State::unused;
    if (!state_.compare_exchange_strong(expected, State::starting))
        return; // another thread is at it
    slots_.emplace(pages_, 4, ranges_.slots);
    heaps_[0].emplace(pages_, SmallHeapAllocator::largest_max_size, 16, ranges_.heap_16);
    heaps_[1].emplace(pages_, SmallHeapAllocator::largest_max_size, 8, ranges_.heap_8);
    heaps_[2].emplace(pages_, SmallHeapAllocator::largest_max_size, 4, ranges_.heap_4);
    for (std::size_t i = 0; i < route_.size(); ++i)
        route_[i] = first_that_takes(std::max(i, std::size_t{1}) * class_step);
    state_.store(State::ready, std::memory_order_release);
}

AllocatorChain::Link AllocatorChain::first_that_takes(std::size_t size) const noexcept {
    if (slots_->can_allocate(size))
        return slots;
    for (const Link link : {heap_16, heap_8, heap_4})
        if (heaps_[link - heap_16]->can_allocate(size))
            return link;
    return c_heap;
}

void* AllocatorChain::allocate(std::size_t size) {
    if (state_.load(std::memory_order_acquire) != State::ready) [[unlikely]] {
        start();
        if (state_.load(std::memory_order_acquire) != State::ready)
            return malloc_.allocate(size);
    }
    if (size > SmallHeapAllocator::largest_max_size)
        return malloc_.allocate(size);
    const Link link = route_[(size + class_step - 1) / class_step];
    void* block = nullptr;
    {
        const ChainGuard guard(lock_);
        block = link == slots ? slots_->allocate(size) : heaps_[link - heap_16]->allocate(size);
    }
    return block ? block : allocate_from_next(link, size);
}

void* AllocatorChain::allocate_from_next(Link used_up, std::size_t size) {
    for (const Link link : {heap_16, heap_8, heap_4}) {
        SmallHeapAllocator& heap = *heaps_[link - heap_16];
        if (link <= used_up || !heap.can_allocate(size) || heap.granularity() < natural_alignment(size))
            continue;
        const ChainGuard guard(lock_);
        if (void* const block = heap.allocate(size))
            return block;
    }
    return malloc_.allocate(size);
}

void* AllocatorChain::allocate_aligned(std::size_t size, std::size_t alignment) {
    if (alignment > 16)
        return malloc_.allocate_aligned(size, alignment);
    // A multiple of the alignment is aligned to it by its own size.
    const std::size_t padded = (std::max(size, std::size_t{1}) + alignment - 1) & ~(alignment - 1);
    return allocate(padded < size ? size : padded); // the sum may wrap; such a size fails by itself
}

void AllocatorChain::deallocate(void* pointer) noexcept {
    if (!pointer)
        return;
    if (state_.load(std::memory_order_acquire) == State::ready) [[likely]] {
        for (auto& heap : heaps_)
            if (heap->owns(pointer)) {
                const ChainGuard guard(lock_);
                return heap->deallocate(pointer);
            }
        if (slots_->owns(pointer)) {
            const ChainGuard guard(lock_);
            return slots_->deallocate(pointer);
        }
    }
    malloc_.deallocate(pointer);
}

void AllocatorChain::report(std::ostream& stream, bool detailed) {
    if (state_.load(std::memory_order_acquire) == State::ready) {
        const auto write_copy = [&](const auto& allocator) {
            const auto copy = [&] {
                const ChainGuard guard(lock_);
                return *allocator;
            }();
            copy.report(stream, detailed);
        };
        write_copy(slots_);
        for (const auto& heap : heaps_)
            write_copy(heap);
    }
    malloc_.report(stream, detailed);
}

} // namespace kst
