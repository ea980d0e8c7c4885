#pragma once

#include <algorithm>
#include <cstdint>

namespace mosaicer {

/// `size` shifted right by `drop_mips`. A shift of 31 or more leaves nothing of a size; a negative one changes nothing.
constexpr std::int32_t shifted_size(std::int32_t size, std::int32_t drop_mips) {
    return size >> std::clamp(drop_mips, 0, 31);
}

/// The same, but at least 1: the size of an entry whose top levels are dropped.
constexpr std::int32_t dropped_size(std::int32_t size, std::int32_t drop_mips) {
    return std::max(shifted_size(size, drop_mips), 1);
}

static_assert(dropped_size(256, 2) == 64 && dropped_size(3, 5) == 1 && dropped_size(-1, 2) == 1);
static_assert(shifted_size(2048, 100) == 0 && shifted_size(64, -1) == 64);

} // namespace mosaicer
