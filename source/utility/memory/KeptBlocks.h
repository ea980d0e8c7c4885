#pragma once

#include "source/utility/memory/Allocator.h"
#include "source/utility/memory/PageAllocator.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kst {

/// Freed blocks that the chain keeps in front of its allocators, to give them out again without a walk through bitmap,
/// neighbours and lists. The allocators hold them as in use meanwhile. Knows only pages and sizes; which blocks may be
/// kept, and when they all must go back, is the chain's to say.
///
/// Each page lists its own kept blocks, of one size at a time, and each size lists the pages that have some. So blocks
/// come out page by page, close to each other, in whatever order they were freed:
///
///     first_pages_[words] -> page 7 -> page 2 -> page 31
///                              |         |         |
///                            block     block     block
///                            block               block
///
/// What that needs stands in a table beside the pages, and in the first word of each kept block: the place of the next
/// one in words of 4 bytes in the low 10 bits (0 is none, a page never begins with a block), and a mark of the page in
/// the others. A block whose owner deletes it twice is known by the mark; data may look like it, so the list decides.
/// The mark is wiped when a block leaves, so that unwritten memory doesn't look like it later.
class KeptBlocks {
public:
    /// Sizes are counted in words of 4 bytes.
    static constexpr std::size_t most_words = 512 / class_step;

    constexpr KeptBlocks() = default;

    /// Keeps blocks of the `span` bytes from `base` on. Without memory for the table it keeps none.
    void start(PageAllocator& pages, std::byte* base, std::size_t span);

    bool is_ready() const noexcept { return pages_ != nullptr; }

    /// A kept block of `words` words, or null.
    void* reuse(std::size_t words) noexcept {
        const std::uint32_t number = first_pages_[words];
        if (number == 0)
            return nullptr;
        Page& page = pages_[number];
        std::byte* const block = base_ + std::size_t{number - 1} * page_bytes + page.first * class_step;
        page.first = static_cast<std::uint16_t>(read(block) & link_mask);
        write(block, 0);
        if (page.first == 0)
            first_pages_[words] = page.next;
        return block;
    }

    /// Keeps a block. False, with nothing changed: the page keeps blocks of another size at the moment.
    bool keep(std::byte* block, std::size_t words) noexcept {
        const std::size_t offset = static_cast<std::size_t>(block - base_);
        const auto number = static_cast<std::uint32_t>(offset / page_bytes + 1);
        Page& page = pages_[number];
        if (page.first == 0) {
            page.words = static_cast<std::uint16_t>(words);
            page.next = first_pages_[words];
            first_pages_[words] = number;
        } else if (page.words != words) {
            return false;
        }
        write(block, page.first | mark_of(number));
        page.first = static_cast<std::uint16_t>(offset % page_bytes / class_step);
        return true;
    }

    /// The block is kept already.
    bool has(const std::byte* block) const noexcept {
        const std::size_t offset = static_cast<std::size_t>(block - base_);
        const auto number = static_cast<std::uint32_t>(offset / page_bytes + 1);
        return (read(block) & ~link_mask) == mark_of(number) && is_listed(number, offset % page_bytes / class_step);
    }

private:
    struct Page {
        std::uint16_t first; ///< place of the first kept block, in words from the page's start; 0 is none
        std::uint16_t words; ///< size of the kept blocks
        std::uint32_t next;  ///< next page of the same size
    };

    static constexpr std::uint32_t link_mask = page_bytes / class_step - 1;

    static constexpr std::uint32_t mark_of(std::uint32_t number) noexcept {
        return (number * 0x9E3779B1u ^ 0x5A3C'2000u) & ~link_mask;
    }
    static std::uint32_t read(const std::byte* block) noexcept {
        std::uint32_t word = 0;
        std::memcpy(&word, block, sizeof word);
        return word;
    }
    static void write(std::byte* block, std::uint32_t word) noexcept { std::memcpy(block, &word, sizeof word); }
    bool is_listed(std::uint32_t number, std::size_t place) const noexcept;

    std::byte* base_ = nullptr;
    Page* pages_ = nullptr; ///< by page number, from 1 on; 0 is none
    std::array<std::uint32_t, most_words + 1> first_pages_{};
};

} // namespace kst
