#pragma once

#include "source/utility/memory/Allocator.h"
#include "source/utility/memory/PageAllocator.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kst {

/// The chain's own book on its small blocks: which are live, and which freed ones are kept to go out again without a
/// walk through bitmap, neighbours and lists. The allocators hold kept blocks as in use meanwhile. Knows only pages and
/// sizes; which blocks may be kept, and when they all must go back, is the chain's to say. Sizes count in words of 4
/// bytes.
///
/// Each page lists its own kept blocks, of one size at a time, and each size lists the pages that have some. So blocks
/// come out page by page, close to each other, in whatever order they were freed:
///
///     first_pages_[words] -> page 7 -> page 2 -> page 31
///                              |         |         |
///                            block     block     block       a kept block's first word is the place of the next in its
///                            block               block       page, in words; 0 is none: no page begins with a block
///
/// The book stands beside the pages, not in them: the heads of all pages fall on the same few lines of the processor's
/// caches, and a free in random order would wait for them each time.
class KeptBlocks {
public:
    static constexpr std::size_t most_words = 512 / class_step;

    constexpr KeptBlocks() = default;

    /// Keeps book of the `span` bytes from `base` on. Without memory for that it stays unready, and must not be used.
    void start(PageAllocator& pages, std::byte* base, std::size_t span);
    bool is_ready() const noexcept { return pages_ != nullptr; }

    /// A kept block of `words` words, now live, or null.
    void* reuse(std::size_t words) noexcept {
        const std::uint32_t number = first_pages_[words];
        if (number == 0)
            return nullptr;
        Page& page = pages_[number];
        const std::size_t place = page.first;
        std::byte* const block = base_ + std::size_t{number - 1} * page_bytes + place * class_step;
        std::uint32_t next = 0;
        std::memcpy(&next, block, sizeof next);
        page.first = static_cast<std::uint16_t>(next);
        page.live[place / 64] |= std::uint64_t{1} << place % 64;
        if (next == 0)
            first_pages_[words] = page.next;
        return block;
    }

    /// A live block starts at this address of the span.
    bool is_live(const std::byte* block) const noexcept {
        const std::size_t offset = offset_of(block);
        const std::size_t place = offset % page_bytes / class_step;
        return offset % class_step == 0 && (page_of(offset).live[place / 64] >> place % 64 & 1) != 0;
    }

    /// The size of all live and kept blocks of the page that the block lies in; 0 if they differ.
    std::size_t words_of_page(const std::byte* block) const noexcept { return page_of(offset_of(block)).words_of_all; }

    /// Keeps a live block. False, with nothing changed: the page keeps blocks of another size at the moment.
    bool keep(std::byte* block, std::size_t words) noexcept {
        const std::size_t offset = offset_of(block);
        Page& page = page_of(offset);
        const std::uint32_t next = page.first;
        if (next == 0) {
            page.kept_words = static_cast<std::uint16_t>(words);
            page.next = first_pages_[words];
            first_pages_[words] = number_of(offset);
        } else if (page.kept_words != words) {
            return false;
        }
        std::memcpy(block, &next, sizeof next);
        const std::size_t place = offset % page_bytes / class_step;
        page.first = static_cast<std::uint16_t>(place);
        page.live[place / 64] &= ~(std::uint64_t{1} << place % 64);
        return true;
    }

    /// A block of `words` words comes from an allocator; 0 words stand for a size that can't be kept.
    void add(const std::byte* block, std::size_t words) noexcept;
    /// A live block goes to its allocator.
    void remove(const std::byte* block) noexcept;

private:
    struct Page {
        std::uint16_t first;        ///< place of the first kept block
        std::uint16_t kept_words;   ///< size of the kept blocks
        std::uint16_t words_of_all; ///< size of all live and kept blocks; 0 if they differ
        std::uint32_t next;         ///< next page with kept blocks of the same size
        std::array<std::uint64_t, page_bytes / class_step / 64>
            live; ///< a bit for each word that a live block starts at
    };

    std::size_t offset_of(const std::byte* block) const noexcept { return static_cast<std::size_t>(block - base_); }
    /// Pages are numbered from 1 on; 0 is none.
    static std::uint32_t number_of(std::size_t offset) noexcept {
        return static_cast<std::uint32_t>(offset / page_bytes + 1);
    }
    Page& page_of(std::size_t offset) const noexcept { return pages_[number_of(offset)]; }

    std::byte* base_ = nullptr;
    Page* pages_ = nullptr;
    std::array<std::uint32_t, most_words + 1> first_pages_{};
};

} // namespace kst
