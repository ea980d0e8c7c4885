#pragma once

#include "compression/BlockContext.h"

#include <array>

namespace compression {

/// The palette that a decoder makes of two ends, in bytes: entries 0 and 1 are the ends.
struct Palette {
    int size = 0; ///< entries that a pixel may take
    std::array<std::array<int, 3>, 4> entries{};
};

/// Entries between the ends are cut, not rounded. Three colours offer black as a fourth entry in format 0 alone; in
/// format 1 that code is the transparent pixel.
Palette make_palette(const std::array<int, 3>& end0, const std::array<int, 3>& end1, int colour_count, int format);

/// Gives every pixel of the block its nearest palette entry, the lowest index at a tie, and returns the sum over pixels
/// and channels of (weight * (255 * colour - entry)) squared. The measure by which all searches are compared.
double evaluate_palette(BlockContext& block);

} // namespace compression
