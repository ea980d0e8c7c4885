#pragma once

#include "source/utility/memory/Allocator.h"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace kst {

/// The map of a heap page, at its start: one bit for each unit of the page.
///
///     bit u set: a block starts at unit u          bit u + 1 set: that block is in use
///
///     units     0 1 2 3 4 5 6 7 8 9        a block of 4 units in use, one of 3 units free, one of 2 units in use
///     bits      1 1 0 0 1 0 0 1 1 ...
///
/// The smallest block has two units, so an in-use bit is never a start. The bits of the units that the map itself takes
/// are clear. Read in words of 64 bits: a neighbour is found by a count of zeros, not bit by bit.
class PageBitmap {
public:
    /// Units of 4 bytes give 1,024 bits, of 8 bytes 512.
    PageBitmap(std::byte* page, std::uint32_t units) noexcept
        : words_(reinterpret_cast<std::uint64_t*>(page)), units_(units) {}

    bool test(std::uint32_t bit) const noexcept { return (words_[bit / 64] >> bit % 64 & 1) != 0; }
    /// Start and in-use bit are both set.
    bool is_used_block(std::uint32_t unit) const noexcept { return test(unit) && test(unit + 1); }
    void set(std::uint32_t bit) noexcept { words_[bit / 64] |= std::uint64_t{1} << bit % 64; }
    void clear(std::uint32_t bit) noexcept { words_[bit / 64] &= ~(std::uint64_t{1} << bit % 64); }

    /// The first set bit from `bit` on; the number of units if there is none.
    std::uint32_t next_set(std::uint32_t bit) const noexcept {
        if (bit >= units_)
            return units_;
        std::uint32_t word = bit / 64;
        std::uint64_t bits = words_[word] >> bit % 64 << bit % 64;
        while (bits == 0) {
            if (++word == units_ / 64)
                return units_;
            bits = words_[word];
        }
        return word * 64 + static_cast<std::uint32_t>(std::countr_zero(bits));
    }

    /// The last set bit before `bit`; the number of units if there is none.
    std::uint32_t previous_set(std::uint32_t bit) const noexcept {
        std::uint32_t word = bit / 64;
        std::uint64_t bits = words_[word] & ((std::uint64_t{1} << bit % 64) - 1);
        while (bits == 0) {
            if (word-- == 0)
                return units_;
            bits = words_[word];
        }
        return word * 64 + 63 - static_cast<std::uint32_t>(std::countl_zero(bits));
    }

    /// A set bit is a start if an even number of set bits stands directly before it: each run of set bits begins with a
    /// start, and goes on in pairs of start and in-use bit.
    bool is_start(std::uint32_t bit) const noexcept {
        std::uint32_t word = bit / 64;
        std::uint32_t before = bit % 64; // bits of this word below `bit`
        std::uint32_t run = 0;
        for (;;) {
            const std::uint64_t below = before == 0 ? 0 : words_[word] << (64 - before);
            const auto ones = static_cast<std::uint32_t>(std::countl_one(below));
            run += ones < before ? ones : before;
            if (ones < before || word == 0)
                return run % 2 == 0;
            --word;
            before = 64;
        }
    }

private:
    std::uint64_t* words_;
    std::uint32_t units_;
};

} // namespace kst
