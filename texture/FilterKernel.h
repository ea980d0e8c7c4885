#pragma once

#include "texture/MipChain.h"

#include <cstddef>
#include <span>
#include <vector>

namespace mosaicer {

/// The taps of a one-dimensional filter, scaled to a sum of 1 unless they sum to 0.
///
/// Taps are floats; they are worked out in double precision, with the constants and intermediate values held as floats
/// that are named at the functions. No system mathematics but the exact square root has a part in them.
class FilterKernel {
public:
    /// Scales the taps by 1 / sum, the sum taken in double precision in ascending order.
    explicit FilterKernel(std::vector<float> taps);

    /// `count` equal taps.
    static FilterKernel box(std::size_t count);

    /// A sinc under a Kaiser window: with x the distance from the middle in taps times `stretch`,
    ///   tap = I0(alpha sqrt(1 - t^2)) / I0(alpha) * sin(pi x) / (pi x),   t = x / (count / 2).
    /// Since t is taken behind the stretch it runs to about +-stretch, so only the middle of the window is used.
    /// Floats: 1 / (count / 2), I0(alpha), the argument of I0, pi. `stretch` is in 0 to 1, `count` even and not 0.
    static FilterKernel kaiser(float alpha, float stretch, std::size_t count);

    std::span<const float> taps() const { return taps_; }

private:
    std::vector<float> taps_;
};

/// The kernel that makes level `level`, 1 or more, of a filter in linear light: 2^level taps for BOX_GAMMA, 5 * 2^level
/// Kaiser taps of alpha 4 for the others, stretched by 0.5 to the power `level`, or 0.6 for KAISER_GAMMA_CRISP.
FilterKernel mip_kernel(MipFilter filter, std::size_t level);

namespace detail {
/// The sine, |x| < 10,000, to about 2^-52 relative to 1. The same bits on every machine.
double sine(double x);

/// The modified Bessel function of the first kind and order 0, by its power series until a term no longer counts.
/// x / 2 is held as a float.
double bessel_i0(float x);
} // namespace detail

} // namespace mosaicer
