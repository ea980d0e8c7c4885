#pragma once

#include "compression/CompressionOptions.h"
#include "compression/LevelImage.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace compression {

/// One of the filters. `evaluate` is 0 outside of -support to support.
struct ResamplingFilter {
    std::string_view name;
    double (*evaluate)(double x);
    double support; ///< pixels of the coarser of the two images
    double blur;
    bool cardinal; ///< 1 at 0, and 0 at every other whole number
};

/// By the value of the options that choose a filter, 0 "point" to 13 "kaiser".
std::span<const ResamplingFilter> resampling_filters();

/// How a resampling differs from the plain use of a filter of the table.
struct ResampleSettings {
    float gamma = 0.0f;          ///< samples go to the power 1 / gamma before and to gamma after; 0: none
    bool weigh_by_alpha = false; ///< each colour counts by its pixel's alpha
};

/// Fills `target`, whose size says what is wanted and whose pixels are allocated, from `source`.
void resample_image(const FloatImage& source, FloatImage& target, const ResamplingFilter& filter,
                    const ResampleSettings& settings);

/// The same with a filter of the table, which `filter_index` names.
void resample_image(const FloatImage& source, FloatImage& target, float gamma, std::int32_t filter_index);

/// The filter and the settings that the options ask for when levels are made.
ResamplingFilter mip_filter(const CompressionOptions& options);
ResampleSettings mip_settings(const CompressionOptions& options);

/// The two halves of a resampling with gamma, for whoever resamples one image many times: samples to the power 1 /
/// gamma, and to gamma. A gamma of 0 changes nothing; a sample below 0 counts as 0.
void raise_for_filter(FloatImage& image, float gamma);
void raise_after_filter(FloatImage& image, float gamma);

/// Fills every level from `first_level` on from level 0. Sizes are those of the levels, whose pixels are allocated.
void generate_mips(std::span<FloatImage> levels, std::size_t first_level, const CompressionOptions& options);

} // namespace compression
