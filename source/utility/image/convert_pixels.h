#pragma once

#include "source/utility/image/ImageFormat.h"

#include <cstddef>
#include <cstdint>

namespace kst {

/// Turns `count` pixels of one format into another. The kinds of the two formats decide:
///
///   luminance -> alpha, colour -> alpha     all bytes 255
///   alpha -> colour                         all bytes 0
///   luminance -> colour                     the luminance in red, green and blue
///   colour -> colour, colour_alpha          channel by channel; alpha, where it is new, at its highest
///   colour_alpha -> colour, colour_alpha,
///                   palette, other          channel by channel; what the target lacks is dropped
///
/// Any other pair leaves `target` as it is. A level goes to the other format's range by a step in 16.16 fixed point.
/// Step and result are rounded down, so the highest level may fall one short: 255 of 8 bits is 30 of 5 bits, and no
/// level of 8 bits reaches the upper one of 1 bit. To floats, levels go to 0.0 to 1.0.
void convert_pixels(const std::uint8_t* source, std::uint32_t source_format, std::size_t count,
                    std::uint32_t target_format, std::uint8_t* target);

} // namespace kst
