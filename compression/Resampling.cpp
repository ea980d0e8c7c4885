#include "compression/Resampling.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <vector>

// A target pixel is a weighted mean of the source pixels around its centre. Both axes are independent, so the work is
// two passes over lines, and the order of the passes is chosen by their cost:
//
//     source  --pass along x-->  middle (target width, source height)  --pass along y-->  target
//     source  --pass along y-->  middle (source width, target height)  --pass along x-->  target
//
// The whole source maps to the whole target. So the filter's reach past the source's edges covers every target pixel,
// and no part of the target ever has to be clipped away.

namespace compression {
namespace {

constexpr double whole_tolerance = 1e-7;

/// A filter as it stands on one axis, in source pixels.
struct AxisFilter {
    const ResamplingFilter* filter;
    double scale; ///< target pixels for a source pixel
    double blur;
    double support;
    bool point = false;

    double width() const { return std::ceil(2.0 * support); }
};

bool is_whole(double value) {
    return std::abs(value - std::round(value)) <= whole_tolerance;
}

/// True for a filter that can only pick pixels: it reaches no second one, or only where it is 0.
bool can_only_pick(const AxisFilter& axis) {
    if (axis.support <= 0.5)
        return true;
    return axis.filter->cardinal && is_whole(1.0 / axis.blur) && is_whole(1.0 / (axis.scale * axis.blur)) &&
           is_whole(-0.5 / axis.blur);
}

AxisFilter make_axis_filter(const ResamplingFilter& filter, std::int32_t source_side, std::int32_t target_side) {
    AxisFilter axis{&filter, static_cast<double>(target_side) / source_side, 0.0, 0.0};
    // When the image shrinks, the filter spans target pixels; when it grows, source pixels.
    axis.blur = std::max(1.0, 1.0 / axis.scale) * filter.blur;
    axis.support = std::max(0.5, axis.blur * filter.support);
    if (can_only_pick(axis)) {
        axis.point = true;
        axis.blur = 1.0;
        axis.support = 0.5;
    }
    return axis;
}

/// The source pixels of one target position: `count` weights from `first` on.
struct Taps {
    std::size_t first;
    std::size_t count;
    std::size_t weights; ///< index of the first weight
};

struct AxisWeights {
    std::vector<Taps> taps; ///< one per target position
    std::vector<double> weights;
};

/// Truncates and holds inside 0 to `limit`; the order keeps the conversion defined for any value.
std::size_t held_index(double position, std::size_t limit) {
    return static_cast<std::size_t>(std::clamp(position, 0.0, static_cast<double>(limit)));
}

double weight_at(const AxisFilter& axis, double offset) {
    if (axis.point)
        return 1.0;
    const double x = offset / axis.blur;
    const bool inside = x >= -axis.filter->support && x < axis.filter->support;
    return inside ? axis.filter->evaluate(x) : 0.0;
}

AxisWeights make_weights(const AxisFilter& axis, std::size_t source_side, std::size_t target_side) {
    AxisWeights result;
    result.taps.reserve(target_side);
    for (std::size_t j = 0; j < target_side; ++j) {
        const double centre = (static_cast<double>(j) + 0.5) / axis.scale;
        const std::size_t first = held_index(centre - axis.support + 0.5, source_side - 1);
        const std::size_t end = std::max(first + 1, held_index(centre + axis.support + 0.5, source_side));
        const Taps taps{first, end - first, result.weights.size()};
        double sum = 0.0;
        for (std::size_t i = first; i < end; ++i) {
            result.weights.push_back(weight_at(axis, static_cast<double>(i) + 0.5 - centre));
            sum += result.weights.back();
        }
        if (sum != 0.0)
            for (std::size_t i = 0; i < taps.count; ++i)
                result.weights[taps.weights + i] /= sum;
        result.taps.push_back(taps);
    }
    return result;
}

FloatImage make_image(std::int32_t width, std::int32_t height) {
    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    return {width, height, std::vector<float>(pixels * 4)};
}

/// Sums one target pixel; `step` is the distance of neighbouring source pixels in floats.
void sum_taps(const float* source, std::size_t step, const double* weights, std::size_t count, bool weigh_by_alpha,
              float* target) {
    double sums[4] = {0.0, 0.0, 0.0, 0.0};
    double modulated[3] = {0.0, 0.0, 0.0};
    for (std::size_t i = 0; i < count; ++i, source += step) {
        for (int c = 0; c < 4; ++c)
            sums[c] += weights[i] * static_cast<double>(source[c]);
        if (weigh_by_alpha)
            for (int c = 0; c < 3; ++c)
                modulated[c] += weights[i] * static_cast<double>(source[3]) * static_cast<double>(source[c]);
    }
    // Where no pixel counts, the plain mean is as good as any colour.
    const bool divide = weigh_by_alpha && sums[3] != 0.0;
    for (int c = 0; c < 3; ++c)
        target[c] = static_cast<float>(divide ? modulated[c] / sums[3] : sums[c]);
    target[3] = static_cast<float>(sums[3]);
}

struct Pass {
    bool along_x;
    const AxisFilter& axis;
};

FloatImage run_pass(const FloatImage& source, const Pass& pass, std::int32_t target_side, bool weigh_by_alpha) {
    FloatImage target = pass.along_x ? make_image(target_side, source.height) : make_image(source.width, target_side);
    const auto source_side = static_cast<std::size_t>(pass.along_x ? source.width : source.height);
    const AxisWeights weights = make_weights(pass.axis, source_side, static_cast<std::size_t>(target_side));
    const std::size_t source_row = static_cast<std::size_t>(source.width) * 4;
    const std::size_t step = pass.along_x ? 4 : source_row;
    const auto target_width = static_cast<std::size_t>(target.width);
    float* out = target.pixels.data();
    for (std::size_t y = 0; y < static_cast<std::size_t>(target.height); ++y)
        for (std::size_t x = 0; x < target_width; ++x, out += 4) {
            const Taps& taps = weights.taps[pass.along_x ? x : y];
            const std::size_t start = pass.along_x ? y * source_row + taps.first * 4 : taps.first * source_row + x * 4;
            sum_taps(&source.pixels[start], step, &weights.weights[taps.weights], taps.count, weigh_by_alpha, out);
        }
    return target;
}

void pick_pixels(const FloatImage& source, const AxisFilter& axis_x, const AxisFilter& axis_y, FloatImage& target) {
    const auto source_width = static_cast<std::size_t>(source.width);
    const auto source_height = static_cast<std::size_t>(source.height);
    float* out = target.pixels.data();
    for (std::int32_t y = 0; y < target.height; ++y) {
        const std::size_t row = held_index((y + 0.5) / axis_y.scale, source_height - 1) * source_width;
        for (std::int32_t x = 0; x < target.width; ++x, out += 4) {
            const std::size_t column = held_index((x + 0.5) / axis_x.scale, source_width - 1);
            std::copy_n(&source.pixels[(row + column) * 4], 4, out);
        }
    }
}

/// True if the pass along x is the cheaper first one, by the multiplications of both orders.
bool x_goes_first(const FloatImage& source, const FloatImage& target, double width_x, double width_y) {
    const double x_first = (target.height * width_y + source.height * width_x) * target.width;
    const double y_first = (source.width * width_y + target.width * width_x) * target.height;
    return x_first < y_first;
}

void raise_to(std::vector<float>& samples, double power) {
    for (float& sample : samples)
        sample = static_cast<float>(std::pow(std::max(static_cast<double>(sample), 0.0), power));
}

void resample_linear(const FloatImage& source, FloatImage& target, const ResamplingFilter& filter,
                     bool weigh_by_alpha) {
    const AxisFilter axis_x = make_axis_filter(filter, source.width, target.width);
    const AxisFilter axis_y = make_axis_filter(filter, source.height, target.height);
    if (axis_x.point && axis_y.point)
        return pick_pixels(source, axis_x, axis_y, target);
    const Pass pass_x{true, axis_x};
    const Pass pass_y{false, axis_y};
    if (x_goes_first(source, target, axis_x.width(), axis_y.width())) {
        const FloatImage middle = run_pass(source, pass_x, target.width, weigh_by_alpha);
        target = run_pass(middle, pass_y, target.height, weigh_by_alpha);
    } else {
        const FloatImage middle = run_pass(source, pass_y, target.height, weigh_by_alpha);
        target = run_pass(middle, pass_x, target.width, weigh_by_alpha);
    }
}

} // namespace

void raise_for_filter(FloatImage& image, float gamma) {
    if (gamma != 0.0f)
        raise_to(image.pixels, 1.0 / static_cast<double>(gamma));
}

void raise_after_filter(FloatImage& image, float gamma) {
    if (gamma != 0.0f)
        raise_to(image.pixels, static_cast<double>(gamma));
}

void resample_image(const FloatImage& source, FloatImage& target, const ResamplingFilter& filter,
                    const ResampleSettings& settings) {
    assert(source.width > 0 && source.height > 0 && target.width > 0 && target.height > 0);
    target = make_image(target.width, target.height);
    if (settings.gamma == 0.0f)
        return resample_linear(source, target, filter, settings.weigh_by_alpha);
    FloatImage linear = source;
    raise_for_filter(linear, settings.gamma);
    resample_linear(linear, target, filter, settings.weigh_by_alpha);
    raise_after_filter(target, settings.gamma);
}

void resample_image(const FloatImage& source, FloatImage& target, float gamma, std::int32_t filter_index) {
    resample_image(source, target, resampling_filters()[static_cast<std::size_t>(filter_index)],
                   ResampleSettings{.gamma = gamma});
}

ResamplingFilter mip_filter(const CompressionOptions& options) {
    ResamplingFilter filter = resampling_filters()[static_cast<std::size_t>(options.g_mip_filter_type)];
    if (options.g_override_filter_width) {
        if (options.g_filter_width >= 0.0f)
            filter.support = static_cast<double>(options.g_filter_width);
        if (options.g_filter_blur >= 0.0f)
            filter.blur = static_cast<double>(options.g_filter_blur);
    }
    return filter;
}

ResampleSettings mip_settings(const CompressionOptions& options) {
    return {.gamma = options.g_enable_filter_gamma ? options.g_filter_gamma : 0.0f,
            .weigh_by_alpha = options.g_b_filter_modulate};
}

void generate_mips(std::span<FloatImage> levels, std::size_t first_level, const CompressionOptions& options) {
    const ResamplingFilter filter = mip_filter(options);
    const ResampleSettings settings = mip_settings(options);
    FloatImage base;
    for (std::size_t level = std::max<std::size_t>(first_level, 1); level < levels.size(); ++level) {
        if (base.pixels.empty()) {
            base = levels[0];
            raise_for_filter(base, settings.gamma);
        }
        resample_image(base, levels[level], filter, {.gamma = 0.0f, .weigh_by_alpha = settings.weigh_by_alpha});
        raise_after_filter(levels[level], settings.gamma);
    }
}

} // namespace compression
