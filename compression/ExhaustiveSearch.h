#pragma once

#include "compression/BlockContext.h"
#include "compression/PaletteBounds.h"

namespace compression {

/// Walks pairs of ends along the block's principal axis, every pair of values of each channel in turn with the other
/// channels derived and varied by one, in both palettes. Keeps the strictly best; `error` is that of the block as it
/// comes in. Returns the error of the block as it leaves.
double exhaustive_search(BlockContext& block, double error);

/// The same with given kernels, for tests.
double exhaustive_search(BlockContext& block, double error, const PaletteBoundKernels& kernels);

} // namespace compression
