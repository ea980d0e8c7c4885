#pragma once

namespace compression {

/// Sums over values x of weight f at the positions t of a ramp. The values are centred, so the sum of f x is 0.
struct RampSums {
    double f = 1;  ///< sum of f
    double t = 0;  ///< sum of f t
    double v = 0;  ///< sum of f t t, less (sum of f t) squared over the sum of f
    double tx = 0; ///< sum of f t x
};

/// The two ends of a fitted ramp, at the positions 0 and `steps`.
struct Ramp {
    double end0 = 0;
    double end1 = 0;
    double gain = 0; ///< fit error less the sum of f x x, times `v`: at most 0 where the bounds hold the mean
};

/// The ends of least squared error among all with both ends within `lower`..`upper`. Needs v > 0: at least two
/// positions in use, one of them 0.
Ramp fit_bounded_ramp(const RampSums& sums, double steps, double lower, double upper);

} // namespace compression
