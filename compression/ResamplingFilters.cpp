#include "compression/Resampling.h"

#include <array>
#include <cmath>
#include <numbers>

namespace compression {
namespace {

using std::numbers::pi;

double box(double x) {
    return x >= -0.5 && x < 0.5 ? 1.0 : 0.0;
}

double triangle(double x) {
    return std::abs(x) < 1.0 ? 1.0 - std::abs(x) : 0.0;
}

double quadratic(double x) {
    const double near = std::abs(x);
    if (near <= 0.5)
        return 0.75 - x * x;
    return near < 1.5 ? 0.5 * (near - 1.5) * (near - 1.5) : 0.0;
}

// The splines are even functions: each is written for x >= 0.

double cubic(double x) {
    const double near = std::abs(x);
    if (near < 1.0)
        return (near * near * (3.0 * near - 6.0) + 4.0) / 6.0;
    return near < 2.0 ? (2.0 - near) * (2.0 - near) * (2.0 - near) / 6.0 : 0.0;
}

double catrom(double x) {
    const double near = std::abs(x);
    if (near < 1.0)
        return (near * near * (3.0 * near - 5.0) + 2.0) / 2.0;
    return near < 2.0 ? (near * ((5.0 - near) * near - 8.0) + 4.0) / 2.0 : 0.0;
}

/// The two-parameter cubic of Mitchell and Netravali with b = c = 1/3, its coefficients multiplied by 18.
double mitchell(double x) {
    const double near = std::abs(x);
    if (near < 1.0)
        return (near * near * (21.0 * near - 36.0) + 16.0) / 18.0;
    return near < 2.0 ? (near * ((36.0 - 7.0 * near) * near - 60.0) + 32.0) / 18.0 : 0.0;
}

double gaussian(double x) {
    return std::exp(-2.0 * x * x) * std::sqrt(2.0 / pi);
}

double sinc(double x) {
    return x == 0.0 ? 1.0 : std::sin(pi * x) / (pi * x);
}

double bessel(double x) {
    const double near = std::abs(x);
    return near == 0.0 ? pi / 4.0 : std::cyl_bessel_j(1.0, pi * near) / (2.0 * near);
}

double hanning(double x) {
    return std::abs(x) < 1.0 ? 0.5 + 0.5 * std::cos(pi * x) : 0.0;
}

double hamming(double x) {
    return std::abs(x) < 1.0 ? 0.54 + 0.46 * std::cos(pi * x) : 0.0;
}

double blackman(double x) {
    return std::abs(x) < 1.0 ? 0.42 + 0.5 * std::cos(pi * x) + 0.08 * std::cos(2.0 * pi * x) : 0.0;
}

/// Modified Bessel function of order 0, by its power series down to terms of 1e-7.
double bessel_i0(double x) {
    const double y = x * x / 4.0;
    double sum = 1.0;
    double term = y;
    for (int k = 2; term > 1e-7; ++k) {
        sum += term;
        term *= y / (k * k);
    }
    return sum;
}

double kaiser(double x) {
    constexpr double alpha = 6.5;
    return std::abs(x) < 1.0 ? bessel_i0(alpha * std::sqrt(1.0 - x * x)) / bessel_i0(alpha) : 0.0;
}

constexpr std::array filters{
    ResamplingFilter{"point", box, 0.0, 1.0, true},          ResamplingFilter{"box", box, 0.5, 1.0, true},
    ResamplingFilter{"triangle", triangle, 1.0, 1.0, true},  ResamplingFilter{"quadratic", quadratic, 1.5, 1.0, false},
    ResamplingFilter{"cubic", cubic, 2.0, 1.0, false},       ResamplingFilter{"catrom", catrom, 2.0, 1.0, true},
    ResamplingFilter{"mitchell", mitchell, 2.0, 1.0, false}, ResamplingFilter{"gaussian", gaussian, 1.25, 1.0, false},
    ResamplingFilter{"sinc", sinc, 4.0, 1.0, true},          ResamplingFilter{"bessel", bessel, 3.2383, 1.0, false},
    ResamplingFilter{"hanning", hanning, 1.0, 1.0, true},    ResamplingFilter{"hamming", hamming, 1.0, 1.0, true},
    ResamplingFilter{"blackman", blackman, 1.0, 1.0, true},  ResamplingFilter{"kaiser", kaiser, 1.0, 1.0, true},
};

} // namespace

std::span<const ResamplingFilter> resampling_filters() {
    return filters;
}

} // namespace compression
