#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace compression {

/// The samples of one DXT5 alpha block and what the solver finds for them.
struct AlphaContext {
    int count = 0;                        ///< samples, 0 to 16
    std::array<float, 16> samples{};      ///< 0.0 to 1.0
    int steps = 8;                        ///< result: levels of the ramp, 8, or 6 with fixed 0 and 255
    int alpha0 = 0;                       ///< result: byte of code 0
    int alpha1 = 0;                       ///< result: byte of code 1
    std::array<std::uint8_t, 16> codes{}; ///< result: per sample
};

/// A ramp of `steps` levels fitted to samples.
struct AlphaRamp {
    int alpha0 = 0;
    int alpha1 = 0;
    double error = 0; ///< sum of squared differences in bytes
    std::array<std::uint8_t, 16> codes{};
};

/// Fits a ramp of 8 or 6 levels to at most 16 samples. No samples: all zero.
AlphaRamp fit_alpha_ramp(int steps, std::span<const float> samples);

/// Fits five ramps (8 levels; 6 levels with and without the samples that the fixed codes 6 for 0.0 and 7 for 1.0
/// cover) and keeps the one of least error, the first at a tie. Needs at least one sample.
void solve_alpha(AlphaContext& alpha);

} // namespace compression
