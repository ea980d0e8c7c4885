#pragma once

#include "texture/MipChain.h"

#include <cmath>
#include <cstdint>
#include <vector>

/// The filters in linear light as plain double-precision loops, straight from their rules. The oracle of the fast form,
/// and what the benchmark sets beside it.
namespace mosaicer::literal {

using Plane = std::vector<float>;

inline int mirror(int i, int size) {
    while (i < 0 || i >= size)
        i = i < 0 ? -i : 2 * size - i - 1;
    return i;
}

inline double bessel_i0(double x) {
    const float h = static_cast<float>(x * 0.5);
    double sum = 1, term = 1, square = 1;
    for (int k = 1; square > sum * static_cast<double>(1e-16f); ++k) {
        term *= static_cast<double>(h) / k;
        square = term * term;
        sum += square;
    }
    return sum;
}

inline std::vector<float> normalised(std::vector<float> taps) {
    double sum = 0;
    for (const float tap : taps)
        sum += static_cast<double>(tap);
    for (float& tap : taps)
        tap = static_cast<float>(static_cast<double>(tap) * (1 / sum));
    return taps;
}

/// Sines and powers by long double, so that the double results carry no error of the system's double functions.
inline std::vector<float> kaiser(double alpha, float stretch, int n) {
    const double half = n * 0.5;
    const float inv_half = static_cast<float>(1 / half);
    const float i0a = static_cast<float>(bessel_i0(alpha));
    std::vector<float> taps;
    for (int i = 0; i < n; ++i) {
        const double x = (i + -half + 0.5) * static_cast<double>(stretch);
        const double angle = static_cast<double>(3.1415927f) * x;
        const double sinc = x == 0 ? 1 : static_cast<double>(std::sin(static_cast<long double>(angle)) / angle);
        const double t = x * static_cast<double>(inv_half);
        const float argument = static_cast<float>(alpha * std::sqrt(1 - t * t));
        const double window = bessel_i0(static_cast<double>(argument)) / static_cast<double>(i0a);
        taps.push_back(static_cast<float>(window * sinc));
    }
    return normalised(taps);
}

inline std::vector<float> level_kernel(MipFilter filter, int level) {
    if (filter == MipFilter::BOX_GAMMA)
        return normalised(std::vector<float>(std::size_t{2} << (level - 1), 1.0f));
    const float base = filter == MipFilter::KAISER_GAMMA_CRISP ? 0.6f : 0.5f;
    const auto stretch = std::pow(static_cast<long double>(base), static_cast<long double>(level));
    return kaiser(4.0, static_cast<float>(stretch), 10 << (level - 1));
}

/// mirror() of low to high - 1, so that each is worked out once.
inline std::vector<int> mirrored(int low, int high, int size) {
    std::vector<int> indices;
    for (int i = low; i < high; ++i)
        indices.push_back(mirror(i, size));
    return indices;
}

inline Plane downsample(const Plane& source, int W, int H, const std::vector<float>& taps, int w, int h) {
    const int n = static_cast<int>(taps.size());
    const int stepx = W / w, stepy = H / h, off = -(n / 2);
    const auto at = [](int row, int pitch, int column) {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(pitch) + static_cast<std::size_t>(column);
    };
    const std::vector<int> columns = mirrored(off, W + n, W), rows = mirrored(off, H + n, H);
    Plane temp(source.size()), target(at(h, w, 0));
    for (int y = 0; y < H; ++y)
        for (int x = stepx / 2; x < W; x += stepx) {
            double sum = 0;
            for (int k = 0; k < n; ++k)
                sum += static_cast<double>(source[at(y, W, columns[static_cast<std::size_t>(x + k)])]) *
                       static_cast<double>(taps[static_cast<std::size_t>(k)]);
            temp[at(y, W, x / stepx)] = static_cast<float>(sum);
        }
    for (int c = 0; c < W / stepx; ++c)
        for (int y = stepy / 2; y < H; y += stepy) {
            double sum = 0;
            for (int k = 0; k < n; ++k)
                sum += static_cast<double>(temp[at(rows[static_cast<std::size_t>(y + k)], W, c)]) *
                       static_cast<double>(taps[static_cast<std::size_t>(k)]);
            if (y / stepy < h)
                target.at(at(y / stepy, w, c)) = static_cast<float>(sum);
        }
    return target;
}

inline float decoded(std::uint8_t byte) {
    return static_cast<float>(
        std::pow(static_cast<double>(static_cast<float>(byte) * 0.003921569f), static_cast<double>(2.2f)));
}

inline std::uint8_t encoded(float sample) {
    if (sample < 0)
        return 0; // its power is not a number
    const auto power = static_cast<float>(std::pow(static_cast<double>(sample), static_cast<double>(0.45454544f)));
    const double v = static_cast<double>(power) * 255.0;
    int t = static_cast<int>(v);
    if (v - t >= 0.5)
        ++t;
    return static_cast<std::uint8_t>(t > 255 ? 255 : t);
}

/// One level of a filter in linear light.
inline Bitmap gamma_level(const Bitmap& base, MipFilter filter, int level) {
    const int W = base.width(), H = base.height();
    Bitmap result(level_side(W, static_cast<std::size_t>(level)), level_side(H, static_cast<std::size_t>(level)));
    const std::vector<float> taps = level_kernel(filter, level);
    for (std::size_t channel = 0; channel < 4; ++channel) {
        Plane plane;
        for (std::size_t i = channel; i < base.pixels().size(); i += 4)
            plane.push_back(decoded(base.pixels()[i]));
        const Plane filtered = downsample(plane, W, H, taps, result.width(), result.height());
        for (std::size_t i = 0; i < filtered.size(); ++i)
            result.pixels()[i * 4 + channel] = encoded(filtered[i]);
    }
    return result;
}

} // namespace mosaicer::literal
