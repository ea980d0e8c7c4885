#pragma once

#include "compression/BlockContext.h"

namespace compression {

/// Finds the two colours, the palette size and the pixels' indices of a block with at least one pixel. `quality` picks
/// the searches: 68 the fast fit, 69 and up the cluster fit, 71 and 72 the better of both, 72 the exhaustive search
/// for free blocks whose error is still above `rms_error_threshold`.
void solve_colours(BlockContext& block);

} // namespace compression
