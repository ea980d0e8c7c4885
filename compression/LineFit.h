#pragma once

#include "compression/DistinctColours.h"
#include "compression/SplitWalk.h"

namespace compression {

/// Distinct colours in the order of their projections on an axis.
using Order = std::array<std::uint8_t, 16>;

/// The best division of an order into contiguous groups, and the line through the groups.
struct LineFit {
    double score = 0; ///< lower is better
    Vector3 axis{};
    Vector3 end0{}; ///< centred
    Vector3 end1{};
    int steps = 0; ///< groups on the line, less 1
};

/// Fits groups 0, 1, 2 and, with a `step_limit` of 3, group 3, at even places on a free line. Needs two colours.
LineFit fit_line(const DistinctColours& colours, const Order& order, int step_limit);

/// The same with a given kernel, for tests.
LineFit fit_line(const DistinctColours& colours, const Order& order, int step_limit, const SplitWalkKernel& kernel);

/// The same with both ends held to the box of legal colours.
LineFit fit_line_in_box(const DistinctColours& colours, const Order& order, int step_limit, const Vector3& weights);

} // namespace compression
