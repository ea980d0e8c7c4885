#pragma once

#include "compression/BlockContext.h"

namespace compression {

/// Fits `colour_count` (3 or 4) colours along the block's principal axis, in single precision throughout. A block
/// without extent gets two equal ends, index 0 and four colours.
void fast_fit(BlockContext& block, int colour_count);

} // namespace compression
