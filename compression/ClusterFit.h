#pragma once

#include "compression/BlockContext.h"

namespace compression {

/// Fits up to `colour_limit` (3 or 4) colours: groups of pixels along an axis, the axis improved in rounds, the line's
/// ends moved onto the lattice. Holds the block's colours and weights to 0.0..1.0.
void cluster_fit(BlockContext& block, int colour_limit);

} // namespace compression
