#pragma once

#include "compression/BlockContext.h"

namespace compression {

/// Codes a block whose pixels all have the weighted colour `weighted`: a grey by its table row, another colour by the
/// closest pairs that mix to it. `colour_count` stays as it was where both ends are the colour itself.
void fit_solid_colour(BlockContext& block, const Vector3& weighted, int colour_limit);

} // namespace compression
