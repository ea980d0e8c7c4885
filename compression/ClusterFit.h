#pragma once

#include "compression/DistinctColours.h"
#include "compression/LineFit.h"

namespace compression {

/// Fits groups of pixels along an axis, the axis improved in rounds, and moves the line's ends onto the lattice. What
/// fits with three and with four colours share is made once.
class ClusterFit {
public:
    /// Holds the block's colours and weights to 0.0..1.0.
    explicit ClusterFit(BlockContext& block);

    /// Writes the best fit of up to `colour_limit` (3 or 4) colours to the block, which is that of the constructor with
    /// any results.
    void run(BlockContext& block, int colour_limit) const;

private:
    LineFit search_line(const Vector3& weights, int step_limit) const;

    DistinctColours colours_;
    bool solid_;
    Order start_{};      ///< by the principal axis
    Vector3 farthest_{}; ///< the direction between the two colours farthest apart
};

/// One fit of a block.
void cluster_fit(BlockContext& block, int colour_limit);

} // namespace compression
