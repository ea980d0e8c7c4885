#include "source/utility/xml/XMLArena.h"

#include <algorithm>

namespace kst {
namespace {

/// Blocks double up to this size: a node on its own stays small, and a large tree needs few blocks.
constexpr std::size_t largest_block_bytes = 1024 * 1024;

} // namespace

std::byte* XMLArena::allocate_slowly(std::size_t bytes) {
    if (bytes > next_block_bytes_ / 4 && bytes > room_) {
        blocks_.push_back(std::make_unique_for_overwrite<std::byte[]>(bytes));
        next_block_bytes_ =
            std::min(std::max(next_block_bytes_, std::min(bytes, largest_block_bytes)) * 2, largest_block_bytes);
        return blocks_.back().get();
    }
    blocks_.push_back(std::make_unique_for_overwrite<std::byte[]>(next_block_bytes_));
    next_ = blocks_.back().get() + bytes;
    room_ = next_block_bytes_ - bytes;
    next_block_bytes_ = std::min(next_block_bytes_ * 2, largest_block_bytes);
    return next_ - bytes;
}

} // namespace kst
