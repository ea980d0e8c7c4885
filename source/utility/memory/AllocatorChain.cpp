#include "source/utility/memory/AllocatorChain.h"

#include "source/utility/memory/BadPointer.h"

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
    span_.start(ranges_.slots + ranges_.heap_16 + ranges_.heap_8 + ranges_.heap_4);
    slots_.emplace(span_, 4, ranges_.slots);
    heaps_[0].emplace(span_, SmallHeapAllocator::largest_max_size, 16, ranges_.heap_16);
    heaps_[1].emplace(span_, SmallHeapAllocator::largest_max_size, 8, ranges_.heap_8);
    heaps_[2].emplace(span_, SmallHeapAllocator::largest_max_size, 4, ranges_.heap_4);
    if (span_.size() != 0)
        kept_.start(pages_, span_.base(), span_.size());
    for (std::size_t words = 1; words < route_.size(); ++words)
        route_[words] = first_that_takes(words * class_step);
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

void* AllocatorChain::allocate_locked(std::size_t size) {
    {
        const ChainGuard guard(lock_);
        if (void* const block = reuse(words_of(size)))
            return block;
    }
    return allocate_new(size);
}

void AllocatorChain::deallocate_locked(std::byte* block) noexcept {
    const ChainGuard guard(lock_);
    if (!keep(block))
        deallocate_small(block);
}

void* AllocatorChain::allocate_new(std::size_t size) {
    if (!is_ready())
        start();
    if (size <= SmallHeapAllocator::largest_max_size && is_ready())
        if (void* const block = allocate_small(words_of(size) * class_step))
            return block;
    return malloc_.allocate(size);
}

/// Goes along the chain, from the first allocator that takes the size over all that take it and align it. Null: their
/// ranges are used up.
void* AllocatorChain::allocate_small(std::size_t size) {
    const ChainGuard guard(lock_);
    const Link first = route_[words_of(size)];
    if (first == slots)
        if (void* const block = slots_->allocate(size))
            return enter(slots, block, size);
    for (const Link link : {heap_16, heap_8, heap_4}) {
        if (link < first || !heap(link).can_allocate(size) || heap(link).granularity() < natural_alignment(size))
            continue;
        if (heap(link).must_grow(size))
            merge_kept_of(link);
        if (void* const block = heap(link).allocate(size))
            return enter(link, block, heap(link).live_size(block));
    }
    return nullptr;
}

/// Books a new block. One that a rest made larger may have a size of another allocator, with another alignment, and
/// then is never kept.
void* AllocatorChain::enter(Link link, void* block, std::size_t size) noexcept {
    const std::size_t words = words_of(size);
    if (kept_.is_ready())
        kept_.add(static_cast<std::byte*>(block), words < route_.size() && route_[words] == link ? words : 0);
    return block;
}

void* AllocatorChain::allocate_aligned(std::size_t size, std::size_t alignment) {
    if (alignment > 16)
        return malloc_.allocate_aligned(size, alignment);
    // A multiple of the alignment is aligned to it by its own size.
    const std::size_t padded = (std::max(size, std::size_t{1}) + alignment - 1) & ~(alignment - 1);
    return allocate(padded < size ? size : padded); // the sum may wrap; such a size fails by itself
}

/// The long way of `delete`: pages of several sizes, blocks that can't be kept, and what is no block.
void AllocatorChain::deallocate_small(std::byte* block) noexcept {
    if (kept_.is_ready()) {
        if (!kept_.is_live(block))
            return stop_at_bad_pointer(block);
        const std::size_t words = words_to_keep(block);
        if (words != 0 && kept_.keep(block, words))
            return count_kept(route_[words], words * class_step);
        kept_.remove(block);
    }
    const Link link = owner_of(block);
    link == slots ? slots_->deallocate(block) : heap(link).deallocate(block);
}

/// The size of a heap's block in a page of several sizes; 0 if it is none to keep.
std::size_t AllocatorChain::words_to_keep(const std::byte* block) noexcept {
    const Link link = owner_of(block);
    const std::size_t words = link == slots ? 1 : heap(link).live_size(block) / class_step;
    return words < route_.size() && route_[words] == link ? words : 0;
}

void AllocatorChain::deallocate_from_malloc(void* pointer) noexcept {
    if (pointer)
        malloc_.deallocate(pointer);
}

void AllocatorChain::merge_kept_of(Link link) noexcept {
    for (std::size_t words = 1; words < route_.size(); ++words) {
        if (route_[words] != link)
            continue;
        const std::size_t size = words * class_step;
        while (void* const block = kept_.reuse(words)) {
            kept_.remove(static_cast<std::byte*>(block));
            link == slots ? slots_->deallocate_kept(block, size) : heap(link).deallocate_kept(block, size);
        }
    }
}

void AllocatorChain::merge_kept() noexcept {
    const ChainGuard guard(lock_);
    for (const Link link : {slots, heap_16, heap_8, heap_4})
        merge_kept_of(link);
}

bool AllocatorChain::check() {
    if (!is_ready())
        return true;
    merge_kept();
    const ChainGuard guard(lock_);
    return std::all_of(heaps_.begin(), heaps_.end(), [](const auto& heap) { return heap->check(); });
}

void AllocatorChain::report(std::ostream& stream, bool detailed) {
    if (is_ready()) {
        merge_kept(); // so that the lists of free blocks show them
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
