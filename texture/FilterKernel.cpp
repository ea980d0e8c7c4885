#include "texture/FilterKernel.h"

#include <array>
#include <cassert>
#include <cmath>
#include <cstdint>

namespace mosaicer {
namespace {

constexpr float pi = 3.1415927f;

/// Taylor coefficients of the sine (`first` 1) or the cosine (`first` 0): +-1 / (first + 2i)!
constexpr auto taylor(int first) {
    std::array<double, 10> coefficients{};
    double factorial = 1;
    double sign = 1;
    for (int i = 0; i < 10; ++i, sign = -sign) {
        const int degree = first + 2 * i;
        if (i > 0)
            factorial *= static_cast<double>(degree) * (degree - 1);
        coefficients[static_cast<std::size_t>(i)] = sign / factorial;
    }
    return coefficients;
}

constexpr auto sine_coefficients = taylor(1);
constexpr auto cosine_coefficients = taylor(0);

double polynomial(const std::array<double, 10>& coefficients, double x) {
    double value = 0;
    for (std::size_t i = coefficients.size(); i-- > 0;)
        value = value * x + coefficients[i];
    return value;
}

double sinc(double x) {
    const double angle = static_cast<double>(pi) * x;
    return x == 0 ? 1.0 : detail::sine(angle) / angle;
}

} // namespace

namespace detail {

double sine(double x) {
    // Half of pi in three parts. The first two have 33 bits, so that their products with a small whole number are
    // exact.
    constexpr double half_pi_high = 0x1.921fb544p+0;
    constexpr double half_pi_middle = 0x1.0b4611a6p-34;
    constexpr double half_pi_low = 0x1.3198a2e037073p-69;
    const double quarters = std::nearbyint(x / half_pi_high);
    const double rest = ((x - quarters * half_pi_high) - quarters * half_pi_middle) - quarters * half_pi_low;
    const double square = rest * rest;
    const auto quadrant = static_cast<std::int64_t>(quarters) & 3;
    // The Taylor series end behind rest^19 and rest^18; the next terms are below 2^-62 for rest up to pi / 4.
    const double value =
        (quadrant & 1) == 0 ? rest * polynomial(sine_coefficients, square) : polynomial(cosine_coefficients, square);
    return (quadrant & 2) == 0 ? value : -value;
}

double bessel_i0(float x) {
    const float half = x * 0.5f;
    double sum = 1;
    double term = 1;
    for (int k = 1;; ++k) {
        term *= static_cast<double>(half) / k;
        const double square = term * term;
        sum += square;
        if (!(square > sum * static_cast<double>(1e-16f)))
            return sum;
    }
}

} // namespace detail

FilterKernel::FilterKernel(std::vector<float> taps) : taps_(std::move(taps)) {
    double sum = 0;
    for (const float tap : taps_)
        sum += static_cast<double>(tap);
    if (sum == 0)
        return;
    const double scale = 1 / sum;
    for (float& tap : taps_)
        tap = static_cast<float>(static_cast<double>(tap) * scale);
}

FilterKernel FilterKernel::box(std::size_t count) {
    return FilterKernel(std::vector<float>(count, 1.0f));
}

FilterKernel FilterKernel::kaiser(float alpha, float stretch, std::size_t count) {
    assert(count > 0 && count % 2 == 0);
    const double half = static_cast<double>(count) * 0.5;
    const auto inverse_half = static_cast<double>(static_cast<float>(1 / half));
    const auto i0_alpha = static_cast<double>(static_cast<float>(detail::bessel_i0(alpha)));
    std::vector<float> taps(count);
    // The formula is even in x and x runs through the same values on both sides, so one half is enough.
    for (std::size_t i = 0; i < count / 2; ++i) {
        const double x = (static_cast<double>(i) - half + 0.5) * static_cast<double>(stretch);
        const double t = x * inverse_half;
        const auto argument = static_cast<float>(static_cast<double>(alpha) * std::sqrt(1 - t * t));
        const double window = detail::bessel_i0(argument) / i0_alpha;
        taps[i] = taps[count - 1 - i] = static_cast<float>(window * sinc(x));
    }
    return FilterKernel(std::move(taps));
}

FilterKernel mip_kernel(MipFilter filter, std::size_t level) {
    assert(mip_way(filter) == MipWay::linear_light && level >= 1);
    const std::size_t step = std::size_t{1} << level;
    if (filter == MipFilter::BOX_GAMMA)
        return FilterKernel::box(step);
    const float base = filter == MipFilter::KAISER_GAMMA_CRISP ? 0.6f : 0.5f;
    double stretch = 1;
    for (std::size_t i = 0; i < level; ++i)
        stretch *= static_cast<double>(base);
    return FilterKernel::kaiser(4.0f, static_cast<float>(stretch), 5 * step);
}

} // namespace mosaicer
